// SPDX-License-Identifier: MIT
//
// The four kinds of log line. Each is written by one printf() to standard output or one syslog() at LOG_ERR, as the
// host wishes at that moment. A source that writes lines names itself with a constant kLogFile.
//
//   VORN_FAILED(condition)            true, after a failure line that quotes the condition, when the condition holds
//   VORN_FAILED_AS(condition, text)   the same where the line quotes a text of log_texts.h instead
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
#include <cstdio>

// Defined by the host process; default visibility, so that they resolve outside this library.
extern __attribute__((visibility("default"))) bool blLogToStdout;
extern __attribute__((visibility("default"))) bool blDebugOutput;

// Lines are rare: their code stays out of the way of the rest and small.
#define VORN_COLD __attribute__((cold, noinline))

// The formats of one line, each of them a literal: the doubled location and the doubled "%m" are what log readers know.
#define VORN_LOCATED_FORMATS(message)                                                      \
    vorn_log::Formats                                                                      \
    {                                                                                      \
        "(%u) %s:%d (%s:%d)" message "(%m)\n\n", "%s:%d (%u)(%s:%d)" message "(%m)\n(%m)", \
            "%s:%d (%u)(%s:%d)" message "(%m)\n"                                           \
    }
#define VORN_PLAIN_FORMATS(message)                                                   \
    vorn_log::Formats                                                                 \
    {                                                                                 \
        "(%u) %s:%d " message "\n", "%s:%d (%u)" message "(%m)", "%s:%d (%u)" message \
    }

namespace vorn_log
{

struct Formats
{
    const char* szStdout;
    const char* szSyslogErrno;
    const char* szSyslog;

    const char* forSyslog() const { return errno != 0 ? szSyslogErrno : szSyslog; }
};

template <typename... Args>
VORN_COLD void writeLocated(const Formats& formats, const char* szFile, int iLine, Args... args)
{
    const auto uPid = static_cast<unsigned>(getpid());
    if (blLogToStdout)
        static_cast<void>(std::printf(formats.szStdout, uPid, szFile, iLine, szFile, iLine, args...));
    else
        syslog(LOG_ERR, formats.forSyslog(), szFile, iLine, uPid, szFile, iLine, args...);
}

template <typename... Args>
VORN_COLD void writePlain(const Formats& formats, const char* szFile, int iLine, Args... args)
{
    const auto uPid = static_cast<unsigned>(getpid());
    if (blLogToStdout)
        static_cast<void>(std::printf(formats.szStdout, uPid, szFile, iLine, args...));
    else
        syslog(LOG_ERR, formats.forSyslog(), szFile, iLine, uPid, args...);
}

VORN_COLD inline void writeFailure(const char* szFile, int iLine, const char* szCondition)
{
    writeLocated(VORN_LOCATED_FORMATS("Failed [%s]"), szFile, iLine, szCondition);
}

}  // namespace vorn_log

#define VORN_FAILED(condition) ((condition) && (vorn_log::writeFailure(kLogFile, __LINE__, #condition), true))
#define VORN_FAILED_AS(condition, text) ((condition) && (vorn_log::writeFailure(kLogFile, __LINE__, text), true))

// The unevaluated printf() lets the compiler check the arguments against the message.
#define VORN_WRITE(function, formats, message, ...)                            \
    do                                                                         \
    {                                                                          \
        static_cast<void>(sizeof(std::printf(message, __VA_ARGS__)));          \
        vorn_log::function(formats(message), kLogFile, __LINE__, __VA_ARGS__); \
    } while (false)

#define VORN_ERROR(message, ...) VORN_WRITE(writeLocated, VORN_LOCATED_FORMATS, message, __VA_ARGS__)
#define VORN_TRACE(message, ...) VORN_WRITE(writePlain, VORN_PLAIN_FORMATS, message, __VA_ARGS__)
#define VORN_DEBUG(message, ...)              \
    do                                        \
    {                                         \
        if (blDebugOutput)                    \
            VORN_TRACE(message, __VA_ARGS__); \
    } while (false)

#endif  // VORN_LOG_H
