// SPDX-License-Identifier: MIT
//
// The text of JSON members: what a column's text is read as, compared with JsonCpp's own reader on random texts, and
// that a written value comes back as it was. VORN_TEST_SEED repeats a run.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "column_text.h"
#include "json_value.h"
#include "random.h"
#include "texts.h"

using namespace support;

namespace
{

class RandomJson : public Random
{
public:
    // JSON text, mostly strict, with the blanks, escapes, numbers and slips that readers disagree about.
    std::string text(int depth)
    {
        static const char* const blanks[] = {"", "", "", "", " ", "\n", "\t\r ", "/* c */", "\v"};
        const std::string before = of(blanks);
        std::string result;
        switch (below(depth > 0 ? 8 : 5))
        {
            case 0:
            case 1:
                result = number();
                break;
            case 2:
            case 3:
                result = stringText();
                break;
            case 4:
                result = of(words());
                break;
            case 5:
            case 6:
                result = list('[', ']', [&] { return text(depth - 1); });
                break;
            default:
                result = list('{', '}', [&] { return stringText() + of(blanks) + ":" + text(depth - 1); });
                break;
        }
        return before + result + of(blanks);
    }

    // The text with one character lost, doubled or changed.
    std::string damaged(std::string text)
    {
        static const char characters[] = "{}[]\",:\\0eE.-+ u/nN\x01\xff";
        if (text.empty())
            return text;
        const size_t at = below(text.size());
        switch (below(3))
        {
            case 0:
                return text.erase(at, 1);
            case 1:
                return text.insert(at, 1, text[at]);
            default:
                text[at] = characters[below(sizeof characters - 1)];
                return text;
        }
    }

    // A value that every member of a JSON type can hold.
    Json::Value value(int depth)
    {
        static const double reals[] = {0.0,   -0.0, 0.1,    1.5,  -2.25, 1e15,  1e16,    1e17,
                                       1e300, 1e22, 5e-324, 1e-7, 3.0,   1e100, 1.0 / 3, 123456789012345680.0};
        Json::Value result;
        switch (below(depth > 0 ? 9 : 7))
        {
            case 0:
                return result;
            case 1:
                return Json::Value(below(2) == 0);
            case 2:
                return Json::Value(static_cast<Json::Int64>(
                    ((uint64_t{below(1U << 31U)} << 33U) ^ (uint64_t{below(1U << 31U)} << 16U) ^ below(1U << 31U)) >>
                    below(64)));
            case 3:
                return Json::Value(Json::UInt64{18446744073709551615ULL} - below(1000));
            case 4:
                return Json::Value(of(reals) * (below(2) == 0 ? 1 : 1.0000001));
            case 5:
                return Json::Value(below(2) == 0 ? std::numeric_limits<double>::infinity()
                                                 : -std::numeric_limits<double>::infinity());
            case 6:
                return Json::Value(string());
            case 7:
                result = Json::Value(Json::arrayValue);
                for (size_t count = below(5); count > 0; --count)
                    result.append(value(depth - 1));
                return result;
            default:
                result = Json::Value(Json::objectValue);
                for (size_t count = below(5); count > 0; --count)
                    result[string()] = value(depth - 1);
                return result;
        }
    }

private:
    static const std::vector<const char*>& words()
    {
        static const std::vector<const char*> list = {"true", "false", "null",  "true", "NaN", "Infinity", "-Infinity",
                                                      "nul",  "True",  "truex", "tru",  "'x'", ""};
        return list;
    }

    std::string number()
    {
        static const std::vector<std::string> parts = textsOf(
            "|-|+|0|1|00|12345|999999999|1000000000000|.|.|e|E-|e+|5|33|000000000001|18446744073709551615|"
            "9223372036854775807|9223372036854775808");
        std::string result = below(3) == 0 ? "-" : "";
        for (size_t count = 1 + below(4); count > 0; --count)
            result += of(parts);
        return result;
    }

    std::string string()
    {
        static const char* const parts[] = {"a",  "'",    "\"",   "\\",     "/", "\b\f\n\r\t",       "é",
                                            "€",  "\x01", "\x7f", "%s",     "%", "\xf0\x9f\x87\xa8", "//",
                                            "/*", "{}",   " ",    "\\u0041"};
        std::string result;
        for (size_t count = below(5); count > 0; --count)
            result += of(parts);
        return result;
    }

    std::string stringText()
    {
        static const char* const parts[] = {
            "a",       "b c",     "\\\"",           "\\\\",    "\\/",   "\\b\\f\\n\\r\\t",
            "\\u0041", "\\u20ac", "\\ud83c\\udde8", "\\ud83c", "\\u00", "\\x",
            "é",       "\n",      "\x01",           "'",       "{",     "\xff",
            "\\u0000"};
        std::string result = "\"";
        for (size_t count = below(4); count > 0; --count)
            result += of(parts);
        return result + "\"";
    }

