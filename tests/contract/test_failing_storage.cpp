// SPDX-License-Identifier: MIT
//
// Storage that fails: one request of each kind after the other, once or for good, for each way in which SQLite keeps a
// file safe. Whatever happens, the records from before are there, what was reported as done is done, nothing is half
// done, and the file works again as soon as the storage does.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>

#include "faulty_vfs.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;
using faults::FaultyVfs;
using faults::Request;

namespace
{

constexpr const char* members = R"({"id": {"cpptype": "int"}, "text": {"cpptype": "string"}})";

// More requests than an operation makes: a round that never gets through ends here.
constexpr long mostRequests = 1000;

struct Fault
{
    const char* name;
    Request request;
    int status;
    std::vector<std::string> texts;  // with which statements may fail
};

const std::string ioError = "disk I/O error";
const std::string cannotOpen = "unable to open database file";
const std::string full = "database or disk is full";
const std::string locked = "database is locked";

const Fault rollbackFaults[] = {
    {"open", Request::Open, SQLITE_CANTOPEN, {cannotOpen}},
    {"read", Request::Read, SQLITE_IOERR_READ, {ioError}},
    {"write", Request::Write, SQLITE_IOERR_WRITE, {ioError}},
    {"diskFull", Request::Write, SQLITE_FULL, {full}},
    {"sync", Request::Sync, SQLITE_IOERR_FSYNC, {ioError}},
    {"lock", Request::Lock, SQLITE_IOERR_LOCK, {ioError}},
    // A lock that falls between the insert and the read-back: the repeated insert meets its own record.
    {"locked", Request::Lock, SQLITE_BUSY, {locked, "UNIQUE constraint failed: records.id"}},
};
const Fault deleteFault = {"delete", Request::Delete, SQLITE_IOERR_DELETE, {ioError}};
const Fault truncateFault = {"truncate", Request::Truncate, SQLITE_IOERR_TRUNCATE, {ioError}};
const Fault walFaults[] = {
    {"sharedMemory", Request::SharedMemory, SQLITE_IOERR_SHMMAP, {ioError}},
    {"sharedLock", Request::SharedLock, SQLITE_IOERR_SHMLOCK, {ioError}},
};

struct Case
{
    std::string journalMode;
    Fault fault;
    bool stays;
};

std::vector<Case> cases()
{
    std::vector<Case> result;
    for (const bool stays : {false, true})
    {
        for (const char* const mode : {"delete", "truncate", "wal"})
            for (const Fault& fault : rollbackFaults)
                result.push_back({mode, fault, stays});
        result.push_back({"delete", deleteFault, stays});
        result.push_back({"truncate", truncateFault, stays});
        for (const Fault& fault : walFaults)
            result.push_back({"wal", fault, stays});
    }
    return result;
}

void PrintTo(const Case& storageCase, std::ostream* out)
{
    *out << storageCase.journalMode << " " << storageCase.fault.name << (storageCase.stays ? " for good" : " once");
}

Json::Value record(int id)
{
    Json::Value result;
    result["id"] = id;
    result["text"] = "record " + std::to_string(id) + " " + std::string(3000, 'x');
    return result;
}

// SQLite's texts of the statements that failed, as the log shows them.
std::vector<std::string> failureTexts(const std::vector<LogLine>& lines)
{
    static const std::string before = "run sql failed, error=";
    static const std::string after = ", sql=";
    std::vector<std::string> result;
    for (const LogLine& line : lines)
    {
        const size_t start = line.message.find(before);
        if (start != std::string::npos && line.message.compare(0, 2, "i=") == 0)
        {
            const size_t end = line.message.find(after, start);
            result.push_back(line.message.substr(start + before.size(), end - start - before.size()));
        }
    }
    return result;
}

using Rows = std::map<int, std::string>;

// An operation that changes the table, and what the rows become.
struct Change
{
    const char* name;
    int (*call)(VornJsonDbApi& api, int id);
    void (*apply)(Rows& rows, int id);
};

int create(VornJsonDbApi& api, int id)
{
    Json::Value in = record(id);
    Json::Value out;
    const int result = api.recCreate(in, out);
    EXPECT_EQ(result == 0 ? in : Json::Value(), out);
    return result;
}

const Change changes[] = {
    {"create", create, [](Rows& rows, int id) { rows[id] = record(id)["text"].asString(); }},
    {"replace",
     [](VornJsonDbApi& api, int id)
     {
         Json::Value in = record(id);
         in["id"] = 1;
         return api.recSave(in, false);
     },
     [](Rows& rows, int id) { rows[1] = record(id)["text"].asString(); }},
    {"update",
     [](VornJsonDbApi& api, int id)
     {
         Json::Value filter = json(R"({"vornSqlWhereFilter": "id > 1"})");
         Json::Value values;
         values["text"] = record(id)["text"];
         return api.recUpdateByFilter(filter, values);
     },
     [](Rows& rows, int id)
     {
         for (auto& [key, text] : rows)
             text = key > 1 ? record(id)["text"].asString() : text;
     }},
    {"delete",
     [](VornJsonDbApi& api, int)
     {
         Json::Value filter = json(R"({"vornSqlWhereFilter": "id > 2"})");
         return api.recDelete(filter);
     },
     [](Rows& rows, int) { rows.erase(rows.upper_bound(2), rows.end()); }},
};

Rows rowsOf(const Database& database)
{
    Rows result;
    for (const std::string& row : database.rows("select id, text from records"))
    {
        const size_t bar = row.find('|');
        EXPECT_TRUE(result.emplace(std::stoi(row), row.substr(bar + 1)).second) << row << " is there twice";
    }
    return result;
}

class FailingStorage : public testing::TestWithParam<Case>
{
protected:
    // What each connection runs before storage fails. Only a write-ahead log is known by the file itself; checkpoints
    // of it follow each commit.
    std::string pragmas() const
    {
        return GetParam().journalMode == "wal" && !m_rows.empty()
                   ? "pragma wal_autocheckpoint = 1"
                   : "pragma journal_mode = " + GetParam().journalMode + "; pragma wal_autocheckpoint = 1";
    }

