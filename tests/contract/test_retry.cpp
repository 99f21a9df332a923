// SPDX-License-Identifier: MIT
//
// Running SQL text while the database is locked: by a connection in another thread, in another process, or by
// statements that pretend to be. usleep() is counted and rarely sleeps.

#include <gtest/gtest.h>

#include <cerrno>

#include "locks.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;

namespace
{

const char* const members = R"({"age": {"cpptype": "int"}})";
constexpr unsigned pause10ms = 10000;

std::string retryLine(int i, const std::string& errnoThen, const std::string& errorText, const std::string& sql)
{
    return "retry, i=" + std::to_string(i) + ", errno=" + errnoThen + ", run sql failed, error=" + errorText +
           ", sql=" + sql;
}

ExpectedLines retryLines(int count, const std::string& errnoThen, const std::string& errorText, const std::string& sql)
{
    ExpectedLines lines;
    for (int i = 0; i < count; ++i)
        lines.push_back(debug(retryLine(i, errnoThen, errorText, sql)));
    return lines;
}

ExpectedLines finalLines(int i, const std::string& errnoThen, const std::string& errorText, const std::string& sql)
{
    return {trace("i=" + std::to_string(i) + ",errno=" + errnoThen + ", run sql failed, error=" + errorText +
                  ", sql=" + sql),
            debug("run sql fail, err=" + errorText)};
}

// An SQL function fails() that fails so many times with a text and an errno, then gives 1.
class FailingFunction
{
public:
    FailingFunction(const Database& database, int times, const char* errorText, int errnoThen)
        : m_times(times), m_errorText(errorText), m_errnoThen(errnoThen)
    {
        sqlite3_create_function(database.handle(), "fails", 0, SQLITE_UTF8, this, call, nullptr, nullptr);
    }

    int calls() const { return m_calls; }

private:
    static void call(sqlite3_context* context, int, sqlite3_value**)
    {
        auto& self = *static_cast<FailingFunction*>(sqlite3_user_data(context));
        if (self.m_calls++ < self.m_times)
        {
            sqlite3_result_error(context, self.m_errorText, -1);
            errno = self.m_errnoThen;
            return;
        }
        sqlite3_result_int(context, 1);
    }

    int m_times;
    const char* m_errorText;
    int m_errnoThen;
    int m_calls = 0;
};

struct Holder
{
    const char* name;
    std::unique_ptr<WriteLock> (*make)(const std::string& path);
};

void PrintTo(const Holder& holder, std::ostream* out)
{
    *out << holder.name;
}

// A store on a file that another can lock, made before the file is opened here.
class LockedByOther : public testing::TestWithParam<Holder>
{
protected:
    TempFile m_file;
    std::unique_ptr<WriteLock> m_lock = GetParam().make(m_file.path());
    std::shared_ptr<Database> m_database = std::make_shared<Database>(m_file.path());
    Store m_store{members, "", m_database};
    const std::string m_insert = "INSERT INTO " + m_store.name() + " VALUES (1)";
};

}  // namespace

// Nothing here depends on the speed of the machine: the other side lets go during the tenth pause.
TEST_P(LockedByOther, AWriteSucceedsAtTheAttemptAfterTheLockIsReleased)
{
    size_t rows = 0;
    forEachLogMode(
        [&]
        {
            m_lock->take();
            const SleepWatch watch(SleepWatch::Pause::Skipped, 10, [&] { m_lock->release(); });
            EXPECT_LOGS(1, m_store->runSqlEx(m_insert), retryLines(10, "<number>", "database is locked", m_insert));
            EXPECT_EQ(std::vector<unsigned>(10, pause10ms), watch.pauses());
            EXPECT_EQ(++rows, m_store.rows().size());
        });
}

