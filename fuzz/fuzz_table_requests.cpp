// SPDX-License-Identifier: MIT
//
// {"rows": [RECORD, ...], "steps": [[OPERATION, JSON, JSON, OUT], ...]}: requests of vorn::Table, right and wrong. No
// exception, no crash, no statement left busy, no transaction left open; an operation that fails changes no row and no
// out-parameter, and its text is one sentence.

#include <vorn/table.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "check.h"
#include "input.h"
#include "safe_database.h"
#include "table_outcome.h"

namespace
{

constexpr const char* kDefinition = R"({"T": {"member": {
    "any": {"cpptype": "Json::Value"}, "age": {"cpptype": "int", "index": true}, "big": {"cpptype": "long long"},
    "flag": {"cpptype": "bool"}, "id": {"cpptype": "int", "key": true}, "limit": {"cpptype": "unsigned"},
    "list": {"cpptype": "Json::arrayValue"}, "meta": {"cpptype": "Json::objectValue", "cppDefaultValue": {"a": [1]}},
    "meta.x": {"cpptype": "double"}, "name": {"cpptype": "string", "unique": true}, "rate": {"cpptype": "float"},
    "req": {"cpptype": "string", "required": true, "cppDefaultValue": "r"}, "size": {"cpptype": "unsigned long"}}}})";

class Case
{
public:
    explicit Case(const Json::Value& jRows) : m_table(m_database.handle(), "T", definition())
    {
        FUZZ_CHECK(m_table.status().code == vorn::Code::Ok, m_table.status().text);
        FUZZ_CHECK(m_table.recCount(Json::Value()) == 0, m_table.status().text);  // nothing of the kind is refused
        m_table.setLockTimeout(0);
        for (Json::ArrayIndex i = 0; jRows.isArray() && i < jRows.size(); ++i)
            static_cast<void>(m_table.recCreate(jRows[i]));
    }

    void run(const Json::Value& jStep)
    {
        const std::string strBefore = m_database.dump("T");
        const Json::Value jOutBefore = fuzz::part(jStep, 3);
        m_jOut = jOutBefore;
        m_blInOut = false;
        const long long nResult = call(jStep);
        const bool blSucceeded = fuzz::succeeded(m_table, nResult, m_database.handle());
        if (!m_blHostsStatement)
            FUZZ_CHECK(sqlite3_get_autocommit(m_database.handle()) != 0, "a transaction is open");
        else if (sqlite3_get_autocommit(m_database.handle()) == 0)
            static_cast<void>(m_database.run("ROLLBACK"));
        if (blSucceeded)
            return;
        const vorn::Status& status = m_table.status();
        FUZZ_CHECK(m_database.dump("T") == strBefore, "rows changed by a failure: " + status.text);
        FUZZ_CHECK(m_jOut == (m_blInOut ? fuzz::part(jStep, 1) : jOutBefore),
                   "out-parameter changed by a failure: " + status.text);
    }

private:
    static Json::Value definition()
    {
        return *fuzz::readInput(reinterpret_cast<const std::uint8_t*>(kDefinition),
                                std::char_traits<char>::length(kDefinition));
    }

    long long call(const Json::Value& jStep)
    {
        const std::string strCall = fuzz::textOf(fuzz::part(jStep, 0U));
        const Json::Value& jFirst = fuzz::part(jStep, 1);
        const Json::Value& jSecond = fuzz::part(jStep, 2);
        const bool blFlag = fuzz::flagOf(jSecond);
        const std::string strText = fuzz::textOf(jSecond);
        m_blHostsStatement = strCall == "run";
        m_database.rewind();
        if (strCall == "create")
            return blFlag ? m_table.recCreate(jFirst) : m_table.recCreate(jFirst, m_jOut);
        if (strCall == "create all")
            return m_table.recCreateAll(jFirst);
        if (strCall == "save")
        {
            m_blInOut = true;
            m_jOut = jFirst;
            return m_table.recSave(m_jOut, blFlag);
        }
        if (strCall == "list")
            return m_table.recList(jFirst, m_jOut);
        if (strCall == "each")
            return m_table.recForEach(jFirst, [&](Json::Value& jRecord) { return blFlag || jRecord.size() > 3; });
        if (strCall == "get")
            return m_table.recGetOne(jFirst, m_jOut);
        if (strCall == "count")
            return m_table.recCount(jFirst);
        if (strCall == "update")
            return m_table.recUpdateByFilter(jFirst, jSecond, m_jOut.isBool());
        if (strCall == "delete")
            return m_table.recDelete(jFirst, blFlag);
        if (strCall == "delete by array")
            return m_table.recDeleteByArray(fuzz::textsOf(jFirst), strText.c_str());
        if (strCall == "delete by name")
            return m_table.recDeleteByName(fuzz::textOf(jFirst), strText.c_str());
        if (strCall == "run")
            return m_table.runSql(strText, jFirst, m_jOut);
        if (strCall == "explain")
            return m_table.explain(jFirst, m_jOut);
        if (strCall == "check")
            return m_table.checkJsonType(jFirst);
        if (strCall == "defaults")
        {
            m_blInOut = true;
            m_jOut = jFirst;
            return m_table.fillDefaultValue(m_jOut, blFlag);
        }
        m_blHostsStatement = true;
        m_table.releaseStatements();
        return m_table.tableCreate();
    }

    support::SafeDatabase m_database;
    vorn::Table m_table;
    Json::Value m_jOut;
    bool m_blInOut = false;
    bool m_blHostsStatement = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxSteps = 12;
    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    Case fuzzCase(fuzz::part(*jInput, "rows"));
    const Json::Value& jSteps = fuzz::part(*jInput, "steps");
    for (Json::ArrayIndex i = 0; jSteps.isArray() && i < jSteps.size() && i < kMaxSteps; ++i)
        fuzzCase.run(jSteps[i]);
    return 0;
}
