// SPDX-License-Identifier: MIT
//
// Others hold locks, for real: how long an operation waits, what it repeats, and what it leaves alone.

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "locks.h"
#include "table_fixture.h"

using namespace table_tests;

namespace
{

using Texts = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

constexpr const char* kMembers =
    R"({"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}, "n": {"cpptype": "int"}})";

struct Writing
{
    const char* szName;
    std::function<long long(vorn::Table&)> call;
};

const std::vector<Writing>& writings()
{
    static const std::vector<Writing> kWritings = {
        {"recCreate", [](vorn::Table& t) { return t.recCreate(json(R"({"name": "zq7x"})")); }},
        {"recCreate out",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recCreate(json(R"({"name": "zq7x"})"), jOut);
         }},
        {"recCreateAll", [](vorn::Table& t) { return t.recCreateAll(json(R"([{"name": "zq7x"}, {"n": 1}])")); }},
        {"recSave create",
         [](vorn::Table& t)
         {
             Json::Value j = json(R"({"name": "zq7x"})");
             return t.recSave(j, true);
         }},
        {"recSave",
         [](vorn::Table& t)
         {
             Json::Value j = json(R"({"id": 1, "name": "zq7x"})");
             return t.recSave(j, false);
         }},
        {"recUpdateByFilter",
         [](vorn::Table& t) { return t.recUpdateByFilter(json(R"({"id": 1})"), json(R"({"n": 48271})")); }},
        {"recDelete", [](vorn::Table& t) { return t.recDelete(json(R"({"id": 1})")); }},
        {"recDeleteAll", [](vorn::Table& t) { return t.recDeleteAll(); }},
        {"runSql",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.runSql("INSERT INTO T (n) VALUES (1)", Json::Value(), jOut);
         }},
        {"tableUpgrade", [](vorn::Table& t) { return t.tableUpgrade(); }},
    };
    return kWritings;
}

double millisecondsOf(const std::function<void()>& body)
{
    const auto start = Clock::now();
    body();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// A table T in a file, with one row, whose member "later" has no column yet.
class FileTable
{
public:
    explicit FileTable(const std::string& strPath, bool blUpgraded = true)
        : m_pDatabase(std::make_shared<Database>(strPath))
    {
        EXPECT_EQ(SQLITE_OK, m_pDatabase->run("CREATE TABLE IF NOT EXISTS T (id INTEGER PRIMARY KEY, name TEXT, n INT);"
                                              "INSERT OR IGNORE INTO T VALUES (1, 'first', 1)"));
        Json::Value jMembers = json(kMembers);
        if (!blUpgraded)
            jMembers["later"]["cpptype"] = "int";
        m_pTable = std::make_unique<vorn::Table>(m_pDatabase->handle(), "T", definitionOf("T", jMembers));
    }
    vorn::Table* operator->() { return m_pTable.get(); }
    vorn::Table& operator*() { return *m_pTable; }
    Database& db() { return *m_pDatabase; }

private:
    std::shared_ptr<Database> m_pDatabase;
    std::unique_ptr<vorn::Table> m_pTable;
};

std::size_t count(const Texts& texts, const std::string& strStart)
{
    std::size_t count = 0;
    for (const std::string& strText : texts)
        count += strText.rfind(strStart, 0) == 0 ? 1 : 0;
    return count;
}

// Runs a body in another thread a while later.
class Later
{
public:
    Later(int iMilliseconds, std::function<void()> body)
        : m_thread(
              [iMilliseconds, body = std::move(body)]
              {
                  std::this_thread::sleep_for(std::chrono::milliseconds(iMilliseconds));
                  body();
              })
    {
    }
    ~Later() { m_thread.join(); }
    Later(const Later&) = delete;
    Later& operator=(const Later&) = delete;

private:
    std::thread m_thread;
};

}  // namespace

