// SPDX-License-Identifier: MIT
//
// The most memory that a listing takes.

#ifndef VORN_BENCH_PEAK_H
#define VORN_BENCH_PEAK_H

#include <map>

#include "contestant.h"

namespace bench
{

// KiB of resident memory that listing so many rows takes above what the process had before, by contestant: each in a
// forked process of its own, from one file. Run it before anything that leaves freed memory behind.
std::map<std::string, long> peakOfListing(const std::vector<ContestantKind>& kinds, std::size_t rows);

}  // namespace bench

#endif  // VORN_BENCH_PEAK_H
