// SPDX-License-Identifier: MIT
//
// The type map of a table: how it is built from the definition, what a wrong definition leaves behind, and that the
// process keeps the first result for ever.

#include <gtest/gtest.h>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const notAnObject = "jType[strJsonName].type() != Json::objectValue";

// A failure of the lookup: the condition, then the name, the definition and the whole cache.
ExpectedLines lookupFailure(const std::string& condition, const std::string& name, const std::string& definition)
{
    return {inUtil(failed(condition)), inUtil(trace("strJsonName=" + name)), inUtil(trace("jTableDef=" + definition)),
            inUtil(trace("jType=<any>"))};
}

// One line as the library writes JSON.
std::string compact(const Json::Value& value)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, value);
}

// The text of a wrong definition with "T" standing for the table's name.
std::string withName(std::string text, const std::string& name)
{
    for (size_t at = text.find("\"T\""); at != std::string::npos; at = text.find("\"T\""))
        text.replace(at, 3, "\"" + name + "\"");
    return text;
}

}  // namespace

LOGGED_TEST(TypeMap, HoldsTypesAndDefaultsOfEveryMember)
{
    std::string name = freshTable();
    Json::Value definition = json(withName(R"({
            "T": {
                "member": {
                    "zip": {"cpptype": "string", "cppDefaultValue": "", "comment": "ignored"},
                    "age": {"cpptype": "int", "cppDefaultValue": 5},
                    "tags": {"cpptype": "Json::arrayValue", "cppDefaultValue": [1, {"a": null}]},
                    "gone": {"cpptype": "bool", "cppDefaultValue": null},
                    "name": {"cpptype": "string"}
                },
                "index": ["ignored"]
            },
            "other": {"member": 5}
        })",
                                           name));
    const Json::Value before = definition;
    const Json::Value types = logged({}, [&] { return VORN_JSON_DB::recType(definition, name); });
    EXPECT_EQ(json(R"({
            "zip": {"cpptype": "string", "cppDefaultValue": ""},
            "age": {"cpptype": "int", "cppDefaultValue": 5},
            "tags": {"cpptype": "Json::arrayValue", "cppDefaultValue": [1, {"a": null}]},
            "gone": {"cpptype": "bool", "cppDefaultValue": null},
            "name": {"cpptype": "string"}
        })"),
              types);
    EXPECT_EQ(before, definition);
}

TEST(TypeMap, AnyStringIsAcceptedAsATypeName)
{
    for (const char* const type : {"string",
                                   "int",
                                   "unsigned int",
                                   "long long",
                                   "unsigned long long",
                                   "Json::Value",
                                   "Json::objectValue",
                                   "Json::arrayValue",
                                   "bool",
                                   "long",
                                   "unsigned long",
                                   "unsigned",
                                   "float",
                                   "double",
                                   "uid_t",
                                   "time_t",
                                   "",
                                   "no such type",
                                   "100%s",
                                   "O'Neil \xc3\xa9"})
    {
        std::string name = freshTable();
        Json::Value members;
        members["m"]["cpptype"] = type;
        Json::Value definition = definitionOf(name, members);
        EXPECT_SILENT(members, VORN_JSON_DB::recType(definition, name));
    }
}

LOGGED_TEST(TypeMap, TheFirstDefinitionOfANameWins)
{
    std::string name = freshTable();
    Json::Value first = definitionOf(name, json(R"({"a": {"cpptype": "int"}})"));
    Json::Value second = definitionOf(name, json(R"({"b": {"cpptype": "string"}})"));
    Json::Value none;
    Json::Value wrongKind("text");
    Json::Value* const types = &VORN_JSON_DB::recType(first, name);
    for (Json::Value* const definition : {&first, &second, &none, &wrongKind})
    {
        EXPECT_SILENT(types, &VORN_JSON_DB::recType(*definition, name));
        EXPECT_EQ(json(R"({"a": {"cpptype": "int"}})"), *types);
    }
    first[name]["member"]["a"]["cpptype"] = "bool";
    EXPECT_EQ("int", (*types)["a"]["cpptype"].asString());
}

