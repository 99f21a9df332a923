// SPDX-License-Identifier: MIT
//
// What the operations of one vorn::Table share.

#ifndef VORN_STORE_H
#define VORN_STORE_H

#include <vorn/status.h>

#include <memory>
#include <string>

#include "definition.h"
#include "facts.h"
#include "prepare.h"
#include "read_cell.h"
#include "statement_cache.h"
#include "waiter.h"

struct sqlite3;

namespace vorn
{

struct Store
{
    sqlite3* pDb = nullptr;
    Definition definition;
    std::string strSqlCreate;
    int iLockTimeout = 5000;
    StatementCache cache;
    StrictReader strictReader;
    std::shared_ptr<const Facts> pFacts;  // null where they are not known
    unsigned iSchema = 0;                 // grows with every change of the schema that is noticed
    bool blOwnTransaction = false;        // whether the open transaction is the operation's own
    bool blSavepoint = false;             // whether a savepoint of the operation is open
    StatementPointer pUndo;               // what undoes the open savepoint, ready where memory has run out
    StatementPointer pUndoOwn;            // the same for a transaction of the operation's own

    // Reads the facts where they are not known. Missing where the table or a declared column is not there.
    bool look(Waiter& waiter, Status& status) { return pFacts != nullptr || lookAnew(waiter, status); }

    // Whether the schema has changed since the facts were read. Inside a transaction that has not read yet only the
    // connection's own changes are seen, because a look at the file would be its first read.
    bool isOutdated();

    // The schema has changed.
    void forget();

    // Finalizes every statement that is kept.
    void release();

    // The database that holds the table, or null where it is not known.
    const char* schema() const { return pFacts != nullptr ? pFacts->strSchema.c_str() : nullptr; }

    bool lookAnew(Waiter& waiter, Status& status);

    std::size_t placeOf(const Member& member) const
    {
        return static_cast<std::size_t>(&member - definition.members().data());
    }
};

// For a table that is not there, or a declared column that it lacks.
bool failMissing(const Definition& definition, const Facts& facts, Status& status);

// The SQL text of a shape, by the facts.
std::string statementText(const Store& store, const Shape& shape);

}  // namespace vorn

#endif  // VORN_STORE_H
