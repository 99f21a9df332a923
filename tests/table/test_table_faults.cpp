// SPDX-License-Identifier: MIT
//
// Memory runs out and storage fails, at every single request: an operation is done or it is not, says so, and leaves
// nothing behind: no lock, no statement in use, no open transaction, no memory.

#include <functional>
#include <new>

#include "failing_allocators.h"
#include "faulty_vfs.h"
#include "table_fixture.h"

using namespace table_tests;
using faults::Allocator;
using faults::Failure;
using faults::FaultyVfs;
using faults::Request;
using faults::Shortage;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kMembers =
    R"({"data": {"cpptype": "Json::objectValue", "cppDefaultValue": {"a": [1, "a text of some length"]}},
    "id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string", "unique": true}, "n": {"cpptype": "double", "index": true}})";

struct Operation
{
    const char* szName;
    std::function<long long(vorn::Table&, Json::Value& jOut)> call;
};

const std::vector<Operation>& operations()
{
    static const Json::Value jRecord = json(R"({"name": "a name that is longer than a short string", "n": 0.5})");
    static const Json::Value jRecords =
        json(R"([{"name": "first of several records"}, {"name": "second of several records", "n": 1}])");
    static const Json::Value jUpdate = json(R"({"id": 1, "name": "another name that is long enough"})");
    // Nothing inside JSON: SQLite's json_valid() says no where its memory runs out.
    static const Json::Value jFilter =
        json(R"({"name": {"$gte": "a", "$ne": "zz"}, "$or": [{"n": null}, {"n": [1, 2, 3]}], "sort_by": "-name"})");
    static const Json::Value jPage = json(R"({"n": {"$ne": 2}, "sort_by": "-data", "limit": 2, "offset": 1})");
    static const Json::Value jCondition =
        json(R"({"name": {"$gte": "a", "$ne": "zz"}, "$or": [{"n": null}, {"n": [1, 2, 3]}]})");
    static const Json::Value jValues = json(R"({"n": 5.5})"), jList = json("[0]"), jNamed = json(R"({"a": "x"})");
    static const std::vector<std::string> keys = {"one of the records", "x"};
    static const std::vector<Operation> kOperations = {
        {"create", [](vorn::Table& t, Json::Value&) { return t.recCreate(jRecord); }},
        {"create out", [](vorn::Table& t, Json::Value& jOut) { return t.recCreate(jRecord, jOut); }},
        {"create all", [](vorn::Table& t, Json::Value&) { return t.recCreateAll(jRecords); }},
        {"save",
         [](vorn::Table& t, Json::Value&)
         {
             Json::Value j = jUpdate;
             return t.recSave(j, false);
         }},
        {"save new",
         [](vorn::Table& t, Json::Value&)
         {
             Json::Value j = jRecord;
             return t.recSave(j, false);
         }},
        {"list", [](vorn::Table& t, Json::Value& jOut) { return t.recList(jFilter, jOut); }},
        {"page", [](vorn::Table& t, Json::Value& jOut) { return t.recList(jPage, jOut); }},
        {"each", [](vorn::Table& t, Json::Value&) { return t.recForEach(jFilter, [](Json::Value&) { return true; }); }},
        {"get", [](vorn::Table& t, Json::Value& jOut) { return t.recGetOne(jFilter, jOut); }},
        {"count", [](vorn::Table& t, Json::Value&) { return t.recCount(jCondition); }},
        {"update", [](vorn::Table& t, Json::Value&) { return t.recUpdateByFilter(jCondition, jValues); }},
        {"delete", [](vorn::Table& t, Json::Value&) { return t.recDelete(jCondition); }},
        {"delete by array", [](vorn::Table& t, Json::Value&) { return t.recDeleteByArray(keys, "name"); }},
        {"run", [](vorn::Table& t, Json::Value& jOut)
         { return t.runSql("SELECT *, 5 AS other FROM T WHERE id > ?", jList, jOut); }},
        {"run insert",
         [](vorn::Table& t, Json::Value& jOut) { return t.runSql("INSERT INTO T (name) VALUES (:a)", jNamed, jOut); }},
        {"defaults",
         [](vorn::Table& t, Json::Value& jOut)
         {
             jOut = json("{}");
             return t.fillDefaultValue(jOut, false);
         }},
        {"explain", [](vorn::Table& t, Json::Value& jOut) { return t.explain(jFilter, jOut); }},
        {"check",
         [](vorn::Table& t, Json::Value&)
         {
             Json::Value jReport;
             return t.tableCheck(jReport, true);
         }},
        {"upgrade", [](vorn::Table& t, Json::Value&) { return t.tableUpgrade(); }},
    };
    return kOperations;
}