    // The same five records at the start of each round.
    void fill()
    {
        const Database database(m_file.path());
        ASSERT_EQ(SQLITE_OK, database.run(pragmas()));
        ASSERT_EQ(SQLITE_OK, database.run(m_create + ";begin;delete from records"));
        m_rows.clear();
        for (int id = 1; id <= 5; ++id)
        {
            m_rows[id] = record(id)["text"].asString();
            ASSERT_EQ(SQLITE_OK,
                      database.run("insert into records values (" + std::to_string(id) + ", '" + m_rows[id] + "')"));
        }
        ASSERT_EQ(SQLITE_OK, database.run("commit"));
    }

    // The change on a new connection, whose construction and first reads may fail as well, with the nth request
    // failing. Returns its result.
    int callWithFault(const Change& change, Database& database, std::optional<VornJsonDbApi>& api, int id, long nth)
    {
        const SleepWatch skipPauses(SleepWatch::Pause::Skipped);
        LogCapture capture;
        m_vfs.fail(GetParam().fault.request, GetParam().fault.status, nth, GetParam().stays);
        api.emplace(database.handle(), m_name, m_definition, m_create);
        const int result = change.call(*api, id);
        m_vfs.heal();
        capture.stop();
        const std::vector<std::string> texts = failureTexts(capture.lines());
        EXPECT_TRUE(result >= 0 || !texts.empty()) << "failed without a line in the log";
        const std::vector<std::string>& known = GetParam().fault.texts;
        for (const std::string& text : texts)
            EXPECT_TRUE(std::find(known.begin(), known.end(), text) != known.end()) << text;
        return result;
    }

    void round(const Change& change, long nth)
    {
        {
            Database database(m_file.path());
            ASSERT_EQ(SQLITE_OK, database.run(pragmas()));
            constexpr int id = 100;
            std::optional<VornJsonDbApi> api;
            const int result = callWithFault(change, database, api, id, nth);
            m_failures += result == -1 ? 1 : 0;

            const Rows now = rowsOf(database);
            Rows changed = m_rows;
            change.apply(changed, id);
            EXPECT_TRUE(now == changed || (result == -1 && now == m_rows))
                << "result " << result << ", " << now.size() << " rows";
            m_rows = now;

            // The same connection and object go on as soon as the storage does.
            EXPECT_EQ(0, create(*api, id + 1));
            m_rows[id + 1] = record(id + 1)["text"].asString();
            EXPECT_EQ(SQLITE_OK, database.close());
        }
        const Database next(m_file.path());
        EXPECT_EQ(std::vector<std::string>{"ok"}, next.rows("pragma integrity_check"));
        EXPECT_TRUE(m_rows == rowsOf(next));
    }

