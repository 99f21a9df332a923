// SPDX-License-Identifier: MIT
//
// The host's side of the library: the two flags and a syslog() that renders every line and drops it, so that a bad
// argument of a line is found too. The pause between attempts on a locked database is left out. <syslog.h> is not
// included on purpose: a fortified build defines syslog() in it.

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#define HOST_SYMBOL __attribute__((visibility("default")))

HOST_SYMBOL bool blLogToStdout = false;
HOST_SYMBOL bool blDebugOutput = true;

namespace
{

void drop(const char* szFormat, va_list args)
{
    static char szLine[4096];
    const int iErrno = errno;
    static_cast<void>(std::vsnprintf(szLine, sizeof szLine, szFormat, args));
    errno = iErrno;
}

}  // namespace

extern "C"
{
    HOST_SYMBOL void syslog(int, const char* szFormat, ...)
    {
        va_list args;
        va_start(args, szFormat);
        drop(szFormat, args);
        va_end(args);
    }

    // The name that a fortified library calls instead.
    HOST_SYMBOL void __syslog_chk(int, int, const char* szFormat, ...)
    {
        va_list args;
        va_start(args, szFormat);
        drop(szFormat, args);
        va_end(args);
    }

    HOST_SYMBOL int usleep(useconds_t)
    {
        return 0;
    }
}
