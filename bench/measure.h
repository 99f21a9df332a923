// SPDX-License-Identifier: MIT
//
// What is measured in this process: CPU time, allocations, memory.

#ifndef VORN_BENCH_MEASURE_H
#define VORN_BENCH_MEASURE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench
{

// CPU time of this process so far, in nanoseconds, the kernel's share included.
std::int64_t cpuTime();

// What a piece of work cost.
struct Cost
{
    std::int64_t nanoseconds = 0;
    std::size_t allocations = 0;
    std::size_t records = 0;  // read or changed
};

// How often this process has called malloc, calloc, realloc or operator new. The program's own malloc counts.
std::size_t allocations();

// Does the work, which returns how many records it read or changed. Freeing them is part of it.
template <class Work>
Cost measured(const Work& work)
{
    Cost cost;
    const std::size_t allocationsBefore = allocations();
    const std::int64_t timeBefore = cpuTime();
    cost.records = work();
    cost.nanoseconds = cpuTime() - timeBefore;
    cost.allocations = allocations() - allocationsBefore;
    return cost;
}

// Has the C library merge small pieces of freed memory now, as it does at the next large allocation.
void mergeFreedMemory();

// KiB of a line of /proc/self/status: "VmRSS:", the resident memory now, or "VmHWM:", the most so far.
long memoryStatus(const std::string& strLine);

}  // namespace bench

#endif  // VORN_BENCH_MEASURE_H
