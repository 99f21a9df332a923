// SPDX-License-Identifier: MIT

#include "script.h"

#include <sqlite3.h>

#include "prepare.h"
#include "sqlite_status.h"
#include "waiter.h"

namespace vorn
{

namespace
{

enum class Outcome
{
    Done,
    Again,
    Failed
};

// Runs one statement to its end.
Outcome runOnce(sqlite3* pDb, sqlite3_stmt* pStatement, Waiter& waiter, const Definition* pDefinition, Status& status)
{
    bool blRow = false;
    int iStep = sqlite3_step(pStatement);
    for (; iStep == SQLITE_ROW; iStep = sqlite3_step(pStatement))
        blRow = true;
    if (iStep == SQLITE_DONE)
        return Outcome::Done;
    const int iResult = failureOf(pDb, pStatement);
    bool blStale = false;
    if (!blRow && (iResult == SQLITE_SCHEMA ||
                   waitFor(iResult, pDb, nullptr, sqlite3_stmt_readonly(pStatement) == 0, waiter, blStale)))
        return Outcome::Again;
    if (blStale)
        failStale(status, iResult);
    else
        failSqlite(status, pDb, iResult, pDefinition);
    return Outcome::Failed;
}

}  // namespace

bool runScript(sqlite3* pDb, const std::string& strSql, Waiter& waiter, Status& status, const Definition* pDefinition)
{
    std::string strRest = strSql;
    while (!strRest.empty())
    {
        StatementPointer pStatement;
        const char* szTail = nullptr;
        if (!prepare(pDb, strRest, waiter, pStatement, status, &szTail))
            return false;
        const Outcome outcome =
            pStatement != nullptr ? runOnce(pDb, pStatement.get(), waiter, pDefinition, status) : Outcome::Done;
        if (outcome == Outcome::Failed)
            return false;
        if (outcome == Outcome::Done)
            strRest = std::string(szTail);
    }
    return true;
}

}  // namespace vorn
