// SPDX-License-Identifier: MIT
//
// SQLiteCpp with JsonCpp: statements made where they are needed, as its examples do.

#include <SQLiteCpp/SQLiteCpp.h>

#include "contestant.h"
#include "json_columns.h"

namespace bench
{

namespace
{

class SqliteCpp : public Contestant
{
public:
    explicit SqliteCpp(const std::string& strPath) : m_db(strPath, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
    {
        m_db.exec(kCreateTable);
    }

    sqlite3* connection() override { return m_db.getHandle(); }

    std::size_t list() override
    {
        clear();
        SQLite::Statement query(m_db, kSelect);
        return readRows(query);
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        SQLite::Statement query(m_db, kSelectPage);
        query.bind(1, static_cast<int>(kPage));
        query.bind(2, static_cast<std::int64_t>(offset));
        return readRows(query);
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        const Json::Value& jRec = input().records[i];
        const std::string strLimits = m_json.write(jRec["limits"]);
        const std::string strPorts = m_json.write(jRec["ports"]);
        SQLite::Statement insert(m_db, kInsert);
        insert.bindNoCopy(1, jRec["address"].asCString());
        insert.bindNoCopy(2, jRec["comment"].asCString());
        insert.bind(3, jRec["count"].asInt());
        insert.bind(4, static_cast<std::int64_t>(jRec["created"].asInt64()));
        insert.bind(5, jRec["enabled"].asBool() ? 1 : 0);
        insert.bindNoCopy(6, strLimits);
        insert.bindNoCopy(7, strPorts);
        insert.bindNoCopy(8, jRec["serial"].asCString());
        insert.exec();

        SQLite::Statement query(m_db, kSelectStored);
        query.bind(1, static_cast<std::int64_t>(m_db.getLastInsertRowid()));
        return readOne(query);
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        SQLite::Statement query(m_db, kSelectKey);
        query.bindNoCopy(1, input().keys[i]);
        return readOne(query);
    }

    std::size_t update(std::size_t i) override
    {
        const Json::Value& jRec = input().changes[i];
        SQLite::Statement update(m_db, kUpdate);
        update.bindNoCopy(1, jRec["comment"].asCString());
        update.bind(2, jRec["count"].asInt());
        update.bind(3, jRec["enabled"].asBool() ? 1 : 0);
        update.bindNoCopy(4, input().keys[i]);
        return static_cast<std::size_t>(update.exec());
    }

    std::size_t remove(std::size_t i) override
    {
        SQLite::Statement remove(m_db, kDelete);
        remove.bindNoCopy(1, input().keys[i]);
        return static_cast<std::size_t>(remove.exec());
    }

private:
    std::size_t readRows(SQLite::Statement& query)
    {
        return readAll([&] { return query.executeStep(); }, [&](Json::Value& jRec) { readRow(query, jRec); });
    }

    std::size_t readOne(SQLite::Statement& query)
    {
        if (!query.executeStep())
            return 0;
        readRow(query, m_jResult);
        return 1;
    }

    void readRow(SQLite::Statement& query, Json::Value& jRec)
    {
        jRec["address"] = query.getColumn(0).getText();
        jRec["comment"] = query.getColumn(1).getText();
        jRec["count"] = query.getColumn(2).getInt();
        jRec["created"] = static_cast<Json::Int64>(query.getColumn(3).getInt64());
        jRec["enabled"] = query.getColumn(4).getInt() != 0;
        readJson(query.getColumn(5), jRec["limits"]);
        readJson(query.getColumn(6), jRec["ports"]);
        jRec["serial"] = query.getColumn(7).getText();
    }

    void readJson(const SQLite::Column& column, Json::Value& jValue)
    {
        const char* szText = column.getText();
        m_json.read(szText, static_cast<std::size_t>(column.getBytes()), jValue);
    }

    SQLite::Database m_db;
    JsonColumns m_json;
};

}  // namespace

std::unique_ptr<Contestant> openSqliteCpp(const std::string& strPath)
{
    return std::make_unique<SqliteCpp>(strPath);
}

}  // namespace bench
