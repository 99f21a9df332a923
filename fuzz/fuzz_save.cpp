// SPDX-License-Identifier: MIT
//
// {"definition": {"T": {"member": ...}}, "columns": TEXT, "steps": [["create", RECORD, OUT], ["save", RECORD, INSERT],
// ["defaults", RECORD, REQUIRE ALL], ["check", RECORD]]}: any definition, usable or not, and records for it. Where the
// definition is usable, every result, every record handed back and every row must be those of the expected statement
// run on a connection of its own.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "VornJsonDbApi.h"
#include "check.h"
#include "database.h"
#include "formatter.h"
#include "input.h"
#include "model.h"
#include "reference_json.h"
#include "twin.h"

namespace
{

constexpr int kThrew = -2;

// The types of a definition that holds nothing but what a definition should.
std::optional<fuzz::Types> usableTypes(const Json::Value& jTableDef, const std::string& strTable)
{
    const Json::Value& jMembers = fuzz::part(fuzz::part(jTableDef, strTable.c_str()), "member");
    if (!jMembers.isObject() || jMembers.empty())
        return std::nullopt;
    fuzz::Types types;
    for (auto it = jMembers.begin(); it != jMembers.end(); ++it)
    {
        if (!fuzz::part(*it, "cpptype").isString())
            return std::nullopt;
        types[it.name()] = (*it)["cpptype"].asString();
    }
    return types;
}

// The input's definition with the table's name in place of "T".
Json::Value definitionFor(const Json::Value& jInput, const std::string& strTable)
{
    Json::Value jTableDef = fuzz::part(jInput, "definition");
    if (jTableDef.isObject() && jTableDef.isMember("T"))
    {
        const Json::Value jTable = jTableDef["T"];
        jTableDef.removeMember("T");
        jTableDef[strTable] = jTable;
    }
    return jTableDef;
}

std::string createStatement(const Json::Value& jInput, const std::string& strTable,
                            const std::optional<fuzz::Types>& types)
{
    std::string strColumns = fuzz::textOf(fuzz::part(jInput, "columns"));
    if (strColumns.empty() && types)
        strColumns = model::columnList(*types, nullptr);
    return "CREATE TABLE " + strTable + " (" + strColumns + ")";
}

class Case
{
public:
    Case(const Json::Value& jInput, std::string strTable)
        : m_strTable(std::move(strTable)),
          m_jTableDef(definitionFor(jInput, m_strTable)),
          m_types(usableTypes(m_jTableDef, m_strTable)),
          m_strCreate(createStatement(jInput, m_strTable, m_types)),
          m_twin(m_types.value_or(fuzz::Types()))
    {
        m_twin.run(m_strCreate, nullptr);
        m_database.rewind();
        m_pStore = std::make_unique<VornJsonDbApi>(m_database.handle(), m_strTable, m_jTableDef, m_strCreate);
        m_blComparing = m_types.has_value();
    }

    ~Case()
    {
        m_pStore.reset();
        fuzz::giveTypesBack(m_strTable);
    }

    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    void run(const Json::Value& jStep)
    {
        const std::string strCall = fuzz::textOf(fuzz::part(jStep, 0U));
        const Json::Value& jRecord = fuzz::part(jStep, 1);
        const Json::Value& jMore = fuzz::part(jStep, 2);
        if (strCall == "create")
            create(jRecord, jMore);
        else if (strCall == "save")
            save(jRecord, fuzz::flagOf(jMore));
        else if (strCall == "defaults")
            fillDefaults(jRecord, fuzz::flagOf(jMore));
        else if (strCall == "check")
            check(jRecord);
    }

private:
    // The status, or kThrew after a documented exception.
    template <typename Call>
    int statusOf(Call call)
    {
        m_database.rewind();
        try
        {
            const int status = call();
            FUZZ_CHECK(status == 0 || status == -1, "status " + std::to_string(status));
            return status;
        }
        catch (const Json::Exception&)
        {
            return kThrew;
        }
        catch (const std::logic_error&)
        {
            return kThrew;
        }
    }

    void expect(int expected, int status)
    {
        FUZZ_CHECK(expected == status, "expected " + std::to_string(expected) + ", seen " + std::to_string(status));
    }

    void expectValue(const Json::Value& jExpected, const Json::Value& jSeen)
    {
        FUZZ_CHECK(fuzz::identical(jExpected, jSeen),
                   "expected " + fuzz::writeReference(jExpected) + ", seen " + fuzz::writeReference(jSeen));
    }

    void save(const Json::Value& jRecord, bool blInsert)
    {
        const std::string strBefore = m_database.dump(m_strTable);
        Json::Value jInOut = jRecord;
        const int status = statusOf([&] { return m_pStore->recSave(jInOut, blInsert); });
        FUZZ_CHECK(status != kThrew || m_database.dump(m_strTable) == strBefore, "rows changed before an exception");
        if (status != 0)
            expectValue(jRecord, jInOut);

        Json::Value jExpected = jRecord;
        compare(status, m_blComparing ? expectedSave(jExpected, blInsert) : std::nullopt);
        if (m_blComparing)
            expectValue(jExpected, jInOut);
    }

