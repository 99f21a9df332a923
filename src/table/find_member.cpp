// SPDX-License-Identifier: MIT
//
// The one thing of a definition that every operation asks for.

#include "definition.h"

namespace vorn
{

const Member* Definition::find(std::string_view name) const
{
    std::size_t begin = 0;
    std::size_t end = m_members.size();
    while (begin < end)
    {
        const std::size_t middle = begin + (end - begin) / 2;
        const int iOrder = name.compare(m_members[middle].name);
        if (iOrder == 0)
            return &m_members[middle];
        if (iOrder < 0)
            end = middle;
        else
            begin = middle + 1;
    }
    return nullptr;
}

}  // namespace vorn
