// SPDX-License-Identifier: MIT
//
// What the table in the database is like, as far as a definition cannot tell.

#ifndef VORN_FACTS_H
#define VORN_FACTS_H

#include <vorn/status.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "member_set.h"

struct sqlite3;

namespace vorn
{

class Definition;
class Waiter;
struct Member;

struct KeyColumn
{
    std::string strQuoted;  // "name", as SQL writes it
    const Member* pMember;  // null where the definition does not declare it
};

struct TableColumn
{
    std::string strName;
    std::string strType;         // as it was declared
    bool blFillsItself = false;  // it has a default, or is generated
    int iKey = 0;                // its place in the primary key, from 1, or 0
};

struct Facts
{
    std::vector<TableColumn> columns;
    std::string strRowid;        // the rowid's column, "table"."rowid", or "" where there is none
    bool blRowidKey = false;     // the primary key is the rowid and numbers itself
    std::vector<KeyColumn> key;  // the primary key
    std::string strByRowid;      // " WHERE ..." for one rowid
    std::string strByKey;        // " WHERE ..." for one key; "" where there is none
    std::int64_t iVersion = 0;   // of that database's schema when the facts were read
    std::string strSchema;       // the database that holds the table: "main", ...
    bool blTriggers = false;     // there may be triggers on the table
    MemberSet fillsItself{0};    // the members whose column gives a value where none is given
    std::string strMissing;      // the first declared member without a column, or ""
    bool blStored = false;       // it is a table whose rows SQLite stores
    bool blExists = false;       // there is a table, a view or a virtual table of that name
};

// The number that every change of the database's schema moves on.
bool readSchemaVersion(sqlite3* pDb, const std::string& strSchema, Waiter& waiter, std::int64_t& iVersion,
                       Status& status);

// Reads them by the connection's view of the schema. False where SQLite fails; a missing table or column is none.
bool readFacts(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status);

// What an index covers.
struct TableIndex
{
    std::vector<std::string> columns;  // "" for an expression
    bool blUnique = false;
};

// The indexes of the table, without those that leave out rows; the rowid as a key counts as one.
bool readIndexes(sqlite3* pDb, const Definition& definition, const Facts& facts, Waiter& waiter,
                 std::vector<TableIndex>& indexes, Status& status);

// Whether one of the unique indexes keeps the columns, together, unique.
bool isUnique(const std::vector<TableIndex>& indexes, const std::vector<std::string_view>& columns);

// Reads the schema anew where another connection has changed it. False only where SQLite has rolled back the caller's
// transaction because storage failed: what follows must not run outside it.
bool refreshSchema(sqlite3* pDb, const Definition& definition, Status& status);

}  // namespace vorn

#endif  // VORN_FACTS_H
