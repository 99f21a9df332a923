// SPDX-License-Identifier: MIT
//
// Filters in a row that ask one member for one value each: together they are a list of values. SQLite compares every
// parameter of a comparison with all others when it prepares a statement, which takes seconds where there are 10,000;
// in a list it does not, and an index serves the list.

#ifndef VORN_EQUAL_FILTERS_H
#define VORN_EQUAL_FILTERS_H

#include <json/json.h>

#include <string_view>

namespace vorn
{

struct EqualFilters
{
    std::string_view name;                              // of the member or path
    Json::Value jList = Json::Value(Json::arrayValue);  // the values
};

// Those that stand at that place in the array of filters: {"m": value} or {"m": {"$eq": value}}, or the other way
// around {"m": {"$ne": value}}. So few that a list does not pay are none.
EqualFilters equalFiltersAt(const Json::Value& jFilters, Json::ArrayIndex place, bool blUnequal);

}  // namespace vorn

#endif  // VORN_EQUAL_FILTERS_H