    template <class Item>
    std::string list(char open, char close, Item item)
    {
        std::string result(1, open);
        const size_t count = below(4);
        for (size_t i = 0; i < count; ++i)
            result += (i > 0 ? "," : "") + item();
        return result + (below(20) == 0 ? "," : "") + close;
    }
};

// The text as a column's only one.
Json::Value read(const std::string& text)
{
    JsonReader reader;
    return readColumn(text, reader);
}

}  // namespace

TEST(JsonText, IsReadAsByJsonCpp)
{
    RandomJson random;
    JsonReader reader;
    int refused = 0;
    for (int round = 0; round < 100000; ++round)
    {
        std::string text = random.text(4);
        for (size_t slips = random.below(3); slips > 0; --slips)
            text = random.damaged(text);
        text.erase(std::min(text.find('\0'), text.size()));  // a column's text ends at its first NUL
        const Json::Value expected = readReference(text);
        refused += expected.isNull() ? 1 : 0;
        const Json::Value seen = readColumn(text, reader);
        ASSERT_TRUE(identical(expected, seen)) << "seed " << random.seed() << ", round " << round << ", text: " << text
                                               << "\nJsonCpp: " << expected << "\nread:    " << seen;
    }
    // Both kinds of text were tried.
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 99000);
}

TEST(JsonText, KnownTextsAreReadAsByJsonCpp)
{
    for (const std::string& text : textsOf(
             "0|-0|-0.0|1.|.5|-|--1|01|1e5|1E-5|1e400|-1e400|1e-400|0.1|1.5.5|999999999999999999|1000000000000000000|"
             "9223372036854775807|9223372036854775808|-9223372036854775808|-9223372036854775809|18446744073709551615|"
             "18446744073709551616|0.30000000000000004|123456789012345678.5|4.9406564584124654e-324|[]|[1,]|[,]|{}|"
             "{,}|{\"a\":1,}|{\"a\":1,\"a\":{\"b\":2}}|{\"a\":{\"b\":2},\"a\":1}|{\"a\":[1],\"a\":[2]}|{\"\":\"\"}|"
             "{\"a\" 1}|{1:2}|[1 2]|\"open|\"\\\"|\"tab\there\"|\"\\u0000\"|\"\\ud800\"|5 tail|{} {}|[] // c|// c\n[]|"
             "/* open|\xef\xbb\xbf"
             "[1]|\xef\xbb\xbf"
             "|nullx|truefalse|NaN|[NaN]|[Infinity,-Infinity]|+1|\v5|\f5|'x'|"))
    {
        SCOPED_TRACE(text);
        EXPECT_TRUE(identical(readReference(text), read(text))) << read(text);
    }
}

TEST(JsonText, NestingIsReadToTheDepthThatJsonCppAllows)
{
    for (const size_t depth : {1U, 10U, 31U, 32U, 33U, 34U, 100U, 998U, 999U, 1000U, 1001U, 1002U, 5000U, 100000U})
    {
        for (const bool closed : {true, false})
        {
            SCOPED_TRACE(std::to_string(depth) + (closed ? " closed" : " open"));
            std::string arrays(depth, '[');
            std::string objects;
            for (size_t i = 0; i < depth; ++i)
                objects += "{\"a\":";
            objects += "1";
            if (closed)
            {
                arrays += std::string(depth, ']');
                objects += std::string(depth, '}');
            }
            EXPECT_TRUE(identical(readReference(arrays), read(arrays)));
            EXPECT_TRUE(identical(readReference(objects), read(objects)));
        }
    }
}

TEST(JsonText, IsWrittenAsByJsonCppAndComesBackAsItWas)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    writer["emitUTF8"] = true;
    writer["useSpecialFloats"] = true;
    std::string controls;
    for (char control = 1; control < ' '; ++control)
        controls += control;
    EXPECT_EQ(Json::writeString(writer, controls), toString(controls));

    RandomJson random;
    JsonReader reader;
    for (int round = 0; round < 20000; ++round)
    {
        const Json::Value written = random.value(4);
        const std::string text = toString(written);
        ASSERT_EQ(Json::writeString(writer, written), text) << "seed " << random.seed() << ", round " << round;
        const Json::Value seen = readColumn(text, reader);
        ASSERT_TRUE(identical(written, seen))
            << "seed " << random.seed() << ", round " << round << "\nwritten: " << written << "\nread:    " << seen;
    }
}
