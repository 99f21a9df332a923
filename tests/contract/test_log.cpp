// SPDX-License-Identifier: MIT
//
// Log lines: the exact text of every kind of line in every output, and the two flags that steer them.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <regex>

#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

using namespace support;

namespace
{

int g_openedOrClosed = 0;

const char* const members = R"({"age": {"cpptype": "int"}, "rate": {"cpptype": "double"}})";

// One line of each kind, written by a call that leaves errno as it was.
struct Kind
{
    const char* name;
    bool located;
    bool debugOnly;
    const char* messageFormat;
    const char* message;
    void (*write)(Store& store);
};

void writeFailureLine(Store& store)
{
    Json::Value array(Json::arrayValue);
    EXPECT_EQ(-1, store->checkJsonType(array));
}

void writeErrorLine(Store& store)
{
    Json::Value record = json(R"({"rate": 1.5})");
    EXPECT_EQ(-1, store->checkJsonType(record));
}

// The name check of a construction with an empty name: the one line of that call.
void writeTraceLine(Store& store)
{
    std::string name;
    std::string create = store.createStatement();
    const int errnoBefore = errno;
    errno = errnoBefore;
    const VornJsonDbApi api(store.db().handle(), name, store.definition(), create);
}

// Follows the error line about the first missing member.
void writeDebugLine(Store& store)
{
    Json::Value record = json(R"({"rate": "O'Neil"})");
    EXPECT_EQ(-1, store->fillDefaultValue(record, true));
}

const Kind kinds[] = {
    {"failure line", true, false, "Failed [%s]", "Failed [!jRecParam.isObject()]", writeFailureLine},
    {"error line", true, false, "type not found!!, key=%s", "type not found!!, key=rate", writeErrorLine},
    {"trace line", false, false, "Failed [%s]", "Failed [strName.empty()]", writeTraceLine},
    {"debug line", false, true, "jParam=%s", R"(jParam={"rate":"O'Neil"})", writeDebugLine},
};

// Lines are compared with their line numbers replaced by "N" and the process id by "P".
std::string withoutNumbers(const std::string& text)
{
    const std::string pid = "\\(" + std::to_string(getpid()) + "\\)";
    return std::regex_replace(std::regex_replace(text, std::regex(pid), "(P)"), std::regex("VornJsonDbApi:[0-9]+"),
                              "VornJsonDbApi:N");
}

class LogTest : public testing::Test
{
protected:
    void SetUp() override { static_cast<void>(m_store.types()); }

    void TearDown() override
    {
        blLogToStdout = false;
        blDebugOutput = false;
    }

    Store m_store{members};
};

}  // namespace

extern "C" __attribute__((visibility("default"))) void openlog(const char*, int, int)
{
    ++g_openedOrClosed;
}

extern "C" __attribute__((visibility("default"))) void closelog()
{
    ++g_openedOrClosed;
}

TEST_F(LogTest, StandardOutputShowsTheFullLineOfEachKind)
{
    blLogToStdout = true;
    blDebugOutput = true;
    for (const int errnoThen : {0, ENOENT})
    {
        for (const Kind& kind : kinds)
        {
            SCOPED_TRACE(kind.name);
            LogCapture capture;
            errno = errnoThen;
            kind.write(m_store);
            capture.stop();

            std::string expected;
            if (kind.located)
            {
                expected = std::string("(P) VornJsonDbApi:N (VornJsonDbApi:N)") + kind.message + "(" +
                           strerror(errnoThen) + ")\n\n";
            }
            else
            {
                expected = std::string("(P) VornJsonDbApi:N ") + kind.message + "\n";
            }
            const std::string written = withoutNumbers(capture.standardOutput());
            if (kind.debugOnly)
            {
                // Here the error line stands before it.
                ASSERT_GE(written.size(), expected.size()) << written;
                EXPECT_EQ(expected, written.substr(written.size() - expected.size()));
            }
            else
            {
                EXPECT_EQ(expected, written);
            }
            EXPECT_TRUE(capture.syslogCalls().empty());
        }
    }
}

TEST_F(LogTest, SyslogGetsTheFullLineAndFormatOfEachKind)
{
    blDebugOutput = true;
    for (const int errnoThen : {0, ENOENT})
    {
        for (const Kind& kind : kinds)
        {
            SCOPED_TRACE(std::string(kind.name) + ", errno " + std::to_string(errnoThen));
            LogCapture capture;
            errno = errnoThen;
            kind.write(m_store);
            capture.stop();

            const std::string reason = std::string("(") + strerror(errnoThen) + ")";
            std::string format = "%s:%d (%u)";
            std::string text = "VornJsonDbApi:N (P)";
            if (kind.located)
            {
                format += std::string("(%s:%d)") + kind.messageFormat + (errnoThen != 0 ? "(%m)\n(%m)" : "(%m)\n");
                text += std::string("(VornJsonDbApi:N)") + kind.message + reason + "\n";
            }
            else
            {
                format += std::string(kind.messageFormat) + (errnoThen != 0 ? "(%m)" : "");
                text += kind.message;
            }
            text += errnoThen != 0 ? reason : "";

            ASSERT_FALSE(capture.syslogCalls().empty());
            const SyslogCall& last = capture.syslogCalls().back();
            EXPECT_EQ(kind.debugOnly ? 2U : 1U, capture.syslogCalls().size());
            EXPECT_EQ(3, last.priority);
            EXPECT_EQ(format, last.format);
            EXPECT_EQ(text, withoutNumbers(last.text));
            EXPECT_EQ("", capture.standardOutput());
        }
    }
}

TEST_F(LogTest, DebugLinesNeedTheFlagAndTraceLinesDoNot)
{
    Json::Value record = json(R"({"rate": 1})");
    forEachLogMode(
        [&]
        {
            EXPECT_LOGS(-1, m_store->fillDefaultValue(record, true), error("lost data member=age"),
                        debug(R"(jParam={"rate":1})"));
            logged({trace("Failed [strName.empty()]")}, [&] { writeTraceLine(m_store); });
        });
}

LOGGED_TEST_F(LogTest, LinesOfTheFreeFunctionsNameTheFileUtil)
{
    Json::Value definition;
    std::string name = freshTable();
    logged({inUtil(failed("jTableDef.empty()")), inUtil(trace("strJsonName=" + name)), inUtil(trace("jTableDef=null")),
            inUtil(trace("jType=<any>"))},
           [&] { VORN_JSON_DB::recType(definition, name); });
}

// A statement that is retried writes one debug line per attempt, with a pause after each in which the flags change.
TEST_F(LogTest, AFlagChangedByTheHostTakesEffectAtTheNextLine)
{
    const auto locked = [](sqlite3_context* context, int, sqlite3_value**)
    { sqlite3_result_error(context, "database is locked", -1); };
    sqlite3_create_function(m_store.db().handle(), "locked", 0, SQLITE_UTF8, nullptr, locked, nullptr, nullptr);

    const SleepWatch watch(SleepWatch::Pause::Skipped,
                           [](int count)
                           {
                               blDebugOutput = count >= 2 && count < 5;
                               blLogToStdout = count == 4;
                           });
    LogCapture capture;
    EXPECT_EQ(-1, m_store->runSqlEx("select locked()"));
    capture.stop();

    // Attempts 2 and 3 go to syslog, 4 to standard output, the others nowhere; then the final trace line.
    ASSERT_EQ(3U, capture.syslogCalls().size());
    EXPECT_NE(std::string::npos, capture.syslogCalls()[0].text.find("retry, i=2,"));
    EXPECT_NE(std::string::npos, capture.syslogCalls()[1].text.find("retry, i=3,"));
    EXPECT_NE(std::string::npos, capture.syslogCalls()[2].text.find("i=500,"));
    EXPECT_NE(std::string::npos, capture.standardOutput().find("retry, i=4,"));
    EXPECT_EQ(std::string::npos, capture.standardOutput().find("retry, i=5,"));
}

TEST_F(LogTest, LoggingLeavesErrnoAsItWas)
{
    for (const Kind& kind : {kinds[0], kinds[1], kinds[3]})
    {
        SCOPED_TRACE(kind.name);
        const LogCapture capture;
        errno = EACCES;
        kind.write(m_store);
        EXPECT_EQ(EACCES, errno);
    }
}

TEST_F(LogTest, StandardOutputIsNeverFlushed)
{
    if (isatty(STDOUT_FILENO) != 0)
        GTEST_SKIP() << "the C library itself flushes a terminal's lines";
    blLogToStdout = true;
    LogCapture capture;
    writeFailureLine(m_store);
    struct stat state = {};
    const int known = fstat(STDOUT_FILENO, &state);
    capture.stop();
    EXPECT_EQ(0, known);
    EXPECT_EQ(0, state.st_size);
    EXPECT_NE("", capture.standardOutput());
}

TEST_F(LogTest, TheHostsSyslogConnectionIsLeftAlone)
{
    const LogCapture capture;
    for (const Kind& kind : kinds)
        kind.write(m_store);
    EXPECT_EQ(0, g_openedOrClosed);
}

TEST_F(LogTest, AChildProcessLogsItsOwnProcessId)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        LogCapture capture;
        writeFailureLine(m_store);
        capture.stop();
        const std::vector<LogLine> lines = capture.lines();
        _exit(lines.size() == 1 && lines[0].problem.empty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
}
