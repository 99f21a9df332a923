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

// Where all contestants do all works in the main setting, and elsewhere.
constexpr std::size_t kRounds = 11;
constexpr std::size_t kFewerRounds = 5;

// What the lanes cost, round by round.
class Rounds
{
public:
    Rounds(std::vector<Lane> lanes, std::size_t rounds);

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
// are the contestants' ids. In the main setting with all rounds and the peers' kept forms.
Rounds runWork(const Work& work, const Setting& setting, std::int64_t batch, bool blMain);

}  // namespace bench

#endif  // VORN_BENCH_RUNNER_H
