// SPDX-License-Identifier: MIT
//
// Running SQL text: results, failures and their lines, and what a row callback may do.

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "failures.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;

namespace
{

// "refused" has a type that the value list does not know: saving it fails before any statement runs.
const char* const members = R"({"age": {"cpptype": "int"}, "refused": {"cpptype": "Json::Value"}})";

// SQLite's text of the object's last failed statement, as the trace line of a failed save shows it; empty when there
// is none and so no such line.
std::string sqlErrorText(Store& store)
{
    LogCapture capture;
    Json::Value record = json(R"({"refused": 1})");
    EXPECT_EQ(-1, store->recSave(record, true));
    capture.stop();
    const std::string start = "sql error, err=";
    for (const LogLine& line : capture.lines())
        if (line.message.rfind(start, 0) == 0)
            return line.message.substr(start.size(), line.message.find(", sql=") - start.size());
    return "";
}

int countRows(void* context, int, char**, char**)
{
    ++*static_cast<int*>(context);
    return 0;
}

}  // namespace

LOGGED_TEST(Execute, WithoutCallbackTheCountOfChangedRowsIsReturned)
{
    Store store(members);
    const std::string& table = store.name();
    const auto run = [&](const std::string& sql) { return logged({}, [&] { return store->runSqlEx(sql); }); };

    EXPECT_EQ(1, run("INSERT INTO " + table + " (age) VALUES (1)"));
    EXPECT_EQ(2, run("INSERT INTO " + table + " (age) VALUES (2), (3)"));
    EXPECT_EQ(3, run("UPDATE " + table + " SET age = age + 10"));
    // Other statements leave SQLite's count as it is.
    EXPECT_EQ(3, run("SELECT * FROM " + table));
    EXPECT_EQ(3, run("CREATE TABLE " + table + "_other (x)"));
    EXPECT_EQ(3, run("  -- a comment only"));
    EXPECT_EQ(0, run("UPDATE " + table + " SET age = 0 WHERE age = 1"));
    EXPECT_EQ(2, run("DELETE FROM " + table + " WHERE age > 11"));
    EXPECT_EQ(std::vector<std::string>{"11|NULL"}, store.rows());
}

LOGGED_TEST(Execute, TextOfSeveralStatementsRunsWhole)
{
    Store store(members);
    const std::string& table = store.name();
    int rows = 0;
    EXPECT_SILENT(
        0, store->runSqlEx("INSERT INTO " + table + " (age) VALUES (1),(2);SELECT * FROM " + table, countRows, &rows));
    EXPECT_EQ(2, rows);
}

LOGGED_TEST(Execute, AFailingStatementEndsTheTextAndKeepsWhatRanBefore)
{
    Store store(members);
    const std::string& table = store.name();
    const std::string sql =
        "INSERT INTO " + table + " (age) VALUES (1);SELECT missing;INSERT INTO " + table + " (age) VALUES (2)";
    EXPECT_LOGS(-1, store->runSqlEx(sql), refusedBySqlite("no such column: missing", sql));
    EXPECT_EQ(1U, store.rows().size());
}

LOGGED_TEST(Execute, WithCallbackTheResultIsZeroWhateverTheNumberOfRows)
{
    Store store(members);
    const std::string& table = store.name();
    for (int count = 0; count < 3; ++count)
    {
        int rows = 0;
        EXPECT_SILENT(0, store->runSqlEx("SELECT * FROM " + table, countRows, &rows));
        EXPECT_EQ(count, rows);
        EXPECT_SILENT(0, store->runSqlEx("INSERT INTO " + table + " (age) VALUES (1)", countRows, &rows));
        EXPECT_EQ(count, rows);
    }
}

TEST(Execute, TheCallbackGetsContextNamesAndTexts)
{
    Store store(members);
    std::string seen;
    const auto write = [](void* context, int count, char** values, char** names)
    {
        std::string& text = *static_cast<std::string*>(context);
        for (int i = 0; i < count; ++i)
            text += std::string(names[i]) + "=" + (values[i] != nullptr ? values[i] : "NULL") + ";";
        return 0;
    };
    EXPECT_SILENT(0, store->runSqlEx("SELECT 1 AS a, NULL AS b, 'x' AS c", write, &seen));
    EXPECT_EQ("a=1;b=NULL;c=x;", seen);
}

LOGGED_TEST(Execute, ASyntaxErrorFailsAtOnceWithSqlitesText)
{
    Store store(members);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    const std::string sql = "SELEKT 100%s '%n";
    const std::string text = "near \"SELEKT\": syntax error";
    EXPECT_LOGS(-1, store->runSqlEx(sql), refusedBySqlite(text, sql));
    EXPECT_TRUE(watch.pauses().empty());
    EXPECT_EQ(text, sqlErrorText(store));
}

