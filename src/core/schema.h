// SPDX-License-Identifier: MIT
//
// The members of a table in ascending order of their names, as they stand in a JSON object.

#ifndef VORN_SCHEMA_H
#define VORN_SCHEMA_H

#include <json/json.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "cpp_type.h"

// The member of that name, or null. Names mostly arrive in order and belong to one of the next few members: expected,
// where the last search ended and 0 at first, is tried first and moved behind the member found.
template <typename Named>
const Named* findMember(const std::vector<Named>& members, std::string_view name, std::size_t& expected)
{
    constexpr std::size_t kNear = 4;
    const std::size_t nearEnd = std::min(expected + kNear, members.size());
    for (std::size_t i = expected; i < nearEnd; ++i)
    {
        if (members[i].name != name)
            continue;
        expected = i + 1;
        return &members[i];
    }

    const auto it = std::lower_bound(members.begin(), members.end(), name,
                                     [](const Named& member, std::string_view wanted) { return member.name < wanted; });
    if (it == members.end() || it->name != name)
        return nullptr;
    expected = static_cast<std::size_t>(it - members.begin()) + 1;
    return &*it;
}

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
    explicit Schema(std::vector<Member> members) : m_members(std::move(members)) {}

    const std::vector<Member>& members() const { return m_members; }
    std::size_t indexOf(const Member& member) const { return static_cast<std::size_t>(&member - m_members.data()); }

    const Member* find(std::string_view name, std::size_t& expected) const
    {
        return findMember(m_members, name, expected);
    }

private:
    std::vector<Member> m_members;
};

#endif  // VORN_SCHEMA_H
