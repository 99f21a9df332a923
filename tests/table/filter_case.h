// SPDX-License-Identifier: MIT
//
// One random case for the model and the table: a definition, records and requests. It follows from the seed and its
// number alone and can be printed as a test.

#ifndef VORN_TESTS_FILTER_CASE_H
#define VORN_TESTS_FILTER_CASE_H

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

#include "filter_model.h"

namespace table_tests
{

struct Case
{
    Json::Value jMembers;  // of the definition; "id" is the key and every record has one
    Types types;
    std::vector<Json::Value> records;  // as they come back
    std::vector<Json::Value> requests;
    std::vector<Json::Value> filters;  // for counting, updating and deleting
    Json::Value jValues;               // for updating
};

Case randomCase(std::uint64_t nSeed, std::uint64_t nNumber);

// The lines of a test that runs the case: its definition, its records and one request or filter.
std::string asTest(const Case& example, const Json::Value& jRequest);

}  // namespace table_tests

#endif  // VORN_TESTS_FILTER_CASE_H
