// SPDX-License-Identifier: MIT
//
// What everything that writes a piece of a condition writes to.

#ifndef VORN_CONDITION_PARTS_H
#define VORN_CONDITION_PARTS_H

#include <vorn/status.h>

#include <string>
#include <vector>

#include "bound_value.h"
#include "operators.h"
#include "subject.h"

struct sqlite3;

namespace vorn
{

struct ConditionParts
{
    sqlite3* pDb;
    Status& status;
    std::string& strSql;              // SQL text is appended here,
    std::vector<BoundValue>& values;  // and the values of its parameters here
    std::size_t listMax;              // a list of more values becomes one parameter, a JSON text
};

// One operator but $not on a member itself, or on a path into one. What is negated holds in exactly those rows where
// the operator itself does not. Appends text that binds tighter than OR.
bool writeColumnCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                          bool blNegated);
bool writePathCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                        bool blNegated);

// $all and $size, of a member or a path.
bool writeArrayCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                         bool blNegated);

// Appends a value for ORDER BY.
bool writePathValue(ConditionParts& parts, const Subject& subject);

// About how much of SQLite's parser's stack the texts need.
constexpr std::uint32_t kColumnWeight = 6;
constexpr std::uint32_t kPathWeight = 24;

// Checks that both have their fields: the operand of $in, $nin and $all is a list, that of $exists a boolean; texts are
// what $beginsWith, $like and $glob want, and a pattern must be one that SQLite takes.
bool checkList(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand);
bool checkFlag(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand);
bool checkPattern(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand);

// The least text that is greater than all that begin with the prefix, in the order of bytes; "" where there is none.
std::string afterPrefix(std::string_view prefix);

}  // namespace vorn

#endif  // VORN_CONDITION_PARTS_H
