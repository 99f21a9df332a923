// SPDX-License-Identifier: MIT

#include "growth.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace bench
{

std::string lane(const std::string& strId, std::size_t size)
{
    return strId + '@' + std::to_string(size);
}

namespace
{

// Enters one lane for each size, all served by one process in which taskOf(size) makes their tasks.
template <class Sizes, class TaskOf>
void enter(std::vector<Lane>& lanes, const std::string& strId, const Sizes& sizes, const TaskOf& taskOf)
{
    const auto setUp = [&]
    {
        Worker<Cost>::Tasks tasks;
        for (const std::size_t size : sizes)
            tasks.push_back(taskOf(size));
        return tasks;
    };
    const auto worker = std::make_shared<Worker<Cost>>(setUp);
    unsigned char task = 0;
    for (const std::size_t size : sizes)
        lanes.push_back({lane(strId, size), worker, task++});
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

}  // namespace

Rounds listByRows()
{
    std::vector<Lane> lanes;
    for (const ContestantKind& kind : contestantKinds())
    {
        std::shared_ptr<Place> other;  // made in the contestant's process
        const auto taskOf = [&](std::size_t rows)
        {
            if (!other)
                other = std::make_shared<Place>(kind, Setting{false, false, 10000});
            auto place = std::make_shared<Place>(kind, Setting{false, false, rows});
            place->prepare(work("list"), 1);
            return [place, other, rows] { return listAfterOtherWork(*place, *other, rows < 10000 ? 8 : 1); };
        };
        enter(lanes, kind.strId, kGrowthRows, taskOf);
    }
    return Rounds(std::move(lanes), kFewerRounds);
}

namespace
{

Json::Value valueOf(const std::string& strType, std::size_t row, std::size_t column)
{
    const auto n = static_cast<int>(row * 31 + column * 7);
    if (strType == "string")
        return "value " + std::to_string(n) + ", the customer's";
    if (strType == "int")
        return n;
    if (strType == "long long")
        return Json::Int64{1700000000000} + n;
    if (strType == "bool")
        return n % 3 != 0;
    Json::Value jValue(strType == "Json::arrayValue" ? Json::arrayValue : Json::objectValue);
    for (int i = 0; i < 3; ++i)
    {
        if (jValue.isArray())
            jValue.append(n + i);
        else
            jValue["limit" + std::to_string(i)] = n + i;
    }
    return jValue;
}

// A table of any number of members, in memory: its types are those of the table device, again and again.
Shape wideShape(std::size_t members)
{
    const std::vector<Shape::Column>& types = deviceShape().columns;
    Shape shape;
    shape.strTable = "wide" + std::to_string(members);
    shape.strCreate = "CREATE TABLE IF NOT EXISTS " + shape.strTable + " (";
    for (std::size_t i = 0; i < members; ++i)
    {
        const std::string& strType = types[i % types.size()].strType;
        char szName[32];
        std::snprintf(szName, sizeof szName, "member%03zu", i);
        const bool blText = strType == "string" || strType.compare(0, 6, "Json::") == 0;
        shape.strCreate += std::string(szName) + (blText ? " TEXT," : " INTEGER,");
        shape.columns.push_back({szName, strType});
    }
    shape.strCreate.back() = ')';
    return shape;
}

using OpenWide = std::unique_ptr<Contestant> (*)(const std::string& strPath, const Shape& shape);

OpenWide openWide(const std::string& strContestant)
{
    return strContestant == "library" ? openLibrary : strContestant == "table" ? openTable : openHandWrittenWide;
}

// Creates records of a wide table and lists them, in batches of as many records as hold about kBatchMembers members. A
// cost's records are members here.
class Wide
{
public:
    Wide(std::size_t members, OpenWide open)
        : m_shape(wideShape(members)), m_contestant(open(":memory:", m_shape)), m_members(members)
    {
        constexpr std::size_t kBatchMembers = 20000;
        for (std::size_t row = 0; row < kBatchMembers / members; ++row)
        {
            Json::Value jRec;
            for (std::size_t i = 0; i < members; ++i)
                jRec[m_shape.columns[i].strName] = valueOf(m_shape.columns[i].strType, row, i);
            m_input.records.push_back(std::move(jRec));
        }
        m_contestant->give(m_input);
    }

    // Into an empty table.
    Cost create()
    {
        runSql(m_contestant->connection(), "DELETE FROM " + m_shape.strTable);
        return measured([this] { return createAll(); });
    }

    // The same record again and again, so many times.
    Cost createOften(std::size_t count)
    {
        return measured(
            [&]
            {
                for (std::size_t i = 0; i < count; ++i)
                    m_contestant->create(0);
                m_contestant->clear();
                return count * m_members;
            });
    }

    // After create().
    Cost list()
    {
        listAll();  // see Place::run()
        return measured([this] { return listAll(); });
    }

    // The records stored last and listed must be those that were created.
    void prove()
    {
        createAll();
        m_contestant->list();
        const Json::Value jRecords = m_contestant->result();
        bool blSame = jRecords.size() == m_input.records.size();
        for (Json::ArrayIndex i = 0; i < m_input.records.size(); ++i)
            blSame = blSame && jRecords[i] == m_input.records[i];
        m_contestant->create(0);
        if (!blSame || m_contestant->result() != m_input.records[0])
            throw std::runtime_error("a wide record came back with other values");
    }

private:
    std::size_t createAll()
    {
        std::size_t records = 0;
        for (std::size_t i = 0; i < m_input.records.size(); ++i)
            records += m_contestant->create(i);
        m_contestant->clear();
        return records * m_members;
    }

    std::size_t listAll()
    {
        const std::size_t records = m_contestant->list();
        m_contestant->clear();
        return records * m_members;
    }

    Shape m_shape;
    std::unique_ptr<Contestant> m_contestant;
    std::size_t m_members;
    Input m_input;
};

// The table must hold the records before it is listed for the first time.
Rounds byMembers(Cost (Wide::*work)())
{
    std::vector<Lane> lanes;
    for (const ContestantKind& kind : wideKinds())
    {
        enter(lanes, kind.strId, kGrowthMembers,
              [&](std::size_t members)
              {
                  auto table = std::make_shared<Wide>(members, openWide(kind.strId));
                  table->prove();
                  table->create();
                  return [table, work] { return (table.get()->*work)(); };
              });
    }
    return Rounds(std::move(lanes), kFewerRounds);
}

// Counts by a filter of that size in an empty table, where the filter is all the work.
Cost countBySized(const std::string& strWork, const std::string& strContestant, std::size_t size, std::size_t count)
{
    const std::unique_ptr<Contestant> contestant = contestantKind(strContestant).open(":memory:");
    Json::Value jFilter;
    for (std::size_t i = 0; i < size; ++i)
    {
        if (strWork == "values")
            jFilter[kKey].append(keyOf(i));
        else
            jFilter["$or"][static_cast<Json::ArrayIndex>(i)][kKey] = keyOf(i);
    }
    return measured(
        [&]
        {
            for (std::size_t i = 0; i < count; ++i)
                contestant->count(jFilter);
            return count * size;
        });
}

}  // namespace

const std::vector<ContestantKind>& wideKinds()
{
    static const std::vector<ContestantKind> kinds{contestantKind("library"), contestantKind("table"),
                                                   contestantKind("percall")};
    return kinds;
}

bool isSized(const std::string& strWork)
{
    return strWork == "members" || strWork == "values" || strWork == "filters";
}

Cost runSized(const std::string& strWork, const std::string& strContestant, std::size_t size, std::size_t count)
{
    return strWork == "members" ? Wide(size, openWide(strContestant)).createOften(count)
                                : countBySized(strWork, strContestant, size, count);
}

Rounds createByMembers()
{
    return byMembers(&Wide::create);
}

Rounds listByMembers()
{
    return byMembers(&Wide::list);
}

std::map<std::string, long> peakOfListing(std::size_t rows)
{
    const support::TempFile file;
    const std::string& strPath = file.path();
    fillTable(Connection(strPath), 0, rows);
    std::map<std::string, long> peaks;
    for (const ContestantKind& kind : contestantKinds())
    {
        const auto setUp = [&]
        {
            std::shared_ptr<Contestant> contestant = kind.open(strPath);
            contestant->page(0);  // what is built once does not count
            contestant->clear();
            const auto task = [contestant, rows]
            {
                const long before = memoryStatus("VmRSS:");
                if (contestant->list() != rows)
                    throw std::runtime_error("not all rows were listed");
                return memoryStatus("VmHWM:") - before;
            };
            return Worker<long>::Tasks{task};
        };
        peaks[kind.strId] = Worker<long>(setUp).run();
    }
    return peaks;
}

}  // namespace bench
