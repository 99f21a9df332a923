// SPDX-License-Identifier: MIT

#include "runner.h"

#include <algorithm>
#include <memory>
#include <random>

namespace bench
{

namespace
{

Spread spreadOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    const double median = values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
    return {median, values.front(), values.back()};
}

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

Rounds::Rounds(std::vector<Lane> lanes, std::size_t rounds)
{
    static std::mt19937 random(20240229);
    // What else the machine does can only slow a batch, so the fastest of a few is nearest to what the work costs.
    constexpr int kBatches = 3;
    for (std::size_t round = 0; round < rounds; ++round)
    {
        std::map<std::string, double> fastest;
        for (int i = 0; i < kBatches; ++i)
        {
            std::shuffle(lanes.begin(), lanes.end(), random);
            for (const Lane& lane : lanes)
            {
                const Cost cost = lane.worker->run(lane.task);
                const auto records = static_cast<double>(cost.records);
                const double nanoseconds = static_cast<double>(cost.nanoseconds) / records;
                const auto it = fastest.emplace(lane.strId, nanoseconds).first;
                it->second = std::min(it->second, nanoseconds);
                m_allocations[lane.strId] = static_cast<double>(cost.allocations) / records;
            }
        }
        for (const auto& [strId, nanoseconds] : fastest)
            m_nanoseconds[strId].push_back(nanoseconds);
    }
}

Spread Rounds::nanoseconds(const std::string& strId) const
{
    return spreadOf(m_nanoseconds.at(strId));
}

Spread Rounds::ratio(const std::string& strId, const std::string& strRival) const
{
    std::vector<double> ratios = m_nanoseconds.at(strId);
    const std::vector<double>& rival = m_nanoseconds.at(strRival);
    for (std::size_t round = 0; round < ratios.size(); ++round)
        ratios[round] /= rival[round];
    return spreadOf(std::move(ratios));
}

Rounds runWork(const Work& work, const Setting& setting, std::int64_t batch, bool blMain)
{
    const auto calibrate = [&]
    {
        const auto task = [&]
        {
            Place rival(contestantKind(work.strRival), setting);
            return operationsPerBatch(rival, work, batch);
        };
        return Worker<std::size_t>::Tasks{task};
    };
    const std::size_t count = Worker<std::size_t>(calibrate).run();

    std::vector<Lane> lanes;
    for (const ContestantKind& kind : work.contestants(blMain))
    {
        const auto setUp = [&]
        {
            auto place = std::make_shared<Place>(kind, setting);
            place->prepare(work, count);
            return Worker<Cost>::Tasks{[place] { return place->run(); }};
        };
        lanes.push_back({kind.strId, std::make_shared<Worker<Cost>>(setUp)});
    }
    return Rounds(std::move(lanes), blMain ? kRounds : kFewerRounds);
}

}  // namespace bench
