// SPDX-License-Identifier: MIT
//
// {"columns": "typed" or not, "rows": [{MEMBER: CELL, ...}, ...], "filters": [FILTER, ...]}: what others wrote into the
// table of a vorn::Table. CELL is null, a number, a text of any bytes, {"blob": TEXT}, {"real": NUMBER}, or an array or
// object that is stored as its JSON text. What can be read is read by every way alike, what cannot is named by
// tableCheck(), and a filter finds the same records for every operation, its complement the others.

#include <vorn/table.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "check.h"
#include "input.h"
#include "json_value.h"
#include "safe_database.h"
#include "table_outcome.h"

namespace
{

constexpr const char* kMembers[][2] = {{"a", "Json::arrayValue"},
                                       {"b", "bool"},
                                       {"d", "double"},
                                       {"f", "float"},
                                       {"i", "int"},
                                       {"id", "long long"},
                                       {"j", "Json::Value"},
                                       {"l", "long long"},
                                       {"o", "Json::objectValue"},
                                       {"s", "string"},
                                       {"u", "unsigned int"},
                                       {"w", "unsigned long long"}};

Json::Value definition()
{
    Json::Value jTableDef;
    for (const auto& member : kMembers)
        jTableDef["T"]["member"][member[0]]["cpptype"] = member[1];
    jTableDef["T"]["member"]["id"]["key"] = true;
    return jTableDef;
}

int bindText(sqlite3_stmt* pStatement, const std::string& strText)
{
    return sqlite3_bind_text64(pStatement, 1, strText.data(), strText.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int bindCell(sqlite3_stmt* pStatement, const Json::Value& jCell)
{
    if (jCell.isBool() || jCell.isInt64())
        return sqlite3_bind_int64(pStatement, 1, jCell.isBool() ? (jCell.asBool() ? 1 : 0) : jCell.asInt64());
    if (jCell.isNumeric())
        return sqlite3_bind_double(pStatement, 1, jCell.asDouble());
    if (jCell.isString())
        return bindText(pStatement, jCell.asString());
    if (fuzz::part(jCell, "real").isNumeric())
        return sqlite3_bind_double(pStatement, 1, jCell["real"].asDouble());
    if (fuzz::part(jCell, "blob").isString())
    {
        const std::string strBytes = jCell["blob"].asString();
        return sqlite3_bind_blob64(pStatement, 1, strBytes.data(), strBytes.size(), SQLITE_TRANSIENT);
    }
    return jCell.isNull() ? SQLITE_OK : bindText(pStatement, support::writeReference(jCell));
}

class Case
{
public:
    Case(const Json::Value& jRows, bool blTyped) : m_jDefinition(definition())
    {
        if (!blTyped)
            static_cast<void>(
                m_database.run("CREATE TABLE T (a, b, d, f, i, id INTEGER PRIMARY KEY, j, l, o, s, u, w)"));
        m_pTable = std::make_unique<vorn::Table>(m_database.handle(), "T", m_jDefinition);
        FUZZ_CHECK(m_pTable->status().code == vorn::Code::Ok, m_pTable->status().text);
        m_pTable->setLockTimeout(0);
        constexpr Json::ArrayIndex kMaxRows = 3;
        for (Json::ArrayIndex i = 0; jRows.isArray() && i < jRows.size() && i < kMaxRows; ++i)
            store(jRows[i]);
    }

    // tableCheck() names exactly the cells that cannot be read, and the others are read.
    void readEverything()
    {
        Json::Value jReport;
        const bool blSound = done(m_pTable->tableCheck(jReport, true));
        std::set<std::pair<std::string, long long>> bad;
        for (const Json::Value& jCell : jReport["cells"])
            FUZZ_CHECK(bad.emplace(jCell["member"].asString(), jCell["rowid"].asInt64()).second, "named twice");
        FUZZ_CHECK(blSound == bad.empty(), m_pTable->status().text);
        FUZZ_CHECK(blSound || code() == vorn::Code::BadCell, vorn::codeName(code()));
        for (long long nRow = 1; nRow <= m_nRows; ++nRow)
            for (const auto& member : kMembers)
                expectCell(member[0], nRow, bad.count({member[0], nRow}) != 0);

        Json::Value jAll;
        FUZZ_CHECK(done(m_pTable->recList(Json::Value(), jAll)) == bad.empty(), m_pTable->status().text);
        FUZZ_CHECK(jAll.size() == (bad.empty() ? static_cast<Json::ArrayIndex>(m_nRows) : 0), "rows listed");
    }

    void useFilter(const Json::Value& jFilter)
    {
        const long long nCount = m_pTable->recCount(jFilter);
        if (!done(nCount) || hasRawSql(jFilter))  // which may be neither the same twice nor true or false
            return;
        Json::Value jOpposite, jIds, jRequest = jFilter;
        jOpposite["$not"] = jFilter.isNull() ? Json::Value(Json::objectValue) : jFilter;
        const long long nOthers = m_pTable->recCount(jOpposite);
        if (done(nOthers))  // it may be one level too deep
            FUZZ_CHECK(nCount + nOthers == m_nRows, std::to_string(nCount) + " and others: " + std::to_string(nOthers));
        jRequest["$fields"].append("id");
        if (!done(m_pTable->recList(jRequest, jIds)))
            return;
        FUZZ_CHECK(static_cast<long long>(jIds.size()) == nCount, "rows listed");
        for (const char* szSort : {"s", "j", "-o.a", "d"})
        {
            Json::Value jSorted, jSort = jRequest;
            jSort["$sort_by"] = szSort;
            if (done(m_pTable->recList(jSort, jSorted)))
                FUZZ_CHECK(jSorted.size() == jIds.size(), "rows sorted");
        }
        Json::Value jAny, jNew;
        static_cast<void>(done(m_pTable->recList(jFilter, jAny)));
        jNew["b"] = true;
        const long long nChanged = m_pTable->recUpdateByFilter(jFilter, jNew, true);
        if (done(nChanged))
            FUZZ_CHECK(nChanged == nCount, "rows changed");
    }

private:
    bool done(long long nResult)
    {
        const bool blDone = fuzz::succeededAlone(*m_pTable, nResult, m_database.handle());
        m_database.rewind();
        return blDone;
    }

    vorn::Code code() const { return m_pTable->status().code; }

    static bool hasRawSql(const Json::Value& jFilter)
    {
        if (!jFilter.isObject() && !jFilter.isArray())
            return false;
        if (jFilter.isObject() && jFilter.isMember("vornSqlWhereFilter"))
            return true;
        for (const Json::Value& jItem : jFilter)
            if (hasRawSql(jItem))
                return true;
        return false;
    }

    void store(const Json::Value& jRow)
    {
        static_cast<void>(m_database.run("INSERT INTO T (id) VALUES (" + std::to_string(++m_nRows) + ")"));
        for (const auto& member : kMembers)
        {
            const std::string strMember = member[0];
            if (strMember == "id" || fuzz::part(jRow, member[0]).isNull())
                continue;
            sqlite3_stmt* pStatement = nullptr;
            const std::string strSql = "UPDATE T SET " + strMember + " = ?1 WHERE id = " + std::to_string(m_nRows);
            FUZZ_CHECK(sqlite3_prepare_v2(m_database.handle(), strSql.c_str(), -1, &pStatement, nullptr) == SQLITE_OK,
                       strSql);
            if (bindCell(pStatement, jRow[strMember]) == SQLITE_OK)
                sqlite3_step(pStatement);
            sqlite3_finalize(pStatement);
        }
    }

    void expectCell(const char* szMember, long long nRow, bool blBad)
    {
        Json::Value jRequest, jOut, jOne;
        jRequest["id"] = static_cast<Json::Int64>(nRow);
        jRequest["fields"].append(szMember);
        const bool blRead = done(m_pTable->recGetOne(jRequest, jOut));
        FUZZ_CHECK(blRead != blBad, std::string(szMember) + " " + std::to_string(nRow));
        FUZZ_CHECK(blRead || (code() == vorn::Code::BadCell && m_pTable->status().member == szMember && jOut.isNull()),
                   m_pTable->status().text);
        const long long nVisited = m_pTable->recForEach(jRequest,
                                                        [&](Json::Value& jRecord)
                                                        {
                                                            jOne = jRecord;
                                                            return true;
                                                        });
        FUZZ_CHECK(done(nVisited) == blRead && (!blRead || support::identical(jOut, jOne)), "visited otherwise");
        // What can be read is a value of the type and can be stored again, but for a number beyond float.
        if (blRead && *szMember != 'f')
            FUZZ_CHECK(done(m_pTable->checkJsonType(jOut)), m_pTable->status().text);
    }

    support::SafeDatabase m_database;
    Json::Value m_jDefinition;
    std::unique_ptr<vorn::Table> m_pTable;
    long long m_nRows = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxFilters = 4;
    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    Case fuzzCase(fuzz::part(*jInput, "rows"), fuzz::textOf(fuzz::part(*jInput, "columns")) == "typed");
    fuzzCase.readEverything();
    const Json::Value& jFilters = fuzz::part(*jInput, "filters");
    for (Json::ArrayIndex i = 0; jFilters.isArray() && i < jFilters.size() && i < kMaxFilters; ++i)
        fuzzCase.useFilter(jFilters[i]);
    return 0;
}
