// SPDX-License-Identifier: MIT
//
// Upgrades that are killed, that meet another's, and what they cost beside SQLite's own ALTER TABLE.
// VORN_TEST_ROWS sets how many rows are upgraded, and what that takes is printed.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "child_process.h"
#include "failing_allocators.h"
#include "faulty_vfs.h"
#include "table_fixture.h"

using namespace table_tests;
using faults::ChildProcess;
using faults::FaultyVfs;
using faults::Request;
using support::TempFile;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kOld = R"({"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}})";
constexpr const char* kNew = R"({"id": {"cpptype": "int", "key": true},
    "level": {"cpptype": "int", "cppDefaultValue": 5, "required": true}, "name": {"cpptype": "string", "index": true},
    "note": {"cpptype": "Json::Value", "cppDefaultValue": {"a": [1]}}, "serial": {"cpptype": "string", "unique": true}})";

// Only a power cut would show that nothing waits for the disk.
class Connection : public Database
{
public:
    explicit Connection(const std::string& strPath) : Database(strPath) { run("PRAGMA synchronous = OFF"); }
};

void makeOld(const std::string& strPath, const std::string& strJournal, long nRows)
{
    const Database db(strPath);
    const vorn::Table table(db.handle(), "T", definitionOf("T", json(kOld)));
    ASSERT_EQ(SQLITE_OK,
              db.run("PRAGMA synchronous = OFF; PRAGMA journal_mode = " + strJournal +
                     "; WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                     std::to_string(nRows) + ") INSERT INTO T (name) SELECT 'the name of number ' || i FROM n"));
}

// The columns and indexes, what the new members hold, and a sum over the old ones.
Texts stateOf(const Database& db)
{
    EXPECT_EQ(Texts{"ok"}, db.rows("PRAGMA integrity_check"));
    Texts state = db.rows("SELECT name, sql FROM sqlite_master ORDER BY name");
    const bool blNew = state.size() > 1;
    for (const std::string& strRow :
         db.rows(std::string("SELECT count(*), sum(id), sum(length(name))") +
                 (blNew ? ", sum(level), min(note), max(note), count(serial)" : "") + " FROM T"))
        state.push_back(strRow);
    return state;
}

int upgrade(const Database& db, const char* szMembers)
{
    vorn::Table table(db.handle(), "T", definitionOf("T", json(szMembers)));
    const int iResult = table.tableUpgrade();
    return iResult == table.tableUpgrade() && table.status().code == Code::Ok ? iResult : -1;
}

// A child's part: with a page cache that holds a fraction of what the upgrade writes.
int upgradeFile(const std::string& strPath, FaultyVfs& vfs, long nKillAt)
{
    const Database db(strPath);
    if (db.run("PRAGMA cache_size = 5; PRAGMA wal_autocheckpoint = 20; SELECT * FROM T LIMIT 1") != SQLITE_OK)
        return 1;
    vfs.kill(Request::Any, nKillAt);
    vorn::Table table(db.handle(), "T", definitionOf("T", json(kNew)));
    return table.tableUpgrade() == 0 && table.recCount(Json::Value()) > 0 ? 0 : 1;
}

class TableUpgradeKilled : public testing::TestWithParam<const char*>
{
};

}  // namespace

