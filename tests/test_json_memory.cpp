// SPDX-License-Identifier: MIT
//
// Memory that runs out while JSON text of a column is read that needs the JSON library's own reader.

#include <gtest/gtest.h>

#include <new>

#include "failing_allocators.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

TEST(JsonMemory, EveryAllocationOfTheReaderMayFail)
{
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
        {
            faults::Shortage shortage(faults::Allocator::OperatorNew, faults::Failure::Once, nth);
            try
            {
                result = store->recList(param, out);
            }
            catch (const std::bad_alloc&)
            {
                thrown = true;
            }
            shortage.end();
            struck = shortage.struck();
        }
        EXPECT_EQ(0, result);
        if (thrown)
        {
            EXPECT_EQ(0u, out.size()) << nth;
        }
        else
        {
            // The reader's own stream keeps a shortage to itself: its text then counts as one that is no JSON.
            EXPECT_TRUE(out == expected || (struck && out == unread)) << nth << out;
        }
        failures += thrown ? 1 : 0;
        ASSERT_EQ(0, store->recList(param, out = Json::Value()));
        EXPECT_EQ(expected, out);
    }
    EXPECT_LT(nth, mostAllocations);
    EXPECT_GT(failures, 10);
}
