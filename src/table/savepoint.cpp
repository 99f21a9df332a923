// SPDX-License-Identifier: MIT

#include "savepoint.h"

#include <sqlite3.h>

#include "failure.h"
#include "prepare.h"
#include "run.h"

namespace vorn
{

bool Savepoint::begin(Status& status)
{
    m_blOwn = sqlite3_get_autocommit(m_store.pDb) != 0;
    Waiter noWaiting(0);  // a savepoint takes no lock
    StatementPointer& pUndo = m_blOwn ? m_store.pUndoOwn : m_store.pUndo;
    if (pUndo == nullptr && !prepare(m_store.pDb, m_blOwn ? "ROLLBACK" : "ROLLBACK TO vorn", noWaiting, pUndo, status))
        return false;
    Run run(m_store, noWaiting);
    if (run.start({StatementKind::Text, nullptr, "SAVEPOINT vorn"}, {}, status))
    {
        m_store.blOwnTransaction = m_blOwn;
        m_store.blSavepoint = true;
        return m_blOpen = true;
    }
    if (status.code == Code::Locked)
        fail(status, Code::Misuse, "",
             "This needs a transaction of its own, which cannot begin while SQLite runs a statement that writes.");
    return false;
}

bool Savepoint::keep(Status& status)
{
    Run run(m_store, m_waiter);
    if (!run.start({StatementKind::Text, nullptr, "RELEASE vorn"}, {}, status))
        return false;
    close();
    return true;
}

void Savepoint::close() noexcept
{
    m_store.blOwnTransaction = false;
    m_store.blSavepoint = false;
    m_blOpen = false;
}

void Savepoint::undo() noexcept
{
    if (!m_blOpen)
        return;
    close();
    if (sqlite3_get_autocommit(m_store.pDb) != 0)  // SQLite may have ended the transaction itself
        return;
    // What is prepared needs no memory. It is outdated where the schema has changed; then it is compiled anew.
    sqlite3_stmt* const pUndo = (m_blOwn ? m_store.pUndoOwn : m_store.pUndo).get();
    const bool blUndone = pUndo != nullptr && sqlite3_step(pUndo) == SQLITE_DONE;
    sqlite3_reset(pUndo);
    if (!blUndone)
        sqlite3_exec(m_store.pDb, m_blOwn ? "ROLLBACK" : "ROLLBACK TO vorn", nullptr, nullptr, nullptr);
    if (!m_blOwn)
        sqlite3_exec(m_store.pDb, "RELEASE vorn", nullptr, nullptr, nullptr);
}

}  // namespace vorn
