// SPDX-License-Identifier: MIT
//
// How the costs grow, by rows and by members, and the most memory that a listing takes.

#ifndef VORN_BENCH_GROWTH_H
#define VORN_BENCH_GROWTH_H

#include "runner.h"

namespace bench
{

// Each contestant does all sizes in one process, so that the allocator is in the same state for all.
constexpr std::size_t kGrowthRows[] = {1000, 10000, 100000};
constexpr std::size_t kGrowthMembers[] = {4, 16, 64, 256};

// The lane of a contestant (growth by rows), or of "library" or "percall" (growth by members), at one size.
std::string lane(const std::string& strId, std::size_t size);

// Listing, per record, by rows of the table.
Rounds listByRows();

// Creating and listing, per member, by members of the table.
Rounds createByMembers();
Rounds listByMembers();

// KiB of resident memory that listing so many rows takes above what the process had before, by contestant: each in a
// forked process of its own, from one file. Run it before anything that leaves freed memory behind.
std::map<std::string, long> peakOfListing(std::size_t rows);

}  // namespace bench

#endif  // VORN_BENCH_GROWTH_H
