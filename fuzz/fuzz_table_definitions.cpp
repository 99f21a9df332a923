// SPDX-License-Identifier: MIT
//
// {"name": TEXT, "definition": JSON, "before": SQL, "create": SQL, "records": [RECORD, ...]}: definitions of any shape,
// tables that are there already, and records for them. Without SQL the records are judged: what was stored is read
// back and found by what was read, saving it again changes nothing, all or none of several are stored.

#include <vorn/table.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "check.h"
#include "input.h"
#include "json_value.h"
#include "safe_database.h"
#include "table_outcome.h"

namespace
{

class Case
{
public:
    explicit Case(const Json::Value& jInput)
        : m_strName(fuzz::textOf(fuzz::part(jInput, "name"))), m_jDefinition(fuzz::part(jInput, "definition"))
    {
        const std::string strBefore = fuzz::textOf(fuzz::part(jInput, "before"));
        const std::string strCreate = fuzz::textOf(fuzz::part(jInput, "create"));
        m_blOwnSql = !strBefore.empty() || !strCreate.empty();
        runHosts(strBefore);
        m_pTable = std::make_unique<vorn::Table>(m_database.handle(), m_strName, m_jDefinition, strCreate);
        m_pTable->setLockTimeout(0);
        static_cast<void>(fuzz::succeeded(*m_pTable, code() == vorn::Code::Ok ? 0 : -1, m_database.handle()));
        runHosts("");
    }

    void upgrade()
    {
        Json::Value jReport;
        const bool blBad = code() == vorn::Code::BadDefinition;
        if (!done(m_pTable->tableCheck(jReport, true)))
            FUZZ_CHECK(blBad == (code() == vorn::Code::BadDefinition), m_pTable->status().text);
        const std::string strBefore = schema();
        const bool blUpgraded = done(m_pTable->tableUpgrade());
        const std::string strAfter = schema();
        FUZZ_CHECK(blUpgraded || strAfter == strBefore, "changed by a failure: " + m_pTable->status().text);
        FUZZ_CHECK(blUpgraded || m_blOwnSql || blBad, m_pTable->status().text);
        if (!blUpgraded)
            return;
        static_cast<void>(done(m_pTable->tableCheck(jReport)));
        FUZZ_CHECK(jReport["missing"].empty(), support::writeReference(jReport));
        FUZZ_CHECK(m_blOwnSql || (jReport["keys"].empty() && jReport["undeclared"].empty() && jReport["types"].empty()),
                   support::writeReference(jReport));
        FUZZ_CHECK(done(m_pTable->tableUpgrade()), m_pTable->status().text);
        FUZZ_CHECK(schema() == strAfter, "upgraded twice");
    }

    void store(const Json::Value& jRecord)
    {
        const bool blFits = done(m_pTable->checkJsonType(jRecord));
        const vorn::Status misfit = m_pTable->status();
        const long long nBefore = count();
        Json::Value jOut("untouched");
        if (!done(m_pTable->recCreate(jRecord, jOut)))
        {
            FUZZ_CHECK(blFits || (code() == misfit.code && m_pTable->status().member == misfit.member),
                       misfit.text + " / " + m_pTable->status().text);
            FUZZ_CHECK(jOut == Json::Value("untouched") && count() == nBefore, m_pTable->status().text);
            return;
        }
        FUZZ_CHECK(blFits, misfit.text);
        if (m_blOwnSql)
            return;
        FUZZ_CHECK(count() == nBefore + 1, "not one record more");
        expectStored(jRecord, jOut);

        // What was read finds its record.
        Json::Value jFilter(Json::objectValue), jFound;
        for (const std::string& strMember : jOut.getMemberNames())
            jFilter[strMember]["$eq"] = jOut[strMember];
        const long long nFound = m_pTable->recCount(jFilter);
        FUZZ_CHECK(done(nFound) || code() == vorn::Code::Interrupted, m_pTable->status().text);
        FUZZ_CHECK(nFound != 0, "not found: " + support::writeReference(jFilter));
        Json::Value jSaved = jOut;
        if (done(m_pTable->recSave(jSaved, false)) && hasKey())
        {
            FUZZ_CHECK(support::identical(jSaved, jOut), support::writeReference(jSaved));
            FUZZ_CHECK(count() == nBefore + 1, "saved as another one");
        }
    }

