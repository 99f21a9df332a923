// SPDX-License-Identifier: MIT
//
// SQLiteCpp with JsonCpp.

#include <SQLiteCpp/SQLiteCpp.h>

#include "contestant.h"
#include "json_columns.h"
#include "peer_statement.h"

namespace bench
{

namespace
{

template <bool blKept>
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

    std::size_t page(std::size_t offset) override { return pageOf(kSelectPage, offset); }

    std::size_t sorted(std::size_t offset) override { return pageOf(kSelectSorted, offset); }

    std::size_t filter(std::size_t window) override
    {
        clear();
        const Window& wanted = input().windows[window];
        SQLite::Statement query(m_db, kSelectWindow);
        query.bindNoCopy(1, wanted.strFrom);
        query.bindNoCopy(2, wanted.strTo);
        query.bind(3, static_cast<std::int64_t>(wanted.iBefore));
        query.bindNoCopy(4, kCommentPattern);
        return readRows(query);
    }

    std::size_t count(std::size_t window) override
    {
        const Window& wanted = input().windows[window];
        SQLite::Statement query(m_db, kCountWindow);
        query.bindNoCopy(1, wanted.strFrom);
        query.bindNoCopy(2, wanted.strTo);
        query.executeStep();
        return static_cast<std::size_t>(query.getColumn(0).getInt64());
    }

    std::size_t createAll(std::size_t i) override
    {
        SQLite::Transaction transaction(m_db);
        SQLite::Statement statement(m_db, kInsert);
        for (const Json::Value& jRec : input().arrays[i])
        {
            insert(statement, jRec);
            statement.reset();
        }
        transaction.commit();
        return input().arrays[i].size();
    }

    std::size_t forEach(const Visit& visit) override
    {
        SQLite::Statement query(m_db, kSelect);
        return visitAll(
            visit, [&] { return query.executeStep(); }, [&](Json::Value& jRec) { readRow(query, jRec); });
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        run(m_insert, kInsert, [&](SQLite::Statement& statement) { return insert(statement, input().records[i]); });
        return run(m_stored, kSelectStored,
                   [&](SQLite::Statement& query)
                   {
                       query.bind(1, static_cast<std::int64_t>(m_db.getLastInsertRowid()));
                       return readOne(query);
                   });
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        return run(m_fetch, kSelectKey,
                   [&](SQLite::Statement& query)
                   {
                       query.bindNoCopy(1, input().keys[i]);
                       return readOne(query);
                   });
    }

    std::size_t update(std::size_t i) override
    {
        const Json::Value& jRec = input().changes[i];
        return run(m_update, kUpdate,
                   [&](SQLite::Statement& update)
                   {
                       update.bindNoCopy(1, jRec["comment"].asCString());
                       update.bind(2, jRec["count"].asInt());
                       update.bind(3, jRec["enabled"].asBool() ? 1 : 0);
                       update.bindNoCopy(4, input().keys[i]);
                       return static_cast<std::size_t>(update.exec());
                   });
    }

    std::size_t remove(std::size_t i) override
    {
        return run(m_delete, kDelete,
                   [&](SQLite::Statement& remove)
                   {
                       remove.bindNoCopy(1, input().keys[i]);
                       return static_cast<std::size_t>(remove.exec());
                   });
    }

private:
    using Kept = PeerStatement<SQLite::Statement, blKept>;

    template <class Function>
    std::size_t run(Kept& kept, const char* szSql, const Function& function)
    {
        return kept.use([&] { return SQLite::Statement(m_db, szSql); },
                        [&](SQLite::Statement& statement)
                        {
                            const std::size_t records = function(statement);
                            if (blKept)
                                statement.reset();
                            return records;
                        });
    }

    std::size_t insert(SQLite::Statement& statement, const Json::Value& jRec)
    {
        const std::string strLimits = m_json.write(jRec["limits"]);
        const std::string strPorts = m_json.write(jRec["ports"]);
        statement.bindNoCopy(1, jRec["address"].asCString());
        statement.bindNoCopy(2, jRec["comment"].asCString());
        statement.bind(3, jRec["count"].asInt());
        statement.bind(4, static_cast<std::int64_t>(jRec["created"].asInt64()));
        statement.bind(5, jRec["enabled"].asBool() ? 1 : 0);
        statement.bindNoCopy(6, strLimits);
        statement.bindNoCopy(7, strPorts);
        statement.bindNoCopy(8, jRec["serial"].asCString());
        return static_cast<std::size_t>(statement.exec());
    }

    std::size_t pageOf(const char* szSql, std::size_t offset)
    {
        clear();
        SQLite::Statement query(m_db, szSql);
        query.bind(1, static_cast<int>(kPage));
        query.bind(2, static_cast<std::int64_t>(offset));
        return readRows(query);
    }

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
    Kept m_insert;
    Kept m_stored;
    Kept m_fetch;
    Kept m_update;
    Kept m_delete;
};

}  // namespace

std::unique_ptr<Contestant> openSqliteCpp(const std::string& strPath, bool blKept)
{
    if (blKept)
        return std::make_unique<SqliteCpp<true>>(strPath);
    return std::make_unique<SqliteCpp<false>>(strPath);
}

}  // namespace bench