TEST(TableLocks, OfAnotherProcessAreWaitedForUntilTheTimeout)
{
    support::TempFile file;
    const auto pLock = support::lockFromProcess(file.path());
    FileTable t(file.path(), false);
    const Texts rows = t.db().rows("SELECT * FROM T");
    for (const Writing& writing : writings())
    {
        SCOPED_TRACE(writing.szName);
        if (std::string(writing.szName) != "tableUpgrade")
            continue;
        pLock->take();
        t->setLockTimeout(300);
        const double dTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked)); });
        EXPECT_NEAR(300, dTime, 60);
        pLock->release();
    }
    EXPECT_TRUE(done(*t, t->tableUpgrade()));
    for (const Writing& writing : writings())
    {
        SCOPED_TRACE(writing.szName);
        if (std::string(writing.szName) == "tableUpgrade")
            continue;
        pLock->take();
        t->setLockTimeout(200);
        const double dTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked)); });
        EXPECT_NEAR(200, dTime, 40);
        EXPECT_EQ(SQLITE_BUSY, t->status().sqlite & 0xff);
        t->setLockTimeout(0);
        const double dNoTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked)); });
        EXPECT_GT(20, dNoTime);
        EXPECT_NE(0, sqlite3_get_autocommit(t.db().handle()));
        pLock->release();
        EXPECT_EQ((Texts{"1|first|1|NULL"}), t.db().rows("SELECT * FROM T"));
    }
}

TEST(TableLocks, OfAnotherThreadAreOutlived)
{
    support::TempFile file;
    FileTable t(file.path());
    for (const Writing& writing : writings())
    {
        SCOPED_TRACE(writing.szName);
        const auto pLock = support::lockFromThread(file.path());
        pLock->take();
        const Later later(60, [&] { pLock->release(); });
        EXPECT_LE(0, writing.call(*t)) << describe(t->status());
        EXPECT_EQ(Code::Ok, t->status().code);
    }
}

TEST(TableLocks, ThatKeepReadersOutAreWaitedForByReads)
{
    support::TempFile file;
    FileTable t(file.path());
    t->setLockTimeout(200);
    Database other(file.path());
    ASSERT_EQ(SQLITE_OK, other.run("BEGIN EXCLUSIVE"));
    Json::Value jOut("before");
    const std::function<long long()> reads[] = {
        [&]
        {
            Json::Value jRows;
            return static_cast<long long>(t->recList(json("{}"), jRows));
        },
        [&] { return static_cast<long long>(t->recGetOne(json("{}"), jOut)); }, [&] { return t->recCount(json("{}")); },
        [&] { return t->recForEach(json("{}"), [](Json::Value&) { return true; }); }};
    for (const auto& read : reads)
    {
        const double dTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, read(), Code::Locked)); });
        EXPECT_NEAR(200, dTime, 40);
    }
    EXPECT_EQ(Json::Value("before"), jOut);
    t->setLockTimeout(5000);
    const Later later(60, [&] { other.run("COMMIT"); });
    EXPECT_TRUE(done(*t, t->recCount(json("{}")), 1));
}

TEST(TableLocks, ThatKeepReadersOutAreWaitedForByTheConstructor)
{
    const char* const szCreate = "CREATE TABLE T (id INTEGER PRIMARY KEY, name TEXT, n INT)";
    for (const std::string& strLock :
         {std::string("CREATE TABLE other (x); BEGIN EXCLUSIVE"), szCreate + std::string("; BEGIN EXCLUSIVE"),
          "BEGIN IMMEDIATE; " + std::string(szCreate)})  // the same table meanwhile
    {
        SCOPED_TRACE(strLock);
        support::TempFile file;
        Database other(file.path());
        ASSERT_EQ(SQLITE_OK, other.run(strLock));
        const Database db(file.path());
        {
            const Later later(60, [&] { other.run("COMMIT"); });
            vorn::Table table(db.handle(), "T", definitionOf("T", json(kMembers)));
            EXPECT_TRUE(done(table, 0));
            EXPECT_TRUE(done(table, table.recCount(Json::Value()), 0));
        }
    }
}

TEST(TableLocks, OfOneWhoDoesAPartOfAnUpgradeMeanwhileAreOutlived)
{
    support::TempFile file;
    Database other(file.path());
    ASSERT_EQ(SQLITE_OK, other.run("CREATE TABLE T (id INTEGER PRIMARY KEY)"));
    const Database db(file.path());
    vorn::Table table(db.handle(), "T", definitionOf("T", json(kMembers)));
    ASSERT_EQ(SQLITE_OK, other.run("BEGIN IMMEDIATE; ALTER TABLE T ADD COLUMN name TEXT"));
    const Later later(60, [&] { other.run("COMMIT"); });
    EXPECT_TRUE(done(table, table.tableUpgrade()));
    EXPECT_TRUE(done(table, table.recCreate(json(R"({"name": "a", "n": 1})"))));
}

