// SPDX-License-Identifier: MIT

#include <sqlite3.h>
#include <vorn/transaction.h>

#include <cstdint>
#include <string>

#include "failure.h"
#include "prepare.h"
#include "script.h"
#include "sqlite_status.h"
#include "waiter.h"

namespace vorn
{

namespace
{

// Whether SQLite runs a statement that writes: this is then a function that it calls.
bool isWriting(sqlite3* pDb)
{
    for (sqlite3_stmt* p = sqlite3_next_stmt(pDb, nullptr); p != nullptr; p = sqlite3_next_stmt(pDb, p))
        if (sqlite3_stmt_busy(p) != 0 && sqlite3_stmt_readonly(p) == 0)
            return true;
    return false;
}

}  // namespace

struct Transaction::Inside
{
    sqlite3* pDb = nullptr;
    int iLockTimeout = 0;
    Status status;
    bool blOpen = false;
    std::string strCommit = "COMMIT";
    std::string strRollback = "ROLLBACK";
    StatementPointer pRollback;  // ready where memory has run out
    StatementPointer pRelease;   // the same for the end of a savepoint

    bool begin();
    bool undo() noexcept;
    bool end(const std::string& strSql);
    bool rollback();
    void close() noexcept;
    bool isOpen() const { return blOpen && sqlite3_get_autocommit(pDb) == 0; }
};

bool Transaction::Inside::begin()
{
    if (pDb == nullptr)
        return fail(status, Code::Misuse, "", "There is no connection.");
    if (isWriting(pDb))
        return fail(status, Code::Misuse, "", "A transaction cannot begin while SQLite runs a statement that writes.");
    Waiter waiter(iLockTimeout);
    std::string strBegin = "BEGIN IMMEDIATE";
    bool blPrepared = false;
    if (sqlite3_get_autocommit(pDb) != 0)
    {
        blPrepared = prepare(pDb, strRollback, waiter, pRollback, status);
    }
    else
    {
        // The name is this object's own: one that is left open must not end another one's work.
        const std::string strName = "vorn_" + std::to_string(reinterpret_cast<std::uintptr_t>(this));
        strBegin = "SAVEPOINT " + strName;
        strCommit = "RELEASE " + strName;
        strRollback = "ROLLBACK TO " + strName;
        blPrepared =
            prepare(pDb, strRollback, waiter, pRollback, status) && prepare(pDb, strCommit, waiter, pRelease, status);
        strRollback += "; " + strCommit;
    }
    return blPrepared && runScript(pDb, strBegin, waiter, status);
}

// False where what is prepared is outdated because the schema has changed, or SQLite refuses.
bool Transaction::Inside::undo() noexcept
{
    for (sqlite3_stmt* pStatement : {pRollback.get(), pRelease.get()})
    {
        const bool blDone = pStatement == nullptr || sqlite3_step(pStatement) == SQLITE_DONE;
        sqlite3_reset(pStatement);
        if (!blDone)
            return false;
    }
    close();
    return true;
}

void Transaction::Inside::close() noexcept
{
    blOpen = false;
    pRollback.reset();
    pRelease.reset();
}

bool Transaction::Inside::end(const std::string& strSql)
{
    status = Status();
    if (isOpen())
    {
        Waiter waiter(iLockTimeout);
        if (runScript(pDb, strSql, waiter, status))
        {
            close();
            return true;
        }
        // A savepoint is gone when a transaction around it has ended.
        if (pRelease == nullptr || status.sqlite != SQLITE_ERROR)
            return false;
        close();
    }
    return fail(status, Code::Misuse, "", "The transaction is not open.");
}

bool Transaction::Inside::rollback()
{
    const bool blWasOpen = isOpen();
    if (blWasOpen && undo())
    {
        status = Status();
        return true;
    }
    if (!blWasOpen || isOpen())
        return end(strRollback);
    failSqlite(status, pDb, sqlite3_extended_errcode(pDb));
    noteRollback(status, pDb, true);
    return false;
}

Transaction::Transaction(sqlite3* pDb, int lockTimeoutMs) : m_pInside(new Inside)
{
    m_pInside->pDb = pDb;
    m_pInside->iLockTimeout = lockTimeoutMs;
    m_pInside->blOpen = m_pInside->begin();
}

Transaction::~Transaction()
{
    if (isOpen() && !m_pInside->undo())
        sqlite3_exec(m_pInside->pDb, m_pInside->strRollback.c_str(), nullptr, nullptr, nullptr);
}

bool Transaction::isOpen() const
{
    return m_pInside->isOpen();
}

const Status& Transaction::status() const
{
    return m_pInside->status;
}

int Transaction::commit()
{
    return m_pInside->end(m_pInside->strCommit) ? 0 : -1;
}

int Transaction::rollback()
{
    return m_pInside->rollback() ? 0 : -1;
}

}  // namespace vorn
