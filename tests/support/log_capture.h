// SPDX-License-Identifier: MIT
//
// What the library logs, seen from a test. The test program defines the two host flags and replaces syslog(), so a
// LogCapture sees every line of both outputs. Every line is taken apart strictly: its process id, its doubled location
// and the text of errno must have the shape of its output, or the comparison fails with the raw text.
//
//     forEachLogMode([] {
//         Store store(R"({"age": {"cpptype": "int"}})");
//         Json::Value record = json(R"({"age": "5"})");
//         EXPECT_EQ(-1, logged({error(R"(type failed, strKey=age, jRecParam={"age":"5"})")},
//                              [&] { return store->checkJsonType(record); }));
//     });

#ifndef VORNJSONDB_TESTS_LOG_CAPTURE_H
#define VORNJSONDB_TESTS_LOG_CAPTURE_H

#include <cstdio>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
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

#endif  // VORNJSONDB_TESTS_LOG_CAPTURE_H