TEST(TableLocks, AreWaitedForByAReadUntilItHasHandedOutARow)
{
    TestTable t(kMembers);
    ASSERT_EQ(3, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}, {"n": 3}])")));
    // A function that meets a lock of its own in one of the rows, three times.
    struct Busy
    {
        int iRow = 0;
        int iTimes = 3;
    };
    Busy busy;
    const auto function = [](sqlite3_context* pContext, int, sqlite3_value** pArguments)
    {
        auto* const pBusy = static_cast<Busy*>(sqlite3_user_data(pContext));
        if (sqlite3_value_int(*pArguments) == pBusy->iRow && pBusy->iTimes-- > 0)
            sqlite3_result_error_code(pContext, SQLITE_BUSY);
        else
            sqlite3_result_int(pContext, 1);
    };
    ASSERT_EQ(SQLITE_OK,
              sqlite3_create_function(t.handle(), "free", 1, SQLITE_UTF8, &busy, function, nullptr, nullptr));
    const Json::Value jFilter = json(R"~({"vornSqlWhereFilter": "free(id)"})~");
    int iVisited = 0;
    Json::Value jRows;
    const std::pair<const char*, std::function<long long()>> reads[] = {
        {"recForEach", [&] { return t->recForEach(jFilter, [&](Json::Value&) { return ++iVisited > 0; }); }},
        {"recList", [&] { return t->recList(jFilter, jRows) == 0 ? static_cast<long long>(jRows.size()) : -1; }},
        {"runSql", [&] { return t->runSql(t.sql("SELECT id FROM @ WHERE free(id)"), Json::Value(), jRows); }}};
    for (const auto& [szName, read] : reads)
        for (const int iRow : {1, 2})
        {
            SCOPED_TRACE(std::string(szName) + std::to_string(iRow));
            busy = {iRow, 3};
            iVisited = 0;
            jRows = Json::Value();
            const long long nResult = read();
            EXPECT_TRUE(iRow == 1 ? done(*t, nResult, 3) : failed(*t, nResult, Code::Locked));
            EXPECT_EQ(iRow == 1 ? -1 : 2, busy.iTimes);
            EXPECT_EQ(szName != reads[0].first ? 0 : iRow == 1 ? 3 : 1, iVisited);
            EXPECT_EQ(szName != reads[0].first && iRow == 1 ? 3u : 0u, jRows.size());
            EXPECT_EQ(0, busyStatements(t.handle()));
        }
}

TEST(TableLocks, OfAnotherConnectionToASharedCacheAreWaitedFor)
{
    const support::TempFile file;
    sqlite3_enable_shared_cache(1);
    const auto pDatabase = std::make_shared<Database>(file.path());
    const Database other(file.path());
    sqlite3_enable_shared_cache(0);
    TestTable t(kMembers, "", pDatabase, "T");
    ASSERT_TRUE(done(*t, t->recCreate(json(R"({"id": 1, "n": 1})"))));
    ASSERT_EQ(SQLITE_OK, other.run("BEGIN; UPDATE T SET n = 2"));
    t->setLockTimeout(100);
    EXPECT_LE(90, millisecondsOf([&] { EXPECT_TRUE(failed(*t, t->recCount(json("{}")), Code::Locked)); }));
    EXPECT_EQ(SQLITE_LOCKED_SHAREDCACHE, t->status().sqlite);
    for (const Writing& writing : writings())
    {
        if (std::string(writing.szName) == "tableUpgrade")
            continue;
        t->setLockTimeout(0);
        EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked)) << writing.szName;
        EXPECT_NE(0, sqlite3_get_autocommit(t.handle()));
    }
    t->setLockTimeout(5000);
    const Later later(60, [&] { other.run("COMMIT"); });
    EXPECT_TRUE(done(*t, t->recCount(json(R"({"n": 2})")), 1));
}

