// SPDX-License-Identifier: MIT
//
// Locks that fall at one certain moment: between a record's insert and its read-back, inside the caller's own
// transaction, on one table of a shared cache, on an outdated snapshot of a write-ahead log. Nothing here waits.

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "failures.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;

namespace
{

constexpr const char* members = R"({"id": {"cpptype": "int"}, "text": {"cpptype": "string"}})";
constexpr const char* withoutKey = "id INTEGER, text TEXT";
constexpr const char* withKey = "id INTEGER PRIMARY KEY, text TEXT";
const std::string locked = "database is locked";

Json::Value record(int id = 1)
{
    Json::Value result;
    result["id"] = id;
    result["text"] = "text";
    return result;
}

// Calls back when a connection starts to run a statement that begins like that; it holds no lock for it yet.
class BeforeStatement
{
public:
    BeforeStatement(const Database& database, std::string start, std::function<void()> action)
        : m_pDb(database.handle()), m_start(std::move(start)), m_action(std::move(action))
    {
        const auto check = [](unsigned, void* pContext, void*, void* pText)
        {
            const auto& self = *static_cast<BeforeStatement*>(pContext);
            if (std::string(static_cast<const char*>(pText)).compare(0, self.m_start.size(), self.m_start) == 0)
                self.m_action();
            return 0;
        };
        sqlite3_trace_v2(m_pDb, SQLITE_TRACE_STMT, check, this);
    }

    ~BeforeStatement() { sqlite3_trace_v2(m_pDb, 0, nullptr, nullptr); }
    BeforeStatement(const BeforeStatement&) = delete;
    BeforeStatement& operator=(const BeforeStatement&) = delete;

private:
    sqlite3* m_pDb;
    std::string m_start;
    std::function<void()> m_action;
};

// A store on a file, another connection to it, and a call of recCreate() or recSave() during which the other connection
// locks the file just before the first read-back and lets go in the pause that follows, or never.
class LockBeforeReadBack
{
public:
    LockBeforeReadBack(const std::string& columns, const std::string& lockSql,
                       const std::string& journalMode = "delete")
        : m_lockSql(lockSql)
    {
        EXPECT_EQ(SQLITE_OK, m_other.run("pragma journal_mode = " + journalMode));
        m_store.emplace(members, columns, std::make_shared<Database>(m_file.path()));
    }

    enum class LetGo
    {
        InFirstPause,
        Never
    };

    // recCreate() with the lock, and without a line where it succeeds.
    int create(LetGo letGo, Json::Value in, Json::Value& out)
    {
        return during(letGo,
                      [&](Store& store)
                      {
                          LogCapture capture;
                          const int status = store->recCreate(in, out);
                          capture.stop();
                          EXPECT_TRUE(status != 0 || capture.lines().empty());
                          return status;
                      });
    }

    template <class Call>
    int during(LetGo letGo, Call call)
    {
        bool held = false;
        int times = 0;
        const BeforeStatement lock(m_store->db(), "select * from",
                                   [&]
                                   {
                                       if (times++ == 0)
                                       {
                                           EXPECT_EQ(SQLITE_OK, m_other.run(m_lockSql));
                                           held = true;
                                       }
                                   });
        const auto release = [&]
        {
            if (held)
            {
                EXPECT_EQ(SQLITE_OK, m_other.run("commit"));
                held = false;
            }
        };
        const SleepWatch watch(SleepWatch::Pause::Skipped,
                               [&](int)
                               {
                                   if (letGo == LetGo::InFirstPause)
                                   {
                                       release();
                                   }
                               });
        const int result = call(*m_store);
        m_pauses = watch.pauses().size();
        release();
        EXPECT_LT(0, times);
        return result;
    }

    Store& store() { return *m_store; }
    size_t pauses() const { return m_pauses; }

private:
    TempFile m_file;
    Database m_other{m_file.path()};
    std::string m_lockSql;
    std::optional<Store> m_store;
    size_t m_pauses = 0;
};

using LetGo = LockBeforeReadBack::LetGo;

}  // namespace

TEST(LockBeforeTheReadBack, StoresARecordWithoutAKeyTwice)
{
    LockBeforeReadBack moment(withoutKey, "begin exclusive");
    Json::Value in = record();
    Json::Value out;
    EXPECT_EQ(0, moment.create(LetGo::InFirstPause, in, out));
    EXPECT_EQ(1U, moment.pauses());
    EXPECT_EQ(in, out);
    EXPECT_EQ((std::vector<std::string>{"1|text", "1|text"}), moment.store().rows());
}

TEST(LockBeforeTheReadBack, GivesARecordWithAKeyOfSqliteTwoKeysAndReportsTheSecond)
{
    LockBeforeReadBack moment(withKey, "begin exclusive");
    Json::Value in;
    in["text"] = "text";
    Json::Value out;
    EXPECT_EQ(0, moment.create(LetGo::InFirstPause, in, out));
    EXPECT_EQ(record(2), out);
    EXPECT_EQ((std::vector<std::string>{"1|text", "2|text"}), moment.store().rows());
}

