// SPDX-License-Identifier: MIT
//
// '%' in a value list: what callers see of known texts, and hostile ones of which no conversion may touch memory.

#include <gtest/gtest.h>

#include "random_format.h"
#include "texts.h"

using namespace support;

namespace
{

// What texts may need before the formatter reports a lack of memory. Little, because large blocks come from ever lower
// addresses under emulation, freed ones are not used again, and an address sanitizer hangs once 1 GB has been gone
// through.
constexpr sqlite3_int64 heapForTexts = sqlite3_int64{4} * 1024 * 1024;

const std::vector<std::string> hostile = textsOf(
    "%|%%|%%%|%5%|%-|%s|%d|%f|50% off|%s%s%n%p|%.*s|%*d|%*.*f|%2000000000d|%z|%zzz|%n|%n%n%n%n|%lln|%c|%T|%S|%r|"
    "%p|%q|%Q|%w|%!.9s|%,d|%.2000000000s|%-*z|%99999999999d|%.*f|%e%E%g%G|%x%X%o%u|%i|%lllld|%l|%ll|%.|"
    "%#!0+- ,5.5d|\xff%\xff"
    "|%é|%'|'%s'%s'%s'|%d%d%d%d%d%d%d%d%d%d%d%d|%s%n%z%s%n%z%s%n%z|%hd|%jd|%1$s|%a|%m|%C");

const std::vector<std::string> everyType = textsOf(
    "string|int|long long|long|bool|unsigned|unsigned int|unsigned long long|unsigned long|float|double|"
    "Json::objectValue|Json::arrayValue");

Json::Value sampleOf(const std::string& type, const std::string& string)
{
    Json::Value value = 7;
    if (type == "string")
    {
        value = string;
    }
    else if (type == "bool")
    {
        value = true;
    }
    else if (type == "float" || type == "double")
    {
        value = 1.5;
    }
    else if (type.rfind("Json", 0) == 0)
    {
        value = Json::Value(Json::arrayValue);
        value.append(string);
    }
    return value;
}

}  // namespace

TEST(ValuePercent, KnownTextsAroundOneValue)
{
    struct Case
    {
        const char* prefix;
        const char* type;
        Json::Value value;
        const char* expected;
    };
    const Case cases[] = {
        {"(", "string", "50% off", "('50% off') "},
        {"100%% (", "string", "x", "100% ('x') "},
        {"%%%% ", "string", "x", "%% 'x') "},
        {"%", "string", "x", "%Q) "},
        {"%5%", "string", "x", "    %'x') "},
        {"50% off", "string", "abc", "500ffNULL) "},
        {"50% off", "long long", 8, "5010ff0) "},
        {"%s", "string", "abc", "abcNULL) "},
        {"%s", "long long", 8, "0) "},
        {"%q|%Q|%w|", "long long", 8, "(NULL)|NULL|(NULL)|0) "},
        {"%d|", "string", "12", "0|NULL) "},
        {"%d|%d|", "long long", 8, "8|0|0) "},
        {"%f|", "string", "1.5", "0.000000|NULL) "},
        {"%f|%f|", "double", 1.5, "1.500000|0.000000|0.000000) "},
        {"%f|", "long long", 8, "0.000000|0) "},
        {"%d|", "double", 1.5, "0|0.000000) "},
        {"%s%s%n%p|", "string", "abc", "abc0|NULL) "},
        {"%.*s|", "string", "abc", "|NULL) "},
        {"%.*s|", "long long", 3, "|0) "},
        {"%*d|", "long long", 3, "  0|0) "},
        {"%*d|", "long long", -3, "0  |0) "},
        {"%*d|", "string", "3", "0|NULL) "},
        {"%n|", "string", "abc", "|'abc') "},
        {"%n%n|", "long long", 8, "|8) "},
        {"%z|", "string", "abc", "abc|NULL) "},
        {"%z|", "long long", 8, "|0) "},
        {"a%yb", "string", "abc", "a) "},
        {"a%T", "string", "abc", "a) "},
        {"a%S", "string", "abc", "a) "},
        {"a%5", "string", "abc", "a    %Q) "},
        {"%c|", "long long", 65, "A|0) "},
        {"a%c|", "string", "abc", "a) "},
        {"%,d|", "long long", 1234567, "1,234,567|0) "},
        {"%r|", "long long", 2, "2nd|0) "},
        {"%!.2s|", "string", "é€x", "é€|NULL) "},
    };
    for (const Case& each : cases)
    {
        SCOPED_TRACE(std::string(each.prefix) + " with " + each.type);
        Store store(memberList({each.type}));
        EXPECT_EQ(each.expected, valueList(store, each.prefix, recordOf({each.value})));
    }
}

