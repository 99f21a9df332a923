// SPDX-License-Identifier: MIT
//
// Writers that are killed: a child creates records and acknowledges each, until it is killed at a random moment or at
// one of its requests to the storage. Every acknowledged record must be in the file, at most one more, and the file
// must be sound. VORN_TEST_SEED repeats a run, as far as the moments of kills can be repeated.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <map>
#include <thread>

#include "child_process.h"
#include "faulty_vfs.h"
#include "random.h"
#include "store.h"

using namespace support;
using faults::ChildProcess;
using faults::FaultyVfs;
using faults::Request;

namespace
{

constexpr int randomKills = 100;
constexpr int mostAwaited = 16;      // acknowledged records before the kill
constexpr int mostCreates = 40;      // in one child's life
constexpr int mostRecords = 150;     // in the file
constexpr long mostRequests = 1000;  // far more than one record takes

// The longest records take several pages, and more than the writer's page cache holds.
std::string textOf(int id)
{
    const int length = id * 7919 % 40000;
    return "record " + std::to_string(id) + " " + std::string(static_cast<size_t>(length), 'x');
}

// A file that writers die on, and what must be in it.
class KilledWriters : public testing::TestWithParam<std::string>
{
protected:
    // The child's part: creates records from that identity on and sends the identity of each that is stored. The file
    // is written as for a power cut, but nothing waits for the disk: only the order of writes matters to a killed
    // process.
    int writeRecords(
        int report, int firstId, int count, const std::function<void()>& afterOpening = [] {})
    {
        const Database database(m_file.path());
        if (database.run("pragma cache_size = 5; pragma wal_autocheckpoint = 10; pragma journal_mode = " +
                         GetParam()) != SQLITE_OK)
            return 1;
        VornJsonDbApi api(database.handle(), m_name, m_definition, m_create);
        afterOpening();
        for (int id = firstId; id < firstId + count; ++id)
        {
            Json::Value in;
            in["id"] = id;
            in["text"] = textOf(id);
            Json::Value out;
            if (api.recCreate(in, out) != 0 || !ChildProcess::send(report, id))
                return 1;
        }
        return 0;
    }

    // What the file must hold after a writer's end: all acknowledged records, and none but the one after them.
    void expectNothingLost(int lastAcknowledged)
    {
        while (m_nextId <= lastAcknowledged)
        {
            m_records[m_nextId] = textOf(m_nextId);
            ++m_nextId;
        }
        const Database database(m_file.path());
        EXPECT_EQ(std::vector<std::string>{"ok"}, database.rows("pragma integrity_check"));
        std::map<int, std::string> found;
        for (const std::string& row : database.rows("select id, text from records"))
            EXPECT_TRUE(found.emplace(std::stoi(row), row.substr(row.find('|') + 1)).second) << "twice: " << row;
        if (found.size() == m_records.size() + 1)
        {
            ++m_unacknowledged;
            m_records[m_nextId] = textOf(m_nextId);
            ++m_nextId;
        }
        EXPECT_TRUE(m_records == found) << m_records.size() << " records expected, " << found.size() << " found";
        if (m_records.size() > mostRecords)
        {
            EXPECT_EQ(SQLITE_OK, database.run("delete from records"));
            m_records.clear();
        }
    }

    void makeTable()
    {
        const Database database(m_file.path());
        ASSERT_EQ(SQLITE_OK, database.run("pragma journal_mode = " + GetParam() + ";" + m_create));
    }

    TempFile m_file;
    std::string m_name = "records";
    Json::Value m_definition =
        definitionOf(m_name, json(R"({"id": {"cpptype": "int"}, "text": {"cpptype": "string"}})"));
    std::string m_create = "CREATE TABLE IF NOT EXISTS records (id INTEGER PRIMARY KEY, text TEXT)";
    std::map<int, std::string> m_records;
    int m_nextId = 1;
    int m_unacknowledged = 0;
};

}  // namespace

TEST_P(KilledWriters, AtAnyMomentLoseNoAcknowledgedRecord)
{
    Random random;
    makeTable();
    int acknowledged = 0;
    for (int kills = 0; kills < randomKills && !HasFailure(); ++kills)
    {
        SCOPED_TRACE("VORN_TEST_SEED=" + std::to_string(random.seed()) + ", kill " + std::to_string(kills));
        ChildProcess writer(
            [&](int report)
            {
                const FaultyVfs withoutSyncs;
                const int status = writeRecords(report, m_nextId, mostCreates);
                pause();  // whoever has nothing left to do waits for the end
                return status;
            });
        // After some acknowledged records, or none yet, and a moment of the length of a few creates.
        int last = 0;
        for (auto wanted = random.below(mostAwaited); wanted > 0; --wanted)
        {
            ASSERT_TRUE(writer.receive(last));
            ++acknowledged;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random.below(last == 0 ? 10000 : 1500)));
        writer.kill();
        while (writer.receive(last))
            ++acknowledged;
        EXPECT_EQ(-SIGKILL, writer.wait());
        expectNothingLost(last);
    }
    std::cout << randomKills << " kills, " << acknowledged << " records acknowledged, " << m_unacknowledged
              << " stored but not acknowledged\n";
}

TEST_P(KilledWriters, AtEachRequestToTheStorageLoseNoAcknowledgedRecord)
{
    makeTable();
    int kills = 0;
    for (const int count : {1, 2})
    {
        int status = -SIGKILL;
        for (long nth = 1; status == -SIGKILL && nth < mostRequests && !HasFailure(); ++nth)
        {
            SCOPED_TRACE("request " + std::to_string(nth));
            ChildProcess writer(
                [&](int report)
                {
                    FaultyVfs vfs;
                    return writeRecords(report, m_nextId, count, [&] { vfs.kill(Request::Any, nth); });
                });
            int last = 0;
            while (writer.receive(last))
            {
            }
            status = writer.wait();
            kills += status == -SIGKILL ? 1 : 0;
            expectNothingLost(last);
        }
        EXPECT_EQ(0, status);
    }
    EXPECT_LT(10, kills);
    std::cout << kills << " kills, " << m_unacknowledged << " records stored but not acknowledged\n";
}

INSTANTIATE_TEST_SUITE_P(JournalModes, KilledWriters, testing::Values("delete", "truncate", "wal"),
                         [](const auto& mode) { return mode.param; });
