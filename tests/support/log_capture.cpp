// SPDX-License-Identifier: MIT
//
// The host's side of logging: the two flags, a syslog() that keeps what it is given, and standard output led into a
// file. <syslog.h> is left out on purpose: a fortified build defines syslog() in it.

#include "log_capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <mutex>
#include <stdexcept>

#include "log_lines.h"

#define HOST_SYMBOL __attribute__((visibility("default")))

HOST_SYMBOL bool blLogToStdout = false;
HOST_SYMBOL bool blDebugOutput = false;

namespace
{

std::mutex g_mutex;
std::vector<support::SyslogCall> g_syslogCalls;
int g_errnoBefore = 0;

void keepSyslogCall(int priority, const char* format, va_list args)
{
    const int errnoThen = errno;
    char* szText = nullptr;
    const int length = vasprintf(&szText, format, args);
    const std::string text = length >= 0 ? szText : "the format cannot be printed";
    std::free(length >= 0 ? szText : nullptr);
    {
        const std::lock_guard<std::mutex> lock(g_mutex);
        g_syslogCalls.push_back({priority, errnoThen, format, text});
    }
    errno = errnoThen;
}

}  // namespace

extern "C"
{
    HOST_SYMBOL void syslog(int priority, const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        keepSyslogCall(priority, format, args);
        va_end(args);
    }

    HOST_SYMBOL void vsyslog(int priority, const char* format, va_list args)
    {
        keepSyslogCall(priority, format, args);
    }

    // The two names that a fortified library calls instead.
    HOST_SYMBOL void __syslog_chk(int priority, int, const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        keepSyslogCall(priority, format, args);
        va_end(args);
    }

    HOST_SYMBOL void __vsyslog_chk(int priority, int, const char* format, va_list args)
    {
        keepSyslogCall(priority, format, args);
    }
}

namespace support
{

LogCapture::LogCapture() : m_pFile(std::tmpfile()), m_savedFd(dup(STDOUT_FILENO))
{
    if (m_pFile == nullptr || m_savedFd < 0)
        throw std::runtime_error("cannot redirect standard output");
    std::fflush(stdout);
    dup2(fileno(m_pFile), STDOUT_FILENO);
    {
        const std::lock_guard<std::mutex> lock(g_mutex);
        g_syslogCalls.clear();
    }
    errno = g_errnoBefore;
}

LogCapture::~LogCapture()
{
    stop();
    std::fclose(m_pFile);
}

void LogCapture::stop()
{
    if (!m_running)
        return;
    m_running = false;
    std::fflush(stdout);
    dup2(m_savedFd, STDOUT_FILENO);
    close(m_savedFd);
    readStandardOutput();
    const std::lock_guard<std::mutex> lock(g_mutex);
    m_syslogCalls.swap(g_syslogCalls);
}

void LogCapture::readStandardOutput()
{
    std::rewind(m_pFile);
    char buffer[4096];
    size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, m_pFile)) > 0)
        m_standardOutput.append(buffer, got);
}

std::vector<LogLine> LogCapture::lines() const
{
    std::vector<LogLine> result = parseStandardOutput(m_standardOutput);
    for (const SyslogCall& call : m_syslogCalls)
        result.push_back(parseSyslogCall(call));
    return result;
}

std::vector<LogLine> LogCapture::expect(const ExpectedLines& expected, const char* file, int line)
{
    stop();
    if (blLogToStdout && !m_syslogCalls.empty())
        ADD_FAILURE_AT(file, line) << "syslog was called although blLogToStdout is set: " << m_syslogCalls[0].text;
    if (!blLogToStdout && !m_standardOutput.empty())
    {
        ADD_FAILURE_AT(file, line) << "standard output was written although blLogToStdout is not set:\n"
                                   << m_standardOutput;
    }
    std::vector<LogLine> written = lines();
    const std::string difference = compareLines(expected, written);
    if (!difference.empty())
        ADD_FAILURE_AT(file, line) << difference;
    return written;
}

void forEachLogMode(const std::function<void()>& body)
{
    struct Mode
    {
        bool toStdout;
        bool debugOutput;
        int errnoBefore;
    };
    static const Mode modes[] = {
        {true, true, ENOENT}, {true, false, 0},      {false, true, 0},
        {false, false, 0},    {false, true, ENOENT}, {false, false, ENOENT},
    };

    for (const Mode& mode : modes)
    {
        SCOPED_TRACE(std::string(mode.toStdout ? "standard output" : "syslog") + ", errno " +
                     std::to_string(mode.errnoBefore) + (mode.debugOutput ? ", debug output" : ""));
        blLogToStdout = mode.toStdout;
        blDebugOutput = mode.debugOutput;
        g_errnoBefore = mode.errnoBefore;
        body();
        blLogToStdout = false;
        blDebugOutput = false;
        g_errnoBefore = 0;
        if (testing::Test::HasFatalFailure())
            return;
    }
}

}  // namespace support