    void create(const Json::Value& jRecord, const Json::Value& jOutBefore)
    {
        const std::string strBefore = m_database.dump(m_strTable);
        Json::Value jIn = jRecord;
        Json::Value jOut = jOutBefore;
        const int status = statusOf([&] { return m_pStore->recCreate(jIn, jOut); });
        FUZZ_CHECK(status != kThrew || m_database.dump(m_strTable) == strBefore, "rows changed before an exception");
        expectValue(jRecord, jIn);
        if (status != 0)
            expectValue(jOutBefore, jOut);

        Json::Value jExpected = jOutBefore;
        compare(status, m_blComparing ? expectedCreate(jRecord, jExpected) : std::nullopt);
        if (m_blComparing)
        {
            expectValue(jExpected, jOut);
            if (status == -1 && m_twin.error().find("UNIQUE constraint failed") != std::string::npos)
                m_strMessage = "DUPLICATE_PRIMARY_KEY";
            FUZZ_CHECK(m_pStore->getErrMsg() == m_strMessage, m_pStore->getErrMsg());
        }
    }

    void fillDefaults(const Json::Value& jRecord, bool blRequireAll)
    {
        Json::Value jParam = jRecord;
        const int status = statusOf([&] { return m_pStore->fillDefaultValue(jParam, blRequireAll); });
        if (blRequireAll || status == kThrew)
            expectValue(jRecord, jParam);
        FUZZ_CHECK(blRequireAll || status != -1, "filling defaults failed");
        if (!m_types)
            return;
        if (!isRecord(jRecord))
        {
            expect(kThrew, status);
        }
        else if (blRequireAll)
        {
            bool blLost = false;
            for (const auto& [strName, strType] : *m_types)
                blLost = blLost || !jRecord.isMember(strName);
            expect(blLost ? -1 : 0, status);
        }
        else
        {
            expectValue(model::withDefaults(m_jTableDef, m_strTable, jRecord), jParam);
        }
    }

    void check(const Json::Value& jRecord)
    {
        Json::Value jParam = jRecord;
        const int status = statusOf([&] { return m_pStore->checkJsonType(jParam); });
        expectValue(jRecord, jParam);
        if (m_types)
            expect(jRecord.isObject() && model::typesFit(*m_types, jRecord) ? 0 : -1, status);
    }

    static bool isRecord(const Json::Value& jRecord) { return jRecord.isObject() || jRecord.isNull(); }

    // Once a text is not defined the twin cannot follow, and its rows say nothing any more.
    void compare(int status, std::optional<int> expected)
    {
        if (!expected)
        {
            m_blComparing = false;
            return;
        }
        expect(*expected, status);
        const std::string strRows = m_database.dump(m_strTable);
        const std::string strExpected = m_twin.database().dump(m_strTable);
        FUZZ_CHECK(strRows == strExpected, "rows\n" + strRows + "expected\n" + strExpected);
    }

    std::optional<int> expectedSave(Json::Value& jInOut, bool blInsert)
    {
        if (!isRecord(jInOut))
            return kThrew;
        const std::string strStart = std::string(blInsert ? "INSERT INTO " : "REPLACE INTO ") + m_strTable + " (" +
                                     model::columnList(*m_types, &jInOut) + ") VALUES (";
        const fuzz::ValueList values = fuzz::expectedValueList(strStart, *m_types, jInOut);
        switch (values.outcome)
        {
            case fuzz::Outcome::Refused:
                return -1;
            case fuzz::Outcome::WrongKind:
            case fuzz::Outcome::NoText:
                return kThrew;
            case fuzz::Outcome::NotDefined:
                return std::nullopt;
            case fuzz::Outcome::Written:
                break;
        }
        Json::Value jRows(Json::arrayValue);
        const std::string strRest = ";select * from " + m_strTable + " where rowid == last_insert_rowid();";
        if (m_twin.run(values.strText + strRest, &jRows) < 0 || jRows.empty())
            return -1;
        jInOut = Json::Value(jRows[0]);
        return 0;
    }

    std::optional<int> expectedCreate(const Json::Value& jIn, Json::Value& jOut)
    {
        if (jIn.empty())
            return -1;
        if (!jIn.isObject())
            return kThrew;
        Json::Value jRecord = model::withDefaults(m_jTableDef, m_strTable, jIn);
        if (!model::typesFit(*m_types, jRecord))
            return -1;
        const std::optional<int> status = expectedSave(jRecord, true);
        if (status == 0)
            jOut = jRecord;
        return status;
    }

    std::string m_strTable;
    Json::Value m_jTableDef;
    std::optional<fuzz::Types> m_types;
    std::string m_strCreate;
    fuzz::Twin m_twin;
    fuzz::Database m_database;
    std::unique_ptr<VornJsonDbApi> m_pStore;
    bool m_blComparing = false;
    std::string m_strMessage;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxSteps = 12;
    static unsigned count = 0;

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput || fuzz::hasLargeWidth(std::string(reinterpret_cast<const char*>(data), size)))
        return 0;
    Case fuzzCase(*jInput, "t" + std::to_string(++count));
    const Json::Value& jSteps = fuzz::part(*jInput, "steps");
    for (Json::ArrayIndex i = 0; jSteps.isArray() && i < jSteps.size() && i < kMaxSteps; ++i)
        fuzzCase.run(jSteps[i]);
    return 0;
}
