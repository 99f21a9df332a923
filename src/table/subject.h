// SPDX-License-Identifier: MIT
//
// What a condition or a sort key speaks of: a member, or a path into one.

#ifndef VORN_SUBJECT_H
#define VORN_SUBJECT_H

#include <string>
#include <string_view>
#include <vector>

#include "bound_value.h"
#include "definition.h"

namespace vorn
{

struct Subject
{
    const Member* pMember = nullptr;
    std::string_view name;  // as it was given
    std::string_view path;  // the names behind the member's, joined by dots
    bool blPath = false;    // whether there are any
};

// Finds what the name speaks of: the member of that name, or the one with the longest name that the path begins with.
// False with UnknownMember, or BadType for a path into an array.
bool readSubject(const Definition& definition, std::string_view name, Subject& subject, Status& status);

// UnknownMember, with the nearest name as help.
bool failUnknown(const Definition& definition, std::string_view name, Status& status);

}  // namespace vorn

#endif  // VORN_SUBJECT_H