TEST(TableLocks, AtTheEndRepeatTheEndAndNeverTheWork)
{
    for (const Writing& writing : writings())
    {
        SCOPED_TRACE(writing.szName);
        support::TempFile file;
        FileTable t(file.path(), std::string(writing.szName) != "tableUpgrade");
        Database reader(file.path());
        // A reader does not stand in the way of the work, but of its end.
        ASSERT_EQ(SQLITE_OK, reader.run("BEGIN; SELECT * FROM T"));
        t->setLockTimeout(150);
        const Texts rows = reader.rows("SELECT * FROM T");
        EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked));
        EXPECT_NE(0, sqlite3_get_autocommit(t.db().handle())) << "undone";
        EXPECT_EQ(0, busyStatements(t.db().handle()));
        EXPECT_EQ(rows, reader.rows("SELECT * FROM T"));

        t->setLockTimeout(5000);
        const support::StatementLog log(t.db());
        {
            const Later later(100, [&] { reader.run("COMMIT"); });
            EXPECT_LE(0, writing.call(*t)) << describe(t->status());
        }
        const Texts& statements = log.statements();
        const std::size_t ends = count(statements, "COMMIT") + count(statements, "RELEASE");
        for (const char* szWork : {"INSERT", "UPDATE", "DELETE", "ALTER"})
        {
            // A statement that is a transaction by itself undoes itself when it cannot end; any other has run once.
            const std::size_t most = std::string(writing.szName) == "recCreateAll" ? 2 : 1;
            EXPECT_TRUE(ends == 0 || most >= count(statements, szWork)) << szWork;
        }
        const Texts after = t.db().rows("SELECT count(*) FROM T");
        EXPECT_EQ(reader.rows("SELECT count(*) FROM T"), after);
        const long long nExpected = std::string(writing.szName) == "recCreateAll"        ? 3
                                    : std::string(writing.szName).find("recDelete") == 0 ? 0
                                    : std::string(writing.szName) == "recSave" ||
                                            std::string(writing.szName) == "recUpdateByFilter" ||
                                            std::string(writing.szName) == "tableUpgrade"
                                        ? 1
                                        : 2;
        EXPECT_EQ(std::to_string(nExpected), after.front());
    }
}

TEST(TableLocks, AtTheEndOfACreateRepeatTheEndAlone)
{
    support::TempFile file;
    FileTable t(file.path());
    Database reader(file.path());
    ASSERT_EQ(SQLITE_OK, reader.run("BEGIN; SELECT * FROM T"));
    const support::StatementLog log(t.db());
    Json::Value jOut;
    {
        const Later later(100, [&] { reader.run("COMMIT"); });
        EXPECT_TRUE(done(*t, t->recCreate(json(R"({"name": "a"})"), jOut)));
    }
    EXPECT_EQ(1u, count(log.statements(), "INSERT"));
    EXPECT_LT(1u, count(log.statements(), "COMMIT") + count(log.statements(), "RELEASE"));
    EXPECT_EQ(json(R"({"id": 2, "name": "a"})"), jOut);
}

TEST(TableLocks, ThatWaitingCannotCureAreToldAtOnce)
{
    for (const char* szJournal : {"DELETE", "WAL"})
        for (const char* szOther : {"UPDATE T SET n = n + 1", "BEGIN IMMEDIATE; UPDATE T SET n = n + 1"})
            for (const Writing& writing : writings())
            {
                if (std::string(szJournal) == "DELETE" && std::string(szOther).find("BEGIN") != 0)
                    continue;  // the reader's lock keeps it from being stored
                SCOPED_TRACE(std::string(szJournal) + " " + szOther + " " + writing.szName);
                support::TempFile file;
                FileTable t(file.path(), std::string(writing.szName) != "tableUpgrade");
                ASSERT_EQ(SQLITE_OK, t.db().run("PRAGMA journal_mode = " + std::string(szJournal)));
                Database other(file.path());
                ASSERT_EQ(SQLITE_OK, t.db().run("BEGIN; SELECT count(*) FROM T"));
                ASSERT_EQ(SQLITE_OK, other.run(szOther));
                const double dTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, writing.call(*t), Code::Locked)); });
                EXPECT_GT(50, dTime);
                EXPECT_NE(std::string::npos, t->status().text.find("transaction")) << t->status().text;
                EXPECT_EQ(0, sqlite3_get_autocommit(t.db().handle())) << "the caller's transaction goes on";
                EXPECT_EQ(Texts{"1"}, t.db().rows("SELECT n FROM T"));
                EXPECT_EQ(SQLITE_OK, t.db().run("ROLLBACK"));
                other.run("COMMIT");
                EXPECT_LE(0, writing.call(*t)) << describe(t->status());
            }
}

