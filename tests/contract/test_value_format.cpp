// SPDX-License-Identifier: MIT
//
// '%' in a value list, compared with SQLite's own formatter on random formats: each value is formatted together with
// all text before it, and wherever the plain call defines the result, the list must be equal to it. A conversion
// without a fitting value reads as 0, 0.0 or null, as in SQLite's SQL function format().

#include <gtest/gtest.h>

#include <limits>

#include "random_format.h"

using namespace support;

namespace
{

constexpr double infinity = std::numeric_limits<double>::infinity();

const Kind text = {"string",
                   "%Q",
                   {"", "abc", "O'Neil 'x'", "é€", "100%", "%s%d", std::string(300, 'y')},
                   {"s", "q", "Q", "w", "ls", "llQ"}};
const Kind integer = {"long long",
                      "%lld",
                      {0, 7, -7, Json::Int64{4294967303LL}, Json::Int64{std::numeric_limits<Json::Int64>::max()},
                       Json::Int64{std::numeric_limits<Json::Int64>::min()}},
                      {"lld", "lli", "llu", "llx", "llX", "llo", "llr"}};
const Kind natural = {"unsigned long long",
                      "%llu",
                      {0, 7, Json::UInt64{9223372036854775808ULL}, Json::UInt64{18446744073709551615ULL}},
                      {"lld", "lli", "llu", "llx", "llX", "llo", "llr"}};
const Kind real = {"double",
                   "%lf",
                   {0.0, 1.5, -2.25, 1e15, 1e300, 1e-300, 123456.789, infinity, -infinity},
                   {"f", "e", "E", "g", "G", "lf", "llg"}};
const Kind* const kinds[] = {&text, &integer, &natural, &real};

std::string takeText(char* sz)
{
    if (sz == nullptr)
    {
        throw std::logic_error("no text");
    }
    std::string result = sz;
    sqlite3_free(sz);
    return result;
}

// The plain call of SQLite's formatter. The second argument is what a conversion reads that finds no value.
std::string plain(const Kind& kind, const std::string& format, const Json::Value& value)
{
    if (&kind == &text)
    {
        const std::string string = value.asString();
        return takeText(sqlite3_mprintf(format.c_str(), string.c_str(), static_cast<char*>(nullptr)));
    }
    if (&kind == &real)
    {
        return takeText(sqlite3_mprintf(format.c_str(), value.asDouble(), 0.0));
    }
    const sqlite3_int64 number =
        &kind == &natural ? static_cast<sqlite3_int64>(value.asUInt64()) : sqlite3_int64{value.asInt64()};
    return takeText(sqlite3_mprintf(format.c_str(), number, sqlite3_int64{0}));
}

// SQLite's SQL function format() with one argument.
std::string sqlFormat(const Database& database, const std::string& format, const Json::Value& value)
{
    sqlite3_stmt* pStatement = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(database.handle(), "SELECT format(?1, ?2)", -1, &pStatement, nullptr));
    sqlite3_bind_text(pStatement, 1, format.c_str(), -1, SQLITE_TRANSIENT);
    if (value.isString())
    {
        sqlite3_bind_text(pStatement, 2, value.asCString(), -1, SQLITE_TRANSIENT);
    }
    else if (value.isDouble() && !value.isIntegral())
    {
        sqlite3_bind_double(pStatement, 2, value.asDouble());
    }
    else if (!value.isNull())
    {
        sqlite3_bind_int64(pStatement, 2, value.asInt64());
    }
    EXPECT_EQ(SQLITE_ROW, sqlite3_step(pStatement));
    const void* const result = sqlite3_column_text(pStatement, 0);
    const std::string copy = result != nullptr ? static_cast<const char*>(result) : "";
    sqlite3_finalize(pStatement);
    return copy;
}

}  // namespace

