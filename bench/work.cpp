// SPDX-License-Identifier: MIT

#include "work.h"

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

// Operations before the measured ones: a whole turn of pages.
static constexpr std::size_t kWarmUp = kPages;

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
    m_prepared = kWarmUp + count;
    const bool blByRow = work.kind != WorkKind::List && work.kind != WorkKind::Page;
    const bool blExtra = work.kind == WorkKind::Create || work.kind == WorkKind::Delete;  // beyond the rows that stay
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; blByRow && i < m_prepared; ++i)
        indices.push_back(blExtra ? m_setting.rows + i : spread(i, m_setting.rows));
    m_input = makeInput(indices);
    m_contestant->give(m_input);
    removeExtraRows();
    if (work.kind == WorkKind::Delete)
        fillTable(m_contestant->connection(), m_setting.rows, m_prepared);
}

Cost Place::run()
{
    for (std::size_t i = m_pWork->kind == WorkKind::List ? kWarmUp - 1 : 0; i < kWarmUp; ++i)
        operate(i);
    const Cost cost = batch(kWarmUp, m_prepared - kWarmUp);
    if (m_pWork->kind == WorkKind::Create)
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

    std::size_t expected = count;
    if (m_pWork->kind == WorkKind::List)
        expected *= m_setting.rows;
    else if (m_pWork->kind == WorkKind::Page)
        expected *= kPage;
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