TEST(TypeMap, NamesOfTablesAreKeptApart)
{
    std::string first = freshTable();
    std::string second = freshTable();
    Json::Value definition = definitionOf(first, json(R"({"a": {"cpptype": "int"}})"));
    definition[second]["member"]["a"]["cpptype"] = "string";
    EXPECT_EQ("int", VORN_JSON_DB::recType(definition, first)["a"]["cpptype"].asString());
    EXPECT_EQ("string", VORN_JSON_DB::recType(definition, second)["a"]["cpptype"].asString());
    EXPECT_EQ("int", VORN_JSON_DB::recType(definition, first)["a"]["cpptype"].asString());
}

// Nothing was entered: the name stays without types for the rest of the process, whatever definition comes later.
LOGGED_TEST(TypeMap, AWrongDefinitionIsLoggedAndRemembered)
{
    struct Case
    {
        const char* definition;
        const char* condition;
    };
    const Case cases[] = {
        {"null", "jTableDef.empty()"},
        {"{}", "jTableDef.empty()"},
        {"[]", "jTableDef.empty()"},
        {R"({"another": {"member": {"a": {"cpptype": "int"}}}})", "!jTableDef.isMember(strJsonName)"},
        {R"({"T": null})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": []})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": [{"member": {}}]})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": "member"})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": 5})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": true})", "!jTableDef[strJsonName].isObject()"},
        {R"({"T": {}})", "!jTableDef[strJsonName].isMember(\"member\")"},
        {R"({"T": {"members": {}}})", "!jTableDef[strJsonName].isMember(\"member\")"},
        {R"({"T": {"member": null}})", "!jTableDef[strJsonName][\"member\"].isObject()"},
        {R"({"T": {"member": []}})", "!jTableDef[strJsonName][\"member\"].isObject()"},
        {R"({"T": {"member": ["a"]}})", "!jTableDef[strJsonName][\"member\"].isObject()"},
        {R"({"T": {"member": "a"}})", "!jTableDef[strJsonName][\"member\"].isObject()"},
        {R"({"T": {"member": 1.5}})", "!jTableDef[strJsonName][\"member\"].isObject()"},
        {R"({"T": {"member": {}}})", "jType == Json::nullValue || !jType.isMember(strJsonName)"},
        {R"({"T": {"member": {"a": null}}})", "!jTableDef[strJsonName][\"member\"][strKey].isMember(\"cpptype\")"},
        {R"({"T": {"member": {"a": {}}}})", "!jTableDef[strJsonName][\"member\"][strKey].isMember(\"cpptype\")"},
        {R"({"T": {"member": {"a": {"CPPTYPE": "int"}, "b": {"cpptype": "int"}}}})",
         "!jTableDef[strJsonName][\"member\"][strKey].isMember(\"cpptype\")"},
        {R"({"T": {"member": {"a": {"cpptype": null}}}})",
         "!jTableDef[strJsonName][\"member\"][strKey][\"cpptype\"].isString()"},
        {R"({"T": {"member": {"a": {"cpptype": 5}}}})",
         "!jTableDef[strJsonName][\"member\"][strKey][\"cpptype\"].isString()"},
        {R"({"T": {"member": {"a": {"cpptype": ["int"]}}}})",
         "!jTableDef[strJsonName][\"member\"][strKey][\"cpptype\"].isString()"},
    };
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.definition);
        std::string name = freshTable();
        Json::Value definition = json(withName(each.definition, name));
        const std::string text = compact(definition);
        EXPECT_TRUE(
            logged(lookupFailure(each.condition, name, text), [&] { return &VORN_JSON_DB::recType(definition, name); })
                ->isNull());
        EXPECT_EQ(text, compact(definition));

        Json::Value correct = definitionOf(name, json(R"({"a": {"cpptype": "int"}})"));
        EXPECT_TRUE(logged(lookupFailure(notAnObject, name, compact(correct)),
                           [&] { return &VORN_JSON_DB::recType(correct, name); })
                        ->isNull());
    }
}

// The empty name is looked at after the rest of the definition, and is one name for the whole process.
TEST(TypeMap, AnEmptyTableNameIsRefused)
{
    std::string name;
    Json::Value definition = definitionOf(name, json(R"({"a": {"cpptype": "int"}})"));
    const std::string text = compact(definition);
    EXPECT_TRUE(
        logged(lookupFailure("strJsonName.empty()", "", text), [&] { return &VORN_JSON_DB::recType(definition, name); })
            ->isNull());
    EXPECT_TRUE(logged(lookupFailure(notAnObject, "", text), [&] { return &VORN_JSON_DB::recType(definition, name); })
                    ->isNull());
}