    TempFile m_file;
    FaultyVfs m_vfs;
    Rows m_rows;  // what must be in the file
    int m_failures = 0;
    std::string m_name = "records";
    Json::Value m_definition = definitionOf(m_name, json(members));
    std::string m_create = "CREATE TABLE IF NOT EXISTS records (id INTEGER PRIMARY KEY, text TEXT)";
};

}  // namespace

TEST_P(FailingStorage, LosesNothingAndLeavesNothingHalfDone)
{
    long most = 0;
    for (const Change& change : changes)
    {
        long nth = 0;
        do
        {
            SCOPED_TRACE(std::string(change.name) + ", request " + std::to_string(++nth));
            fill();
            round(change, nth);
            ASSERT_FALSE(HasFailure());
        } while (m_vfs.struck() && nth < mostRequests);
        EXPECT_LT(nth, mostRequests);
        std::cout << change.name << ": " << nth - 1 << " requests\n";
        most = std::max(most, nth - 1);
    }
    EXPECT_LT(0, most) << "no such request was made";
    EXPECT_TRUE(m_failures > 0 || !GetParam().stays);
    std::cout << m_failures << " failures\n";
}

INSTANTIATE_TEST_SUITE_P(Faults, FailingStorage, testing::ValuesIn(cases()),
                         [](const auto& storageCase)
                         {
                             return storageCase.param.journalMode + "_" + storageCase.param.fault.name +
                                    (storageCase.param.stays ? "_forGood" : "_once");
                         });

TEST(FullDatabase, TakesNoMoreRecordsButKeepsAndReleasesThem)
{
    Store store(members, "id INTEGER PRIMARY KEY, text TEXT");
    ASSERT_EQ(SQLITE_OK, store.db().run("pragma max_page_count = 20"));
    int stored = 0;
    int result = 0;
    std::vector<std::string> texts;
    while (result == 0 && stored < 1000)
    {
        Json::Value in = record(stored + 1);
        Json::Value out;
        LogCapture capture;
        result = store->recCreate(in, out);
        capture.stop();
        texts = failureTexts(capture.lines());
        stored += result == 0 ? 1 : 0;
    }
    EXPECT_EQ(-1, result);
    EXPECT_EQ(std::vector<std::string>{full}, texts);
    EXPECT_LT(10, stored);
    EXPECT_EQ(static_cast<size_t>(stored), store.rows().size());
    EXPECT_EQ(std::vector<std::string>{"ok"}, store.db().rows("pragma integrity_check"));

    Json::Value first = json(R"({"vornSqlWhereFilter": "id = 1"})");
    EXPECT_EQ(1, store->recDelete(first));
    Json::Value in = record(1);
    Json::Value out;
    EXPECT_EQ(0, store->recCreate(in, out));
}

TEST(ReadOnlyFile, IsReadAndRefusesEveryChange)
{
    const TempFile file;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name, json(members));
    std::string create = "CREATE TABLE IF NOT EXISTS " + name + " (id INTEGER PRIMARY KEY, text TEXT)";
    {
        const Database database(file.path());
        VornJsonDbApi api(database.handle(), name, definition, create);
        for (int id = 1; id <= 3; ++id)
        {
            Json::Value in = record(id);
            ASSERT_EQ(0, api.recSave(in, true));
        }
    }

    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open_v2(file.path().c_str(), &pDb, SQLITE_OPEN_READONLY, nullptr));
    {
        std::optional<VornJsonDbApi> api;
        logged({}, [&] { api.emplace(pDb, name, definition, create); });
        Json::Value filter = json(R"({"vornSqlWhereFilter": "id > 0"})");
        Json::Value values = json(R"({"text": "changed"})");
        Json::Value in = record(4);
        Json::Value out;
        const std::vector<std::function<int()>> refused = {
            [&] { return api->recCreate(in, out); },
            [&] { return api->recSave(in, false); },
            [&] { return api->recUpdateByFilter(filter, values); },
            [&] { return api->recDelete(filter); },
            [&] { return api->recDeleteAll(); },
        };
        for (const std::function<int()>& call : refused)
        {
            LogCapture capture;
            EXPECT_EQ(-1, call());
            capture.stop();
            EXPECT_EQ(std::vector<std::string>{"attempt to write a readonly database"}, failureTexts(capture.lines()));
        }
        Json::Value nothing;
        EXPECT_SILENT(0, api->recList(nothing, out));
        ASSERT_EQ(3U, out.size());
        EXPECT_EQ(record(2), out[1]);
    }
    EXPECT_EQ(SQLITE_OK, sqlite3_close(pDb));
}
