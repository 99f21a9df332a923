// SPDX-License-Identifier: MIT
//
// The model: every SQL text that the library writes, rendered a second time in the plainest way and without a line of
// the library's code. test_model.cpp holds the two against each other.

#ifndef VORN_TESTS_MODEL_H
#define VORN_TESTS_MODEL_H

#include <json/json.h>

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace model
{

// Member name -> type name, in the order in which lists are written.
using Columns = std::map<std::string, std::string>;

// A value that JsonCpp's accessors would not convert: the library is expected to let their exception through.
struct Refused : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// A '%' in an earlier value that would consume an argument: what a plain call of the formatter does with it is not
// defined, so the model says nothing about it.
struct Undefined : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

Columns columnsOf(const Json::Value& definition, const std::string& table);

// A value as JSON on one line.
std::string jsonText(const Json::Value& value);
// A value as bare text: digits, true or false, the string itself, nothing for null.
std::string bareText(const Json::Value& value);
// Every single quote twice; ends at the first NUL.
std::string doubledQuotes(const std::string& text);

// Without a record: all columns.
std::string columnList(const Columns& columns, const Json::Value* record);

// The text so far, followed by the values and ") "; nothing when a type cannot be written.
std::optional<std::string> valueList(const std::string& textSoFar, const Columns& columns, const Json::Value& record);

// Conditions on one column; nothing when the column is not declared (or the list is no array).
std::optional<std::string> matchCondition(const Columns& columns, const std::string& name, const Json::Value& value);
std::optional<std::string> listCondition(const Columns& columns, const std::string& name, const Json::Value& list);

struct Fragment
{
    int result = 0;
    std::string text;
};
// joiner: 0 or, 1 and, 2 comma.
Fragment memberList(const std::string& textSoFar, const Columns& columns, const Json::Value& param, int joiner);
Fragment sortAndPage(const std::string& textSoFar, const Json::Value& param);

// Whole statements.
std::optional<std::string> saveText(const std::string& table, const Columns& columns, const Json::Value& record,
                                    bool insert);
std::string selectText(const std::string& table, const Columns& columns, const std::string& condition,
                       const std::string& clause);
std::string updateText(const std::string& table, const std::string& assignments, const std::string& condition);
std::string deleteText(const std::string& table, const std::string& condition);

// One row as a record; nothing when a column is not declared or its type does not come back.
std::optional<Json::Value> rowRecord(const Columns& columns, const std::vector<std::string>& names,
                                     const std::vector<std::optional<std::string>>& texts);

// Whether every declared member of the record is of the kind that its type asks for.
bool typesFit(const Columns& columns, const Json::Value& record);

// The record with the declared defaults of the members that it lacks.
Json::Value withDefaults(const Json::Value& definition, const std::string& table, const Json::Value& record);

}  // namespace model

#endif
