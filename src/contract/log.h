// SPDX-License-Identifier: MIT
//
// The four kinds of log line. Each is written by one printf() to standard output or one syslog() at LOG_ERR, as the
// host wishes at that moment. A source that writes lines names itself with a constant kLogFile.
//
//   VORN_FAILED(condition)            true, after a failure line that quotes the condition, when the condition holds
//   VORN_FAILED_AS(condition, text)   the same where the line quotes another text than the code that tests it
//   VORN_ERROR(message, arguments)    error line: located like a failure line, with a message of its own
//   VORN_TRACE(message, arguments)    trace line: what a failed operation was working on
//   VORN_DEBUG(message, arguments)    debug line: a trace line that is written only while blDebugOutput is set
//
// Arguments are evaluated only when their line is written. A null pointer for "%s" is left to the C library.

#ifndef VORN_LOG_H
#define VORN_LOG_H

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>

// Defined by the host process; default visibility, so that they resolve outside this library.
extern __attribute__((visibility("default"))) bool blLogToStdout;
extern __attribute__((visibility("default"))) bool blDebugOutput;

// Lines are rare: their code stays out of the way of the rest and small.
#define VORN_COLD __attribute__((cold, noinline))

namespace vorn_log
{

// What stands around a message. The doubled location and the doubled "%m" are the format that log readers know.
struct Frame
{
    const char* szStdoutBefore;
    const char* szStdoutAfter;
    const char* szSyslogBefore;
    const char* szSyslogAfterErrno;
    const char* szSyslogAfter;
};

constexpr Frame kLocated{"(%u) %s:%d (%s:%d)", "(%m)\n\n", "%s:%d (%u)(%s:%d)", "(%m)\n(%m)", "(%m)\n"};
constexpr Frame kPlain{"(%u) %s:%d ", "\n", "%s:%d (%u)", "(%m)", ""};

constexpr std::size_t kMaxMessage = 100;

// A message in its frame, put together when its line is written: joined beforehand, all of them take 4 KB more on armhf
// (./dev size).
class Format
{
public:
    VORN_COLD Format(const Frame& frame, const char* szMessage) : m_blStdout(blLogToStdout)
    {
        const char* const szAfterSyslog = errno != 0 ? frame.szSyslogAfterErrno : frame.szSyslogAfter;
        static_cast<void>(std::snprintf(m_szText, sizeof m_szText, "%s%s%s",
                                        m_blStdout ? frame.szStdoutBefore : frame.szSyslogBefore, szMessage,
                                        m_blStdout ? frame.szStdoutAfter : szAfterSyslog));
    }

    bool isForStdout() const { return m_blStdout; }
    const char* text() const { return m_szText; }

private:
    static constexpr std::size_t kMaxFrame = 40;

    bool m_blStdout;
    char m_szText[kMaxMessage + kMaxFrame];
};

template <typename... Args>
VORN_COLD void writeLocated(const char* szMessage, const char* szFile, int iLine, Args... args)
{
    const Format format(kLocated, szMessage);
    const auto uPid = static_cast<unsigned>(getpid());
    if (format.isForStdout())
        static_cast<void>(std::printf(format.text(), uPid, szFile, iLine, szFile, iLine, args...));
    else
        syslog(LOG_ERR, format.text(), szFile, iLine, uPid, szFile, iLine, args...);
}

template <typename... Args>
VORN_COLD void writePlain(const char* szMessage, const char* szFile, int iLine, Args... args)
{
    const Format format(kPlain, szMessage);
    const auto uPid = static_cast<unsigned>(getpid());
    if (format.isForStdout())
        static_cast<void>(std::printf(format.text(), uPid, szFile, iLine, args...));
    else
        syslog(LOG_ERR, format.text(), szFile, iLine, uPid, args...);
}

VORN_COLD inline void writeFailure(const char* szFile, int iLine, const char* szCondition)
{
    writeLocated("Failed [%s]", szFile, iLine, szCondition);
}

}  // namespace vorn_log

#define VORN_FAILED(condition) ((condition) && (vorn_log::writeFailure(kLogFile, __LINE__, #condition), true))
#define VORN_FAILED_AS(condition, text) ((condition) && (vorn_log::writeFailure(kLogFile, __LINE__, text), true))

// The unevaluated printf() lets the compiler check the arguments against the message.
#define VORN_WRITE(function, message, ...)                                   \
    do                                                                       \
    {                                                                        \
        static_cast<void>(sizeof(std::printf(message, __VA_ARGS__)));        \
        static_assert(sizeof(message) <= vorn_log::kMaxMessage, "too long"); \
        vorn_log::function(message, kLogFile, __LINE__, __VA_ARGS__);        \
    } while (false)

#define VORN_ERROR(message, ...) VORN_WRITE(writeLocated, message, __VA_ARGS__)
#define VORN_TRACE(message, ...) VORN_WRITE(writePlain, message, __VA_ARGS__)
#define VORN_DEBUG(message, ...)              \
    do                                        \
    {                                         \
        if (blDebugOutput)                    \
            VORN_TRACE(message, __VA_ARGS__); \
    } while (false)

#endif  // VORN_LOG_H