    void storeAll(const Json::Value& jRecords)
    {
        const long long nBefore = count();
        const long long nStored = m_pTable->recCreateAll(jRecords);
        if (done(nStored))
            FUZZ_CHECK(nStored == static_cast<long long>(jRecords.size()), std::to_string(nStored));
        FUZZ_CHECK(m_blOwnSql || count() == nBefore + (nStored > 0 ? nStored : 0), std::to_string(nStored));
        Json::Value jSaved = fuzz::part(jRecords, 0U), jList;
        static_cast<void>(done(m_pTable->recSave(jSaved, true)));
        static_cast<void>(done(m_pTable->fillDefaultValue(jSaved, false)));
        static_cast<void>(done(m_pTable->recSave(jSaved, false)));
        const bool blListed = done(m_pTable->recList(Json::Value(), jList));
        FUZZ_CHECK(blListed || m_blOwnSql || code() != vorn::Code::BadCell, m_pTable->status().text);
    }

private:
    bool done(long long nResult)
    {
        const bool blDone = fuzz::succeededAlone(*m_pTable, nResult, m_database.handle());
        m_database.rewind();
        return blDone;
    }

    vorn::Code code() const { return m_pTable->status().code; }

    // The host's SQL, which may leave a transaction open.
    void runHosts(const std::string& strSql)
    {
        static_cast<void>(m_database.run(strSql));
        if (sqlite3_get_autocommit(m_database.handle()) == 0)
            static_cast<void>(m_database.run("ROLLBACK"));
        m_database.rewind();
    }

    std::string schema() { return m_database.dump("sqlite_schema"); }

    long long count()
    {
        const long long nCount = m_pTable->recCount(Json::Value());
        static_cast<void>(done(nCount));
        return nCount;
    }

    bool hasKey() const
    {
        for (const Json::Value& jMember : m_jDefinition[m_strName]["member"])
            if (fuzz::flagOf(fuzz::part(jMember, "key")))
                return true;
        return false;
    }

    // Every given member that is no null is there, of its own kind and value; a float is one rounded.
    void expectStored(const Json::Value& jRecord, const Json::Value& jOut)
    {
        for (const std::string& strMember : jRecord.getMemberNames())
        {
            const Json::Value& jGiven = jRecord[strMember];
            const Json::Value* const pStored = jOut.find(strMember.data(), strMember.data() + strMember.size());
            FUZZ_CHECK(jGiven.isNull() || pStored != nullptr, strMember);
            if (jGiven.isNull())
                continue;
            const std::string strType = m_jDefinition[m_strName]["member"][strMember]["cpptype"].asString();
            const bool blSame = jGiven.isNumeric() && strType != "Json::Value"
                                    ? pStored->asDouble() == (strType == "float" ? static_cast<double>(jGiven.asFloat())
                                                                                 : jGiven.asDouble())
                                    : support::writeReference(jGiven) == support::writeReference(*pStored);
            FUZZ_CHECK(blSame, strMember + ": " + support::writeReference(jGiven) + " became " +
                                   support::writeReference(*pStored));
        }
    }

    std::string m_strName;
    Json::Value m_jDefinition;
    support::SafeDatabase m_database;
    std::unique_ptr<vorn::Table> m_pTable;
    bool m_blOwnSql = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxRecords = 6;
    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    Case fuzzCase(*jInput);
    fuzzCase.upgrade();
    const Json::Value& jRecords = fuzz::part(*jInput, "records");
    for (Json::ArrayIndex i = 0; jRecords.isArray() && i < jRecords.size() && i < kMaxRecords; ++i)
        fuzzCase.store(jRecords[i]);
    fuzzCase.storeAll(jRecords);
    return 0;
}