LOGGED_TEST(TypeMap, MembersBeforeAFailingOneStayKnown)
{
    for (const char* const beta : {"{}", R"({"cpptype": 5})", R"({"cppDefaultValue": "int"})"})
    {
        std::string name = freshTable();
        Json::Value members = json(R"({"alpha": {"cpptype": "int", "cppDefaultValue": 1},
                                           "gamma": {"cpptype": "string"}})");
        members["beta"] = json(beta);
        Json::Value definition = definitionOf(name, members);
        const Json::Value alphaOnly = json(R"({"alpha": {"cpptype": "int", "cppDefaultValue": 1}})");
        const char* const condition = members["beta"].isMember("cpptype")
                                          ? "!jTableDef[strJsonName][\"member\"][strKey][\"cpptype\"].isString()"
                                          : "!jTableDef[strJsonName][\"member\"][strKey].isMember(\"cpptype\")";
        EXPECT_EQ(alphaOnly, *logged(lookupFailure(condition, name, compact(definition)),
                                     [&] { return &VORN_JSON_DB::recType(definition, name); }));

        Json::Value corrected = definition;
        corrected[name]["member"]["beta"] = json(R"({"cpptype": "int"})");
        EXPECT_EQ(alphaOnly, *logged({}, [&] { return &VORN_JSON_DB::recType(corrected, name); }));
    }
}

TEST(TypeMap, TheLastTraceLineShowsTheWholeCache)
{
    std::string known = freshTable();
    Json::Value definition = definitionOf(known, json(R"({"a": {"cpptype": "int", "cppDefaultValue": "é"}})"));
    VORN_JSON_DB::recType(definition, known);

    std::string unknown = freshTable();
    Json::Value none;
    Json::Value caches[2];
    for (Json::Value& cache : caches)
    {
        LogCapture capture;
        VORN_JSON_DB::recType(none, unknown);
        capture.stop();
        const std::vector<LogLine> lines = capture.lines();
        ASSERT_EQ(4U, lines.size());
        ASSERT_EQ("jType=", lines[3].message.substr(0, 6));
        cache = json(lines[3].message.substr(6));
        EXPECT_EQ(definition[known]["member"], cache[known]);
    }
    // The entry of the unknown name is made after the lines of its first lookup.
    EXPECT_FALSE(caches[0].isMember(unknown));
    EXPECT_TRUE(caches[1].isMember(unknown));
    EXPECT_TRUE(caches[1][unknown].isNull());
}

TEST(TypeMap, ADefinitionOfAWrongKindThrowsAsTheJsonLibraryDoes)
{
    for (const char* const text : {"5", "1.5", "true", "\"text\"", "[1]"})
    {
        std::string name = freshTable();
        Json::Value definition = json(text);
        logged({}, [&] { EXPECT_THROW(VORN_JSON_DB::recType(definition, name), Json::LogicError) << text; });
        // Nothing is remembered of it.
        Json::Value correct = definitionOf(name, json(R"({"a": {"cpptype": "int"}})"));
        EXPECT_EQ(correct[name]["member"], *logged({}, [&] { return &VORN_JSON_DB::recType(correct, name); }));
    }
}

TEST(TypeMap, AMemberEntryOfAWrongKindThrowsAndLeavesTheMembersBeforeIt)
{
    for (const char* const entry : {"5", "\"int\"", "[\"int\"]", "true"})
    {
        std::string name = freshTable();
        Json::Value members = json(R"({"alpha": {"cpptype": "int"}, "gamma": {"cpptype": "int"}})");
        members["beta"] = json(entry);
        Json::Value definition = definitionOf(name, members);
        logged({}, [&] { EXPECT_THROW(VORN_JSON_DB::recType(definition, name), Json::LogicError) << entry; });
        EXPECT_EQ(json(R"({"alpha": {"cpptype": "int"}})"),
                  *logged({}, [&] { return &VORN_JSON_DB::recType(definition, name); }));
    }
}

// The definition comes from a file with comments, whose text must not leak into a log line.
TEST(TypeMap, CommentsOfAParsedDefinitionAreNotLogged)
{
    std::string name = freshTable();
    Json::Value definition = json("// first\n{\"other\": 1 // inside\n}");
    logged(lookupFailure("!jTableDef.isMember(strJsonName)", name, R"({"other":1})"),
           [&] { VORN_JSON_DB::recType(definition, name); });
}
