// SPDX-License-Identifier: MIT
//
// The text of JSON members: what a column's text is read as, compared with JsonCpp's own reader on random texts, and
// that a written value comes back as it was. VORN_TEST_SEED repeats a run.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

// What JsonCpp reads, special floats included; null for what it refuses.
Json::Value readByJsonCpp(const std::string& text)
{
    static const std::unique_ptr<Json::CharReader> reader = []
    {
        Json::CharReaderBuilder builder;
        builder["allowSpecialFloats"] = true;
        builder["collectComments"] = false;
        return std::unique_ptr<Json::CharReader>(builder.newCharReader());
    }();
    Json::Value value;
    try
    {
        return reader->parse(text.data(), text.data() + text.size(), &value, nullptr) ? value : Json::Value();
    }
    catch (const Json::Exception&)
    {
        return {};
    }
}

// Equal in every kind, 5 and 5.0 being different, and every bit of a real number.
bool isSame(const Json::Value& left, const Json::Value& right)
{
    if (left.type() != right.type() || left.size() != right.size())
    {
        return false;
    }
    if (left.isDouble())
    {
        const double a = left.asDouble();
        const double b = right.asDouble();
        return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
    }
    if (left.isArray())
    {
        for (Json::ArrayIndex i = 0; i < left.size(); ++i)
        {
            if (!isSame(left[i], right[i]))
            {
                return false;
            }
        }
        return true;
    }
    if (left.isObject())
    {
        for (const std::string& name : left.getMemberNames())
        {
            if (!right.isMember(name) || !isSame(left[name], right[name]))
            {
                return false;
            }
        }
        return true;
    }
    return left == right;
}

class RandomJson
{
public:
    RandomJson() { std::printf("VORN_TEST_SEED=%u\n", m_seed); }

    unsigned seed() const { return m_seed; }
    size_t below(size_t limit) { return m_engine() % limit; }

    template <class List>
    const auto& of(const List& list)
    {
        return *(std::begin(list) + static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

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
        {
            return text;
        }
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
                return Json::Value(
                    static_cast<Json::Int64>((static_cast<uint64_t>(m_engine()) << 32U | m_engine()) >> below(64)));
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
                {
                    result.append(value(depth - 1));
                }
                return result;
            default:
                result = Json::Value(Json::objectValue);
                for (size_t count = below(5); count > 0; --count)
                {
                    result[string()] = value(depth - 1);
                }
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
        static const char* const parts[] = {"",
                                            "-",
                                            "+",
                                            "0",
                                            "1",
                                            "00",
                                            "12345",
                                            "999999999",
                                            "1000000000000",
                                            ".",
                                            ".",
                                            "e",
                                            "E-",
                                            "e+",
                                            "5",
                                            "33",
                                            "000000000001",
                                            "18446744073709551615",
                                            "9223372036854775807",
                                            "9223372036854775808"};
        std::string result = below(3) == 0 ? "-" : "";
        for (size_t count = 1 + below(4); count > 0; --count)
        {
            result += of(parts);
        }
        return result;
    }

    std::string string()
    {
        static const char* const parts[] = {"a",  "'",    "\"",   "\\",     "/", "\b\f\n\r\t",       "é",
                                            "€",  "\x01", "\x7f", "%s",     "%", "\xf0\x9f\x87\xa8", "//",
                                            "/*", "{}",   " ",    "\\u0041"};
        std::string result;
        for (size_t count = below(5); count > 0; --count)
        {
            result += of(parts);
        }
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
        {
            result += of(parts);
        }
        return result + "\"";
    }

    template <class Item>
    std::string list(char open, char close, Item item)
    {
        std::string result(1, open);
        const size_t count = below(4);
        for (size_t i = 0; i < count; ++i)
        {
            result += (i > 0 ? "," : "") + item();
        }
        return result + (below(20) == 0 ? "," : "") + close;
    }

    static unsigned chosenSeed()
    {
        const char* const given = std::getenv("VORN_TEST_SEED");
        return given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device()();
    }

    unsigned m_seed = chosenSeed();
    std::mt19937 m_engine{m_seed};
};

// The record's member "m" after a row whose column "m" has this text.
Json::Value readColumn(const std::string& text)
{
    char name[] = "m";
    char* names[] = {name};
    char* values[] = {const_cast<char*>(text.c_str())};
    Json::Value record;
    EXPECT_EQ(0, VornJsonDbApi::DbCallBackFillField(record, names, values, 0));
    EXPECT_TRUE(record.isMember("m"));
    return record["m"];
}

class JsonText : public testing::Test
{
protected:
    void SetUp() override
    {
        m_store.types();
        ASSERT_EQ(0, m_store->runSqlEx("SELECT 1 WHERE 0"));
    }