TEST(TableLocks, AreWaitedForInATransactionOfTheCallerThatHasNotReadYet)
{
    support::TempFile file;
    FileTable t(file.path());
    const auto pLock = support::lockFromThread(file.path());
    for (const char* szOuter : {"BEGIN", "SAVEPOINT s"})
    {
        ASSERT_EQ(SQLITE_OK, t.db().run(szOuter));
        pLock->take();
        t->setLockTimeout(100);
        const double dTime = millisecondsOf([&] { EXPECT_TRUE(failed(*t, t->recCreate(json("{}")), Code::Locked)); });
        EXPECT_NEAR(100, dTime, 20);
        EXPECT_EQ(0, sqlite3_get_autocommit(t.db().handle()));
        t->setLockTimeout(5000);
        {
            const Later later(60, [&] { pLock->release(); });
            EXPECT_TRUE(done(*t, t->recCreate(json("{}"))));
        }
        ASSERT_EQ(SQLITE_OK, t.db().run("ROLLBACK"));
    }
}

TEST(TableLocks, LeaveTheHostsBusyHandlerTimeoutAndPragmasAsTheyAre)
{
    support::TempFile file;
    FileTable t(file.path());
    const char* const pragmas[] = {"busy_timeout",       "foreign_keys",       "journal_mode",
                                   "synchronous",        "recursive_triggers", "temp_store",
                                   "query_only",         "automatic_index",    "cache_size",
                                   "locking_mode",       "defer_foreign_keys", "ignore_check_constraints",
                                   "case_sensitive_like"};
    const auto settings = [&]
    {
        Texts texts;
        for (const char* szPragma : pragmas)
            for (const std::string& strRow : t.db().rows("PRAGMA " + std::string(szPragma)))
                texts.push_back(szPragma + ("=" + strRow));
        return texts;
    };
    Database other(file.path());
    t.db().run("PRAGMA busy_timeout = 30");
    const Texts before = settings();
    ASSERT_EQ(SQLITE_OK, other.run("BEGIN IMMEDIATE"));
    t->setLockTimeout(10);
    for (const Writing& writing : writings())
        static_cast<void>(writing.call(*t));
    EXPECT_EQ(Code::Locked, (t->recDeleteAll(), t->status().code));
    EXPECT_EQ(before, settings());

    int iCalls = 0;
    sqlite3_busy_handler(
        t.db().handle(),
        [](void* pCalls, int)
        {
            ++*static_cast<int*>(pCalls);
            return 0;
        },
        &iCalls);
    t->setLockTimeout(300);
    EXPECT_TRUE(failed(*t, t->recDeleteAll(), Code::Locked));
    EXPECT_LE(4, iCalls) << "the host's acts first, after each pause";
    EXPECT_GE(15, iCalls) << "and pauses grow";
    const int iBefore = iCalls;
    EXPECT_EQ(SQLITE_BUSY, t.db().run("DELETE FROM T"));
    EXPECT_EQ(iBefore + 1, iCalls) << "and is still there";
    other.run("COMMIT");
    for (const Writing& writing : writings())
        EXPECT_LE(0, writing.call(*t)) << writing.szName;
    EXPECT_EQ(SQLITE_OK, other.run("BEGIN IMMEDIATE"));
    const int iLast = iCalls;
    EXPECT_EQ(SQLITE_BUSY, t.db().run("DELETE FROM T"));
    EXPECT_EQ(iLast + 1, iCalls);
}

TEST(TableLocks, OfAnotherAttachedDatabaseAreNotWaitedFor)
{
    support::TempFile file, attached;
    FileTable t(file.path());
    Database other(attached.path());
    ASSERT_EQ(SQLITE_OK, other.run("CREATE TABLE o (x)"));
    ASSERT_EQ(SQLITE_OK, t.db().run("ATTACH '" + attached.path() + "' AS o"));
    ASSERT_EQ(SQLITE_OK, other.run("BEGIN IMMEDIATE"));
    t->setLockTimeout(0);
    for (const Writing& writing : writings())
        EXPECT_LE(0, writing.call(*t)) << writing.szName << describe(t->status());
}

