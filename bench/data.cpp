// SPDX-License-Identifier: MIT

#include "data.h"

#include <cstdio>
#include <stdexcept>

#include "statements.h"

namespace bench
{

const Shape& deviceShape()
{
    static const Shape shape{kTable,
                             kCreateTable,
                             {{"address", "string"},
                              {"comment", "string"},
                              {"count", "int"},
                              {"created", "long long"},
                              {"enabled", "bool"},
                              {"limits", "Json::objectValue"},
                              {"ports", "Json::arrayValue"},
                              {"serial", "string"}}};
    return shape;
}

std::string keyOf(std::size_t i)
{
    char szKey[32];
    std::snprintf(szKey, sizeof szKey, "SN-%08zu", i);
    return szKey;
}

Json::Value recordOf(std::size_t i)
{
    const auto n = static_cast<int>(i);
    Json::Value jRec;
    jRec["address"] =
        "10." + std::to_string(i / 65536 % 256) + "." + std::to_string(i / 256 % 256) + "." + std::to_string(i % 256);
    jRec["comment"] = "row " + std::to_string(i % 97) + ", the customer's second rack, checked";
    jRec["count"] = n * 7 - 1000;
    jRec["created"] = Json::Int64{1700000000000} + static_cast<Json::Int64>(i) * 1013;
    jRec["enabled"] = i % 3 != 0;
    Json::Value& jLimits = jRec["limits"];
    jLimits["high"] = 60 + n % 40;
    jLimits["low"] = -n % 20;
    jLimits["unit"] = "C";
    Json::Value& jPorts = jRec["ports"];
    jPorts = Json::Value(Json::arrayValue);
    for (int iPort = 0; iPort <= n % 4; ++iPort)
        jPorts.append(8000 + iPort * 11 + n % 13);
    jRec["serial"] = keyOf(i);
    return jRec;
}

Json::Value recordsOf(std::size_t first, std::size_t count)
{
    Json::Value jRecords(Json::arrayValue);
    for (std::size_t i = first; i < first + count; ++i)
        jRecords.append(recordOf(i));
    return jRecords;
}

Json::Value changesOf(std::size_t i)
{
    Json::Value jRec;
    jRec["comment"] = "moved to row " + std::to_string(i % 89) + ", wasn't found before";
    jRec["count"] = static_cast<int>(i % 1000);
    jRec["enabled"] = i % 2 == 0;
    return jRec;
}

Input makeInput(const std::vector<std::size_t>& indices)
{
    Input input;
    for (const std::size_t i : indices)
    {
        input.keys.push_back(keyOf(i));
        input.records.push_back(recordOf(i));
        input.changes.push_back(changesOf(i));
    }
    for (std::size_t page = 0; page < kPages; ++page)
    {
        const std::size_t first = pageOffset(page);
        const std::size_t end = first + 2 * kPage;
        std::size_t enabled = 0;
        for (std::size_t i = first; i < end; ++i)
            enabled += recordOf(i)["enabled"].asBool() ? 1 : 0;
        input.windows.push_back({keyOf(first), keyOf(end), recordOf(first + kPage)["created"].asInt64(), enabled});
    }
    return input;
}

void bindValue(sqlite3_stmt* pStatement, int i, const Json::Value& jValue, JsonColumns& json)
{
    if (jValue.isString())
    {
        sqlite3_bind_text(pStatement, i, jValue.asCString(), -1, SQLITE_STATIC);
    }
    else if (jValue.isArray() || jValue.isObject())
    {
        const std::string strText = json.write(jValue);
        sqlite3_bind_text(pStatement, i, strText.data(), static_cast<int>(strText.size()), SQLITE_TRANSIENT);
    }
    else
    {
        sqlite3_bind_int64(pStatement, i, jValue.asInt64());
    }
}

void fillTable(sqlite3* pDb, std::size_t first, std::size_t count)
{
    runSql(pDb, kCreateTable);
    runSql(pDb, "BEGIN");
    JsonColumns json;
    const Statement statement = prepare(pDb, kInsert);
    for (std::size_t i = first; i < first + count; ++i)
    {
        const Json::Value jRec = recordOf(i);
        int column = 0;
        for (const Json::Value& jValue : jRec)
            bindValue(statement.get(), ++column, jValue, json);
        if (sqlite3_step(statement.get()) != SQLITE_DONE)
            throw std::runtime_error(sqlite3_errmsg(pDb));
        sqlite3_reset(statement.get());
    }
    runSql(pDb, "COMMIT");
}

void runSql(sqlite3* pDb, const std::string& strSql)
{
    if (sqlite3_exec(pDb, strSql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(strSql + ": " + sqlite3_errmsg(pDb));
}

std::vector<std::string> dumpTable(sqlite3* pDb)
{
    std::vector<std::string> rows;
    const Statement statement = prepare(pDb, VORN_BENCH_SELECT " ORDER BY serial");
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
    {
        std::string strRow;
        for (int i = 0; i < sqlite3_column_count(statement.get()); ++i)
            strRow +=
                std::to_string(sqlite3_column_type(statement.get(), i)) + ':' + columnText(statement.get(), i) + '|';
        rows.push_back(std::move(strRow));
    }
    return rows;
}

std::string storedRow(const Json::Value& jRec)
{
    JsonColumns json;
    std::string strRow;
    for (const Json::Value& jValue : jRec)
    {
        const bool blInteger = jValue.isIntegral() || jValue.isBool();
        strRow += std::to_string(blInteger ? SQLITE_INTEGER : SQLITE_TEXT) + ':';
        strRow += blInteger           ? std::to_string(jValue.asInt64())
                  : jValue.isString() ? jValue.asString()
                                      : json.write(jValue);
        strRow += '|';
    }
    return strRow;
}

}  // namespace bench
