// SPDX-License-Identifier: MIT
//
// SQLite's results as a Status.

#ifndef VORN_SQLITE_STATUS_H
#define VORN_SQLITE_STATUS_H

#include <vorn/status.h>

#include <string>

struct sqlite3;

namespace vorn
{

class Definition;

// The code for an extended result of SQLite.
Code codeOf(int iResult);

// Fills the status from the connection's last failure, which was iResult (extended); returns false. pDefinition, where
// there is one, tells the member that a broken constraint names. SQLite's own message is used only for constraints on
// columns, because all others can hold a value.
bool failSqlite(Status& status, sqlite3* pDb, int iResult, const Definition* pDefinition = nullptr);

// The same for a statement that could not be compiled: SQLite's message can hold no value then.
bool failPrepare(Status& status, sqlite3* pDb, int iResult);

// For a lock that waiting cannot cure.
bool failStale(Status& status, int iResult);

// Adds to a failure that SQLite has rolled back the whole transaction, where the caller had one open and now has none.
void noteRollback(Status& status, sqlite3* pDb, bool blHadTransaction);

}  // namespace vorn

#endif  // VORN_SQLITE_STATUS_H
