// SPDX-License-Identifier: MIT
//
// Several processes that write to one file at once, and locks that are held for seconds. VORN_TEST_CREATES sets how
// many records each process creates. By default nothing waits for the disk, so that processes meet as often as they
// can; VORN_TEST_SYNC=1 lets SQLite sync as it does in use.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <thread>

#include "child_process.h"
#include "faulty_vfs.h"
#include "locks.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;
using faults::ChildProcess;
using faults::FaultyVfs;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace
{

constexpr size_t writers = 4;
constexpr int idsOfAWriter = 1000000;

enum class Outcome : int
{
    Acknowledged,
    Duplicate,
    GivenUp  // after 500 attempts
};

struct Created
{
    int id;
    Outcome outcome;
};

struct Waiting
{
    long pauses;
    long longest;  // pauses of one record
};

struct Setting
{
    const char* name;
    const char* journalMode;
    const char* columns;
    bool inTransactions = false;  // each record in one that begins with the lock
};

void PrintTo(const Setting& setting, std::ostream* out)
{
    *out << setting.name;
}

const Setting wal = {"wal", "wal", "id INTEGER, text TEXT"};
const Setting rollbackInTransactions = {"rollback_in_transactions", "delete", "id INTEGER, text TEXT", true};
const Setting rollbackWithoutKey = {"rollback_without_key", "delete", "id INTEGER, text TEXT"};
const Setting rollbackWithKey = {"rollback_with_key", "delete", "id INTEGER PRIMARY KEY, text TEXT"};

int createsOfEach()
{
    const char* const given = std::getenv("VORN_TEST_CREATES");
    return given != nullptr ? static_cast<int>(std::strtol(given, nullptr, 10)) : 2000;
}

bool syncs()
{
    return std::getenv("VORN_TEST_SYNC") != nullptr;
}

std::string textOf(int id)
{
    return "record " + std::to_string(id);
}

class Contention : public testing::TestWithParam<Setting>
{
protected:
    // What the writers reported, and what is in the file.
    std::map<int, Outcome> m_outcomes;
    std::map<int, int> m_stored;  // how often each identity
    long m_pauses = 0;
    long m_longest = 0;

    void run()
    {
        const int count = createsOfEach();
        const auto start = steady_clock::now();
        {
            const Database database(m_file.path());
            ASSERT_EQ(SQLITE_OK,
                      database.run("pragma journal_mode = " + std::string(GetParam().journalMode) + ";" + m_create));
        }
        int gate[2];
        ASSERT_EQ(0, pipe(gate));
        std::vector<std::unique_ptr<ChildProcess>> children(writers);
        for (size_t i = 0; i < writers; ++i)
        {
            const auto body = [&](int report) { return write(report, gate, static_cast<int>(i), count); };
            children[i] = std::make_unique<ChildProcess>(body);
        }
        close(gate[0]);
        close(gate[1]);  // all start now
        for (const std::unique_ptr<ChildProcess>& child : children)
            receiveFrom(*child, count);
        read();
        report(std::chrono::duration<double>(steady_clock::now() - start).count());
    }

    size_t count(Outcome outcome) const
    {
        return static_cast<size_t>(std::count_if(m_outcomes.begin(), m_outcomes.end(),
                                                 [&](const auto& entry) { return entry.second == outcome; }));
    }

    // Rows beyond the first of each identity.
    int surplusRows() const
    {
        int result = 0;
        for (const auto& entry : m_stored)
            result += entry.second - 1;
        return result;
    }

private:
    int write(int report, const int (&gate)[2], int writer, int count)
    {
        std::optional<FaultyVfs> withoutSyncs;
        if (!syncs())
            withoutSyncs.emplace();
        const Database database(m_file.path());
        VornJsonDbApi api(database.handle(), m_name, m_definition, m_create);
        close(gate[1]);
        char none = 0;
        if (::read(gate[0], &none, 1) != 0)
            return 1;

        std::vector<Created> created;
        Waiting waiting = {};
        for (int i = 1; i <= count; ++i)
        {
            const int id = writer * idsOfAWriter + i;
            Json::Value in;
            in["id"] = id;
            in["text"] = textOf(id);
            Json::Value out;
            api.setErrMsg("");
            const SleepWatch watch(SleepWatch::Pause::Real);
            const int result = create(api, in, out);
            const bool good = result == 0 ? out == in : out.isNull();
            if (!good)
                return 1;
            const Outcome failure = api.getErrMsg() == "DUPLICATE_PRIMARY_KEY" ? Outcome::Duplicate : Outcome::GivenUp;
            created.push_back({id, result == 0 ? Outcome::Acknowledged : failure});
            const auto pauses = static_cast<long>(watch.pauses().size());
            if (failure == Outcome::GivenUp && result != 0 && pauses < 500)
                return 1;  // another failure than a lock
            waiting.pauses += pauses;
            waiting.longest = std::max(waiting.longest, pauses);
        }
        for (const Created& each : created)
            ChildProcess::send(report, each);
        return ChildProcess::send(report, waiting) ? 0 : 1;
    }

    static int create(VornJsonDbApi& api, Json::Value& in, Json::Value& out)
    {
        if (!GetParam().inTransactions)
            return api.recCreate(in, out);
        if (api.runSqlEx("BEGIN IMMEDIATE") >= 0 && api.recCreate(in, out) == 0 && api.runSqlEx("COMMIT") >= 0)
            return 0;
        static_cast<void>(api.runSqlEx("ROLLBACK"));
        out = Json::Value();
        return -1;
    }

    void receiveFrom(ChildProcess& child, int count)
    {
        Created created = {};
        for (int i = 0; i < count && child.receive(created); ++i)
            EXPECT_TRUE(m_outcomes.emplace(created.id, created.outcome).second);
        Waiting waiting = {};
        EXPECT_TRUE(child.receive(waiting));
        EXPECT_EQ(0, child.wait());
        m_pauses += waiting.pauses;
        m_longest = std::max(m_longest, waiting.longest);
    }

    void read()
    {
        const Database database(m_file.path());
        EXPECT_EQ(std::vector<std::string>{"ok"}, database.rows("pragma integrity_check"));
        for (const std::string& row : database.rows("select id, text from records"))
        {
            const int id = std::stoi(row);
            EXPECT_EQ(std::to_string(id) + "|" + textOf(id), row);
            ++m_stored[id];
        }
    }

    // A row of a table: records, acknowledged, rows too many, reported as duplicates, given up, and of these stored all
    // the same, pauses of all writers, the longest wait for a record, the whole run.
    void report(double seconds) const
    {
        const auto storedThough = std::count_if(
            m_outcomes.begin(), m_outcomes.end(),
            [&](const auto& entry) { return entry.second == Outcome::GivenUp && m_stored.count(entry.first) > 0; });
        std::cout << "| " << GetParam().name << (syncs() ? ", synced" : "") << " | " << m_outcomes.size() << " | "
                  << count(Outcome::Acknowledged) << " | " << surplusRows() << " | " << count(Outcome::Duplicate)
                  << " | " << count(Outcome::GivenUp) << " | " << storedThough << " | " << m_pauses << " | "
                  << m_longest * 10 << " ms | " << seconds << " s |\n";
    }

    TempFile m_file;
    std::string m_name = "records";
    Json::Value m_definition =
        definitionOf(m_name, json(R"({"id": {"cpptype": "int"}, "text": {"cpptype": "string"}})"));
    std::string m_create = "CREATE TABLE IF NOT EXISTS records (" + std::string(GetParam().columns) + ")";
};

class ContentionWithoutHarm : public Contention
{
};

class ContentionInARollbackJournal : public Contention
{
};

}  // namespace