TEST_P(TableUpgradeKilled, AtFiftyOfItsRequestsToTheStorageLeavesTheOldTableOrTheNewOne)
{
    constexpr long kKills = 50;
    constexpr long kRows = 2000;

    const TempFile file, pristine, other;
    makeOld(pristine.path(), GetParam(), kRows);
    Texts before, after;
    {
        std::filesystem::copy_file(pristine.path(), other.path());
        const Connection db(other.path());
        before = stateOf(db);
        ASSERT_EQ(0, upgrade(db, kNew));
        after = stateOf(db);
        ASSERT_NE(before, after);
    }
    // The child ends with 0 when its upgrade has fewer requests; it tells nothing, so a search finds how many.
    const auto runKilledAt = [&](long nth)
    {
        for (const char* szBeside : {"", "-journal", "-wal", "-shm"})
            std::filesystem::remove(file.path() + szBeside);
        std::filesystem::copy_file(pristine.path(), file.path());
        ChildProcess child(
            [&](int)
            {
                FaultyVfs vfs;
                return upgradeFile(file.path(), vfs, nth);
            });
        return child.wait();
    };
    long nAlive = 1, nKilled = 0;
    while (runKilledAt(nAlive) == -SIGKILL)
        nKilled = nAlive, nAlive *= 2;
    while (nAlive - nKilled > 1)
        (runKilledAt((nAlive + nKilled) / 2) == -SIGKILL ? nKilled : nAlive) = (nAlive + nKilled) / 2;
    ASSERT_LE(kKills, nKilled);

    int iOld = 0, iUnfinished = 0;
    for (long i = 1; i <= kKills && !HasFailure(); ++i)
    {
        SCOPED_TRACE("killed at request " + std::to_string(nKilled * i / kKills) + " of " + std::to_string(nKilled));
        ASSERT_EQ(-SIGKILL, runKilledAt(nKilled * i / kKills));
        for (const char* szBeside : {"-journal", "-wal"})
            iUnfinished += std::filesystem::exists(file.path() + szBeside) &&
                                   std::filesystem::file_size(file.path() + szBeside) > 0
                               ? 1
                               : 0;
        const Connection db(file.path());
        const Texts state = stateOf(db);
        EXPECT_TRUE(state == before || state == after) << testing::PrintToString(state);
        iOld += state == before ? 1 : 0;
        EXPECT_EQ(0, upgrade(db, kNew)) << "the next start";
        EXPECT_EQ(after, stateOf(db));
    }
    EXPECT_LT(kKills / 2, iUnfinished) << "killed in the middle";
    EXPECT_TRUE(0 < iOld && iOld < kKills) << "before and after the commit";
    std::cout << kKills << " kills in " << nKilled << " requests: " << iOld << " old tables, " << kKills - iOld
              << " new ones, " << iUnfinished << " with a journal left\n";
}

INSTANTIATE_TEST_SUITE_P(JournalModes, TableUpgradeKilled, testing::Values("delete", "wal"),
                         [](const auto& mode) { return std::string(mode.param); });

TEST(TableUpgrade, ThatTheStorageFailsLeavesTheOldTableAndIsDoneTheNextTime)
{
    struct Fault
    {
        Request request;
        int status;
        Code code;
    };
    const Fault faults[] = {{Request::Write, SQLITE_FULL, Code::Full},
                            {Request::Write, SQLITE_IOERR_WRITE, Code::Sqlite},
                            {Request::Sync, SQLITE_IOERR_FSYNC, Code::Sqlite},
                            {Request::Any, SQLITE_IOERR, Code::Sqlite}};
    for (const char* szJournal : {"delete", "wal"})
        for (const Fault& fault : faults)
        {
            FaultyVfs vfs;
            long nFailed = 0;
            for (bool blStruck = true; blStruck && !HasFailure();)
            {
                const TempFile file;
                makeOld(file.path(), szJournal, 200);
                const Database db(file.path());
                EXPECT_EQ(SQLITE_OK, db.run("PRAGMA cache_size = 1"));
                vorn::Table table(db.handle(), "T", definitionOf("T", json(kNew)));
                table.setLockTimeout(0);
                const Texts before = stateOf(db);
                vfs.fail(fault.request, fault.status, ++nFailed, true);
                const int iResult = table.tableUpgrade();
                blStruck = vfs.struck();
                vfs.heal();
                SCOPED_TRACE(std::string(szJournal) + ", failure " + std::to_string(nFailed) +
                             describe(table.status()));
                EXPECT_NE(0, sqlite3_get_autocommit(db.handle()));
                if (iResult == 0)
                    continue;  // what fails after the commit may be left for later
                EXPECT_TRUE(blStruck && (table.status().code == fault.code || table.status().code == Code::Sqlite));
                EXPECT_EQ(before, stateOf(db));
                EXPECT_TRUE(done(table, table.tableUpgrade()));
                EXPECT_TRUE(done(table, table.recCount(json(R"({"level": 5})")), 200));
            }
            EXPECT_LT(1, nFailed);
        }
}

