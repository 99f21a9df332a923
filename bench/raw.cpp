// SPDX-License-Identifier: MIT
//
// The floor: SQLite alone runs the statements, whose texts were made before, and every row is dropped.

#include "contestant.h"
#include "sql_texts.h"
#include "statements.h"

namespace bench
{

namespace
{

class Raw : public Contestant
{
public:
    explicit Raw(const std::string& strPath) : m_db(strPath)
    {
        runSql(m_db, kCreateTable);
        for (std::size_t i = 0; i < kPages; ++i)
            m_pages.push_back(pageSql(pageOffset(i)));
    }

    sqlite3* connection() override { return m_db; }

    void give(Input& input) override
    {
        for (std::vector<Sql>* pTexts : {&m_creates, &m_fetches, &m_updates, &m_removes})
            pTexts->clear();
        JsonColumns json;
        for (std::size_t i = 0; i < input.records.size(); ++i)
        {
            m_creates.push_back(createSql(input.records[i], json));
            m_fetches.push_back(fetchSql(input.keys[i]));
            m_updates.push_back(updateSql(input.changes[i], input.keys[i]));
            m_removes.push_back(deleteSql(input.keys[i]));
        }
    }

    std::size_t list() override { return read(kSelect); }
    std::size_t page(std::size_t offset) override { return read(m_pages[offset / kPage].get()); }
    std::size_t create(std::size_t i) override { return read(m_creates[i].get()); }
    std::size_t fetch(std::size_t i) override { return read(m_fetches[i].get()); }
    std::size_t update(std::size_t i) override { return change(m_updates[i].get()); }
    std::size_t remove(std::size_t i) override { return change(m_removes[i].get()); }

private:
    static int dropRow(void* pCount, int, char**, char**)
    {
        ++*static_cast<std::size_t*>(pCount);
        return 0;
    }

    std::size_t read(const char* szSql)
    {
        std::size_t count = 0;
        m_db.check(sqlite3_exec(m_db, szSql, dropRow, &count, nullptr));
        return count;
    }

    std::size_t change(const char* szSql)
    {
        m_db.check(sqlite3_exec(m_db, szSql, nullptr, nullptr, nullptr));
        return static_cast<std::size_t>(sqlite3_changes(m_db));
    }

    Connection m_db;
    std::vector<Sql> m_pages;
    std::vector<Sql> m_creates;
    std::vector<Sql> m_fetches;
    std::vector<Sql> m_updates;
    std::vector<Sql> m_removes;
};

}  // namespace

std::unique_ptr<Contestant> openRaw(const std::string& strPath)
{
    return std::make_unique<Raw>(strPath);
}

}  // namespace bench
