// SPDX-License-Identifier: MIT
//
// The column list and the value list of an insert: which members they hold, how each declared type renders a value,
// and what is refused.

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const people =
    R"({"age": {"cpptype": "int"}, "name": {"cpptype": "string"}, "zip": {"cpptype": "string"}})";

std::string columns(Store& store, Json::Value* pRecord)
{
    std::string text = "(";
    EXPECT_SILENT(0, store->SqlExpandMemberName(text, pRecord));
    return text;
}

std::string values(Store& store, Json::Value record)
{
    std::string text = "(";
    EXPECT_SILENT(0, store->SqlExpandMemberSymbol(text, record));
    return text;
}

void expectRefused(Store& store, Json::Value record, const ExpectedLines& lines)
{
    std::string text = "VALUES (100%";
    EXPECT_LOGS(-1, store->SqlExpandMemberSymbol(text, record), lines);
    EXPECT_EQ("VALUES (100%", text);
}

template <class Exception>
void expectThrows(Store& store, Json::Value record, const std::string& prefix = "VALUES (100%")
{
    const sqlite3_int64 usedBefore = sqlite3_memory_used();
    std::string text = prefix;
    logged({}, [&] { EXPECT_THROW(store->SqlExpandMemberSymbol(text, record), Exception); });
    EXPECT_EQ(prefix, text);
    EXPECT_EQ(usedBefore, sqlite3_memory_used());
}

std::string memberOf(const std::string& type)
{
    return R"({"m": {"cpptype": ")" + type + R"("}})";
}

Json::Value recordWith(const Json::Value& value)
{
    Json::Value record;
    record["m"] = value;
    return record;
}

struct Rendering
{
    Json::Value value;
    std::string expected;
};

void expectRenderings(std::initializer_list<const char*> types, const std::vector<Rendering>& renderings)
{
    for (const char* const type : types)
    {
        Store store(memberOf(type));
        for (const Rendering& each : renderings)
        {
            SCOPED_TRACE(std::string(type) + " with " + each.value.toStyledString());
            EXPECT_EQ("(" + each.expected + ") ", values(store, recordWith(each.value)));
        }
    }
}

void expectRejectedKinds(std::initializer_list<const char*> types, const std::vector<Json::Value>& wrong)
{
    for (const char* const type : types)
    {
        Store store(memberOf(type));
        for (const Json::Value& value : wrong)
        {
            SCOPED_TRACE(std::string(type) + " with " + value.toStyledString());
            expectThrows<Json::LogicError>(store, recordWith(value));
        }
    }
}

constexpr double infinity = std::numeric_limits<double>::infinity();
const Json::UInt64 beyondSigned = 9223372036854775808ULL;

}  // namespace

LOGGED_TEST(ColumnList, HoldsTheMembersOfTheRecordInTheDefinitionsOrder)
{
    struct Case
    {
        const char* record;
        const char* expected;
    };
    const Case cases[] = {
        {R"({"zip": "12345", "name": "O'Neil", "age": 3})", "(age,name,zip"},
        {R"({"zip": "12345", "age": 3})", "(age,zip"},
        {R"({"zip": null})", "(zip"},
        // Without the definition's last member the list stays open.
        {R"({"age": 3, "name": "O'Neil"})", "(age,name,"},
        {R"({"age": 3})", "(age,"},
        {"{}", "("},
        {"null", "("},
        {R"({"zip": "1", "other": 1, "AGE": 1})", "(zip"},
        {R"({"other": 1})", "("},
    };
    Store store(people);
    EXPECT_EQ("(age,name,zip", columns(store, nullptr));
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.record);
        Json::Value record = json(each.record);
        EXPECT_EQ(each.expected, columns(store, &record));
        EXPECT_EQ(json(each.record), record);
    }
    std::string appended = "SELECT ";
    EXPECT_EQ(0, store->SqlExpandMemberName(appended));
    EXPECT_EQ("SELECT age,name,zip", appended);
}

// The names come from the object's own definition, not from the process's type map of the table.
TEST(ColumnList, NeedsNoTypes)
{
    Store store(R"({"a": {}, "b": 5, "100%s": null})");
    EXPECT_EQ("(100%s,a,b", columns(store, nullptr));
    Json::Value record = json(R"({"b": 1})");
    EXPECT_EQ("(b", columns(store, &record));
}

