// SPDX-License-Identifier: MIT
//
// How the costs grow: by rows, and by members. Each contestant does all sizes in one process, so that the allocator is
// in the same state for all.

#ifndef VORN_BENCH_GROWTH_H
#define VORN_BENCH_GROWTH_H

#include "runner.h"

namespace bench
{

const std::vector<std::size_t>& growthRows();
const std::vector<std::size_t>& growthMembers();

// The lane of a contestant (growth by rows), or of "library" or "percall" (growth by members), at one size.
std::string lane(const std::string& strId, std::size_t size);

// Listing, per record, by rows of the table.
Rounds listByRows(const std::vector<ContestantKind>& kinds, const Effort& effort, std::mt19937& random);

// Creating and listing, per member, by members of the table.
Rounds createByMembers(const Effort& effort, std::mt19937& random);
Rounds listByMembers(const Effort& effort, std::mt19937& random);

}  // namespace bench

#endif  // VORN_BENCH_GROWTH_H