TEST(TableUpgrade, ThatMemoryFailsLeavesTheOldTableAndIsDoneTheNextTime)
{
    using faults::Allocator;
    for (const Allocator allocator : {Allocator::Sqlite, Allocator::OperatorNew, Allocator::Malloc})
    {
        if (!faults::isReplaced(allocator))
            continue;
        long nTried = 0;
        bool blStruck = true;
        for (long nth = 1; blStruck && !HasFailure(); nth += 1 + nth / 60, ++nTried)
        {
            SCOPED_TRACE(testing::PrintToString(allocator) + " " + std::to_string(nth));
            Database db;
            ASSERT_EQ(SQLITE_OK, db.run("CREATE TABLE T (id INTEGER PRIMARY KEY, name TEXT); INSERT INTO T (name) "
                                        "VALUES ('a'), ('b')"));
            vorn::Table table(db.handle(), "T", definitionOf("T", json(kNew)));
            const Texts before = stateOf(db);
            // SQLite compiles ROLLBACK anew after CREATE INDEX, which takes memory.
            faults::Shortage shortage(allocator, faults::Failure::Once, nth);
            int iResult = -1;
            try
            {
                iResult = table.tableUpgrade();
                shortage.end();
                EXPECT_TRUE(iResult == 0 || (table.status().sqlite & 0xff) == SQLITE_NOMEM) << describe(table.status());
            }
            catch (const std::bad_alloc&)
            {
            }
            catch (const Json::RuntimeError&)  // what JsonCpp makes of it
            {
            }
            shortage.end();
            blStruck = shortage.struck();
            EXPECT_NE(0, sqlite3_get_autocommit(db.handle()));
            if (iResult != 0)
            {
                EXPECT_EQ(before, stateOf(db));
            }
            EXPECT_TRUE(done(table, table.tableUpgrade()));
            EXPECT_TRUE(done(table, table.recCount(json(R"({"level": 5})")), 2));
        }
        EXPECT_LT(10, nTried);
    }
}

TEST(TableUpgrade, OfWhatCannotBeUpgradedChangesNothing)
{
    struct Case
    {
        const char* szSql;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {"CREATE TABLE o (id, name); CREATE VIEW T AS SELECT * FROM o", Code::Sqlite, ""},
        {"CREATE VIRTUAL TABLE T USING fts5(id, name)", Code::Sqlite, ""},
        {"CREATE TABLE T (name TEXT)", Code::Constraint, "id"},
        {"CREATE TABLE T (id INTEGER PRIMARY KEY, name TEXT, serial TEXT); INSERT INTO T VALUES (1, 'a', 'zq7x'),"
         "(2, 'b', 'zq7x')",
         Code::Duplicate, "serial"},
        {"CREATE TABLE T (id INTEGER PRIMARY KEY, name TEXT); PRAGMA query_only = ON", Code::ReadOnly, ""},
    };
    for (const Case& one : cases)
        for (const char* szOutside : {"", "BEGIN", "SAVEPOINT outside"})
        {
            SCOPED_TRACE(std::string(one.szSql) + szOutside);
            const Database db;
            ASSERT_EQ(SQLITE_OK, db.run(one.szSql));
            vorn::Table table(db.handle(), "T", definitionOf("T", json(kNew)));
            ASSERT_EQ(SQLITE_OK, db.run(szOutside));
            const Texts before = db.rows("SELECT * FROM sqlite_master");
            EXPECT_TRUE(failed(table, table.tableUpgrade(), one.code, one.szMember));
            EXPECT_EQ(before, db.rows("SELECT * FROM sqlite_master"));
            EXPECT_EQ(*szOutside == '\0', sqlite3_get_autocommit(db.handle()) != 0);
        }
}