// In a write-ahead log readers never wait, and in a transaction that holds the lock nobody else gets it.
TEST_P(ContentionWithoutHarm, StoresEachRecordOnce)
{
    run();
    const size_t all = writers * static_cast<size_t>(createsOfEach());
    EXPECT_EQ(all, m_outcomes.size());
    EXPECT_EQ(0U, count(Outcome::Duplicate));
    EXPECT_EQ(count(Outcome::Acknowledged), m_stored.size());
    EXPECT_EQ(0, surplusRows());
    for (const auto& [id, outcome] : m_outcomes)
        EXPECT_EQ(outcome == Outcome::Acknowledged, m_stored.count(id) == 1) << id;
    // Only a disk that makes others wait for seconds makes anyone give up.
    EXPECT_TRUE(syncs() || count(Outcome::Acknowledged) == all) << count(Outcome::GivenUp) << " given up";
}

// A lock between a record's insert and its read-back makes the whole text run again: the record is stored once more, or
// meets itself and is reported as a duplicate. Nothing else can happen to a record, but a wait of five seconds in vain.
TEST_P(ContentionInARollbackJournal, StoresEachRecordAndNothingElse)
{
    run();
    const bool hasKey = GetParam().name == rollbackWithKey.name;
    EXPECT_EQ(writers * static_cast<size_t>(createsOfEach()), m_outcomes.size());
    for (const auto& [id, outcome] : m_outcomes)
    {
        const auto found = m_stored.find(id);
        const int times = found != m_stored.end() ? found->second : 0;
        EXPECT_TRUE(times > 0 || outcome == Outcome::GivenUp) << id << " is lost";
        EXPECT_TRUE(times < 2 || !hasKey) << id;
        EXPECT_TRUE(outcome != Outcome::Duplicate || hasKey) << id;
    }
    for (const auto& entry : m_stored)
        EXPECT_EQ(1U, m_outcomes.count(entry.first)) << "nobody created " << entry.first;
}

