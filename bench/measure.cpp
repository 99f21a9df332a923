// SPDX-License-Identifier: MIT

#include "measure.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>

namespace
{

// One thread only: a plain number costs next to nothing.
std::size_t allocationCount = 0;

}  // namespace

// Every library of this process finds these before the C library's own. operator new comes here too.
extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t count, std::size_t size);
    void* __libc_realloc(void* pMemory, std::size_t size);

    void* malloc(std::size_t size)
    {
        ++allocationCount;
        return __libc_malloc(size);
    }

    void* calloc(std::size_t count, std::size_t size)
    {
        ++allocationCount;
        return __libc_calloc(count, size);
    }

    void* realloc(void* pMemory, std::size_t size)
    {
        ++allocationCount;
        return __libc_realloc(pMemory, size);
    }
}

namespace bench
{

namespace
{

// A line "NAME: 123 kB" of /proc/self/status.
long statusLine(const char* szName)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen("/proc/self/status", "r"), std::fclose);
    char szLine[256];
    while (file && std::fgets(szLine, sizeof szLine, file.get()) != nullptr)
    {
        long value = 0;
        if (std::strncmp(szLine, szName, std::strlen(szName)) == 0 &&
            std::sscanf(szLine + std::strlen(szName), ": %ld kB", &value) == 1)
            return value;
    }
    throw std::runtime_error("/proc/self/status lacks a line");
}

}  // namespace

std::int64_t cpuTime()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

std::size_t allocations()
{
    return allocationCount;
}

void mergeFreedMemory()
{
    void* volatile pLarge = std::malloc(4096);
    std::free(pLarge);
}

long residentNow()
{
    return statusLine("VmRSS");
}

long residentPeak()
{
    return statusLine("VmHWM");
}

}  // namespace bench
