// SPDX-License-Identifier: MIT
//
// Compiling SQL text.

#ifndef VORN_PREPARE_H
#define VORN_PREPARE_H

#include <vorn/status.h>

#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace vorn
{

class Waiter;

struct FinalizeStatement
{
    void operator()(sqlite3_stmt* pStatement) const;
};
using StatementPointer = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Compiles the first statement of the text; pszTail is set to what follows it. The statement is null where the text
// holds none. It waits, because reading the schema meets locks too. The statement is one that fails with SQLITE_SCHEMA
// where the schema has changed, before it does anything, instead of being compiled again behind our back: the table
// must then be looked at again first.
bool prepare(sqlite3* pDb, const std::string& strSql, Waiter& waiter, StatementPointer& pStatement, Status& status,
             const char** pszTail = nullptr);

// Resets a statement whose step has failed, and gives the extended result that tells why.
int failureOf(sqlite3* pDb, sqlite3_stmt* pStatement);

// Whether a failed statement may succeed when it is repeated after a pause, and pauses. For a statement that writes,
// a transaction that has read the database szSchema (null: any) already cannot be helped by waiting: blStale is set
// then.
bool waitFor(int iResult, sqlite3* pDb, const char* szSchema, bool blWrites, Waiter& waiter, bool& blStale);

}  // namespace vorn

#endif  // VORN_PREPARE_H
