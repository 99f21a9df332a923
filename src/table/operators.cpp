// SPDX-License-Identifier: MIT

#include "operators.h"

#include "suggestion.h"

namespace vorn
{

namespace
{

constexpr OperatorName kOperators[] = {
    {"$eq", Operator::Eq, false},         {"$ne", Operator::Eq, true},
    {"$in", Operator::In, false},         {"$nin", Operator::In, true},
    {"$gt", Operator::Gt, false},         {"$gte", Operator::Gte, false},
    {"$lt", Operator::Lt, false},         {"$lte", Operator::Lte, false},
    {"$exists", Operator::Exists, false}, {"$beginsWith", Operator::BeginsWith, false},
    {"$like", Operator::Like, false},     {"$glob", Operator::Glob, false},
    {"$all", Operator::All, false},       {"$size", Operator::Size, false},
    {"$not", Operator::Not, false},
};

constexpr LogicName kLogics[] = {{"$and", Logic::And}, {"$or", Logic::Or}, {"$nor", Logic::Nor}, {"$not", Logic::Not}};

template <class Row, std::size_t kSize>
const Row* rowOf(const Row (&rows)[kSize], std::string_view name)
{
    for (const Row& row : rows)
        if (row.name == name)
            return &row;
    return nullptr;
}

template <class Row, std::size_t kSize>
std::string_view nearest(const Row (&rows)[kSize], std::string_view name)
{
    Suggestion suggestion(name);
    for (const Row& row : rows)
        suggestion.consider(row.name);
    return suggestion.nearest();
}

}  // namespace

const OperatorName* operatorOf(std::string_view name)
{
    return rowOf(kOperators, name);
}

const LogicName* logicOf(std::string_view name)
{
    return rowOf(kLogics, name);
}

std::string_view nearestOperator(std::string_view name)
{
    return nearest(kOperators, name);
}

std::string_view nearestLogic(std::string_view name)
{
    return nearest(kLogics, name);
}

}  // namespace vorn
