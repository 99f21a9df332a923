// SPDX-License-Identifier: MIT
//
// Defaults of a record: which members are filled, and the check that none is missing.

#include <gtest/gtest.h>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const members = R"({"a": {"cpptype": "int", "cppDefaultValue": 5}, "b": {"cpptype": "int"}})";

int fill(Store& store, Json::Value& record, bool requireAll = false, const ExpectedLines& lines = {})
{
    return logged(lines, [&] { return store->fillDefaultValue(record, requireAll); });
}

}  // namespace

LOGGED_TEST(Defaults, OnlyMissingMembersWithADefaultAreFilled)
{
    struct Case
    {
        const char* before;
        const char* after;
    };
    const Case cases[] = {
        {"{}", R"({"a": 5})"},
        {R"({"a": 1})", R"({"a": 1})"},
        {R"({"a": null})", R"({"a": null})"},
        {R"({"a": "of another kind"})", R"({"a": "of another kind"})"},
        {R"({"b": 2})", R"({"a": 5, "b": 2})"},
        {R"({"b": null, "other": [1]})", R"({"a": 5, "b": null, "other": [1]})"},
        {R"({"A": 1})", R"({"A": 1, "a": 5})"},
        {"null", R"({"a": 5})"},
    };
    Store store(members);
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.before);
        Json::Value record = json(each.before);
        EXPECT_EQ(0, fill(store, record));
        EXPECT_EQ(json(each.after), record);
    }
}

TEST(Defaults, ADefaultIsCopiedAsItStandsWhateverTheType)
{
    for (const char* const text : {"null", "5", "-1", "1.5", "true", "\"text\"", "\"\"", "[]", "[1,{\"x\":null}]", "{}",
                                   R"({"x":[1]})", "18446744073709551615"})
    {
        for (const char* const type : {"int", "string", "no such type"})
        {
            Json::Value declared;
            declared["m"]["cpptype"] = type;
            declared["m"]["cppDefaultValue"] = json(text);
            Store store(declared.toStyledString());
            Json::Value record(Json::objectValue);
            EXPECT_EQ(0, fill(store, record));
            ASSERT_TRUE(record.isMember("m")) << text;
            EXPECT_EQ(json(text), record["m"]);
        }
    }
}

TEST(Defaults, AFilledDefaultIsACopy)
{
    Store store(R"({"m": {"cpptype": "Json::arrayValue", "cppDefaultValue": [1]}})");
    Json::Value first(Json::objectValue);
    EXPECT_EQ(0, fill(store, first));
    first["m"].append(2);
    Json::Value second(Json::objectValue);
    EXPECT_EQ(0, fill(store, second));
    EXPECT_EQ(json(R"({"m": [1]})"), second);
}

LOGGED_TEST(Defaults, RequiringAllReportsTheFirstMissingMember)
{
    struct Case
    {
        const char* record;
        const char* missing;
        const char* text;
    };
    const Case cases[] = {
        {"{}", "a", "{}"},
        {"null", "a", "null"},
        {R"({"b": 1})", "a", R"({"b":1})"},
        {R"({"a": 1})", "b", R"({"a":1})"},
        {R"({"a": null, "c": "O'Neil é 100%s"})", "b", R"({"a":null,"c":"O'Neil é 100%s"})"},
    };
    Store store(members);
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.record);
        Json::Value record = json(each.record);
        EXPECT_EQ(-1, fill(store, record, true,
                           {error(std::string("lost data member=") + each.missing),
                            debug(std::string("jParam=") + each.text)}));
        EXPECT_EQ(json(each.record), record);
    }
}

LOGGED_TEST(Defaults, RequiringAllPassesAndFillsNothingWhenNothingIsMissing)
{
    Store store(members);
    for (const char* const text : {R"({"a": 1, "b": 2})", R"({"a": null, "b": null, "other": 3})"})
    {
        Json::Value record = json(text);
        EXPECT_EQ(0, fill(store, record, true));
        EXPECT_EQ(json(text), record);
    }
}

// Such a definition makes the lookup fail, and the operation finds no members to visit.
LOGGED_TEST(Defaults, ADefinitionWithoutMembersChangesNothing)
{
    for (const bool requireAll : {false, true})
    {
        const Database database;
        std::string name = freshTable();
        Json::Value definition = definitionOf(name, Json::Value(Json::objectValue));
        std::string create = "CREATE TABLE " + name + " (a)";
        VornJsonDbApi api(database.handle(), name, definition, create);
        const ExpectedLines details = {inUtil(trace("strJsonName=" + name)),
                                       inUtil(trace("jTableDef={\"" + name + "\":{\"member\":{}}}")),
                                       inUtil(trace("jType=<any>"))};
        Json::Value record = json(R"({"x": 1})");
        EXPECT_LOGS(0, api.fillDefaultValue(record, requireAll),
                    inUtil(failed("jType == Json::nullValue || !jType.isMember(strJsonName)")), details);
        EXPECT_LOGS(0, api.fillDefaultValue(record, requireAll),
                    inUtil(failed("jType[strJsonName].type() != Json::objectValue")), details);
        EXPECT_EQ(json(R"({"x": 1})"), record);
    }
}

TEST(Defaults, ARecordOfAWrongKindThrowsAsTheJsonLibraryDoes)
{
    Store store(members);
    for (const char* const text : {"[]", "[1]", "5", "1.5", "true", "\"text\""})
    {
        for (const bool requireAll : {false, true})
        {
            Json::Value record = json(text);
            logged({}, [&] { EXPECT_THROW(store->fillDefaultValue(record, requireAll), Json::LogicError) << text; });
            EXPECT_EQ(json(text), record);
        }
    }
}