TEST(TableCheck, KnowsAKeyOfSeveralMembersInAnyOrderAndCellsWithoutARowid)
{
    struct Case
    {
        const char* szColumns;
        const char* szKeys;
    };
    const Case cases[] = {
        {"a TEXT, b INTEGER", R"(["a", "b"])"},
        {"a TEXT, b INTEGER, PRIMARY KEY (b, a)", "[]"},
        {"a TEXT, b INTEGER, UNIQUE (a, b)", "[]"},
        {"a TEXT, b INTEGER, UNIQUE (b)", "[]"},  // what is unique in a part of it is so in all
        {"a TEXT, b INTEGER, c, PRIMARY KEY (a, b, c)", R"(["a", "b"])"},
        {"a TEXT, b INTEGER, PRIMARY KEY (a, b)) WITHOUT ROWID; CREATE TABLE @x (x", "[]"},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(one.szColumns);
        TestTable t(R"({"a": {"cpptype": "string", "key": true}, "b": {"cpptype": "int", "key": true}})",
                    "CREATE TABLE @ (" + std::string(one.szColumns) + ")");
        Json::Value jReport;
        EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
        EXPECT_EQ(json(one.szKeys), jReport["keys"]);
        t.run("INSERT INTO @ (a, b) VALUES ('a', 'zq7x')");
        EXPECT_TRUE(failed(*t, t->tableCheck(jReport, true), Code::BadCell, "b"));
        EXPECT_EQ(std::string(one.szColumns).find("WITHOUT") == std::string::npos,
                  jReport["cells"][0].isMember("rowid"));
        EXPECT_EQ(Json::Value("b"), jReport["cells"][0]["member"]);
    }
}

TEST(TableUpgrade, AgainstAnotherThatDoesTheSameMeanwhileIsDoneToo)
{
    struct Case
    {
        const char* szBefore;
        const char* szOther;  // what the other has done when the lock is free
    };
    const Case cases[] = {
        {"",
         "ALTER TABLE T ADD COLUMN level INTEGER NOT NULL DEFAULT 5; ALTER TABLE T ADD COLUMN note TEXT;"
         "ALTER TABLE T ADD COLUMN serial TEXT; CREATE UNIQUE INDEX \"T:serial:unique\" ON T (serial);"
         "CREATE INDEX \"T:name:index\" ON T (name)"},
        {"", "ALTER TABLE T ADD COLUMN level INTEGER NOT NULL DEFAULT 5"},
        {"", "CREATE INDEX \"T:name:index\" ON T (name)"},
        {"", "CREATE TABLE \"T:name:index\" (x); ALTER TABLE T ADD COLUMN z"},
        {"DROP TABLE T", "CREATE TABLE T (id INTEGER PRIMARY KEY, name TEXT)"},
        {"", "DROP TABLE T"},
    };
    for (const char* szJournal : {"delete", "wal"})
        for (const Case& one : cases)
        {
            SCOPED_TRACE(std::string(szJournal) + ": " + one.szOther);
            const TempFile file;
            makeOld(file.path(), szJournal, 3);
            const Connection other(file.path()), db(file.path());
            vorn::Table table(db.handle(), "T", definitionOf("T", json(kNew)));
            // Whoever waits for the lock reads for a moment each time.
            ASSERT_EQ(SQLITE_OK,
                      other.run(std::string(one.szBefore) + "; PRAGMA busy_timeout = 10000; BEGIN IMMEDIATE"));
            std::thread thread(
                [&]
                {
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
                    EXPECT_EQ(SQLITE_OK, other.run(std::string(one.szOther) + "; COMMIT"));
                });
            EXPECT_TRUE(done(table, table.tableUpgrade()));
            thread.join();
            Json::Value jReport;
            EXPECT_TRUE(done(table, table.tableCheck(jReport, true)));
            EXPECT_EQ(json("[]"), jReport["keys"]);
            EXPECT_EQ(Texts{"2"}, db.rows("SELECT count(*) FROM pragma_index_list('T')"));
            EXPECT_TRUE(done(table, table.recCreate(json(R"({"name": "new"})"))));
        }
}

