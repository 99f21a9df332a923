// SPDX-License-Identifier: MIT

#include "query.h"

#include <sqlite3.h>

#include "prepare.h"
#include "sqlite_status.h"
#include "waiter.h"

namespace vorn
{

std::string columnString(sqlite3_stmt* pRow, int iColumn)
{
    const auto* szText = reinterpret_cast<const char*>(sqlite3_column_text(pRow, iColumn));
    return szText != nullptr ? szText : "";
}

bool sameName(std::string_view left, std::string_view right)
{
    return left.size() == right.size() &&
           sqlite3_strnicmp(left.data(), right.data(), static_cast<int>(left.size())) == 0;
}

bool eachRow(sqlite3* pDb, const std::string& strSql, Waiter& waiter, Status& status,
             FunctionRef<void(sqlite3_stmt*)> visit)
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