const auto nameOfSetting = [](const auto& setting) { return std::string(setting.param.name); };
INSTANTIATE_TEST_SUITE_P(Settings, ContentionWithoutHarm, testing::Values(wal, rollbackInTransactions), nameOfSetting);
INSTANTIATE_TEST_SUITE_P(Settings, ContentionInARollbackJournal, testing::Values(rollbackWithoutKey, rollbackWithKey),
                         nameOfSetting);

namespace
{

constexpr const char* oneMember = R"({"age": {"cpptype": "int"}})";

// A store whose file another process has locked, and a pause hook that lets go after a time.
class HeldLock : public testing::Test
{
protected:
    TempFile m_file;
    std::unique_ptr<WriteLock> m_lock = lockFromProcess(m_file.path());
    Store m_store{oneMember, "", std::make_shared<Database>(m_file.path())};
};

}  // namespace

// The lock is released by the one who waits for it, in a pause: however slow the machine is, 490 pauses take 4.9 s.
TEST_F(HeldLock, OfAlmostFiveSecondsIsWaitedOut)
{
    m_lock->take();
    const auto start = steady_clock::now();
    bool held = true;
    const SleepWatch watch(SleepWatch::Pause::Real,
                           [&](int)
                           {
                               if (held && steady_clock::now() - start >= milliseconds(4900))
                               {
                                   m_lock->release();
                                   held = false;
                               }
                           });
    Json::Value in = json(R"({"age": 5})");
    Json::Value out;
    EXPECT_SILENT(0, m_store->recCreate(in, out));
    EXPECT_GE(steady_clock::now() - start, milliseconds(4900));
    EXPECT_FALSE(held);
    EXPECT_EQ(std::vector<std::string>{"5"}, m_store.rows());
}

TEST_F(HeldLock, OfSixSecondsIsGivenUpBefore)
{
    m_lock->take();
    const auto start = steady_clock::now();
    const SleepWatch watch(SleepWatch::Pause::Real);
    Json::Value in = json(R"({"age": 5})");
    Json::Value out;
    {
        const LogCapture discarded;
        EXPECT_EQ(-1, m_store->recCreate(in, out));
    }
    EXPECT_EQ(500U, watch.pauses().size());
    EXPECT_GE(steady_clock::now() - start, milliseconds(5000));
    std::this_thread::sleep_until(start + milliseconds(6000));
    m_lock->release();
    EXPECT_TRUE(m_store.rows().empty());
    EXPECT_SILENT(0, m_store->recCreate(in, out));
    EXPECT_EQ(std::vector<std::string>{"5"}, m_store.rows());
}
