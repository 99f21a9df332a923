// SPDX-License-Identifier: MIT

#include "measure.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
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

long memoryStatus(const std::string& strLine)
{
    std::ifstream file("/proc/self/status");
    std::string strWord;
    long value = 0;
    while (file >> strWord)
    {
        if (strWord == strLine && file >> value)
            return value;
    }
    throw std::runtime_error("/proc/self/status has no " + strLine);
}

}  // namespace bench
