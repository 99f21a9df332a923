// SPDX-License-Identifier: MIT

#include "growth.h"

#include <memory>

#include "measure.h"
#include "wide.h"

namespace bench
{

const std::vector<std::size_t>& growthRows()
{
    static const std::vector<std::size_t> rows{1000, 10000, 100000};
    return rows;
}

const std::vector<std::size_t>& growthMembers()
{
    static const std::vector<std::size_t> members{4, 16, 64, 256};
    return members;
}

std::string lane(const std::string& strId, std::size_t size)
{
    return strId + '@' + std::to_string(size);
}

namespace
{

void enterSizes(const std::string& strId, const std::vector<std::size_t>& sizes,
                const std::shared_ptr<Worker<Cost>>& worker, std::vector<Lane>& lanes)
{
    for (std::size_t i = 0; i < sizes.size(); ++i)
        lanes.push_back({lane(strId, sizes[i]), worker, static_cast<unsigned char>(i)});
}

// In a loop of its own a short list would find all its memory in the processor's caches, and a long one never. So each
// measured list comes after another, of 10,000 records, which is not measured.
Cost listAfterOtherWork(Place& place, Place& other, std::size_t times)
{
    Cost sum;
    for (std::size_t i = 0; i < times; ++i)
    {
        other.contestant().list();
        other.contestant().clear();
        mergeFreedMemory();
        const Cost cost = place.runOnce(1);
        const std::int64_t timeBefore = cpuTime();
        mergeFreedMemory();  // the last part of freeing the records
        sum.nanoseconds += cost.nanoseconds + cpuTime() - timeBefore;
        sum.allocations += cost.allocations;
        sum.records += cost.records;
    }
    return sum;
}

std::size_t repeats(std::size_t rows)
{
    return rows < 10000 ? 8 : 1;
}

}  // namespace

Rounds listByRows(const std::vector<ContestantKind>& kinds, const Effort& effort, std::mt19937& random)
{
    std::vector<Lane> lanes;
    for (const ContestantKind& kind : kinds)
    {
        const auto setUp = [&]
        {
            auto other = std::make_shared<Place>(kind, Setting{false, false, 10000});
            Worker<Cost>::Tasks tasks;
            for (const std::size_t rows : growthRows())
            {
                auto place = std::make_shared<Place>(kind, Setting{false, false, rows});
                place->prepare(work("list"), 1);
                tasks.push_back([place, other, rows] { return listAfterOtherWork(*place, *other, repeats(rows)); });
            }
            return tasks;
        };
        enterSizes(kind.strId, growthRows(), std::make_shared<Worker<Cost>>(setUp), lanes);
    }
    return Rounds(std::move(lanes), effort.rounds, random);
}

namespace
{

using OpenWide = std::unique_ptr<Wide> (*)(std::size_t members);

Rounds byMembers(Cost (Wide::*work)(), const Effort& effort, std::mt19937& random)
{
    std::vector<Lane> lanes;
    const auto enter = [&](const std::string& strId, OpenWide open)
    {
        const auto setUp = [&]
        {
            Worker<Cost>::Tasks tasks;
            for (const std::size_t members : growthMembers())
            {
                std::shared_ptr<Wide> table = open(members);
                table->prove();
                tasks.push_back([table, work] { return (table.get()->*work)(); });
            }
            return tasks;
        };
        enterSizes(strId, growthMembers(), std::make_shared<Worker<Cost>>(setUp), lanes);
    };
    enter("library", openWideLibrary);
    enter("percall", openWideHandWritten);
    return Rounds(std::move(lanes), effort.rounds, random);
}

}  // namespace

Rounds createByMembers(const Effort& effort, std::mt19937& random)
{
    return byMembers(&Wide::create, effort, random);
}

Rounds listByMembers(const Effort& effort, std::mt19937& random)
{
    return byMembers(&Wide::list, effort, random);
}

}  // namespace bench
