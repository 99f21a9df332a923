// SPDX-License-Identifier: MIT

#include "data.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "json_columns.h"

namespace bench
{

namespace
{

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

Statement prepare(sqlite3* pDb, const char* szSql)
{
    sqlite3_stmt* pStatement = nullptr;
    if (sqlite3_prepare_v2(pDb, szSql, -1, &pStatement, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(pDb));
    return Statement(pStatement, sqlite3_finalize);
}

void bindText(sqlite3_stmt* pStatement, int i, const std::string& strText)
{
    sqlite3_bind_text(pStatement, i, strText.data(), static_cast<int>(strText.size()), SQLITE_TRANSIENT);
}

}  // namespace

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
    return input;
}

void fillTable(sqlite3* pDb, std::size_t first, std::size_t count)
{
    runSql(pDb, kCreateTable);
    runSql(pDb, "BEGIN");
    JsonColumns json;
    const Statement statement = prepare(pDb, "INSERT INTO device VALUES (?,?,?,?,?,?,?,?)");
    for (std::size_t i = first; i < first + count; ++i)
    {
        const Json::Value jRec = recordOf(i);
        bindText(statement.get(), 1, jRec["address"].asString());
        bindText(statement.get(), 2, jRec["comment"].asString());
        sqlite3_bind_int(statement.get(), 3, jRec["count"].asInt());
        sqlite3_bind_int64(statement.get(), 4, jRec["created"].asInt64());
        sqlite3_bind_int(statement.get(), 5, jRec["enabled"].asBool() ? 1 : 0);
        bindText(statement.get(), 6, json.write(jRec["limits"]));
        bindText(statement.get(), 7, json.write(jRec["ports"]));
        bindText(statement.get(), 8, jRec["serial"].asString());
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
    const Statement statement = prepare(pDb, (std::string(kSelect) + " ORDER BY serial").c_str());
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
    {
        std::string strRow;
        for (int i = 0; i < sqlite3_column_count(statement.get()); ++i)
        {
            strRow += std::to_string(sqlite3_column_type(statement.get(), i)) + ':';
            strRow += reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i));
            strRow += '|';
        }
        rows.push_back(std::move(strRow));
    }
    return rows;
}

std::string storedRow(const Json::Value& jRec)
{
    JsonColumns json;
    std::string strRow;
    const auto add = [&strRow](int storageClass, const std::string& strText)
    { strRow += std::to_string(storageClass) + ':' + strText + '|'; };
    add(SQLITE_TEXT, jRec["address"].asString());
    add(SQLITE_TEXT, jRec["comment"].asString());
    add(SQLITE_INTEGER, jRec["count"].asString());
    add(SQLITE_INTEGER, jRec["created"].asString());
    add(SQLITE_INTEGER, jRec["enabled"].asBool() ? "1" : "0");
    add(SQLITE_TEXT, json.write(jRec["limits"]));
    add(SQLITE_TEXT, json.write(jRec["ports"]));
    add(SQLITE_TEXT, jRec["serial"].asString());
    return strRow;
}

}  // namespace bench
