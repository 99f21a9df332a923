// SPDX-License-Identifier: MIT

#include "runner.h"

#include <algorithm>
#include <memory>

namespace bench
{

Spread spreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    const double median = values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
    return {median, values.front(), values.back()};
}

Spread Result::ratio(const std::string& strId, const std::string& strRival) const
{
    std::vector<double> ratios;
    const std::vector<double>& own = nanoseconds.at(strId);
    const std::vector<double>& rival = nanoseconds.at(strRival);
    for (std::size_t round = 0; round < own.size(); ++round)
        ratios.push_back(own[round] / rival[round]);
    return spreadOf(std::move(ratios));
}

namespace
{

// How many operations fill a batch. Pages come in whole turns, so that every batch has the same offsets.
std::size_t operationsPerBatch(Place& place, const Work& work, std::int64_t wanted)
{
    constexpr std::size_t kMost = 20000;
    const auto wholeTurns = [&work](std::size_t count)
    { return work.kind == WorkKind::Page ? (count + kPages - 1) / kPages * kPages : count; };
    std::size_t count = wholeTurns(1);
    for (;;)
    {
        place.prepare(work, count);
        const std::int64_t taken = place.run().nanoseconds;
        if (taken >= wanted || count >= kMost)
            return count;
        const double factor = std::clamp(1.1 * static_cast<double>(wanted) / static_cast<double>(taken + 1), 1.5, 20.0);
        count = std::min(wholeTurns(static_cast<std::size_t>(static_cast<double>(count) * factor) + 1), kMost);
    }
}

}  // namespace

Result measure(const Work& work, const Setting& setting, const std::vector<ContestantKind>& kinds, const Effort& effort,
               std::mt19937& random)
{
    std::size_t count = 0;
    {
        Place rival(contestantKind(work.strRival), setting);
        count = operationsPerBatch(rival, work, effort.batch);
    }

    std::vector<std::pair<std::string, std::unique_ptr<Place>>> places;
    for (const ContestantKind& kind : kinds)
    {
        places.emplace_back(kind.strId, std::make_unique<Place>(kind, setting));
        places.back().second->prepare(work, count);
    }

    Result result;
    result.pWork = &work;
    result.setting = setting;
    for (std::size_t round = 0; round < effort.rounds; ++round)
    {
        std::shuffle(places.begin(), places.end(), random);
        for (const auto& [strId, pPlace] : places)
        {
            const Cost cost = pPlace->run();
            const auto records = static_cast<double>(cost.records);
            result.nanoseconds[strId].push_back(static_cast<double>(cost.nanoseconds) / records);
            result.allocations[strId] = static_cast<double>(cost.allocations) / records;
        }
    }
    return result;
}

}  // namespace bench