    Store m_store{R"({"m": {"cpptype": "Json::arrayValue"}})"};
};

}  // namespace

TEST_F(JsonText, IsReadAsByJsonCpp)
{
    RandomJson random;
    int refused = 0;
    for (int round = 0; round < 100000; ++round)
    {
        std::string text = random.text(4);
        for (size_t slips = random.below(3); slips > 0; --slips)
        {
            text = random.damaged(text);
        }
        text.erase(std::min(text.find('\0'), text.size()));  // a column's text ends at its first NUL
        const Json::Value expected = readByJsonCpp(text);
        refused += expected.isNull() ? 1 : 0;
        const Json::Value read = readColumn(text);
        ASSERT_TRUE(isSame(expected, read)) << "seed " << random.seed() << ", round " << round << ", text: " << text
                                            << "\nJsonCpp: " << expected << "\nread:    " << read;
    }
    // Both kinds of text were tried.
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 99000);
}

TEST_F(JsonText, KnownTextsAreReadAsByJsonCpp)
{
    for (const std::string text : {"0",
                                   "-0",
                                   "-0.0",
                                   "1.",
                                   ".5",
                                   "-",
                                   "--1",
                                   "01",
                                   "1e5",
                                   "1E-5",
                                   "1e400",
                                   "-1e400",
                                   "1e-400",
                                   "0.1",
                                   "1.5.5",
                                   "999999999999999999",
                                   "1000000000000000000",
                                   "9223372036854775807",
                                   "9223372036854775808",
                                   "-9223372036854775808",
                                   "-9223372036854775809",
                                   "18446744073709551615",
                                   "18446744073709551616",
                                   "0.30000000000000004",
                                   "123456789012345678.5",
                                   "4.9406564584124654e-324",
                                   "[]",
                                   "[1,]",
                                   "[,]",
                                   "{}",
                                   "{,}",
                                   R"({"a":1,})",
                                   R"({"a":1,"a":{"b":2}})",
                                   R"({"a":{"b":2},"a":1})",
                                   R"({"a":[1],"a":[2]})",
                                   R"({"":""})",
                                   R"({"a" 1})",
                                   "{1:2}",
                                   "[1 2]",
                                   "\"open",
                                   "\"\\\"",
                                   "\"tab\there\"",
                                   "\"\\u0000\"",
                                   "\"\\ud800\"",
                                   "5 tail",
                                   "{} {}",
                                   "[] // c",
                                   "// c\n[]",
                                   "/* open",
                                   "\xef\xbb\xbf[1]",
                                   "\xef\xbb\xbf",
                                   "nullx",
                                   "truefalse",
                                   "NaN",
                                   "[NaN]",
                                   "[Infinity,-Infinity]",
                                   "+1",
                                   "\v5",
                                   "\f5",
                                   "'x'",
                                   ""})
    {
        SCOPED_TRACE(text);
        EXPECT_TRUE(isSame(readByJsonCpp(text), readColumn(text))) << readColumn(text);
    }
}

TEST_F(JsonText, NestingIsReadToTheDepthThatJsonCppAllows)
{
    for (const size_t depth : {1U, 10U, 31U, 32U, 33U, 34U, 100U, 998U, 999U, 1000U, 1001U, 1002U, 5000U, 100000U})
    {
        for (const bool closed : {true, false})
        {
            SCOPED_TRACE(std::to_string(depth) + (closed ? " closed" : " open"));
            std::string arrays(depth, '[');
            std::string objects;
            for (size_t i = 0; i < depth; ++i)
            {
                objects += "{\"a\":";
            }
            objects += "1";
            if (closed)
            {
                arrays += std::string(depth, ']');
                objects += std::string(depth, '}');
            }
            EXPECT_TRUE(isSame(readByJsonCpp(arrays), readColumn(arrays)));
            EXPECT_TRUE(isSame(readByJsonCpp(objects), readColumn(objects)));
        }
    }
}

TEST_F(JsonText, AWrittenValueComesBackAsItWas)
{
    RandomJson random;
    for (int round = 0; round < 20000; ++round)
    {
        Json::Value record;
        record["m"] = random.value(4);
        const Json::Value before = record["m"];
        ASSERT_EQ(0, m_store->recSave(record, true));
        ASSERT_TRUE(isSame(before, record["m"])) << "seed " << random.seed() << ", round " << round
                                                 << "\nwritten: " << before << "\nread:    " << record["m"];
    }
}