TEST_P(LockedByOther, ARecordIsCreatedAndReadBackOnceTheLockIsReleased)
{
    m_lock->take();
    const SleepWatch watch(SleepWatch::Pause::Skipped, 3, [&] { m_lock->release(); });
    Json::Value record = json(R"({"age": 5})");
    Json::Value stored;
    EXPECT_SILENT(0, m_store->recCreate(record, stored));
    EXPECT_EQ(record, stored);
    EXPECT_EQ(std::vector<std::string>{"5"}, m_store.rows());

    // A later failure that runs no SQL does not tell of the lock.
    Json::Value noFilter = 1;
    stored = Json::Value();
    EXPECT_LOGS(-1, m_store->recList(noFilter, stored),
                failed("jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue"),
                trace("jRecParam=1"));
}

TEST_P(LockedByOther, ALockOfAHundredMillisecondsIsWaitedOut)
{
    m_lock->take();
    // Ten real pauses are 100 ms.
    const SleepWatch watch(SleepWatch::Pause::Real, 11, [&] { m_lock->release(); });
    EXPECT_SILENT(1, m_store->runSqlEx(m_insert));
    EXPECT_EQ(11U, watch.pauses().size());
}

TEST_P(LockedByOther, AfterFiveHundredAttemptsTheWriteFails)
{
    const std::string text = "database is locked";
    m_lock->take();
    forEachLogMode(
        [&]
        {
            const SleepWatch watch(SleepWatch::Pause::Skipped);
            const StatementLog statements(m_store.db());
            EXPECT_LOGS(-1, m_store->runSqlEx(m_insert), retryLines(500, "<number>", text, m_insert),
                        finalLines(500, "<number>", text, m_insert));
            EXPECT_EQ(std::vector<unsigned>(500, pause10ms), watch.pauses());
            EXPECT_EQ(std::vector<std::string>(500, m_insert), statements.statements());
        });
    m_lock->release();
    EXPECT_SILENT(1, m_store->runSqlEx(m_insert));
    EXPECT_EQ(1U, m_store.rows().size());
}

TEST_P(LockedByOther, ATableIsCreatedOnceTheLockIsReleased)
{
    m_lock->take();
    const SleepWatch watch(SleepWatch::Pause::Skipped, 2, [&] { m_lock->release(); });
    std::string created = logged({}, [&] { return Store(members, "", m_database).name(); });
    EXPECT_EQ(2U, watch.pauses().size());
    EXPECT_TRUE(m_database->rows("select * from " + created).empty());
}

INSTANTIATE_TEST_SUITE_P(Retry, LockedByOther,
                         testing::Values(Holder{"Thread", lockFromThread}, Holder{"Process", lockFromProcess}),
                         testing::PrintToStringParamName());

LOGGED_TEST(Retry, ErrnoElevenIsRetriedWhateverTheText)
{
    Store store(members);
    const FailingFunction function(store.db(), 3, "try again", EAGAIN);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    const std::string sql = "SELECT fails()";
    EXPECT_LOGS(0, store->runSqlEx(sql), retryLines(3, "11", "try again", sql));
    EXPECT_EQ(4, function.calls());
    EXPECT_EQ(std::vector<unsigned>(3, pause10ms), watch.pauses());
}

LOGGED_TEST(Retry, TheLockTextIsRetriedWhateverErrnoHolds)
{
    for (const char* const text : {"database is locked", "here the database is locked (5)"})
    {
        Store store(members);
        const FailingFunction function(store.db(), 2, text, ENOENT);
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        const std::string sql = "SELECT fails()";
        EXPECT_LOGS(0, store->runSqlEx(sql), retryLines(2, std::to_string(ENOENT), text, sql));
        EXPECT_EQ(3, function.calls());
    }
}

LOGGED_TEST(Retry, OtherTextsWithAnotherErrnoAreFinal)
{
    for (const char* const text : {"database table is locked", "database schema is locked: main", "Database is locked",
                                   "database is lock", "disk I/O error", ""})
    {
        Store store(members);
        const FailingFunction function(store.db(), 1, text, ENOENT);
        const SleepWatch watch(SleepWatch::Pause::Skipped);
        const std::string sql = "SELECT fails()";
        EXPECT_LOGS(-1, store->runSqlEx(sql), finalLines(0, std::to_string(ENOENT), text, sql));
        EXPECT_EQ(1, function.calls());
        EXPECT_TRUE(watch.pauses().empty());
    }
}