TEST(ValuePercent, KnownTextsInEarlierValues)
{
    struct Case
    {
        const char* earlier;
        const char* type;
        Json::Value value;
        const char* expected;
    };
    const Case cases[] = {
        {"50% off", "int", 8, "'5010ff',0) "},
        {"50% off", "string", "x", "'500ff',NULL) "},
        {"100%", "int", 8, "'100) "},
        {"100%%", "int", 8, "'100%',8) "},
        {"100%%%%", "int", 8, "'100%%',8) "},
        {"%s", "string", "it's", "'it's',NULL) "},
        {"%q", "string", "it's", "'it''s',NULL) "},
        {"%Q", "string", "it's", "''it''s'',NULL) "},
        {"%d", "bool", true, "'1',0) "},
        {"%f", "float", 1.5, "'1.500000',0.000000) "},
        {"%f", "double", 1.5, "'1.500000',0.000000) "},
        {"%u", "unsigned", 8, "'8',0) "},
        {"%s", "Json::arrayValue", Json::Value(Json::arrayValue), "'[]',NULL) "},
    };
    for (const Case& each : cases)
    {
        SCOPED_TRACE(std::string(each.earlier) + " before " + each.type);
        Store store(memberList({"string", each.type}));
        EXPECT_EQ(each.expected, valueList(store, "", recordOf({each.earlier, each.value})));
    }

    // Three passes: "%%%%" shrinks at each later one.
    Store three(memberList({"string", "int", "int"}));
    EXPECT_EQ("'%',1,2) ", valueList(three, "", recordOf({"%%%%", 1, 2})));
    EXPECT_EQ("'1',0,2) ", valueList(three, "", recordOf({"%d", 1, 2})));
    EXPECT_EQ("'2',1,0) ", valueList(three, "", recordOf({"%%d", 1, 2})));
}

TEST(ValuePercent, TextOfTheCallerEndsAtItsFirstNul)
{
    Store one(memberList({"string"}));
    EXPECT_EQ("a) ", valueList(one, std::string("a\0b", 3), recordOf({"x"})));
    EXPECT_EQ("a%) ", valueList(one, std::string("a%\0b", 4), recordOf({"x"})));
    EXPECT_EQ("a%) ", valueList(one, std::string("a%%\0b", 5), recordOf({"x"})));
    EXPECT_EQ("a) ", valueList(one, std::string("a%5\0b", 5), recordOf({"x"})));
    EXPECT_EQ("ax) ", valueList(one, std::string("a%s\0b", 5), recordOf({"x"})));
    Store two(memberList({"int", "string"}));
    EXPECT_EQ("a,'x') ", valueList(two, std::string("a\0b", 3), recordOf({1, "x"})));
}

TEST(ValuePercent, AWidthBeyondSqlitesLimitThrowsAndLeavesTheTextAsItWas)
{
    Store store(memberList({"string", "int"}));
    for (const char* const earlier : {"%2000000000d", "%*d"})
    {
        Json::Value record = recordOf({earlier, 2000000000});
        std::string out = "VALUES (";
        EXPECT_THROW(store->SqlExpandMemberSymbol(out, record), std::logic_error) << earlier;
        EXPECT_EQ("VALUES (", out);
    }
}

// Whatever stands before a value of whatever type: a text or the formatter's lack of memory, and nothing else.
TEST(ValuePercent, HostileTextsNeverReachMemory)
{
    const sqlite3_int64 limitBefore = sqlite3_hard_heap_limit64(sqlite3_memory_used() + heapForTexts);
    for (const std::string& type : everyType)
    {
        for (const std::string& last : everyType)
        {
            Store store(memberList({"string", type.c_str(), "Json::arrayValue", last.c_str()}));
            for (const std::string& each : hostile)
            {
                for (const std::string& prefix : {std::string("("), each})
                {
                    const Json::Value record =
                        recordOf({each, sampleOf(type, each), sampleOf("Json::", each), sampleOf(last, each)});
                    try
                    {
                        valueList(store, prefix, record);
                    }
                    catch (const std::logic_error&)
                    {
                    }
                }
            }
        }
    }
    sqlite3_hard_heap_limit64(limitBefore);
}

TEST(ValuePercent, RandomTextsNeverReachMemory)
{
    static const char* const pieces[] = {"%", "%", "%", "l", "*", ".", "-", "!", "12", "5000", "s",    "d", "f",
                                         "n", "z", "q", "Q", "c", "p", "g", "'", "x",  "T",    "\xff", ","};
    RandomFormat random;
    Store store(memberList({"string", "int", "string", "double", "unsigned", "Json::objectValue", "string"}));
    static_cast<void>(store.types());
    const sqlite3_int64 usedBefore = sqlite3_memory_used();
    const sqlite3_int64 limitBefore = sqlite3_hard_heap_limit64(usedBefore + heapForTexts);
    const auto draw = [&]
    {
        std::string result;
        for (size_t count = random.below(12); count > 0; --count)
            result += random.of(pieces);
        return result;
    };
    for (int round = 0; round < 5000; ++round)
    {
        Json::Value object;
        object[draw()] = draw();
        Json::Value record = recordOf({draw(), static_cast<int>(random.below(5000)), draw(), 1e10, 3U, object, draw()});
        std::string out = draw();
        try
        {
            EXPECT_EQ(0, store->SqlExpandMemberSymbol(out, record));
        }
        catch (const std::logic_error&)
        {
        }
    }
    sqlite3_hard_heap_limit64(limitBefore);
    EXPECT_EQ(usedBefore, sqlite3_memory_used());
}
