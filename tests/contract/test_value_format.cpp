// SPDX-License-Identifier: MIT
//
// '%' in a value list on random formats: each value is formatted together with all text before it, as SQLite's own
// formatter does wherever its plain call is defined. A conversion without a fitting value reads as 0, 0.0 or null, as
// in SQLite's SQL function format(). What must come out is the model's word (model_format.h).

#include <gtest/gtest.h>

#include <limits>
#include <map>

#include "model.h"
#include "model_format.h"
#include "random_format.h"

using namespace support;

namespace
{

constexpr double infinity = std::numeric_limits<double>::infinity();

const std::vector<const char*> wideIntegers = {"lld", "lli", "llu", "llx", "llX", "llo", "llr"};
const Kind kinds[] = {{"string",
                       {"", "abc", "O'Neil 'x'", "it's %d", "é€", "100%", "%s%d", std::string(300, 'y')},
                       {"s", "q", "Q", "w", "ls", "llQ"}},
                      {"long long",
                       {0, 7, -7, Json::Int64{4294967303LL}, Json::Int64{std::numeric_limits<Json::Int64>::max()},
                        Json::Int64{std::numeric_limits<Json::Int64>::min()}},
                       wideIntegers},
                      {"unsigned long long",
                       {0, 7, Json::UInt64{9223372036854775808ULL}, Json::UInt64{18446744073709551615ULL}},
                       wideIntegers},
                      {"double",
                       {0.0, 1.5, -2.25, 1e15, 1e300, 1e-300, 123456.789, infinity, -infinity},
                       {"f", "e", "E", "g", "G", "lf", "llg"}}};

// Draws lists, and compares each of which the model says what it must be.
class ValueFormat : public testing::Test
{
protected:
    template <class Draw>
    void compare(int rounds, const Draw& draw)
    {
        std::map<std::string, std::unique_ptr<Store>> stores;
        int compared = 0;
        for (int round = 0; round < rounds; ++round)
        {
            const Kind& kind = m_random.of(kinds);
            std::string prefix = "(";
            Json::Value record;
            record["b"] = m_random.of(kind.values);
            draw(kind, prefix, record);
            std::unique_ptr<Store>& store = stores[kind.type];
            if (!store)
                store = std::make_unique<Store>(memberList({"string", kind.type}));
            try
            {
                const auto expected = model::valueList(prefix, {{"a", "string"}, {"b", kind.type}}, record);
                ++compared;
                ASSERT_EQ(expected.value(), valueList(*store, prefix, record))
                    << "seed " << m_random.seed() << ", round " << round << ", prefix: " << prefix
                    << ", record: " << writeReference(record);
            }
            catch (const model::Undefined&)
            {
            }
        }
        EXPECT_LT(rounds / 4 * 3, compared);
    }

    RandomFormat m_random;
};

}  // namespace

TEST_F(ValueFormat, TheCallersTextIsFormattedWithTheValueAsByThePlainCall)
{
    compare(80000, [&](const Kind& kind, std::string& prefix, Json::Value&) { prefix = m_random.definedFormat(kind); });
}

TEST_F(ValueFormat, AnEarlierValueIsFormattedWithTheNextAsByThePlainCall)
{
    compare(80000,
            [&](const Kind& kind, std::string&, Json::Value& record) { record["a"] = m_random.definedFormat(kind); });
}

// Any number of conversions of any kind: the first takes the value if its kind fits, all others find none.
TEST_F(ValueFormat, ConversionsWithoutAFittingValueReadAsInSqlsFormatFunction)
{
    static const char* const types[] = {"d", "i", "u", "x", "X", "o",  "r", "p", "ld", "lld", "lu", "llx",
                                        "s", "q", "Q", "w", "z", "ls", "f", "e", "E",  "g",   "G",  "lf"};
    compare(20000,
            [&](const Kind&, std::string& prefix, Json::Value&)
            {
                prefix = "";
                for (size_t pieces = m_random.below(6); pieces > 0; --pieces)
                {
                    const bool plain = m_random.chance(25);
                    prefix += !plain                ? m_random.conversion(m_random.of(types))
                              : m_random.chance(30) ? m_random.percentSign()
                              : m_random.chance(20) ? "%n"
                                                    : m_random.literal();
                }
            });
}
