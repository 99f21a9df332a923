// SPDX-License-Identifier: MIT
//
// Member names that records point to instead of copying them.

#ifndef VORN_NAMES_H
#define VORN_NAMES_H

#include <string_view>

namespace vorn
{

// The process's one copy of the name. It ends in a NUL and is never given back: records outlive the table that made
// them. Safe from every thread.
std::string_view internedName(std::string_view name);

}  // namespace vorn

#endif  // VORN_NAMES_H
