// SPDX-License-Identifier: MIT
//
// Four processes write into one file, for real. See whole.h for its size.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "child_process.h"
#include "table_fixture.h"
#include "whole.h"

using namespace table_tests;

namespace
{

constexpr int kProcesses = 4;
const int kRecords = support::partOrWhole(800, 2000);  // that each creates, updates and deletes
const int kAll = kProcesses * kRecords;
constexpr int kTimeout = 60000;

const Json::Value& definition()
{
    static const Json::Value jTableDef = definitionOf(
        "T", json(R"({"n": {"cpptype": "int"}, "p": {"cpptype": "int"}, "state": {"cpptype": "string"}})"));
    return jTableDef;
}

Json::Value record(int n, int p)
{
    Json::Value jRecord;
    jRecord["n"] = n;
    jRecord["p"] = p;
    return jRecord;
}

// Each piece of work must be done to exactly one record. Sends the milliseconds that the longest one took.
int workOnRecords(const std::string& strPath, int iProcess, int report)
{
    using Clock = std::chrono::steady_clock;
    const Database db(strPath);
    // Only a power cut would show the difference. The pragma reads the schema, and so may meet a lock.
    if (db.run("PRAGMA busy_timeout = 60000; PRAGMA synchronous = OFF; PRAGMA busy_timeout = 0") != SQLITE_OK)
        return 1;
    vorn::Table table(db.handle(), "T", definition());
    table.setLockTimeout(kTimeout);
    Clock::duration longest{};
    const auto isDone = [&](long long nExpected, auto work)
    {
        const Clock::time_point begin = Clock::now();
        const bool blDone = work() == nExpected;
        longest = std::max(longest, Clock::now() - begin);
        return blDone;
    };
    const Json::Value jUpdated = json(R"({"state": "updated"})");
    for (int i = 0; i < kRecords; ++i)
    {
        const Json::Value jNew = record(i, iProcess), jOld = record(-1 - i, iProcess);
        Json::Value jOut;
        if (!isDone(0, [&] { return table.recCreate(jNew, jOut); }) || jOut != jNew ||
            !isDone(1, [&] { return table.recUpdateByFilter(jNew, jUpdated); }) ||
            !isDone(1, [&] { return table.recDelete(jOld); }))
            return 1;
    }
    const std::int64_t milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(longest).count();
    return faults::ChildProcess::send(report, milliseconds) ? 0 : 1;
}

}  // namespace

// Without a unique key nothing would tell a record that is stored twice.
TEST(TableContention, OfFourProcessesCreatesUpdatesAndDeletesEveryRecordOnceAndNobodyWaitsTooLong)
{
    for (const char* szJournal : {"DELETE", "WAL"})
    {
        SCOPED_TRACE(szJournal);
        const support::TempFile file;
        {
            const Database db(file.path());
            ASSERT_EQ(SQLITE_OK,
                      db.run("PRAGMA journal_mode = " + std::string(szJournal) +
                             "; CREATE TABLE T (n INTEGER, p INTEGER, state TEXT); CREATE INDEX i ON T (n, p)"));
            vorn::Table table(db.handle(), "T", definition());
            Json::Value jOld;
            for (int i = 0; i < kAll; ++i)
                jOld.append(record(-1 - i / kProcesses, i % kProcesses));
            ASSERT_TRUE(done(table, table.recCreateAll(jOld), kAll));
        }
        std::vector<std::unique_ptr<faults::ChildProcess>> children;
        children.reserve(kProcesses);
        for (int i = 0; i < kProcesses; ++i)
            children.push_back(std::make_unique<faults::ChildProcess>(
                [&file, i](int report) { return workOnRecords(file.path(), i, report); }));
        std::int64_t longest = 0;
        for (const auto& pChild : children)
        {
            std::int64_t milliseconds = kTimeout + 1;
            EXPECT_TRUE(pChild->receive(milliseconds));
            EXPECT_EQ(0, pChild->wait());
            longest = std::max(longest, milliseconds);
        }
        EXPECT_GE(kTimeout, longest);
        std::cout << szJournal << ": the longest operation took " << longest << " ms\n";
        const Database db(file.path());
        const std::vector<std::string> all = {std::to_string(kAll)};
        EXPECT_EQ(all, db.rows("SELECT count(*) FROM T"));
        EXPECT_EQ(all,
                  db.rows("SELECT count(*) FROM (SELECT DISTINCT n, p FROM T WHERE n >= 0 AND state = 'updated')"));
        EXPECT_EQ(std::vector<std::string>{"ok"}, db.rows("PRAGMA integrity_check"));
    }
}