LOGGED_TEST(Execute, ASuccessEmptiesTheTextOfAnEarlierFailure)
{
    Store store(members);
    EXPECT_EQ("", sqlErrorText(store));
    EXPECT_LOGS(-1, store->runSqlEx("nonsense"), refusedBySqlite("near \"nonsense\": syntax error", "nonsense"));
    EXPECT_EQ("near \"nonsense\": syntax error", sqlErrorText(store));
    EXPECT_SILENT(0, store->runSqlEx("SELECT 1"));
    EXPECT_EQ("", sqlErrorText(store));
}

// Seen from a row callback: the text of the run before is gone as soon as a run starts.
TEST(Execute, ARunStartsByEmptyingTheText)
{
    Store store(members);
    const auto look = [](void* context, int, char**, char**)
    {
        EXPECT_EQ("", sqlErrorText(*static_cast<Store*>(context)));
        return 0;
    };
    logged(refusedBySqlite("near \"nonsense\": syntax error", "nonsense"), [&] { store->runSqlEx("nonsense"); });
    EXPECT_EQ(0, store->runSqlEx("SELECT 1", look, &store));
}

TEST(Execute, EachObjectKeepsItsOwnErrorText)
{
    Store first(members);
    Store second(members);
    logged(refusedBySqlite("near \"nonsense\": syntax error", "nonsense"), [&] { first->runSqlEx("nonsense"); });
    EXPECT_SILENT(0, second->runSqlEx("SELECT 1"));
    EXPECT_EQ("near \"nonsense\": syntax error", sqlErrorText(first));
    EXPECT_EQ("", sqlErrorText(second));
}

LOGGED_TEST(Execute, AnEmptyTextFailsWithoutCallingSqlite)
{
    Store store(members);
    const StatementLog statements(store.db());
    int rows = 0;
    for (const bool withCallback : {false, true})
    {
        // Nothing resets errno here: the trace line shows the caller's.
        int errnoBefore = -1;
        LogCapture capture;
        errnoBefore = errno;
        EXPECT_EQ(-1, withCallback ? store->runSqlEx("", countRows, &rows) : store->runSqlEx(""));
        capture.expect(
            {failed("0 >= strSql.length()"),
             trace("i=0,errno=" + std::to_string(errnoBefore) + ", run sql failed, error=Unknow Error!!, sql="),
             debug("run sql fail, err=(null)")});
    }
    EXPECT_EQ(0, rows);
    EXPECT_TRUE(statements.statements().empty());
    EXPECT_EQ("Unknow Error!!", sqlErrorText(store));
}

TEST(Execute, AnEmptyTextReplacesTheTextOfAnEarlierFailure)
{
    Store store(members);
    logged(refusedBySqlite("near \"nonsense\": syntax error", "nonsense"), [&] { store->runSqlEx("nonsense"); });
    logged({failed("0 >= strSql.length()"), trace("<any>")}, [&] { store->runSqlEx(""); });
    EXPECT_EQ("Unknow Error!!", sqlErrorText(store));
}

LOGGED_TEST(Execute, ANullConnectionFailsAtItsFirstStatement)
{
    std::string name = freshTable();
    Json::Value definition = definitionOf(name, json(members));
    std::string create = "CREATE TABLE " + name + " (age)";
    blDebugOutput = false;
    std::unique_ptr<VornJsonDbApi> api;
    logged({trace("Failed [!pDb]"), trace("<any>"), error("<any>"), trace("<any>"), failed("0 > tableCreate()")},
           [&] { api = std::make_unique<VornJsonDbApi>(nullptr, name, definition, create); });

    blDebugOutput = true;
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    int rows = 0;
    for (const bool withCallback : {false, true})
    {
        const ExpectedLines lines = {trace("i=0,errno=<number>, run sql failed, error=Unknow Error!!, sql=SELECT 1"),
                                     debug("run sql fail, err=(null)")};
        EXPECT_LOGS(-1, withCallback ? api->runSqlEx("SELECT 1", countRows, &rows) : api->runSqlEx("SELECT 1"), lines);
    }
    EXPECT_EQ(0, rows);
    EXPECT_TRUE(watch.pauses().empty());
}

LOGGED_TEST(Execute, AViolatedConstraintIsReportedWithSqlitesText)
{
    Store store(members, "age INTEGER PRIMARY KEY, refused");
    const std::string sql = "INSERT INTO " + store.name() + " (age) VALUES (1)";
    EXPECT_SILENT(1, store->runSqlEx(sql));
    const std::string text = "UNIQUE constraint failed: " + store.name() + ".age";
    EXPECT_LOGS(-1, store->runSqlEx(sql), refusedBySqlite(text, sql));
    EXPECT_EQ(text, sqlErrorText(store));
}

