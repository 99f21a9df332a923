// SPDX-License-Identifier: MIT
//
// Copying members from one JSON object into another.

#include <gtest/gtest.h>

#include "log_capture.h"
#include "store.h"

using namespace support;
using VORN_JSON_DB::jsonCopyMember;

TEST(MemberCopy, CopiesWholeMembers)
{
    struct Row
    {
        const char* into;
        const char* from;
        bool overwrite;
        const char* result;
    };
    const Row rows[] = {
        {R"({"a": 1, "b": 2})", R"({"b": 3, "k": 4})", false, R"({"a": 1, "b": 2, "k": 4})"},
        {R"({"a": 1, "b": 2})", R"({"b": 3, "k": 4})", true, R"({"a": 1, "b": 3, "k": 4})"},
        // A member is replaced, never merged.
        {R"({"b": {"x": 1, "y": 2}})", R"({"b": {"z": 3}})", true, R"({"b": {"z": 3}})"},
        {R"({"b": {"x": 1, "y": 2}})", R"({"b": {"z": 3}})", false, R"({"b": {"x": 1, "y": 2}})"},
        {R"({"b": [1, 2, 3]})", R"({"b": [4]})", true, R"({"b": [4]})"},
        // A member that is null is there.
        {R"({"b": null})", R"({"b": 1})", false, R"({"b": null})"},
        {R"({"b": null})", R"({"b": 1})", true, R"({"b": 1})"},
        {R"({"b": 1})", R"({"b": null, "c": null})", true, R"({"b": null, "c": null})"},
        {"null", R"({"a": {"b": [1, "x", null, 2.5, true]}})", false, R"({"a": {"b": [1, "x", null, 2.5, true]}})"},
        {"null", R"({"a": 1})", true, R"({"a": 1})"},
        {"{}", R"({"": "empty name"})", true, R"({"": "empty name"})"},
        {R"({"a": 1})", "{}", true, R"({"a": 1})"},
        {"null", "{}", true, "null"},
        {"null", "{}", false, "null"},
        {"{}", "{}", true, "{}"},
    };
    for (const Row& row : rows)
    {
        Json::Value into = json(row.into);
        Json::Value from = json(row.from);
        EXPECT_SILENT(0, jsonCopyMember(into, from, row.overwrite));
        EXPECT_EQ(json(row.result), into) << row.into << " <- " << row.from;
        EXPECT_EQ(json(row.from), from);
    }
}

TEST(MemberCopy, CopyIsIndependentOfItsSource)
{
    Json::Value into;
    Json::Value from = json(R"({"a": {"b": 1}})");
    ASSERT_EQ(0, jsonCopyMember(into, from, true));
    from["a"]["b"] = 2;
    EXPECT_EQ(json(R"({"a": {"b": 1}})"), into);
}

TEST(MemberCopy, ObjectCopiedIntoItselfStaysTheSame)
{
    for (const bool overwrite : {false, true})
    {
        Json::Value value = json(R"({"a": {"b": [1]}, "c": "x"})");
        EXPECT_EQ(0, jsonCopyMember(value, value, overwrite));
        EXPECT_EQ(json(R"({"a": {"b": [1]}, "c": "x"})"), value);
    }
}

LOGGED_TEST(MemberCopy, DestinationThatIsNoObjectIsRefusedBeforeTheSource)
{
    for (const char* const kept : {"[]", "[1]", "1", "1.5", R"("x")", "true"})
    {
        for (const char* const source : {R"({"a": 1})", "{}", "null", "1"})
        {
            Json::Value into = json(kept);
            Json::Value from = json(source);
            const ExpectedLines lines = {
                inUtil(failed("jIn.type() != Json::nullValue && jIn.type() != Json::objectValue"))};
            EXPECT_LOGS(-1, jsonCopyMember(into, from, true), lines);
            EXPECT_EQ(json(kept), into);
        }
    }
}

LOGGED_TEST(MemberCopy, SourceThatIsNoObjectIsRefused)
{
    for (const char* const source : {"null", "[]", "1", R"("x")", "true"})
    {
        for (const char* const kept : {"null", R"({"a": 1})"})
        {
            Json::Value into = json(kept);
            Json::Value from = json(source);
            EXPECT_LOGS(-1, jsonCopyMember(into, from, false), inUtil(failed("jSubSet.type() != Json::objectValue")));
            EXPECT_EQ(json(kept), into);
        }
    }
}