TEST(ValueFormat, TheCallersTextIsFormattedWithTheValueAsByThePlainCall)
{
    Random random;
    std::unique_ptr<Store> stores[std::size(kinds)];
    for (size_t i = 0; i < std::size(kinds); ++i)
    {
        stores[i] = std::make_unique<Store>(memberList({kinds[i]->type}));
    }
    for (int round = 0; round < 80000; ++round)
    {
        const size_t i = random.below(std::size(kinds));
        const Kind& kind = *kinds[i];
        const Json::Value& value = random.of(kind.values);
        const std::string prefix = random.definedFormat(kind);
        ASSERT_EQ(plain(kind, prefix + kind.conversion, value) + ") ", valueList(*stores[i], prefix, recordOf({value})))
            << "seed " << random.seed() << ", round " << round << ", " << kind.type << ", prefix: " << prefix;
    }
}

TEST(ValueFormat, AnEarlierValueIsFormattedWithTheNextAsByThePlainCall)
{
    Random random;
    std::unique_ptr<Store> stores[std::size(kinds)];
    for (size_t i = 0; i < std::size(kinds); ++i)
    {
        stores[i] = std::make_unique<Store>(memberList({"string", kinds[i]->type}));
    }
    for (int round = 0; round < 80000; ++round)
    {
        const size_t i = random.below(std::size(kinds));
        const Kind& kind = *kinds[i];
        const Json::Value& value = random.of(kind.values);
        const std::string earlier = random.definedFormat(kind);
        const std::string first = plain(text, "(%Q", earlier) + ",";
        ASSERT_EQ(plain(kind, first + kind.conversion, value) + ") ",
                  valueList(*stores[i], "(", recordOf({earlier, value})))
            << "seed " << random.seed() << ", round " << round << ", " << kind.type << ", earlier value: " << earlier;
    }
}

// Any number of conversions of any kind: the first takes the value if its kind fits, all others find none.
TEST(ValueFormat, ConversionsWithoutAFittingValueReadAsInSqlsFormatFunction)
{
    static const char* const integerTypes[] = {"d", "i", "u", "x", "X", "o", "r", "p", "ld", "lld", "lu", "llx"};
    static const char* const textTypes[] = {"s", "q", "Q", "w", "z", "ls"};
    static const char* const realTypes[] = {"f", "e", "E", "g", "G", "lf"};
    Random random;
    const Database database;
    Store integers(memberList({"long long"}));
    Store texts(memberList({"string"}));
    Store reals(memberList({"double"}));
    for (int round = 0; round < 20000; ++round)
    {
        enum
        {
            Integer,
            Text,
            Real
        };
        const size_t own = random.below(3);
        int firstKind = -1;
        std::string prefix;
        for (size_t pieces = random.below(6); pieces > 0; --pieces)
        {
            if (random.chance(25))
            {
                prefix += random.chance(30) ? random.percentSign() : random.chance(20) ? "%n" : random.literal();
                continue;
            }
            const size_t kind = random.below(3);
            prefix += random.conversion(kind == Integer ? random.of(integerTypes)
                                        : kind == Text  ? random.of(textTypes)
                                                        : random.of(realTypes));
            firstKind = firstKind < 0 ? static_cast<int>(kind) : firstKind;
        }
        Store& store = own == Integer ? integers : own == Text ? texts : reals;
        const char* const conversion = own == Integer ? "%lld" : own == Text ? "%Q" : "%lf";
        const Json::Value value = own == Integer ? Json::Value(static_cast<int>(random.below(1000)))
                                  : own == Text  ? Json::Value("it's %d")
                                                 : Json::Value(-12.625);
        const bool fits = firstKind < 0 || firstKind == static_cast<int>(own);
        ASSERT_EQ(sqlFormat(database, prefix + conversion, fits ? value : Json::Value()) + ") ",
                  valueList(store, prefix, recordOf({value})))
            << "seed " << random.seed() << ", round " << round << ", prefix: " << prefix;
    }
}
