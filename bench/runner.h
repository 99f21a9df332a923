// SPDX-License-Identifier: MIT
//
// Rounds of measured batches, the contestants shuffled in each, and ratios that are formed within a round.

#ifndef VORN_BENCH_RUNNER_H
#define VORN_BENCH_RUNNER_H

#include <map>
#include <random>
#include <string>
#include <vector>

#include "work.h"

namespace bench
{

struct Spread
{
    double median = 0;
    double least = 0;
    double most = 0;
};
Spread spreadOf(std::vector<double> values);

// What the contestants cost in one work and setting, by round. All vectors have the same length.
struct Result
{
    const Work* pWork = nullptr;
    Setting setting;
    std::map<std::string, std::vector<double>> nanoseconds;  // per record, by contestant
    std::map<std::string, double> allocations;               // per record, by contestant

    Spread time(const std::string& strId) const { return spreadOf(nanoseconds.at(strId)); }
    Spread ratio(const std::string& strId, const std::string& strRival) const;
};

struct Effort
{
    std::size_t rounds = 11;
    std::int64_t batch = 30000000;  // nanoseconds that the rival's batch lasts at least
};

Result measure(const Work& work, const Setting& setting, const std::vector<ContestantKind>& kinds, const Effort& effort,
               std::mt19937& random);

}  // namespace bench

#endif  // VORN_BENCH_RUNNER_H
