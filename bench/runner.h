// SPDX-License-Identifier: MIT
//
// Rounds of measured batches in ever new random orders, and ratios that are formed within a round.

#ifndef VORN_BENCH_RUNNER_H
#define VORN_BENCH_RUNNER_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "work.h"
#include "worker.h"

namespace bench
{

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
    explicit Rounds(std::vector<Lane> lanes);

    // Per record.
    Spread nanoseconds(const std::string& strId) const;
    bool has(const std::string& strId) const { return m_nanoseconds.count(strId) != 0; }
    double allocations(const std::string& strId) const { return m_allocations.at(strId); }

    Spread ratio(const std::string& strId, const std::string& strRival) const;

private:
    std::map<std::string, std::vector<double>> m_nanoseconds;
    std::map<std::string, double> m_allocations;
};

// One work of all contestants in one setting, in batches that last the rival so many nanoseconds at least; the lanes
// are the contestants' ids.
Rounds runWork(const Work& work, const Setting& setting, std::int64_t batch, bool blKeptPeers);

}  // namespace bench

#endif  // VORN_BENCH_RUNNER_H