TEST(Execute, TextEndsAtItsFirstNul)
{
    Store store(members);
    const std::string sql = "INSERT INTO " + store.name() + " (age) VALUES (1)";
    EXPECT_SILENT(1, store->runSqlEx(sql + std::string("\0nonsense", 9)));
    EXPECT_EQ(1U, store.rows().size());
}

LOGGED_TEST(Execute, ACallbackThatStopsTheQueryIsFinalWhateverErrnoHolds)
{
    for (const int errnoThen : {0, EAGAIN})
    {
        Store store(members);
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        struct Seen
        {
            int rows;
            int errnoThen;
        } seen = {0, errnoThen};
        const auto stopAtSecond = [](void* context, int, char**, char**)
        {
            Seen& state = *static_cast<Seen*>(context);
            errno = state.errnoThen;
            return ++state.rows == 2 ? -1 : 0;
        };
        const std::string sql = "SELECT 1 UNION SELECT 2 UNION SELECT 3";
        EXPECT_LOGS(-1, store->runSqlEx(sql, stopAtSecond, &seen), refusedBySqlite("query aborted", sql));
        EXPECT_EQ(2, seen.rows);
        EXPECT_TRUE(watch.pauses().empty());
        EXPECT_EQ("query aborted", sqlErrorText(store));
    }
}

// What a callback throws reaches the caller, and SQLite is left as after any stopped query: nothing busy, nothing
// locked.
template <class Thrown>
void expectHandedOn(Thrown thrown, int errnoThen)
{
    const TempFile file;
    const auto database = std::make_shared<Database>(file.path());
    Store store(members, "", database);
    const std::string& table = store.name();
    struct Context
    {
        Thrown thrown;
        int errnoThen;
        int calls;
    } context = {thrown, errnoThen, 0};
    const auto throwing = [](void* pContext, int, char**, char**) -> int
    {
        Context& state = *static_cast<Context*>(pContext);
        ++state.calls;
        errno = state.errnoThen;
        throw state.thrown;
    };
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    const LogCapture capture;
    try
    {
        store->runSqlEx("INSERT INTO " + table + " (age) VALUES (1),(2);SELECT age FROM " + table, throwing, &context);
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const Thrown& caught)
    {
        EXPECT_EQ(thrown, caught);
    }
    EXPECT_EQ(1, context.calls);
    EXPECT_TRUE(watch.pauses().empty());

    EXPECT_EQ(nullptr, sqlite3_next_stmt(database->handle(), nullptr));
    const Database other(file.path());
    EXPECT_EQ(SQLITE_OK, other.run("INSERT INTO " + table + " (age) VALUES (3)"));
    EXPECT_EQ(1, store->runSqlEx("DELETE FROM " + table + " WHERE age = 3"));
    EXPECT_EQ(2U, store.rows().size());
    EXPECT_EQ(SQLITE_OK, database->close());
}

TEST(Execute, AnExceptionOfACallbackReachesTheCallerAndLeavesNothingBusy)
{
    for (const int errnoThen : {0, EAGAIN})
    {
        expectHandedOn(std::string("text"), errnoThen);
        expectHandedOn(42, errnoThen);
    }
}

TEST(Execute, AnExceptionKeepsItsTypeAndText)
{
    Store store(members);
    const auto throwing = [](void*, int, char**, char**) -> int { return Json::Value("no number").asInt(); };
    const LogCapture capture;
    try
    {
        store->runSqlEx("SELECT 1", throwing, nullptr);
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const Json::LogicError& caught)
    {
        EXPECT_STREQ("Value is not convertible to Int.", caught.what());
    }
    EXPECT_EQ(nullptr, sqlite3_next_stmt(store.db().handle(), nullptr));
}

// A query inside a row callback, on the same object: the inner exception passes through both runs.
TEST(Execute, AnExceptionPassesThroughNestedRuns)
{
    Store store(members);
    const auto outer = [](void* context, int, char**, char**) -> int
    {
        const auto inner = [](void*, int, char**, char**) -> int { throw std::runtime_error("inner"); };
        return (*static_cast<Store*>(context))->runSqlEx("SELECT 2", inner, nullptr);
    };
    const LogCapture capture;
    EXPECT_THROW(store->runSqlEx("SELECT 1", outer, &store), std::runtime_error);
    EXPECT_EQ(0, store->runSqlEx("SELECT 1"));
}
