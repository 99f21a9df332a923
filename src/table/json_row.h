// SPDX-License-Identifier: MIT
//
// What a path, or a member, holds in its JSON cell: a row of a subquery that walks down the names, one json_each() for
// each of them. A cell that holds no JSON, and a name that is not there, give no row.

#ifndef VORN_JSON_ROW_H
#define VORN_JSON_ROW_H

#include <string>
#include <vector>

#include "condition_parts.h"
#include "value_lists.h"

namespace vorn
{

// Appends the FROM and WHERE of that subquery and returns the row's name; "" is a failure: the path is too long.
std::string writeWalk(ConditionParts& parts, const Subject& subject);

// Begins "EXISTS (...": a condition on the row whose name it returns must follow, and ")". "" is a failure.
std::string writeExists(ConditionParts& parts, const Subject& subject, bool blNegated);

// SQL for the row as one value: numbers as they are, texts behind a quote, everything else as its JSON text. So kinds
// never mix, and all texts lie between '"' and '#'.
std::string rowValue(const std::string& strRow);

// A JSON value as rowValue() gives it.
bool toRowValue(ConditionParts& parts, const Subject& subject, const Json::Value& jValue, ListValue& item);

}  // namespace vorn

#endif  // VORN_JSON_ROW_H
