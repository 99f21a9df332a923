// SPDX-License-Identifier: MIT
//
// The one thing of a definition that every operation asks for.

#include "../core/schema.h"
#include "definition.h"

namespace vorn
{

const Member* Definition::find(std::string_view name) const
{
    return findMember(m_members, name);
}

}  // namespace vorn
