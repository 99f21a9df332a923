// SPDX-License-Identifier: MIT
//
// What the library logs, seen from a test. The test program defines the two host flags and replaces syslog(), so a
// LogCapture sees every line of both outputs. Every line is taken apart strictly: its process id, its doubled location
// and the text of errno must have the shape of its output, or the comparison fails with the raw text.
//
//     LOGGED_TEST(TypeCheck, ATextIsNoInteger)
//     {
//         Store store(R"({"age": {"cpptype": "int"}})");
//         Json::Value record = json(R"({"age": "5"})");
//         EXPECT_LOGS(-1, store->checkJsonType(record), error(R"(type failed, strKey=age, jRecParam={"age":"5"})"));
//     }

#ifndef VORNJSONDB_TESTS_LOG_CAPTURE_H
#define VORNJSONDB_TESTS_LOG_CAPTURE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

extern bool blLogToStdout;
extern bool blDebugOutput;

namespace support
{

// One line that a test expects. Its message may hold two wildcards: "<number>" for a decimal number (errno after a
// statement) and "<any>" for any text (the cache of type maps, which holds other tests' tables too).
struct ExpectedLine
{
    bool located;    // failure and error lines show their place twice
    bool debugOnly;  // written only while blDebugOutput is set
    std::string file;
    std::string message;
};

ExpectedLine failed(const std::string& condition);
ExpectedLine error(const std::string& message);
ExpectedLine trace(const std::string& message);
ExpectedLine debug(const std::string& message);
ExpectedLine inUtil(ExpectedLine line);

using ExpectedLines = std::vector<ExpectedLine>;
ExpectedLines operator+(ExpectedLines first, const ExpectedLines& second);

// All of them in a row, each a line or several.
inline ExpectedLines linesOf(ExpectedLine line)
{
    return {std::move(line)};
}
inline ExpectedLines linesOf(ExpectedLines lines)
{
    return lines;
}
template <class First, class... More>
ExpectedLines linesOf(First first, More... more)
{
    return linesOf(std::move(first)) + linesOf(std::move(more)...);
}

// One line that was written, taken apart.
struct LogLine
{
    bool located = false;
    std::string file;
    std::string message;
    std::string errnoText;  // what "%m" gave; empty where the line has none
    std::string problem;    // why the text has no valid shape; empty when it has
};

std::ostream& operator<<(std::ostream& out, const LogLine& line);

// One call of syslog().
struct SyslogCall
{
    int priority;
    int errnoThen;
    std::string format;
    std::string text;  // with "%m" expanded
};

// Collects both outputs from its construction to stop().
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    void stop();

    // Valid after stop().
    const std::string& standardOutput() const { return m_standardOutput; }
    const std::vector<SyslogCall>& syslogCalls() const { return m_syslogCalls; }
    std::vector<LogLine> lines() const;

    // Compares what was written with what was expected under the current flags, in order; debug lines are expected only
    // while blDebugOutput is set. Stops the capture. Returns the lines.
    std::vector<LogLine> expect(const ExpectedLines& expected, const char* file = __builtin_FILE(),
                                int line = __builtin_LINE());

private:
    void readStandardOutput();

    FILE* m_pFile;
    int m_savedFd;
    bool m_running = true;
    std::string m_standardOutput;
    std::vector<SyslogCall> m_syslogCalls;
};

// Runs the body once for each way in which lines can leave: standard output, syslog with errno zero and non-zero, each
// with and without debug output. Inside, a LogCapture starts with the mode's errno.
void forEachLogMode(const std::function<void()>& body);

// Runs the action, compares the lines that it caused and returns its result.
template <class Action>
auto logged(const ExpectedLines& expected, Action action, const char* file = __builtin_FILE(),
            int line = __builtin_LINE())
{
    LogCapture capture;
    if constexpr (std::is_void_v<decltype(action())>)
    {
        action();
        capture.expect(expected, file, line);
    }
    else
    {
        auto result = action();
        capture.expect(expected, file, line);
        return result;
    }
}

}  // namespace support

// The call's result, and the lines that it causes.
#define EXPECT_LOGS(result, call, ...) \
    EXPECT_EQ((result), support::logged(support::linesOf(__VA_ARGS__), [&] { return (call); }))
#define EXPECT_SILENT(result, call) EXPECT_EQ((result), support::logged({}, [&] { return (call); }))

// A test that runs once for each way in which lines can leave, on one fixture.
// NOLINTBEGIN(bugprone-macro-parentheses): a class cannot stand in parentheses
#define LOGGED_TEST_F(Suite, Name)                                                                           \
    class Suite##_##Name final : public Suite                                                                \
    {                                                                                                        \
        void TestBody() override                                                                             \
        {                                                                                                    \
            support::forEachLogMode([this] { inThisMode(); });                                               \
        }                                                                                                    \
        void inThisMode();                                                                                   \
    };                                                                                                       \
    static const testing::TestInfo* const Suite##_##Name##_info = testing::RegisterTest(                     \
        #Suite, #Name, nullptr, nullptr, __FILE__, __LINE__, []() -> Suite* { return new Suite##_##Name; }); \
    void Suite##_##Name::inThisMode()
#define LOGGED_TEST(Suite, Name)                                                                                     \
    class Suite##_##Name final : public testing::Test                                                                \
    {                                                                                                                \
        void TestBody() override { support::forEachLogMode(inThisMode); }                                            \
        static void inThisMode();                                                                                    \
    };                                                                                                               \
    static const testing::TestInfo* const Suite##_##Name##_info = testing::RegisterTest(                             \
        #Suite, #Name, nullptr, nullptr, __FILE__, __LINE__, []() -> testing::Test* { return new Suite##_##Name; }); \
    void Suite##_##Name::inThisMode()
// NOLINTEND(bugprone-macro-parentheses)

#endif  // VORNJSONDB_TESTS_LOG_CAPTURE_H
