// SPDX-License-Identifier: MIT
//
// From a filter or a request to SQL. Nothing else writes conditions.

#ifndef VORN_CONDITIONS_H
#define VORN_CONDITIONS_H

#include <json/json.h>
#include <vorn/status.h>

#include <string>
#include <string_view>
#include <vector>

#include "bound_value.h"
#include "definition.h"

struct sqlite3;

namespace vorn
{

// A filter or a request whose values are parameters: two of the same shape have the same text.
struct Compiled
{
    std::string_view sql() const { return pEqual != nullptr ? std::string_view(pEqual->strEqual) : strSql; }
    std::string_view pageOrder() const { return std::string_view(strSql).substr(pageOrderBegin, pageOrderSize); }

    const Member* pEqual = nullptr;     // that this member equals a value is all
    std::string strSql;                 // else: "" or " WHERE ...", then " ORDER BY ..." and " LIMIT ? OFFSET ?"
    std::size_t pageOrderBegin = 0;     // " ORDER BY ..." of a page that SQLite has to sort for, as far as is known;
    std::size_t pageOrderSize = 0;      // it has no parameters
    std::vector<BoundValue> values;     // of the parameters, in order; borrows from the request
    std::vector<const Member*> fields;  // what "fields" asks for, in order of the names; empty: every member
    std::vector<Json::Value> lists;     // made of the request; values borrow from them too
    bool blCondition = false;           // whether there is a condition at any level
    bool blKeep = true;                 // whether its statement is worth keeping
};

// What a filter may be: a plain one, or a request that also sorts and pages; of One, the first row alone is wanted.
enum class FilterKind
{
    Filter,
    Request,
    One
};

// Checks the filter (an object, or null for an empty one), writes its SQL and appends its values to those that are
// there already. The connection tells SQLite's limits and nothing is run on it. False with the status; compiled is then
// of no use.
bool compile(const Definition& definition, sqlite3* pDb, const Json::Value& jFilter, FilterKind kind,
             Compiled& compiled, Status& status);

// The filter that the member equals the value, which is not null. The value lives as long as compiled does.
bool compileEqual(const Member& member, const Json::Value& jValue, Compiled& compiled, Status& status);

// The parameters of SQL text that the host wrote ("vornSqlWhereParams" in a filter, jParams of runSql()): checks that
// they are those that the text names, replaces each name by "?" and appends the values. A condition is the text of
// "vornSqlWhereFilter", which must stay within its parentheses.
enum class RawKind
{
    Condition,
    Statement
};
bool compileRaw(RawKind kind, const std::string& strSql, const Json::Value& jParams, std::string& strSqlOut,
                std::vector<BoundValue>& values, Status& status);

}  // namespace vorn

#endif  // VORN_CONDITIONS_H
