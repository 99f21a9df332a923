// SPDX-License-Identifier: MIT
//
// Each example in the tables of docs/conditions.md finds the people that the page says.

#include <gtest/gtest.h>
#include <vorn/table.h>

#include "database.h"
#include "json_value.h"

namespace
{

struct Example
{
    const char* szFilter;
    const char* szNames;
};

constexpr Example kExamples[] = {
#include "operators.inc"
};

}  // namespace

TEST(Conditions, EachExampleOfThePageFindsWhoItSays)
{
    const support::Database database;
    vorn::Table people(database.handle(), "people", support::json(R"({"people":{"member":{
        "name":{"cpptype":"string","key":true},"city":{"cpptype":"string","index":true},"age":{"cpptype":"int"},
        "active":{"cpptype":"bool"},"address":{"cpptype":"Json::objectValue"},"tags":{"cpptype":"Json::arrayValue"}}}})"));
    ASSERT_EQ(4, people.recCreateAll(support::json(R"([
        {"name":"Ann","age":34,"city":"Oslo","active":true,"address":{"zip":"0150","floor":3},"tags":["a","b"]},
        {"name":"Bob","age":28,"city":"Bergen","active":false,"address":{"zip":"5003"},"tags":[]},
        {"name":"Cid","age":61,"city":"Oslo","tags":["b",7]},
        {"name":"Dee"}])")))
        << people.status().text;
    EXPECT_GT(std::size(kExamples), 20U);
    for (const Example& example : kExamples)
    {
        Json::Value jRequest = support::json(example.szFilter);
        jRequest["$sort_by"] = "name";
        Json::Value jRecords;
        ASSERT_EQ(0, people.recList(jRequest, jRecords)) << example.szFilter << ": " << people.status().text;
        std::string strNames;
        for (const Json::Value& jRecord : jRecords)
            strNames += (strNames.empty() ? "" : ", ") + jRecord["name"].asString();
        EXPECT_EQ(example.szNames, strNames) << example.szFilter;
    }
}
