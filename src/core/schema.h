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

// The member of that name, or null.
template <typename Named>
const Named* findMember(const std::vector<Named>& members, std::string_view name)
{
    std::size_t begin = 0;
    std::size_t end = members.size();
    while (begin < end)
    {
        const std::size_t middle = begin + (end - begin) / 2;
        const int iOrder = name.compare(members[middle].name);
        if (iOrder == 0)
            return &members[middle];
        if (iOrder < 0)
            end = middle;
        else
            begin = middle + 1;
    }
    return nullptr;
}

// The same. Names mostly arrive in order and belong to one of the next few members: expected, where the last search
// ended and 0 at first, is tried first and moved behind the member found.
template <typename Named>
const Named* findMember(const std::vector<Named>& members, std::string_view name, std::size_t& expected)
{
    constexpr std::size_t kNear = 4;
    const std::size_t nearEnd = std::min(expected + kNear, members.size());
    const Named* pFound = nullptr;
    for (std::size_t i = expected; i < nearEnd && pFound == nullptr; ++i)
    {
        const std::string_view other = members[i].name;
        // Most names differ in their lengths or their first characters.
        if (other.size() == name.size() && (name.empty() || (other.front() == name.front() && other == name)))
            pFound = &members[i];
    }
    if (pFound == nullptr)
        pFound = findMember(members, name);
    if (pFound != nullptr)
        expected = static_cast<std::size_t>(pFound - members.data()) + 1;
    return pFound;
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
