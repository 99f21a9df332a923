// SPDX-License-Identifier: MIT
//
// One random case for the model and the library: a definition, its table, and calls on it. A case follows from the seed
// and its index alone, and can be printed as the lines of a test.

#ifndef VORN_TESTS_MODEL_CASE_H
#define VORN_TESTS_MODEL_CASE_H

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

namespace model
{

enum class Call
{
    ColumnList,
    ValueList,
    Match,
    ListCondition,
    MemberList,
    SortAndPage,
    CheckTypes,
    FillDefaults,
    Query,
    Create,
    Save,
    List,
    GetOne,
    UpdateByFilter,
    UpdateByWhere,
    Delete,
    DeleteAll,
    DeleteByArray,
    DeleteByName,
};

// The arguments of one call; each call uses those that it needs.
struct Step
{
    Call call;
    Json::Value first;
    Json::Value second;
    std::string text;
    std::string name;
    std::vector<std::string> texts;
    int number = 0;
    bool flag = false;
};

struct Case
{
    std::string table;
    Json::Value definition;
    std::string createStatement;
    std::vector<Step> steps;
};

Case randomCase(std::uint64_t seed, std::uint64_t index);

// The lines of a test that makes the case's store and its calls up to the given one.
std::string asTest(const Case& example, std::size_t lastStep);

}  // namespace model

#endif
