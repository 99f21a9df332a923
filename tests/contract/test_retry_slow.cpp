// SPDX-License-Identifier: MIT
//
// The retry limit in real time: about five seconds.

#include <gtest/gtest.h>

#include <chrono>

#include "locks.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;

TEST(RetrySlow, ALockThatStaysIsGivenUpAfterFiveSeconds)
{
    const TempFile file;
    const std::unique_ptr<WriteLock> lock = lockFromProcess(file.path());
    Store store(R"({"age": {"cpptype": "int"}})", "", std::make_shared<Database>(file.path()));
    const std::string sql = "INSERT INTO " + store.name() + " VALUES (1)";
    lock->take();

    const SleepWatch watch(SleepWatch::Pause::Real);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_LOGS(-1, store->runSqlEx(sql),
                trace("i=500,errno=<number>, run sql failed, error=database is locked, sql=" + sql));
    // A lower bound only: a busy machine may take longer.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(500U, watch.pauses().size());

    lock->release();
    EXPECT_SILENT(1, store->runSqlEx(sql));
}
