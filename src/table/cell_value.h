// SPDX-License-Identifier: MIT
//
// From a JSON value to what is stored in its member's column.

#ifndef VORN_CELL_VALUE_H
#define VORN_CELL_VALUE_H

#include <json/json.h>
#include <vorn/status.h>

#include <string>
#include <string_view>

#include "bound_value.h"
#include "definition.h"

namespace vorn
{

// Whether the value fits the member's type; null fits all. False with BadType or OutOfRange; path is what the status
// then names as its member.
bool checkValue(const Member& member, const Json::Value& jValue, std::string_view path, Status& status);

// Checks the value as checkValue() does and converts it. A null value gives a NULL. Texts are borrowed from jValue
// where they can be.
bool toBound(const Member& member, const Json::Value& jValue, std::string_view path, BoundValue& value, Status& status);

// Converts a value that checkValue() has found to fit.
void bindChecked(const Member& member, const Json::Value& jValue, BoundValue& value);

// Whether it is one that members of the JSON types can have: at most 1,000 levels deep, of finite numbers.
bool isJsonValue(const Json::Value& jValue);

// The characters of a JSON string, for as long as it is not changed.
std::string_view textOf(const Json::Value& jString);

// What values of the member are, for the texts of failures: "a whole number from 0 to 4294967295".
const char* describe(const Member& member);

// "name": a member as the texts of failures show it, on one line.
std::string shown(std::string_view path);

}  // namespace vorn

#endif  // VORN_CELL_VALUE_H