// A table T with three records, which can be brought back to them.
class Stage
{
public:
    explicit Stage(const std::string& strPath = ":memory:", const char* szJournal = "MEMORY") : m_db(strPath)
    {
        EXPECT_EQ(SQLITE_OK, m_db.run("PRAGMA journal_mode = " + std::string(szJournal)));
        m_pTable = std::make_unique<vorn::Table>(m_db.handle(), "T", definitionOf("T", json(kMembers)));
        m_pTable->setLockTimeout(0);
        EXPECT_TRUE(
            done(*m_pTable,
                 m_pTable->recCreateAll(
                     json(R"([{"id": 1, "name": "one of the records", "n": 1}, {"id": 2, "name": "two of the records"},
                                                                      {"id": 3, "name": "three of the records", "n": 7.5}])")),
                 3));
        EXPECT_EQ(SQLITE_OK, m_db.run("CREATE TABLE kept AS SELECT * FROM T"));
    }

    vorn::Table& table() { return *m_pTable; }
    Database& db() { return m_db; }
    Texts rows() { return m_db.rows("SELECT * FROM T ORDER BY id"); }
    void restore() { EXPECT_EQ(SQLITE_OK, m_db.run("DELETE FROM T; INSERT INTO T SELECT * FROM kept")); }

    // What the operation makes of the rows when nothing fails.
    Texts rowsAfter(const Operation& operation)
    {
        Json::Value jOut;
        EXPECT_LE(0, operation.call(*m_pTable, jOut)) << describe(m_pTable->status());
        const Texts after = rows();
        restore();
        return after;
    }

private:
    Database m_db;
    std::unique_ptr<vorn::Table> m_pTable;
};

constexpr int kThrew = -2;

long long callThrowing(const Operation& operation, Allocator allocator, Stage& stage, Json::Value& jOut)
{
    try
    {
        return operation.call(stage.table(), jOut);
    }
    catch (const std::bad_alloc&)
    {
        return kThrew;
    }
    catch (const Json::RuntimeError& error)  // what JsonCpp makes of a malloc() that fails
    {
        EXPECT_EQ(Allocator::Malloc, allocator) << error.what();
        return kThrew;
    }
}

enum class Mode
{
    Prepared,  // with the statements that it has kept
    Anew,
    Within  // a transaction of the caller's, which SQLite may roll back
};

// Every allocation of the operation fails in turn. The count of those that did.
long failEveryAllocation(const Operation& operation, Allocator allocator, Failure failure, Mode mode)
{
    constexpr long kMost = 20000;
    Stage stage;
    const Texts before = stage.rows();
    const Texts after = stage.rowsAfter(operation);
    for (long nth = 1; nth < kMost; ++nth)
    {
        if (mode == Mode::Anew)
            stage.table().releaseStatements();
        if (mode == Mode::Within)
            stage.db().run("BEGIN");
        Json::Value jOut;
        Shortage shortage(allocator, failure, nth);
        const long long nResult = callThrowing(operation, allocator, stage, jOut);
        shortage.end();
        const bool blEnded = mode == Mode::Within && stage.db().run("COMMIT") != SQLITE_OK;
        if (!shortage.struck())
            return nth - 1;
        const Texts rows = stage.rows();
        const bool blRight = nResult >= 0 ? rows == after : rows == before || (nResult == kThrew && rows == after);
        const vorn::Status& status = stage.table().status();
        const bool blTold = nResult >= 0 || nResult == kThrew ||
                            (status.code == Code::Sqlite && (status.sqlite & 0xff) == SQLITE_NOMEM && jOut.isNull());
        if (!blRight || !blTold || busyStatements(stage.db().handle()) != 0 || (blEnded && nResult >= 0) ||
            sqlite3_get_autocommit(stage.db().handle()) == 0)
        {
            ADD_FAILURE() << operation.szName << ", allocation " << nth << " of " << allocator << " " << failure
                          << ": result " << nResult << ", " << describe(status) << testing::PrintToString(rows);
            return nth;
        }
        if (rows != before)
            stage.restore();
    }
    ADD_FAILURE() << operation.szName << " never got through";
    return kMost;
}

}  // namespace

