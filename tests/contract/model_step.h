// SPDX-License-Identifier: MIT
//
// One call of the library with its arguments, and its shape as JSON: ["match", TEXT, NAME, VALUE].

#ifndef VORN_TESTS_MODEL_STEP_H
#define VORN_TESTS_MODEL_STEP_H

#include <json/json.h>

#include <optional>
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
    Vector,
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
    Call call = Call::ColumnList;
    Json::Value first;
    Json::Value second;
    std::string text;
    std::optional<std::string> name;  // none: a null pointer
    std::vector<std::string> texts;
    int number = 0;
    bool flag = false;
};

// The name of a call in JSON, and a letter for each argument behind it: first, second, text, name, Texts, integer or
// boolean.
struct CallShape
{
    Call call;
    const char* szName;
    const char* szArguments;
};

constexpr CallShape kCallShapes[] = {
    {Call::ColumnList, "columns", "tfb"},
    {Call::ValueList, "values", "tf"},
    {Call::Match, "match", "tnf"},
    {Call::ListCondition, "in", "tnf"},
    {Call::MemberList, "conditions", "tfi"},
    {Call::SortAndPage, "page", "tf"},
    {Call::Vector, "vector", "fnT"},
    {Call::CheckTypes, "check", "f"},
    {Call::FillDefaults, "defaults", "fb"},
    {Call::Query, "query", "ts"},
    {Call::Create, "create", "fs"},
    {Call::Save, "save", "fb"},
    {Call::List, "list", "fs"},
    {Call::GetOne, "get", "fs"},
    {Call::UpdateByFilter, "update", "fs"},
    {Call::UpdateByWhere, "update where", "ft"},
    {Call::Delete, "delete", "fb"},
    {Call::DeleteAll, "delete all", ""},
    {Call::DeleteByArray, "delete by array", "Tn"},
    {Call::DeleteByName, "delete by name", "tn"},
};
constexpr std::size_t kCallCount = sizeof kCallShapes / sizeof *kCallShapes;

}  // namespace model

#endif  // VORN_TESTS_MODEL_STEP_H