LOGGED_TEST(Retry, ErrnoIsResetBeforeEveryAttempt)
{
    Store store(members);
    const SleepWatch watch(SleepWatch::Pause::Skipped, [](int) { errno = EAGAIN; });
    const FailingFunction function(store.db(), 1, "database is locked", EAGAIN);
    const std::string sql = "SELECT fails() FROM missing";
    const std::string text = "no such table: missing";
    errno = EAGAIN;
    EXPECT_LOGS(-1, store->runSqlEx(sql), finalLines(0, "0", text, sql));
    EXPECT_TRUE(watch.pauses().empty());

    // The text changes from locked to final between two attempts, while the pause leaves errno at 11.
    struct Changing
    {
        int calls = 0;
    } changing;
    const auto change = [](sqlite3_context* context, int, sqlite3_value**)
    {
        auto& state = *static_cast<Changing*>(sqlite3_user_data(context));
        sqlite3_result_error(context, state.calls++ == 0 ? "database is locked" : "broken", -1);
    };
    sqlite3_create_function(store.db().handle(), "changes_text", 0, SQLITE_UTF8, &changing, change, nullptr, nullptr);
    const std::string changingSql = "SELECT changes_text()";
    EXPECT_LOGS(-1, store->runSqlEx(changingSql), retryLines(1, "0", "database is locked", changingSql),
                finalLines(1, "0", "broken", changingSql));
    EXPECT_EQ(2, changing.calls);
}

TEST(Retry, TheWholeTextRunsAgain)
{
    Store store(members);
    const FailingFunction function(store.db(), 2, "database is locked", 0);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    EXPECT_SILENT(1, store->runSqlEx("INSERT INTO " + store.name() + " VALUES (1);SELECT fails()"));
    EXPECT_EQ((std::vector<std::string>{"1", "1", "1"}), store.rows());
}

TEST(Retry, RowsOfAFailedAttemptStayInTheResult)
{
    Store store(members);
    static_cast<void>(store.types());
    const FailingFunction function(store.db(), 1, "database is locked", 0);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    Json::Value rows;
    EXPECT_SILENT(
        0, store->runSqlEx("SELECT 1 AS age UNION ALL SELECT fails()", VornJsonDbApi::DbCallBackFillList, &rows));
    EXPECT_EQ(json(R"([{"age": 1}, {"age": 1}, {"age": 1}])"), rows);
}

TEST(Retry, AFailureAfterFiveHundredAttemptsIsKeptInTheErrorText)
{
    Store store(R"({"age": {"cpptype": "time_t"}})");
    const FailingFunction function(store.db(), 1000, "database is locked", 0);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    const std::string sql = "SELECT fails()";
    EXPECT_LOGS(-1, store->runSqlEx(sql), finalLines(500, "0", "database is locked", sql));
    EXPECT_EQ(500, function.calls());

    // A save that fails before any statement runs shows the text that is still held.
    Json::Value record = json(R"({"age": 1})");
    EXPECT_LOGS(-1, store->recSave(record, true), error("cannot support this type=time_t"),
                failed("0 > SqlExpandMemberSymbol(strSql, jRecInOut)"), trace(R"(blCreate=1, jRecInOut={"age":1})"),
                trace(R"(jType={"age":{"cpptype":"time_t"}})"), trace("sql error, err=database is locked, sql=<any>"));
}

// A callback that throws on a locked attempt's row cannot be reached again: the exception ends the run.
TEST(Retry, AnExceptionEndsTheRetries)
{
    Store store(members);
    const FailingFunction function(store.db(), 1, "database is locked", EAGAIN);
    const SleepWatch watch(SleepWatch::Pause::Skipped);
    const auto throwing = [](void*, int, char**, char**) -> int { throw 1; };
    const LogCapture capture;
    EXPECT_THROW(store->runSqlEx("SELECT fails()", throwing, nullptr), int);
    EXPECT_EQ(1U, watch.pauses().size());
    EXPECT_EQ(2, function.calls());
}