TEST(LockBeforeTheReadBack, ReportsTheKeyOfTheVeryRecordThatItStoredAsADuplicate)
{
    LockBeforeReadBack moment(withKey, "begin exclusive");
    Json::Value in = record();
    Json::Value out = "untouched";
    EXPECT_EQ(-1, moment.create(LetGo::InFirstPause, in, out));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", moment.store()->getErrMsg());
    EXPECT_EQ(1U, moment.pauses());
    EXPECT_EQ(Json::Value("untouched"), out);
    EXPECT_EQ(std::vector<std::string>{"1|text"}, moment.store().rows());
}

TEST(LockBeforeTheReadBack, DoesNoHarmToAReplacedRecord)
{
    LockBeforeReadBack moment(withKey, "begin exclusive");
    ASSERT_EQ(SQLITE_OK, moment.store().db().run("insert into " + moment.store().name() + " values (1, 'old')"));
    Json::Value inOut = record();
    EXPECT_EQ(0, moment.during(LetGo::InFirstPause,
                               [&](Store& store) { return logged({}, [&] { return store->recSave(inOut, false); }); }));
    EXPECT_EQ(1U, moment.pauses());
    EXPECT_EQ(record(), inOut);
    EXPECT_EQ(std::vector<std::string>{"1|text"}, moment.store().rows());
}

TEST(LockBeforeTheReadBack, ThatStaysFailsTheCallAlthoughTheRecordIsStored)
{
    LockBeforeReadBack moment(withoutKey, "begin exclusive");
    Json::Value in = record();
    Json::Value out = "untouched";
    EXPECT_EQ(-1, moment.create(LetGo::Never, in, out));
    EXPECT_EQ(500U, moment.pauses());
    EXPECT_EQ("", moment.store()->getErrMsg());
    EXPECT_EQ(Json::Value("untouched"), out);
    EXPECT_EQ(std::vector<std::string>{"1|text"}, moment.store().rows());
}

TEST(LockBeforeTheReadBack, IsNoneInAWriteAheadLogWhereReadersNeverWait)
{
    LockBeforeReadBack moment(withoutKey, "begin exclusive", "wal");
    Json::Value in = record();
    Json::Value out;
    EXPECT_EQ(0, moment.create(LetGo::Never, in, out));
    EXPECT_EQ(0U, moment.pauses());
    EXPECT_EQ(std::vector<std::string>{"1|text"}, moment.store().rows());
}

TEST(LockBeforeTheReadBack, CannotFallInsideTheCallersTransaction)
{
    const TempFile file;
    Store store(members, withoutKey, std::make_shared<Database>(file.path()));
    const Database other(file.path());
    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    int attempts = 0;
    {
        const BeforeStatement lock(store.db(), "select * from",
                                   [&]
                                   {
                                       ++attempts;
                                       EXPECT_EQ(SQLITE_BUSY, other.run("begin immediate"));
                                   });
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        Json::Value in = record();
        Json::Value out;
        EXPECT_SILENT(0, store->recCreate(in, out));
        EXPECT_EQ(0U, watch.pauses().size());
    }
    EXPECT_EQ(1, attempts);
    EXPECT_EQ(SQLITE_OK, store.db().run("commit"));
    EXPECT_EQ(std::vector<std::string>{"1|text"}, store.rows());
}

TEST(CallersTransaction, EndsAsTheCallerSays)
{
    Store store(members, withKey);
    Json::Value first = record(1);
    Json::Value second = record(2);
    Json::Value out;

    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    EXPECT_EQ(0, store->recCreate(first, out));
    EXPECT_EQ(first, out);
    EXPECT_EQ(0, store->recCreate(second, out));
    EXPECT_EQ(2, store->recDeleteAll());
    EXPECT_EQ(0, store->recCreate(second, out));
    ASSERT_EQ(SQLITE_OK, store.db().run("rollback"));
    EXPECT_TRUE(store.rows().empty());

    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    EXPECT_EQ(0, store->recCreate(first, out));
    ASSERT_EQ(SQLITE_OK, store.db().run("commit"));
    EXPECT_EQ(std::vector<std::string>{"1|text"}, store.rows());
}

TEST(CallersTransaction, StaysOpenAndKeepsWhatItHoldsWhenAStatementFails)
{
    Store store(members, withKey);
    Json::Value first = record(1);
    Json::Value second = record(2);
    Json::Value out;
    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    EXPECT_EQ(0, store->recCreate(first, out));
    {
        LogCapture capture;
        EXPECT_EQ(-1, store->recCreate(first, out));
        EXPECT_EQ(-1, store->runSqlEx("no statement"));
    }
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
    EXPECT_EQ(0, sqlite3_get_autocommit(store.db().handle()));
    EXPECT_EQ(0, store->recCreate(second, out));
    ASSERT_EQ(SQLITE_OK, store.db().run("commit"));
    EXPECT_EQ((std::vector<std::string>{"1|text", "2|text"}), store.rows());
}

