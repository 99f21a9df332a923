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

// Who takes part in growth by members.
const std::vector<ContestantKind>& wideKinds();

// The lane of a contestant at one size.
std::string lane(const std::string& strId, std::size_t size);

// Listing, per record, by rows of the table.
Rounds listByRows();

// Creating and listing, per member, by members of the table.
Rounds createByMembers();
Rounds listByMembers();

// One batch of work whose size is given, and nothing else, for tools that count all that a process does. "members":
// records of so many members are created. "values" and "filters": rows are counted by a list of so many values, or by
// so many filters of which one must hold. A cost's records are members, values, or filters.
bool isSized(const std::string& strWork);
Cost runSized(const std::string& strWork, const std::string& strContestant, std::size_t size, std::size_t count);

// KiB of resident memory that listing so many rows takes above what the process had before, by contestant: each in a
// forked process of its own, from one file. Run it before anything that leaves freed memory behind.
std::map<std::string, long> peakOfListing(std::size_t rows);

}  // namespace bench

#endif  // VORN_BENCH_GROWTH_H
