// SPDX-License-Identifier: MIT
//
// The floor: SQLite alone runs the statements, whose texts were made before, and every row is dropped.

#include "connection.h"
#include "contestant.h"
#include "json_columns.h"

namespace bench
{

namespace
{

std::string format(const char* szFormat, ...)
{
    va_list args;
    va_start(args, szFormat);
    char* szText = sqlite3_vmprintf(szFormat, args);
    va_end(args);
    std::string strText = szText;
    sqlite3_free(szText);
    return strText;
}

class Raw : public Contestant
{
public:
    explicit Raw(const std::string& strPath) : m_db(strPath)
    {
        runSql(m_db, kCreateTable);
        for (std::size_t i = 0; i < kPages; ++i)
            m_pages.push_back(std::string(kSelect) + " LIMIT " + std::to_string(kPage) + " OFFSET " +
                              std::to_string(pageOffset(i)));
    }

    sqlite3* connection() override { return m_db; }

    void give(Input& input) override
    {
        m_creates.clear();
        m_fetches.clear();
        m_updates.clear();
        m_removes.clear();
        JsonColumns json;
        for (std::size_t i = 0; i < input.records.size(); ++i)
        {
            const Json::Value& jRec = input.records[i];
            const char* szKey = input.keys[i].c_str();
            m_creates.push_back(format(
                "INSERT INTO device (address,comment,count,created,enabled,limits,ports,serial) VALUES "
                "(%Q,%Q,%d,%lld,%d,%Q,%Q,%Q);SELECT address,comment,count,created,enabled,limits,ports,serial FROM "
                "device WHERE rowid = last_insert_rowid()",
                jRec["address"].asCString(), jRec["comment"].asCString(), jRec["count"].asInt(),
                static_cast<sqlite3_int64>(jRec["created"].asInt64()), jRec["enabled"].asBool() ? 1 : 0,
                json.write(jRec["limits"]).c_str(), json.write(jRec["ports"]).c_str(), jRec["serial"].asCString()));
            m_fetches.push_back(format("%s WHERE serial = %Q", kSelect, szKey));
            const Json::Value& jChanges = input.changes[i];
            m_updates.push_back(format("UPDATE device SET comment = %Q, count = %d, enabled = %d WHERE serial = %Q",
                                       jChanges["comment"].asCString(), jChanges["count"].asInt(),
                                       jChanges["enabled"].asBool() ? 1 : 0, szKey));
            m_removes.push_back(format("DELETE FROM device WHERE serial = %Q", szKey));
        }
    }

    std::size_t list() override { return read(kSelect); }
    std::size_t page(std::size_t offset) override { return read(m_pages[offset / kPage].c_str()); }
    std::size_t create(std::size_t i) override { return read(m_creates[i].c_str()); }
    std::size_t fetch(std::size_t i) override { return read(m_fetches[i].c_str()); }
    std::size_t update(std::size_t i) override { return change(m_updates[i].c_str()); }
    std::size_t remove(std::size_t i) override { return change(m_removes[i].c_str()); }

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
    std::vector<std::string> m_pages;
    std::vector<std::string> m_creates;
    std::vector<std::string> m_fetches;
    std::vector<std::string> m_updates;
    std::vector<std::string> m_removes;
};

}  // namespace

std::unique_ptr<Contestant> openRaw(const std::string& strPath)
{
    return std::make_unique<Raw>(strPath);
}

}  // namespace bench