// Two connections of one thread: the one that waits keeps the one that holds the lock from ever letting go.
TEST(CallersTransaction, OnAnotherConnectionOfTheSameThreadIsWaitedForInVain)
{
    const TempFile file;
    const auto database = std::make_shared<Database>(file.path());
    Store store(members, withKey, database);
    const Database other(file.path());
    ASSERT_EQ(SQLITE_OK, other.run("begin immediate"));
    Json::Value in = record();
    Json::Value out;
    {
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        LogCapture capture;
        EXPECT_EQ(-1, store->recCreate(in, out));
        EXPECT_EQ(500U, watch.pauses().size());
    }
    ASSERT_EQ(SQLITE_OK, other.run("commit"));
    EXPECT_SILENT(0, store->recCreate(in, out));
    EXPECT_EQ(std::vector<std::string>{"1|text"}, store.rows());
}

// A writer inside its transaction waits for another writer's end as well, and then goes on in the same transaction.
TEST(CallersTransaction, WaitsForAnotherWritersEnd)
{
    const TempFile file;
    Store store(members, withKey, std::make_shared<Database>(file.path()));
    const Database other(file.path());
    ASSERT_EQ(SQLITE_OK, other.run("begin immediate"));
    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    {
        const SleepWatch watch(SleepWatch::Pause::Skipped, 3, [&] { EXPECT_EQ(SQLITE_OK, other.run("commit")); });
        Json::Value in = record();
        Json::Value out;
        EXPECT_SILENT(0, store->recCreate(in, out));
        EXPECT_EQ(3U, watch.pauses().size());
    }
    EXPECT_EQ(0, sqlite3_get_autocommit(store.db().handle()));
    EXPECT_TRUE(other.rows("select * from " + store.name()).empty());
    EXPECT_EQ(SQLITE_OK, store.db().run("commit"));
    EXPECT_EQ(std::vector<std::string>{"1|text"}, other.rows("select * from " + store.name()));
}

// The text of a table lock is another one than the text that is retried.
TEST(SharedCache, TableLocksAreNotRetried)
{
    const TempFile file;
    ASSERT_EQ(SQLITE_OK, sqlite3_enable_shared_cache(1));
    Store store(members, withKey, std::make_shared<Database>(file.path()));
    const Database other(file.path());
    ASSERT_EQ(SQLITE_OK, sqlite3_enable_shared_cache(0));
    Json::Value in = record(2);
    Json::Value out;
    Json::Value nothing;
    const std::string select = "SELECT id,text FROM " + store.name() + " ;";
    const auto listFailure = [&](const std::string& error)
    {
        return refusedBySqlite(error, select) +
               ExpectedLines{failed("0 > runSqlEx(strSqlRun, DbCallBackFillList, &jRecArrayOut)"),
                             trace("jRecParam=null"), trace("sql error, err=" + error + ", sql=" + select)};
    };

    const SleepWatch watch(SleepWatch::Pause::Skipped);
    ASSERT_EQ(SQLITE_OK, other.run("begin; insert into " + store.name() + " values (1, 'other')"));
    EXPECT_LOGS(-1, store->recList(nothing, out), listFailure("database table is locked: " + store.name()));
    const std::string insert = "insert into " + store.name() + " values (3, 'text')";
    EXPECT_LOGS(-1, store->runSqlEx(insert), refusedBySqlite("database table is locked", insert));
    ASSERT_EQ(SQLITE_OK, other.run("commit"));
    EXPECT_SILENT(0, store->recCreate(in, out));

    out = Json::Value();
    ASSERT_EQ(SQLITE_OK, other.run("begin; create table another (id)"));
    EXPECT_LOGS(-1, store->recList(nothing, out), listFailure("database schema is locked: main"));
    ASSERT_EQ(SQLITE_OK, other.run("commit"));
    EXPECT_SILENT(0, store->recList(nothing, out));
    EXPECT_EQ(2U, out.size());
    EXPECT_TRUE(watch.pauses().empty());
}

// No waiting helps a transaction that has read what another writer has changed since, but the text is the same.
TEST(Snapshot, AnOutdatedOneIsRetriedToTheEndAndFails)
{
    const TempFile file;
    const auto database = std::make_shared<Database>(file.path());
    ASSERT_EQ(SQLITE_OK, database->run("pragma journal_mode = wal"));
    Store store(members, withKey, database);
    const Database other(file.path());
    ASSERT_EQ(SQLITE_OK, store.db().run("begin"));
    EXPECT_TRUE(store.rows().empty());
    ASSERT_EQ(SQLITE_OK, other.run("insert into " + store.name() + " values (1, 'other')"));

    Json::Value in = record(2);
    Json::Value out;
    {
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        LogCapture capture;
        EXPECT_EQ(-1, store->recCreate(in, out));
        EXPECT_EQ(500U, watch.pauses().size());
        EXPECT_EQ(SQLITE_BUSY_SNAPSHOT, sqlite3_extended_errcode(store.db().handle()));
    }
    EXPECT_EQ("", store->getErrMsg());
    EXPECT_TRUE(store.rows().empty());

    ASSERT_EQ(SQLITE_OK, store.db().run("rollback"));
    EXPECT_SILENT(0, store->recCreate(in, out));
    EXPECT_EQ((std::vector<std::string>{"1|other", "2|text"}), store.rows());
}