TEST(TableMemory, ThatRunsOutEndsAnOperationWholeOrNotAtAllAndLeavesNothingBehind)
{
    long nFailed = 0;
    for (const Operation& operation : operations())
        for (const Allocator allocator : {Allocator::Sqlite, Allocator::OperatorNew, Allocator::Malloc})
        {
            if (!faults::isReplaced(allocator))
                continue;
            failEveryAllocation({"warm up", [](vorn::Table& t, Json::Value&) { return t.recCount(Json::Value()); }},
                                allocator, Failure::Once, Mode::Prepared);
            const long nBefore = faults::outstanding(Allocator::Sqlite);
            for (const Failure failure : {Failure::Once, Failure::FromThereOn})
                for (const Mode mode : {Mode::Prepared, Mode::Anew})
                    nFailed += failEveryAllocation(operation, allocator, failure, mode);
            nFailed += failEveryAllocation(operation, allocator, Failure::FromThereOn, Mode::Within);
            EXPECT_EQ(nBefore, faults::outstanding(Allocator::Sqlite)) << operation.szName << " leaks";
        }
    EXPECT_LT(1000, nFailed);
}

TEST(TableMemory, ThatRunsOutInAConstructorOrATransactionLeavesTheConnectionUsable)
{
    const Json::Value jTableDef = definitionOf("T", json(kMembers));
    for (const Allocator allocator : {Allocator::Sqlite, Allocator::OperatorNew, Allocator::Malloc})
    {
        if (!faults::isReplaced(allocator))
            continue;
        bool blStruck = true;
        for (long nth = 1; blStruck; ++nth)
        {
            const Database db;
            Shortage shortage(allocator, Failure::Once, nth);
            try
            {
                vorn::Transaction transaction(db.handle());
                const vorn::Table table(db.handle(), "T", jTableDef);
                shortage.end();
                EXPECT_TRUE(table.status().code == Code::Ok || (table.status().sqlite & 0xff) == SQLITE_NOMEM ||
                            !transaction.isOpen())
                    << describe(table.status());
            }
            catch (const std::bad_alloc&)
            {
            }
            catch (const Json::RuntimeError&)
            {
                EXPECT_EQ(Allocator::Malloc, allocator);
            }
            shortage.end();
            blStruck = shortage.struck();
            EXPECT_NE(0, sqlite3_get_autocommit(db.handle())) << allocator << " " << nth;
            vorn::Table table(db.handle(), "T", jTableDef);
            EXPECT_TRUE(done(table, table.recCreate(json("{}")))) << allocator << " " << nth;
        }
    }
}

// SQLite itself may need memory to go back to a savepoint; then it rolls back the whole transaction.
TEST(TableMemory, ThatIsGoneForGoodLetsATransactionRollBack)
{
    for (const Allocator allocator : {Allocator::Sqlite, Allocator::OperatorNew, Allocator::Malloc})
        for (const bool blNested : {false, true})
            for (const bool blByItsEnd : {false, true})
            {
                if (!faults::isReplaced(allocator))
                    continue;
                SCOPED_TRACE(testing::Message()
                             << allocator << (blNested ? ", nested" : "") << (blByItsEnd ? ", ~" : ""));
                Stage stage;
                const Texts stored = stage.rows();
                if (blNested)
                    stage.db().run("BEGIN; UPDATE T SET n = 9 WHERE id = 1");
                const Texts before = stage.rows();
                int iResult = 0;
                try
                {
                    vorn::Transaction transaction(stage.db().handle());
                    EXPECT_TRUE(done(stage.table(), stage.table().recDelete(json("{}"), true), 3));
                    const Shortage shortage(allocator, Failure::FromThereOn, 1);
                    if (!blByItsEnd)
                        iResult = transaction.rollback();
                }
                catch (const std::bad_alloc&)
                {
                    iResult = kThrew;
                }
                const bool blAllGone = blNested && sqlite3_get_autocommit(stage.db().handle()) != 0;
                EXPECT_EQ(blAllGone && !blByItsEnd, iResult != 0);
                EXPECT_EQ(blNested && !blAllGone ? SQLITE_OK : SQLITE_ERROR, stage.db().run("COMMIT"));
                EXPECT_EQ(blAllGone ? stored : before, stage.rows());
            }
}

