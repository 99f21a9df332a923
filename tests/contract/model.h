// SPDX-License-Identifier: MIT
//
// The model: every SQL text that the library writes, rendered a second time in the plainest way and without a line of
// the library's code. Comparison holds the two against each other. A value that JsonCpp's accessors do not convert lets
// their exception through, as the library is expected to.

#ifndef VORN_TESTS_MODEL_H
#define VORN_TESTS_MODEL_H

#include <json/json.h>

#include <map>
#include <optional>
#include <string>

namespace model
{

// Member name -> type name, in the order in which lists are written.
using Columns = std::map<std::string, std::string>;

// The types of a definition that holds nothing but what a definition should.
std::optional<Columns> columnsOf(const Json::Value& definition, const std::string& table);

// Every single quote twice; ends at the first NUL.
std::string doubledQuotes(const std::string& text);

// Without a record: all columns.
std::string columnList(const Columns& columns, const Json::Value* record);

// The text so far, followed by the values and ") "; nothing when a type cannot be written. Throws like formatted().
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

// One row as a record; nothing when a column has no name, is not declared or its type does not come back.
std::optional<Json::Value> rowRecord(const Columns& columns, int count, char** texts, char** names);

// Whether it is an object of which every declared member is of the kind that its type asks for.
bool typesFit(const Columns& columns, const Json::Value& record);

// The record with the declared defaults of the members that it lacks.
Json::Value withDefaults(const Json::Value& definition, const std::string& table, const Json::Value& record);

}  // namespace model

#endif
