// SPDX-License-Identifier: MIT

#include "growth.h"

#include <algorithm>
#include <memory>

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

Rounds listByRows(const std::vector<ContestantKind>& kinds, const Effort& effort, std::mt19937& random)
{
    std::vector<Lane> lanes;
    for (const ContestantKind& kind : kinds)
    {
        for (const std::size_t rows : growthRows())
            lanes.push_back(workLane(lane(kind.strId, rows), kind, work("list"), Setting{false, false, rows},
                                     std::max<std::size_t>(1, 20000 / rows)));
    }
    return Rounds(std::move(lanes), effort.rounds, random);
}

namespace
{

using OpenWide = std::unique_ptr<Wide> (*)(std::size_t members);

Rounds byMembers(Cost (Wide::*work)(), const Effort& effort, std::mt19937& random)
{
    std::vector<Lane> lanes;
    const auto enter = [&](const std::string& strId, std::size_t members, OpenWide open)
    {
        const auto setUp = [&]
        {
            std::shared_ptr<Wide> table = open(members);
            table->prove();
            return [table, work] { return (table.get()->*work)(); };
        };
        lanes.push_back({lane(strId, members), std::make_shared<Worker<Cost>>(setUp)});
    };
    for (const std::size_t members : growthMembers())
    {
        enter("library", members, openWideLibrary);
        enter("percall", members, openWideHandWritten);
    }
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
