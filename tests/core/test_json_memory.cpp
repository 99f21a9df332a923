// SPDX-License-Identifier: MIT
//
// Memory that runs out while JSON text of a column is read that needs the JSON library's own reader.

#include <gtest/gtest.h>

#include <new>

#include "failing_allocators.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

class JsonMemory : public testing::TestWithParam<faults::Allocator>
{
};

}  // namespace

TEST_P(JsonMemory, EveryAllocationOfTheReaderMayFail)
{
    if (!faults::isReplaced(GetParam()))
        GTEST_SKIP() << "a sanitizer brings its own " << GetParam();
    Store store(R"({"j": {"cpptype": "Json::Value"}})");
    ASSERT_EQ(SQLITE_OK, store.db().run("insert into " + store.name() + R"( values ('{"a": "\u00e9", "b": [1e2]}'))"));
    Json::Value param;
    Json::Value expected;
    ASSERT_EQ(0, store->recList(param, expected));
    ASSERT_EQ(json(R"([{"j": {"a": "é", "b": [100.0]}}])"), expected);
    const Json::Value unread = json(R"([{"j": null}])");

    constexpr long mostAllocations = 2000;
    long failures = 0;
    long nth = 1;
    for (bool struck = true; struck && nth < mostAllocations; nth++)
    {
        Json::Value out;
        bool thrown = false;
        int result = 0;
        faults::Shortage shortage(GetParam(), faults::Failure::Once, nth);
        try
        {
            result = store->recList(param, out);
        }
        catch (const std::bad_alloc&)
        {
            thrown = true;
        }
        catch (const Json::RuntimeError&)  // how the JSON library tells that it has no memory for a string
        {
            thrown = true;
        }
        shortage.end();
        struck = shortage.struck();

        if (thrown || result != 0)
        {
            EXPECT_TRUE(struck && out.empty()) << nth;
        }
        else
        {
            // The reader's own stream keeps a shortage to itself: its text then counts as one that is no JSON.
            EXPECT_TRUE(out == expected || (struck && out == unread)) << nth << out;
        }
        failures += thrown ? 1 : 0;
        out = Json::Value();
        ASSERT_EQ(0, store->recList(param, out));
        EXPECT_EQ(expected, out);
    }
    EXPECT_LT(nth, mostAllocations);
    EXPECT_GT(failures, 5);
}

TEST(JsonMemoryForAString, ThatLacksIsNoFaultOfTheText)
{
    if (!faults::isReplaced(faults::Allocator::Malloc))
        GTEST_SKIP() << "a sanitizer brings its own malloc";
    Store store(R"({"j": {"cpptype": "Json::Value"}})");
    ASSERT_EQ(SQLITE_OK, store.db().run("insert into " + store.name() + R"( values ('["\u00e9"]'))"));
    Json::Value param;
    Json::Value out;
    ASSERT_EQ(0, store->recList(param, out));  // what is made once
    int told = 0;
    bool struck = true;
    for (long nth = 1; struck; nth++)
    {
        out = Json::Value();
        faults::Shortage shortage(faults::Allocator::Malloc, faults::Failure::Once, nth);
        try
        {
            store->recList(param, out);
        }
        catch (const Json::RuntimeError&)
        {
            ++told;
        }
        catch (const std::bad_alloc&)
        {
        }
        shortage.end();
        struck = shortage.struck();
    }
    EXPECT_LT(0, told);
}

TEST(JsonMemoryKept, AColumnKeepsLittleOfWhatItRead)
{
    Store store(R"({"j": {"cpptype": "Json::Value"}})");
    const auto keptAfter = [&](const std::string& text)
    {
        store.db().run("delete from " + store.name() + "; insert into " + store.name() + " values ('" + text + "')");
        const long before = faults::outstanding(faults::Allocator::OperatorNew);
        Json::Value param;
        Json::Value read;
        EXPECT_EQ(0, store->recList(param, read));
        EXPECT_EQ(json(text), read[0]["j"]);
        read = Json::Value();
        return faults::outstanding(faults::Allocator::OperatorNew) - before;
    };
    std::string numbers = "[0";
    for (int i = 1; i < 200000; ++i)
        numbers += ',' + std::to_string(i);
    const std::string name(100000, 'n');
    keptAfter("1");  // what is made once
    EXPECT_GT(100, keptAfter(numbers + "]"));
    EXPECT_GT(100, keptAfter("{\"" + name + "\": 1}"));
    EXPECT_LT(0, keptAfter(R"({"a": 1, "b": [2, 3]})"));
}

INSTANTIATE_TEST_SUITE_P(Allocators, JsonMemory,
                         testing::Values(faults::Allocator::OperatorNew, faults::Allocator::Malloc));
