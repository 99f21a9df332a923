// SPDX-License-Identifier: MIT
//
// The statements that make a table of a definition.

#ifndef VORN_DDL_H
#define VORN_DDL_H

#include <string>
#include <string_view>
#include <vector>

#include "definition.h"

struct sqlite3;

namespace vorn
{

class Waiter;

// The declared type that a member's column gets: "INTEGER", "REAL" or "TEXT".
const char* columnTypeName(const Member& member);

// "name" TYPE NOT NULL DEFAULT ...: as CREATE TABLE and ALTER TABLE ADD COLUMN write it.
std::string columnText(const Member& member);

std::string createTableText(const Definition& definition);

// The names of a database's tables and indexes.
class NameSet
{
public:
    bool read(sqlite3* pDb, const std::string& strSchema, Waiter& waiter, Status& status);

    // The name itself, or one like it that is not taken, which is then.
    std::string unused(const std::string& strName);

    const std::string& schema() const { return m_strSchema; }  // as SQL writes it

private:
    std::string m_strSchema;
    std::vector<std::string> m_names;
};

// The statement for the index, plain or unique, of a member.
std::string indexText(const Definition& definition, const Member& member, bool blUnique, NameSet& names);

}  // namespace vorn

#endif  // VORN_DDL_H
