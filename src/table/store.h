// SPDX-License-Identifier: MIT
//
// What the operations of one vorn::Table share.

#ifndef VORN_STORE_H
#define VORN_STORE_H

#include <vorn/status.h>

#include <string>

#include "definition.h"
#include "facts.h"
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
    Facts facts;
    bool blOwnTransaction = false;  // whether the open transaction is the operation's own
    bool blFacts = false;           // whether the facts are those of the schema that the statements were compiled for

    // Reads the facts where they are not known. Missing where the table or a declared column is not there.
    bool look(Waiter& waiter, Status& status);

    // The schema has changed.
    void forget();

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