namespace
{

struct Cost
{
    long nTurns = 0;  // of SQLite's loops, whatever statement they are in
    int nWritten = 0;
    int nRead = 0;  // pages
};

int readStatus(sqlite3* pDb, int iWhat)
{
    int iNow = 0, iMost = 0;
    EXPECT_EQ(SQLITE_OK, sqlite3_db_status(pDb, iWhat, &iNow, &iMost, 1));
    return iNow;
}

template <class Body>
Cost costOf(sqlite3* pDb, Body body)
{
    Cost cost;
    const auto count = [](void* pTurns) { return ++*static_cast<long*>(pTurns), 0; };
    readStatus(pDb, SQLITE_DBSTATUS_CACHE_WRITE);
    readStatus(pDb, SQLITE_DBSTATUS_CACHE_MISS);
    sqlite3_progress_handler(pDb, 1, count, &cost.nTurns);
    body();
    sqlite3_progress_handler(pDb, 0, nullptr, nullptr);
    cost.nWritten = readStatus(pDb, SQLITE_DBSTATUS_CACHE_WRITE);
    cost.nRead = readStatus(pDb, SQLITE_DBSTATUS_CACHE_MISS);
    return cost;
}

struct Addition
{
    const char* szEntry;  // of the member "x"
    const char* szSql;    // what does the same by hand
};

// What the upgrade costs, and what SQLite alone takes.
std::pair<Cost, Cost> costsOf(const Addition& addition, long nRows)
{
    const TempFile file;
    makeOld(file.path(), "wal", nRows);
    const std::string strMembers = std::string(kOld).substr(0, std::string(kOld).size() - 1) + R"(, "x": )";
    Cost costs[2];
    for (const bool blByHand : {true, false})
    {
        const Connection db(file.path());
        EXPECT_EQ(SQLITE_OK, db.run("SELECT * FROM T LIMIT 1"));
        costs[blByHand] =
            costOf(db.handle(),
                   [&] {
                       EXPECT_EQ(0, blByHand ? db.run(addition.szSql)
                                             : upgrade(db, (strMembers + addition.szEntry + "}").c_str()));
                   });
        EXPECT_EQ(SQLITE_OK, db.run("DROP INDEX IF EXISTS \"T:x:index\"; ALTER TABLE T DROP COLUMN x; VACUUM"));
    }
    return {costs[0], costs[1]};
}

}  // namespace

TEST(TableUpgrade, CostsWhatAlterTableCostsHoweverManyRowsThereAre)
{
    const char* const szGiven = std::getenv("VORN_TEST_ROWS");
    const long nRows = szGiven != nullptr ? std::strtol(szGiven, nullptr, 10) : 10000;
    constexpr int kPages = 6;  // that are read to see what is lacking

    const Addition additions[] = {
        {R"({"cpptype": "string"})", "ALTER TABLE T ADD COLUMN x TEXT"},
        {R"({"cpptype": "int", "cppDefaultValue": 5})", "ALTER TABLE T ADD COLUMN x INTEGER DEFAULT 5"},
        {R"({"cpptype": "int", "cppDefaultValue": 5, "required": true})",
         "ALTER TABLE T ADD COLUMN x INTEGER NOT NULL DEFAULT 5"},
        {R"({"cpptype": "int", "index": true})",
         "BEGIN; ALTER TABLE T ADD COLUMN x INTEGER; CREATE INDEX \"T:x:index\" ON T (x); COMMIT"},
    };
    std::cout << "| rows | added | turns | pages read | pages written |\n|---:|---|---:|---:|---:|\n";
    for (const Addition& addition : additions)
    {
        SCOPED_TRACE(addition.szEntry);
        const auto [few, fewByHand] = costsOf(addition, 100);
        const auto [many, manyByHand] = costsOf(addition, nRows);
        const auto print = [nRows](const char* szWhat, const Cost& cost)
        {
            std::cout << "| " << nRows << " | `" << szWhat << "` | " << cost.nTurns << " | " << cost.nRead << " | "
                      << cost.nWritten << " |\n";
        };
        print(addition.szEntry, many);
        print(addition.szSql, manyByHand);
        EXPECT_LT(0, few.nTurns);
        EXPECT_LT(0, few.nWritten);
        EXPECT_EQ(few.nTurns - fewByHand.nTurns, many.nTurns - manyByHand.nTurns);
        EXPECT_EQ(manyByHand.nWritten, many.nWritten);
        EXPECT_GE(manyByHand.nRead + kPages, many.nRead);
    }
}
