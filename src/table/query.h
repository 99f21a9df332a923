// SPDX-License-Identifier: MIT
//
// Asking the database about itself: queries that are prepared for one use.

#ifndef VORN_QUERY_H
#define VORN_QUERY_H

#include <sqlite3.h>
#include <vorn/status.h>

#include <string>
#include <string_view>

#include "prepare.h"
#include "sqlite_status.h"
#include "waiter.h"

namespace vorn
{

// The text of a column; "" for NULL.
inline std::string columnString(sqlite3_stmt* pRow, int iColumn)
{
    const auto* szText = reinterpret_cast<const char*>(sqlite3_column_text(pRow, iColumn));
    return szText != nullptr ? szText : "";
}

// As SQLite compares names: ASCII letters in either case are the same.
inline bool sameName(std::string_view left, std::string_view right)
{
    return left.size() == right.size() &&
           sqlite3_strnicmp(left.data(), right.data(), static_cast<int>(left.size())) == 0;
}

// Calls visit(statement) for each row of the query.
template <typename Visit>
bool eachRow(sqlite3* pDb, const std::string& strSql, Waiter& waiter, Status& status, Visit visit)
{
    while (true)
    {
        StatementPointer pStatement;
        if (!prepare(pDb, strSql, waiter, pStatement, status))
            return false;
        bool blRow = false;
        int iStep = sqlite3_step(pStatement.get());
        for (; iStep == SQLITE_ROW; iStep = sqlite3_step(pStatement.get()))
        {
            blRow = true;
            visit(pStatement.get());
        }
        if (iStep == SQLITE_DONE)
            return true;
        const int iResult = failureOf(pDb, pStatement.get());
        bool blStale = false;
        if (blRow || (iResult != SQLITE_SCHEMA && !waitFor(iResult, pDb, nullptr, false, waiter, blStale)))
            return failSqlite(status, pDb, iResult);
    }
}

}  // namespace vorn

#endif  // VORN_QUERY_H
