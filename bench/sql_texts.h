// SPDX-License-Identifier: MIT
//
// Statements with the values written into them by SQLite's formatter, for the contestants on sqlite3_exec.

#ifndef VORN_BENCH_SQL_TEXTS_H
#define VORN_BENCH_SQL_TEXTS_H

#include <memory>
#include <string>

#include "data.h"
#include "json_columns.h"

namespace bench
{

struct FreeSql
{
    void operator()(char* szText) const { sqlite3_free(szText); }
};
using Sql = std::unique_ptr<char, FreeSql>;

inline Sql pageSql(std::size_t offset)
{
    return Sql(sqlite3_mprintf("%s LIMIT %d OFFSET %lld", kSelect, static_cast<int>(kPage),
                               static_cast<sqlite3_int64>(offset)));
}

inline Sql createSql(const Json::Value& jRec, JsonColumns& json)
{
    return Sql(sqlite3_mprintf(
        VORN_BENCH_INSERT "(%Q,%Q,%d,%lld,%d,%Q,%Q,%Q);" VORN_BENCH_SELECT " WHERE rowid = last_insert_rowid()",
        jRec["address"].asCString(), jRec["comment"].asCString(), jRec["count"].asInt(),
        static_cast<sqlite3_int64>(jRec["created"].asInt64()), jRec["enabled"].asBool() ? 1 : 0,
        json.write(jRec["limits"]).c_str(), json.write(jRec["ports"]).c_str(), jRec["serial"].asCString()));
}

inline Sql fetchSql(const std::string& strKey)
{
    return Sql(sqlite3_mprintf("%s WHERE serial = %Q", kSelect, strKey.c_str()));
}

inline Sql updateSql(const Json::Value& jChanges, const std::string& strKey)
{
    return Sql(sqlite3_mprintf("UPDATE device SET comment = %Q, count = %d, enabled = %d WHERE serial = %Q",
                               jChanges["comment"].asCString(), jChanges["count"].asInt(),
                               jChanges["enabled"].asBool() ? 1 : 0, strKey.c_str()));
}

inline Sql deleteSql(const std::string& strKey)
{
    return Sql(sqlite3_mprintf("DELETE FROM device WHERE serial = %Q", strKey.c_str()));
}

}  // namespace bench

#endif  // VORN_BENCH_SQL_TEXTS_H
