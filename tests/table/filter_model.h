// SPDX-License-Identifier: MIT
//
// What a request finds, told by a plain walk over records: no SQL, and nothing of the library's own code.

#ifndef VORN_TESTS_FILTER_MODEL_H
#define VORN_TESTS_FILTER_MODEL_H

#include <json/json.h>

#include <map>
#include <string>
#include <vector>

namespace table_tests
{

using Types = std::map<std::string, std::string>;  // the type name of each member

// What a value of the type comes back as; null stays null.
Json::Value asStored(const std::string& strType, const Json::Value& jValue);

// Whether the record is one of those that the filter describes. Records hold what comes back: no nulls.
bool matches(const Types& types, const Json::Value& jFilter, const Json::Value& jRecord);

// The records that a request finds, in order, with the members that it asks for. The request is a valid one whose
// sort_by leaves nothing open.
std::vector<Json::Value> found(const Types& types, const Json::Value& jRequest,
                               const std::vector<Json::Value>& records);

// JSON as it is stored.
std::string compactText(const Json::Value& jValue);

}  // namespace table_tests

#endif  // VORN_TESTS_FILTER_MODEL_H
