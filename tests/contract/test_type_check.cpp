// SPDX-License-Identifier: MIT
//
// The type check of a record: which JSON kinds each declared type accepts, and which member is reported.

#include <gtest/gtest.h>

#include <limits>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

// What a value is taken for. A real number without fraction counts as an integer, as JsonCpp's isIntegral() says.
enum class Accepts
{
    Integer,
    Boolean,
    String,
    Array,
    Object,
    Nothing
};

struct Sample
{
    Json::Value value;
    std::string text;
    Accepts kind;
};

std::vector<Sample> samples()
{
    std::vector<Sample> list = {
        {Json::Value(), "null", Accepts::Nothing},
        {Json::Value(true), "true", Accepts::Boolean},
        {Json::Value(false), "false", Accepts::Boolean},
        {Json::Value(std::numeric_limits<double>::quiet_NaN()), "NaN", Accepts::Nothing},
        {Json::Value(std::numeric_limits<double>::infinity()), "Infinity", Accepts::Nothing},
        {Json::Value(5U), "5", Accepts::Integer},
    };
    struct Text
    {
        const char* text;
        Accepts kind;
    };
    const Text texts[] = {
        {"0", Accepts::Integer},
        {"5", Accepts::Integer},
        {"-5", Accepts::Integer},
        {"2147483648", Accepts::Integer},
        {"9223372036854775807", Accepts::Integer},
        {"-9223372036854775808", Accepts::Integer},
        {"18446744073709551615", Accepts::Integer},
        {"3.0", Accepts::Integer},
        {"-0.0", Accepts::Integer},
        {"1.5", Accepts::Nothing},
        {"1e+20", Accepts::Nothing},
        {R"("")", Accepts::String},
        {R"("5")", Accepts::String},
        {R"("O'Neil é 100%s")", Accepts::String},
        {"[]", Accepts::Array},
        {"[1,2]", Accepts::Array},
        {"{}", Accepts::Object},
        {R"({"a":1})", Accepts::Object},
    };
    for (const Text& each : texts)
        list.push_back({json(each.text), each.text, each.kind});
    return list;
}

struct Type
{
    const char* name;
    Accepts accepts;
};

const Type types[] = {
    {"int", Accepts::Integer},
    {"long long", Accepts::Integer},
    {"uid_t", Accepts::Integer},
    {"time_t", Accepts::Integer},
    {"bool", Accepts::Boolean},
    {"string", Accepts::String},
    {"Json::arrayValue", Accepts::Array},
    {"Json::objectValue", Accepts::Object},
};

Json::Value recordWith(const Json::Value& value)
{
    Json::Value record;
    record["m"] = value;
    return record;
}

}  // namespace

TEST(TypeCheck, EachTypeAcceptsItsOwnKindOnly)
{
    for (const Type& type : types)
    {
        Store store(std::string(R"({"m": {"cpptype": ")") + type.name + R"("}})");
        for (const Sample& sample : samples())
        {
            SCOPED_TRACE(std::string(type.name) + " with " + sample.text);
            Json::Value record = recordWith(sample.value);
            if (sample.kind == type.accepts)
            {
                EXPECT_SILENT(0, store->checkJsonType(record));
            }
            else
            {
                EXPECT_LOGS(-1, store->checkJsonType(record),
                            error(R"(type failed, strKey=m, jRecParam={"m":)" + sample.text + "}"));
            }
        }
    }
}

LOGGED_TEST(TypeCheck, AFailureIsLoggedInEveryOutput)
{
    Store store(R"({"m": {"cpptype": "int"}, "n": {"cpptype": "string"}, "d": {"cpptype": "double"}})");
    Json::Value record = json(R"({"m": "5", "other": [1], "n": "O'Neil é 100%s"})");
    const Json::Value before = record;
    EXPECT_LOGS(-1, store->checkJsonType(record),
                error(R"(type failed, strKey=m, jRecParam={"m":"5","n":"O'Neil é 100%s","other":[1]})"));
    EXPECT_EQ(before, record);
    Json::Value unknown = json(R"({"d": 1.5})");
    EXPECT_LOGS(-1, store->checkJsonType(unknown), error("type not found!!, key=d"));
}

TEST(TypeCheck, OtherDeclaredTypesAreRefusedWhateverTheValue)
{
    for (const std::string type : {"unsigned int", "unsigned long long", "long", "unsigned long", "unsigned", "float",
                                   "double", "Json::Value", "", "INT", "int ", "String", "arrayValue", "100%s"})
    {
        Store store(R"({"m": {"cpptype": ")" + type + R"("}})");
        for (const Sample& sample : samples())
        {
            Json::Value record = recordWith(sample.value);
            EXPECT_LOGS(-1, store->checkJsonType(record), error("type not found!!, key=m"));
        }
        Json::Value without = json(R"({"other": 1})");
        EXPECT_SILENT(0, store->checkJsonType(without));
    }
}

LOGGED_TEST(TypeCheck, OnlyAnObjectIsARecord)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    for (const char* const text : {"null", "[]", R"([{"m": 1}])", "\"m\"", "5", "1.5", "true"})
    {
        Json::Value record = json(text);
        EXPECT_LOGS(-1, store->checkJsonType(record), failed("!jRecParam.isObject()"));
        EXPECT_EQ(json(text), record);
    }
    Json::Value empty(Json::objectValue);
    EXPECT_SILENT(0, store->checkJsonType(empty));
}

LOGGED_TEST(TypeCheck, UndeclaredMembersPassUnchecked)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    Json::Value record = json(R"({"x": "abc", "M": "abc", "m ": null, "": [], "z": {"m": "abc"}})");
    EXPECT_SILENT(0, store->checkJsonType(record));
}

TEST(TypeCheck, OnlyTheFirstBadMemberInNameOrderIsReported)
{
    Store store(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int"}, "c": {"cpptype": "double"}})");
    Json::Value record = json(R"({"c": 1.5, "b": "x", "a": 1})");
    EXPECT_LOGS(-1, store->checkJsonType(record), error(R"(type failed, strKey=b, jRecParam={"a":1,"b":"x","c":1.5})"));
    record["b"] = 2;
    EXPECT_LOGS(-1, store->checkJsonType(record), error("type not found!!, key=c"));
    record["a"] = Json::Value();
    EXPECT_LOGS(-1, store->checkJsonType(record),
                error(R"(type failed, strKey=a, jRecParam={"a":null,"b":2,"c":1.5})"));
}

LOGGED_TEST(TypeCheck, ADefinitionWithoutTheTableChecksNothing)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = json(R"({"other": {"member": {"m": {"cpptype": "int"}}}})");
    std::string create = "CREATE TABLE " + name + " (m)";
    VornJsonDbApi api(database.handle(), name, definition, create);
    const ExpectedLines details = {inUtil(trace("strJsonName=" + name)),
                                   inUtil(trace(R"(jTableDef={"other":{"member":{"m":{"cpptype":"int"}}}})")),
                                   inUtil(trace("jType=<any>"))};
    Json::Value record = json(R"({"m": "text"})");
    EXPECT_LOGS(0, api.checkJsonType(record), inUtil(failed("!jTableDef.isMember(strJsonName)")), details);
    // The types are looked up before the record is looked at.
    Json::Value array(Json::arrayValue);
    EXPECT_LOGS(-1, api.checkJsonType(array), inUtil(failed("jType[strJsonName].type() != Json::objectValue")), details,
                failed("!jRecParam.isObject()"));
}
