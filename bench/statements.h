// SPDX-License-Identifier: MIT
//
// A connection whose failures are exceptions, and prepared statements on it.

#ifndef VORN_BENCH_STATEMENTS_H
#define VORN_BENCH_STATEMENTS_H

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "database.h"

namespace bench
{

class Connection : public support::Database
{
public:
    using Database::Database;

    operator sqlite3*() const { return handle(); }

    void check(int err, int wanted = SQLITE_OK) const
    {
        if (err != wanted)
            throw std::runtime_error(sqlite3_errmsg(handle()));
    }
};

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

inline Statement prepare(sqlite3* pDb, const std::string& strSql)
{
    sqlite3_stmt* pStatement = nullptr;
    if (sqlite3_prepare_v2(pDb, strSql.c_str(), -1, &pStatement, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(pDb));
    return Statement(pStatement, sqlite3_finalize);
}

inline const char* columnText(sqlite3_stmt* pStatement, int i)
{
    return reinterpret_cast<const char*>(sqlite3_column_text(pStatement, i));
}

}  // namespace bench

#endif  // VORN_BENCH_STATEMENTS_H
