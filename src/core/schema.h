// SPDX-License-Identifier: MIT
//
// The members of a table in ascending order of their names.

#ifndef VORN_SCHEMA_H
#define VORN_SCHEMA_H

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

#include "cpp_type.h"

// What is read for every row and every statement stands first.
struct Member
{
    std::string_view name;  // of a text that ends in NUL and outlives the schema and all records that use it as a key
    const ColumnType* pType;
    bool blHasDefault;
    Json::Value jDefault;  // null without one
    std::string strTypeName;
};

class Schema
{
public:
    // The members must stand in ascending order of their names, as they do in a JSON object.
    explicit Schema(std::vector<Member> members) : m_members(std::move(members)) {}

    const std::vector<Member>& members() const { return m_members; }

    // The place of a member that find() or members() gave.
    std::size_t indexOf(const Member& member) const { return static_cast<std::size_t>(&member - m_members.data()); }

    // The member of that name, or null. Names mostly arrive in order: expected, where the last search ended and 0 at
    // first, is tried first and moved behind the member found.
    const Member* find(std::string_view name, std::size_t& expected) const;

private:
    std::vector<Member> m_members;
};

#endif  // VORN_SCHEMA_H
