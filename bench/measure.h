// SPDX-License-Identifier: MIT
//
// What is measured in this process: CPU time, allocations, memory.

#ifndef VORN_BENCH_MEASURE_H
#define VORN_BENCH_MEASURE_H

#include <cstddef>
#include <cstdint>

namespace bench
{

// CPU time of this process so far, in nanoseconds, the kernel's share included.
std::int64_t cpuTime();

// How often this process has called malloc, calloc, realloc or operator new. The program's own malloc counts.
std::size_t allocations();

// Has the C library merge small pieces of freed memory now, as it does at the next large allocation.
void mergeFreedMemory();

// Resident memory in KiB: now, and the most so far.
long residentNow();
long residentPeak();

}  // namespace bench

#endif  // VORN_BENCH_MEASURE_H
