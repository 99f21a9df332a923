// SPDX-License-Identifier: MIT

#include "schema.h"

#include <algorithm>

const Member* Schema::find(std::string_view name, std::size_t& expected) const
{
    // Names of a record mostly ascend and mostly belong to the next few members.
    constexpr std::size_t kNear = 4;
    const std::size_t nearEnd = std::min(expected + kNear, m_members.size());
    for (std::size_t i = expected; i < nearEnd; ++i)
    {
        if (m_members[i].name != name)
            continue;
        expected = i + 1;
        return &m_members[i];
    }

    const auto it =
        std::lower_bound(m_members.begin(), m_members.end(), name,
                         [](const Member& member, std::string_view wanted) { return member.name < wanted; });
    if (it == m_members.end() || it->name != name)
        return nullptr;
    expected = indexOf(*it) + 1;
    return &*it;
}
