// SPDX-License-Identifier: MIT
//
// The names that begin with "$" in a filter.

#ifndef VORN_OPERATORS_H
#define VORN_OPERATORS_H

#include <string_view>

namespace vorn
{

// What is asked of a member. The names that deny something are the same operator, negated.
enum class Operator : unsigned char
{
    Eq,
    In,
    Gt,
    Gte,
    Lt,
    Lte,
    Exists,
    BeginsWith,
    Like,
    Glob,
    All,
    Size,
    Not
};

struct OperatorName
{
    std::string_view name;
    Operator op;
    bool blNegated;
};

const OperatorName* operatorOf(std::string_view name);  // or null

// What joins filters.
enum class Logic : unsigned char
{
    And,
    Or,
    Nor,
    Not
};

struct LogicName
{
    std::string_view name;
    Logic logic;
};

const LogicName* logicOf(std::string_view name);  // or null

// The nearest of these names, or "".
std::string_view nearestOperator(std::string_view name);
std::string_view nearestLogic(std::string_view name);

}  // namespace vorn

#endif  // VORN_OPERATORS_H
