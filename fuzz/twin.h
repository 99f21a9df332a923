// SPDX-License-Identifier: MIT
//
// The same table on a connection of its own, on which the expected texts are run without the library.

#ifndef VORN_FUZZ_TWIN_H
#define VORN_FUZZ_TWIN_H

#include <json/json.h>

#include <optional>
#include <string>
#include <utility>

#include "database.h"
#include "formatter.h"

namespace fuzz
{

// One row as a record; nothing when a column has no name or is not declared, or its type does not come back.
std::optional<Json::Value> recordOf(const Types& types, int n_column, char** column_value, char** column_name);

class Twin
{
public:
    explicit Twin(Types types) : m_types(std::move(types)) {}

    Database& database() { return m_database; }
    const Types& types() const { return m_types; }

    // Runs a text as the library is expected to, again while it fails with "database is locked". Rows are appended to
    // *pjRows when it is given. The count of changed rows, 0 for queries, or -1.
    int run(const std::string& strSql, Json::Value* pjRows);

    // SQLite's text of the last statement, empty after a success.
    const std::string& error() const { return m_strError; }

private:
    Types m_types;
    Database m_database;
    std::string m_strError;
};

// The library keeps the types of every table that it has seen: gives their larger half back, or a process with a new
// table for each input would soon grow too large. The name must not be used again.
void giveTypesBack(std::string strName);

}  // namespace fuzz

#endif  // VORN_FUZZ_TWIN_H
