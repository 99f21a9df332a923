// SPDX-License-Identifier: MIT

#include "work.h"

#include <algorithm>
#include <stdexcept>

namespace bench
{

const std::vector<Work>& works()
{
    static const std::vector<Work> all{
        {WorkKind::List, "list", "list all", "kept"},
        {WorkKind::Page, "page", "list a page of 50", "percall"},
        {WorkKind::Create, "create", "create and get back", "percall"},
        {WorkKind::Fetch, "fetch", "fetch by key", "percall"},
        {WorkKind::Update, "update", "update by filter", "percall"},
        {WorkKind::Delete, "delete", "delete by name", "percall"},
        {WorkKind::Sorted, "sorted", "list a sorted page of 50", "kept"},
        {WorkKind::Filter, "filter", "list 50 by four conditions", "kept"},
        {WorkKind::Count, "count", "count by filter", "kept"},
        {WorkKind::Bulk, "bulk", "create 10,000 in one transaction", "kept"},
        {WorkKind::ForEach, "foreach", "visit each of 100,000", "kept", 100000},
    };
    return all;
}

const Work& work(const std::string& strId)
{
    for (const Work& work : works())
    {
        if (work.strId == strId)
            return work;
    }
    throw std::invalid_argument("no work '" + strId + "'");
}

std::string nameOf(const Setting& setting)
{
    return std::string(setting.blFile ? "file" : "memory") +
           (setting.blTransaction ? ", one transaction" : ", autocommit");
}

std::vector<ContestantKind> Work::contestants(bool blKeptPeers) const
{
    std::vector<ContestantKind> all = contestantKinds();
    if (blKeptPeers && isSingle())
        all.insert(all.end(), keptPeers().begin(), keptPeers().end());
    all.erase(std::remove_if(all.begin(), all.end(), [this](const ContestantKind& one) { return !one.does(kind); }),
              all.end());
    return all;
}

std::size_t Work::records(std::size_t rowsOfTable) const
{
    const bool blPage = kind == WorkKind::Page || kind == WorkKind::Sorted || kind == WorkKind::Filter;
    return isWhole() ? rowsOfTable : blPage ? kPage : 1;
}

Place::Place(const ContestantKind& kind, const Setting& setting) : m_setting(setting)
{
    std::string strPath = ":memory:";
    if (setting.blFile)
    {
        m_file = std::make_unique<support::TempFile>();
        strPath = m_file->path();
    }
    m_contestant = kind.open(strPath);
    sqlite3* const pDb = m_contestant->connection();
    if (setting.blFile)
    {
        runSql(pDb, "PRAGMA journal_mode=WAL");
        runSql(pDb, "PRAGMA synchronous=OFF");
    }
    fillTable(pDb, 0, setting.rows);
}

void Place::prepare(const Work& work, std::size_t count)
{
    m_pWork = &work;
    m_warmUp = work.isWhole() ? 1 : kPages;  // a whole turn of pages
    m_prepared = m_warmUp + count;
    const bool blByRow = work.isSingle();
    const bool blExtra = work.kind == WorkKind::Create || work.kind == WorkKind::Delete;  // beyond the rows that stay
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; blByRow && i < m_prepared; ++i)
        indices.push_back(blExtra ? m_setting.rows + i : spread(i, m_setting.rows));
    m_input = makeInput(indices);
    for (std::size_t i = 1; work.kind == WorkKind::Bulk && i <= m_prepared; ++i)
        m_input.arrays.push_back(recordsOf(i * m_setting.rows, m_setting.rows));
    m_contestant->give(m_input);
    removeExtraRows();
    if (work.kind == WorkKind::Delete)
        fillTable(m_contestant->connection(), m_setting.rows, m_prepared);
}

Cost Place::run()
{
    for (std::size_t i = 0; i < m_warmUp; ++i)
        operate(i);
    const Cost cost = batch(m_warmUp, m_prepared - m_warmUp);
    if (m_pWork->kind == WorkKind::Create || m_pWork->kind == WorkKind::Bulk)
        removeExtraRows();
    else if (m_pWork->kind == WorkKind::Delete)
        fillTable(m_contestant->connection(), m_setting.rows, m_prepared);
    if (m_setting.blFile)
        runSql(m_contestant->connection(), "PRAGMA wal_checkpoint(TRUNCATE)");
    return cost;
}

std::size_t Place::operate(std::size_t i)
{
    Contestant& contestant = *m_contestant;
    switch (m_pWork->kind)
    {
        case WorkKind::List:
            return contestant.list();
        case WorkKind::Page:
            return contestant.page(pageOffset(i));
        case WorkKind::Create:
            return contestant.create(i);
        case WorkKind::Fetch:
            return contestant.fetch(i);
        case WorkKind::Update:
            return contestant.update(i);
        case WorkKind::Delete:
            return contestant.remove(i);
        case WorkKind::Sorted:
            return contestant.sorted(pageOffset(i));
        case WorkKind::Filter:
            return contestant.filter(i % kPages);
        case WorkKind::Count:
            return contestant.count(i % kPages) == m_input.windows[i % kPages].enabled ? 1 : 0;
        case WorkKind::Bulk:
            return contestant.createAll(i);
        case WorkKind::ForEach:
            return contestant.forEach([](const Json::Value& jRec) { return !jRec.empty(); });
    }
    throw std::logic_error("no such work");
}

Cost Place::batch(std::size_t first, std::size_t count)
{
    if (m_pWork == nullptr || first + count > m_prepared)
        throw std::logic_error("a batch needs prepared input");
    sqlite3* const pDb = m_contestant->connection();
    if (m_setting.blTransaction)
        runSql(pDb, "BEGIN");

    const Cost cost = measured(
        [&]
        {
            std::size_t records = 0;
            for (std::size_t i = first; i < first + count; ++i)
                records += operate(i);
            m_contestant->clear();
            return records;
        });

    if (m_setting.blTransaction)
        runSql(pDb, "COMMIT");

    const std::size_t expected = count * m_pWork->records(m_setting.rows);
    if (cost.records != expected)
        throw std::runtime_error(m_pWork->strId + ": " + std::to_string(cost.records) + " records instead of " +
                                 std::to_string(expected));
    return cost;
}

void Place::removeExtraRows()
{
    runSql(m_contestant->connection(), "DELETE FROM device WHERE serial >= '" + keyOf(m_setting.rows) + "'");
}

}  // namespace bench