namespace
{

struct Fault
{
    Request request;
    int status;
    Code code;
};

constexpr Fault kFaults[] = {
    {Request::Open, SQLITE_CANTOPEN, Code::Sqlite},
    {Request::Read, SQLITE_IOERR_READ, Code::Sqlite},
    {Request::Write, SQLITE_IOERR_WRITE, Code::Sqlite},
    {Request::Write, SQLITE_FULL, Code::Full},
    {Request::Sync, SQLITE_IOERR_FSYNC, Code::Sqlite},
    {Request::Truncate, SQLITE_IOERR_TRUNCATE, Code::Sqlite},
    {Request::Delete, SQLITE_IOERR_DELETE, Code::Sqlite},
    {Request::Lock, SQLITE_BUSY, Code::Locked},
    {Request::SharedLock, SQLITE_IOERR_SHMLOCK, Code::Sqlite},
};

// Every request of that kind fails in turn.
void failEveryRequest(const Operation& operation, const char* szJournal, const Fault& fault, bool blStays,
                      bool blWithin)
{
    constexpr long kMost = 1000;
    FaultyVfs vfs;
    const support::TempFile file;
    Stage stage(file.path(), szJournal);
    const Texts before = stage.rows();
    const Texts after = stage.rowsAfter(operation);
    sqlite3* const pDb = stage.db().handle();
    for (long nth = 1; nth < kMost; ++nth)
    {
        sqlite3_db_release_memory(pDb);
        sqlite3_db_cacheflush(pDb);
        Json::Value jOut;
        if (blWithin)
            stage.db().run("BEGIN");
        vfs.fail(fault.request, fault.status, nth, blStays);
        const long long nResult = operation.call(stage.table(), jOut);
        const bool blStruck = vfs.struck();
        vfs.heal();
        const vorn::Status& status = stage.table().status();
        const bool blEnded = blWithin && stage.db().run("COMMIT") != SQLITE_OK;
        const bool blSaid = status.text.find("rolled back the whole transaction") != std::string::npos;
        const Texts rows = stage.rows();
        const bool blTold = nResult >= 0 ? rows == after
                                         : rows == before && jOut.isNull() &&
                                               (status.code == fault.code || status.code == Code::Sqlite);
        if (!blTold || blEnded != blSaid || busyStatements(pDb) != 0 || sqlite3_get_autocommit(pDb) == 0)
        {
            ADD_FAILURE() << operation.szName << ", " << szJournal << ", request " << nth << " " << fault.request
                          << (blStays ? " and all after it" : "") << (blWithin ? " in BEGIN" : "") << ": result "
                          << nResult << ", " << describe(status) << testing::PrintToString(rows);
            return;
        }
        if (rows != before)
            stage.restore();
        if (!blStruck)
            return;
    }
    ADD_FAILURE() << operation.szName << " never got through";
}

}  // namespace

TEST(TableStorage, ThatFailsEndsAnOperationWholeOrNotAtAllAndTheFileWorksAgain)
{
    for (const Operation& operation : operations())
        for (const char* szJournal : {"DELETE", "WAL"})
            for (const Fault& fault : kFaults)
            {
                for (const bool blStays : {false, true})
                    failEveryRequest(operation, szJournal, fault, blStays, false);
                failEveryRequest(operation, szJournal, fault, false, true);
            }
}
