// SPDX-License-Identifier: MIT

#include "prepare.h"

#include <sqlite3.h>

#include <limits>

#include "failure.h"
#include "sqlite_status.h"
#include "waiter.h"

namespace vorn
{

void FinalizeStatement::operator()(sqlite3_stmt* pStatement) const
{
    sqlite3_finalize(pStatement);
}

bool prepare(sqlite3* pDb, const std::string& strSql, Waiter& waiter, StatementPointer& pStatement, Status& status,
             const char** pszTail)
{
    if (strSql.size() >= static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return fail(status, Code::OutOfRange, "", "The SQL text is longer than SQLite's limit.");
    while (true)
    {
        sqlite3_stmt* pNew = nullptr;
        const int iPrimary = sqlite3_prepare(pDb, strSql.c_str(), static_cast<int>(strSql.size()) + 1, &pNew, pszTail);
        pStatement.reset(pNew);
        if (iPrimary == SQLITE_OK)
            return true;
        const int iResult = sqlite3_extended_errcode(pDb);
        bool blStale = false;
        if (!waitFor(iResult, pDb, nullptr, false, waiter, blStale))
            return failPrepare(status, pDb, iResult);
    }
}

int failureOf(sqlite3* pDb, sqlite3_stmt* pStatement)
{
    constexpr int kPrimary = 0xff;
    const int iReset = sqlite3_reset(pStatement);
    const int iExtended = sqlite3_extended_errcode(pDb);
    // A statement that has not begun, because the schema has changed, leaves the connection's result as it was.
    return (iExtended & kPrimary) == (iReset & kPrimary) ? iExtended : iReset;
}

bool waitFor(int iResult, sqlite3* pDb, const char* szSchema, bool blWrites, Waiter& waiter, bool& blStale)
{
    constexpr int kPrimary = 0xff;
    switch (iResult & kPrimary)
    {
        case SQLITE_BUSY:
            blStale = blWrites && sqlite3_txn_state(pDb, szSchema) == SQLITE_TXN_READ;
            return !blStale && waiter.pause();
        case SQLITE_LOCKED:  // by the same connection, unless the cache is shared
            return iResult == SQLITE_LOCKED_SHAREDCACHE && waiter.pause();
        case SQLITE_PROTOCOL:
            return waiter.pause();
        default:
            return false;
    }
}

}  // namespace vorn
