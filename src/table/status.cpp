// SPDX-License-Identifier: MIT

#include <vorn/status.h>

namespace vorn
{

const char* codeName(Code code)
{
    static const char* const kNames[] = {"Ok",         "BadDefinition", "BadRequest", "UnknownMember", "BadType",
                                         "OutOfRange", "Missing",       "Duplicate",  "Constraint",    "Locked",
                                         "Full",       "ReadOnly",      "BadCell",    "Corrupt",       "Interrupted",
                                         "Misuse",     "Sqlite"};
    constexpr auto kCount = sizeof kNames / sizeof *kNames;
    static_assert(kCount == static_cast<std::size_t>(Code::Sqlite) + 1, "one name for each code, in their order");

    const auto place = static_cast<std::size_t>(code);
    return place < kCount ? kNames[place] : "Sqlite";
}

}  // namespace vorn