TEST(ColumnList, ARecordOfAWrongKindThrowsAsTheJsonLibraryDoes)
{
    Store store(people);
    for (const char* const text : {"[]", "5", "\"age\"", "true"})
    {
        Json::Value record = json(text);
        std::string out;
        logged({}, [&] { EXPECT_THROW(store->SqlExpandMemberName(out, &record), Json::LogicError) << text; });
    }
}

LOGGED_TEST(ValueList, HoldsTheValuesInTheDefinitionsOrderAndClosesAfterTheLast)
{
    struct Case
    {
        const char* record;
        const char* expected;
    };
    const Case cases[] = {
        {R"({"zip": "12345", "name": "O'Neil", "age": 3})", "(3,'O''Neil','12345') "},
        {R"({"zip": "12345", "age": 3})", "(3,'12345') "},
        {R"({"zip": "1"})", "('1') "},
        {R"({"age": 3, "name": "O'Neil"})", "(3,'O''Neil',"},
        {R"({"name": "O'Neil"})", "('O''Neil',"},
        {"{}", "("},
        {"null", "("},
        {R"({"zip": "1", "other": [1], "AGE": 1})", "('1') "},
        {R"({"other": 1})", "("},
    };
    Store store(people);
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.record);
        EXPECT_EQ(each.expected, values(store, json(each.record)));
    }
}

LOGGED_TEST(ValueList, AnEmptyMemberListWritesNothing)
{
    const Database database;
    for (const char* const member : {R"({"member": {}})", R"({"member": null})", "{}", "null"})
    {
        std::string name = freshTable();
        Json::Value definition;
        definition[name] = json(member);
        std::string create = "CREATE TABLE " + name + " (a)";
        VornJsonDbApi api(database.handle(), name, definition, create);
        std::string text = "100%% (";
        Json::Value record = json(R"({"a": 1})");
        const auto expectNothing = [&](int status)
        {
            EXPECT_EQ(0, status);
            EXPECT_EQ("100%% (", text);
        };
        expectNothing(logged({}, [&] { return api.SqlExpandMemberName(text); }));
        expectNothing(logged({}, [&] { return api.SqlExpandMemberName(text, &record); }));
        expectNothing(logged({inUtil(failed("<any>")), inUtil(trace("strJsonName=" + name)),
                              inUtil(trace("jTableDef=<any>")), inUtil(trace("jType=<any>"))},
                             [&] { return api.SqlExpandMemberSymbol(text, record); }));
    }
}

TEST(ValueList, StringsAreQuoted)
{
    expectRenderings({"string"}, {
                                     {"abc", "'abc'"},
                                     {"", "''"},
                                     {"'", "''''"},
                                     {"O'Ne''il\"`\\", "'O''Ne''''il\"`\\'"},
                                     {"'); DROP TABLE people; --", "'''); DROP TABLE people; --'"},
                                     {"Zürich \xe2\x82\xac \xf0\x9f\x87\xa8\xf0\x9f\x87\xad",
                                      "'Zürich \xe2\x82\xac \xf0\x9f\x87\xa8\xf0\x9f\x87\xad'"},
                                     {"\xff\xfe' \xc3", "'\xff\xfe'' \xc3'"},
                                     {"a\nb\tc\r\x01", "'a\nb\tc\r\x01'"},
                                     {"100% %s %n %%", "'100% %s %n %%'"},
                                     {std::string("cut\0off'", 8), "'cut'"},
                                     {5, "'5'"},
                                     {-5, "'-5'"},
                                     {true, "'true'"},
                                     {Json::Value(), "''"},
                                     {Json::StaticString(nullptr), "''"},
                                     {3.0, "'3.0'"},
                                     {1.5, "'1.5'"},
                                 });
    expectRejectedKinds({"string"}, {json("[]"), json("{}"), json(R"([1])")});
}

TEST(ValueList, SignedTypesAreDecimalNumbers)
{
    expectRenderings({"int", "long long", "long", "bool"},
                     {
                         {0, "0"},
                         {7, "7"},
                         {-7, "-7"},
                         {Json::Int64{4294967296LL}, "4294967296"},
                         {Json::Int64{std::numeric_limits<Json::Int64>::max()}, "9223372036854775807"},
                         {Json::Int64{std::numeric_limits<Json::Int64>::min()}, "-9223372036854775808"},
                         {5U, "5"},
                         {true, "1"},
                         {false, "0"},
                         {Json::Value(), "0"},
                         {1.9, "1"},
                         {-1.9, "-1"},
                         {-0.0, "0"},
                     });
    expectRejectedKinds({"int", "long long", "long", "bool"},
                        {"5", "", json("[]"), json("{}"), Json::Value(beyondSigned), 1e19, infinity});
}

TEST(ValueList, UnsignedTypesAreDecimalNumbers)
{
    expectRenderings({"unsigned long long", "unsigned int", "unsigned long", "unsigned"},
                     {
                         {0, "0"},
                         {7, "7"},
                         {Json::Value(beyondSigned), "9223372036854775808"},
                         {Json::Value(Json::UInt64{18446744073709551615ULL}), "18446744073709551615"},
                         {true, "1"},
                         {false, "0"},
                         {Json::Value(), "0"},
                         {1.9, "1"},
                     });
    expectRejectedKinds(
        {"unsigned long long", "unsigned int", "unsigned long", "unsigned"},
        {-1, Json::Value(std::numeric_limits<Json::Int64>::min()), "5", json("[]"), json("{}"), -1.5, 1e20, infinity});
}

TEST(ValueList, FloatingTypesHaveSixDigitsAfterThePoint)
{
    expectRenderings({"float", "double"}, {
                                              {1.5, "1.500000"},
                                              {2.25, "2.250000"},
                                              {-2.25, "-2.250000"},
                                              {0.0, "0.000000"},
                                              {7, "7.000000"},
                                              {true, "1.000000"},
                                              {Json::Value(), "0.000000"},
                                              {1e-9, "0.000000"},
                                              {infinity, "Inf"},
                                              {-infinity, "-Inf"},
                                          });
    expectRenderings({"float"}, {{16777217, "16777216.000000"}, {1e300, "Inf"}});
    expectRenderings({"double"}, {{16777217, "16777217.000000"}, {123456789.125, "123456789.125000"}});
    expectRejectedKinds({"float", "double"}, {"1.5", "", json("[]"), json("{}")});
}

TEST(ValueList, ObjectsAndArraysAreCompactQuotedText)
{
    expectRenderings(
        {"Json::objectValue", "Json::arrayValue"},
        {
            {json("{}"), "'{}'"},
            {json("[]"), "'[]'"},
            {json(R"({"b": 1, "a": [true, null, 1.5, "O'Neil"]})"), R"('{"a":[true,null,1.5,"O''Neil"],"b":1}')"},
            {json(R"([{"é": "€"}, "100% %s"])"), R"('[{"é":"€"},"100% %s"]')"},
            {json("[0.1, 18446744073709551615, -1e300]"),
             "'[0.10000000000000001,18446744073709551615,"
             "-1.0000000000000001e+300]'"},
            // Nothing checks the kind here.
            {5, "'5'"},
            {"it's", "'\"it''s\"'"},
            {Json::Value(), "'null'"},
            {true, "'true'"},
        });
}

LOGGED_TEST(ValueList, OtherTypesAreRefusedWhenTheRecordCarriesThem)
{
    for (const std::string type :
         {"Json::Value", "uid_t", "time_t", "", "INT", "String", "Json::nullValue", "long double", "100%s"})
    {
        Store store(R"({"a": {"cpptype": "int"}, "m": {"cpptype": ")" + type + R"("}})");
        for (const char* const value : {"1", "null", "\"x\"", "[]"})
        {
            expectRefused(store, json(std::string(R"({"a": 1, "m": )") + value + "}"),
                          {error("cannot support this type=" + type)});
        }
        EXPECT_EQ("(1,", values(store, json(R"({"a": 1})")));
    }
}

// The type map knows only alpha: beta, which comes next, is refused before the record is looked at.
LOGGED_TEST(ValueList, AMemberWithoutKnownTypeIsRefusedWhateverTheRecordHolds)
{
    Store store(R"({"alpha": {"cpptype": "int"}, "beta": {}, "gamma": {"cpptype": "int"}})");
    LogCapture ignored;
    store.types();
    ignored.stop();
    for (const char* const text : {"{}", R"({"alpha": 1})", R"({"gamma": 1})", R"({"beta": 1})"})
        expectRefused(store, json(text), {failed("!jType.isMember(strKey)")});
    // A value before it that cannot be converted is met first.
    expectThrows<Json::LogicError>(store, json(R"({"alpha": "x"})"));
}

TEST(ValueList, ARecordOfAWrongKindThrowsAsTheJsonLibraryDoes)
{
    Store store(people);
    for (const char* const text : {"[]", "5", "\"age\"", "true"})
        expectThrows<Json::LogicError>(store, json(text));
}

TEST(ValueList, AValueRefusedInTheMiddleLeavesTheTextAsItWas)
{
    Store store(people);
    expectThrows<Json::LogicError>(store, json(R"({"age": 3, "name": [], "zip": "1"})"));
    expectThrows<Json::LogicError>(store, json(R"({"age": 3, "name": "x", "zip": {}})"));
    expectThrows<Json::LogicError>(store, json(R"({"age": "3", "name": "x", "zip": "1"})"));
}

TEST(ValueList, LackOfMemoryThrowsAndLeavesTheTextAsItWas)
{
    Store store(people);
    static_cast<void>(store.types());
    const Json::Value record = json(R"({"age": 3, "zip": ")" + std::string(1000000, 'x') + "\"}");
    const sqlite3_int64 limitBefore = sqlite3_hard_heap_limit64(sqlite3_memory_used() + 100000);
    for (int round = 0; round < 2; ++round)
        expectThrows<std::logic_error>(store, record, "VALUES (");
    sqlite3_hard_heap_limit64(limitBefore);
    EXPECT_EQ("(3,'" + record["zip"].asString() + "') ", values(store, record));
}

TEST(ValueList, EveryTextOfTheFormatterIsReleased)
{
    Store store(people);
    static_cast<void>(store.types());
    const sqlite3_int64 usedBefore = sqlite3_memory_used();
    for (int round = 0; round < 10; ++round)
    {
        values(store, json(R"({"age": 3, "name": "50% %s", "zip": "12345"})"));
        expectThrows<Json::LogicError>(store, json(R"({"age": 3, "name": "50% %s", "zip": []})"));
    }
    EXPECT_EQ(usedBefore, sqlite3_memory_used());
}

TEST(ValueList, ManyMembersAreWrittenInOrder)
{
    Json::Value members;
    Json::Value record;
    std::string expected = "(";
    for (int i = 1000; i < 1300; ++i)
    {
        const std::string name = "m" + std::to_string(i);
        members[name]["cpptype"] = i % 2 == 0 ? "int" : "string";
        record[name] = i % 2 == 0 ? Json::Value(i) : Json::Value("v" + std::to_string(i));
        expected += i % 2 == 0 ? std::to_string(i) : "'v" + std::to_string(i) + "'";
        expected += i == 1299 ? ") " : ",";
    }
    Store store(members.toStyledString());
    EXPECT_EQ(expected, values(store, record));
}

TEST(ValueList, AnUnsupportedTypeIsRefusedWithoutAnyMemory)
{
    Store store(R"({"any": {"cpptype": "Json::Value"}, "text": {"cpptype": "string"}})");
    static_cast<void>(store.types());
    Json::Value record = json(R"({"any": 1, "text": "x"})");
    std::string out = "VALUES (";
    const NoSqliteMemory shortage;
    EXPECT_EQ(-1, logged({error("cannot support this type=Json::Value")},
                         [&] { return store->SqlExpandMemberSymbol(out, record); }));
    EXPECT_EQ("VALUES (", out);
}

TEST(ValueList, LongTextsAreWrittenWhole)
{
    Store store(people);
    const std::string name(1500000, 'n');
    Json::Value record = json(R"({"age": 3})");
    record["name"] = name;
    record["zip"] = name;
    EXPECT_EQ("(3,'" + name + "','" + name + "') ", values(store, record));
}