TEST(TableTransaction, StoresAllOrNothing)
{
    TestTable t(kMembers);
    {
        vorn::Transaction transaction(t.handle());
        EXPECT_TRUE(transaction.isOpen());
        EXPECT_EQ(Code::Ok, transaction.status().code);
        t.create(R"({"name": "a"})");
        EXPECT_EQ(0, transaction.commit());
        EXPECT_FALSE(transaction.isOpen());
        EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Misuse));
        EXPECT_TRUE(failed(transaction.status(), transaction.rollback(), Code::Misuse));
    }
    {
        vorn::Transaction transaction(t.handle());
        t.create(R"({"name": "b"})");
    }
    {
        vorn::Transaction transaction(t.handle());
        t.create(R"({"name": "c"})");
        EXPECT_EQ(0, transaction.rollback());
        EXPECT_FALSE(transaction.isOpen());
    }
    EXPECT_EQ(1, t->recCount(Json::Value()));
    EXPECT_NE(0, sqlite3_get_autocommit(t.handle()));
}

TEST(TableTransaction, InsideAnotherIsASavepoint)
{
    TestTable t(kMembers);
    t.run("BEGIN");
    {
        vorn::Transaction outer(t.handle());
        t.create(R"({"name": "a"})");
        {
            vorn::Transaction inner(t.handle());
            t.create(R"({"name": "b"})");
        }
        {
            vorn::Transaction inner(t.handle());
            t.create(R"({"name": "c"})");
            EXPECT_EQ(0, inner.commit());
        }
        EXPECT_EQ(0, outer.commit());
    }
    EXPECT_EQ(0, sqlite3_get_autocommit(t.handle()));
    t.run("COMMIT");
    EXPECT_EQ((Texts{"a", "c"}), t.rows("SELECT name FROM @"));
}

TEST(TableTransaction, ThatTheHostOrSqliteEndedIsNotOpenAndTouchesNothingAfter)
{
    TestTable t(kMembers);
    {
        vorn::Transaction transaction(t.handle());
        t.run("ROLLBACK");
        EXPECT_FALSE(transaction.isOpen());
        EXPECT_TRUE(failed(transaction.status(), transaction.rollback(), Code::Misuse));
        t.create(R"({"name": "a"})");
    }
    EXPECT_EQ(Texts{"a"}, t.rows("SELECT name FROM @"));
}

TEST(TableTransaction, WaitsForTheLockWhenItBeginsAndMayCommitAgain)
{
    support::TempFile file;
    FileTable t(file.path());
    const auto pLock = support::lockFromThread(file.path());
    pLock->take();
    const double dTime = millisecondsOf(
        [&]
        {
            vorn::Transaction transaction(t.db().handle(), 200);
            EXPECT_FALSE(transaction.isOpen());
            EXPECT_EQ(Code::Locked, transaction.status().code);
            EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Misuse));
        });
    EXPECT_NEAR(200, dTime, 40);
    EXPECT_GT(20, millisecondsOf([&] { EXPECT_FALSE(vorn::Transaction(t.db().handle(), 0).isOpen()); }));
    {
        const Later later(60, [&] { pLock->release(); });
        EXPECT_TRUE(vorn::Transaction(t.db().handle()).isOpen());
    }
    Database reader(file.path());
    vorn::Transaction transaction(t.db().handle(), 100);
    ASSERT_TRUE(transaction.isOpen());
    EXPECT_TRUE(done(*t, t->recCreate(json(R"({"name": "a"})"))));
    ASSERT_EQ(SQLITE_OK, reader.run("BEGIN; SELECT * FROM T"));
    EXPECT_NEAR(100,
                millisecondsOf([&] { EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Locked)); }),
                20);
    EXPECT_TRUE(transaction.isOpen());
    reader.run("COMMIT");
    EXPECT_EQ(0, transaction.commit());
    EXPECT_EQ(Texts{"2"}, reader.rows("SELECT count(*) FROM T"));
}
