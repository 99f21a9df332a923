// SPDX-License-Identifier: MIT
//
// From a JSON value to what is stored in its member's column, and back.

#ifndef VORN_CELL_VALUE_H
#define VORN_CELL_VALUE_H

#include <json/json.h>
#include <vorn/status.h>

#include "bound_value.h"
#include "definition.h"

namespace vorn
{

// Checks the value against the member's type and converts it. A null value gives a NULL. Texts are borrowed from jValue
// where they can be. False with BadType or OutOfRange; path is what the status then names as its member.
bool toBound(const Member& member, const Json::Value& jValue, std::string_view path, BoundValue& value, Status& status);

}  // namespace vorn

#endif  // VORN_CELL_VALUE_H
