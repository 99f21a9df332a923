// SPDX-License-Identifier: MIT
//
// Rounds of measured batches in ever new random orders, and ratios that are formed within a round.

#ifndef VORN_BENCH_RUNNER_H
#define VORN_BENCH_RUNNER_H

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "work.h"
#include "worker.h"

namespace bench
{

struct Effort
{
    std::size_t rounds = 11;
    std::int64_t batch = 30000000;  // nanoseconds that the rival's batch lasts at least
};

struct Spread
{
    double median = 0;
    double least = 0;
    double most = 0;
};

// What takes its turns in every round.
struct Lane
{
    std::string strId;
    std::shared_ptr<Worker<Cost>> worker;
    unsigned char task = 0;
};

// What the lanes cost, round by round.
class Rounds
{
public:
    Rounds(std::vector<Lane> lanes, std::size_t rounds, std::mt19937& random);

    bool has(const std::string& strId) const { return m_nanoseconds.count(strId) != 0; }

    // Per record.
    Spread nanoseconds(const std::string& strId) const;
    double allocations(const std::string& strId) const { return m_allocations.at(strId); }

    Spread ratio(const std::string& strId, const std::string& strRival) const;

private:
    std::map<std::string, std::vector<double>> m_nanoseconds;
    std::map<std::string, double> m_allocations;
};

// One work in one setting; the lanes are the contestants' ids.
Rounds runWork(const Work& work, const Setting& setting, const std::vector<ContestantKind>& kinds, const Effort& effort,
               std::mt19937& random);

}  // namespace bench

#endif  // VORN_BENCH_RUNNER_H
