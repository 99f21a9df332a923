// SPDX-License-Identifier: MIT
//
// What a service's programmer writes with SQLite's and JsonCpp's own interfaces: typed column access, values bound. In
// two variants: every statement prepared where it is needed, and every statement prepared once and kept.

#include <stdexcept>
#include <utility>

#include "contestant.h"
#include "json_columns.h"
#include "statements.h"

namespace bench
{

namespace
{

// A statement that is prepared at the first call and kept, or prepared for one call and finalized after it.
template <bool blKept>
class Prepared
{
public:
    Prepared(sqlite3* pDb, const char* szSql) : m_pDb(pDb), m_szSql(szSql) {}
    ~Prepared() { sqlite3_finalize(m_pStatement); }
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;

    sqlite3_stmt* begin()
    {
        if (m_pStatement == nullptr &&
            (blKept ? sqlite3_prepare_v3(m_pDb, m_szSql, -1, SQLITE_PREPARE_PERSISTENT, &m_pStatement, nullptr)
                    : sqlite3_prepare_v2(m_pDb, m_szSql, -1, &m_pStatement, nullptr)) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(m_pDb));
        return m_pStatement;
    }

    void end()
    {
        if (blKept)
            sqlite3_reset(m_pStatement);
        else
            sqlite3_finalize(std::exchange(m_pStatement, nullptr));
    }

private:
    sqlite3* m_pDb;
    const char* m_szSql;
    sqlite3_stmt* m_pStatement = nullptr;
};

// One use of a statement.
template <class Statement>
class Use
{
public:
    explicit Use(Statement& statement) : m_statement(statement), m_pStatement(statement.begin()) {}
    ~Use() { m_statement.end(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    operator sqlite3_stmt*() const { return m_pStatement; }

    // The text must outlive the use.
    void bind(int i, const std::string& strText)
    {
        sqlite3_bind_text(m_pStatement, i, strText.data(), static_cast<int>(strText.size()), SQLITE_STATIC);
    }
    void bind(int i, const Json::Value& jText)
    {
        const char* szBegin = nullptr;
        const char* szEnd = nullptr;
        if (!jText.getString(&szBegin, &szEnd))
            throw std::runtime_error("not a string");
        sqlite3_bind_text(m_pStatement, i, szBegin, static_cast<int>(szEnd - szBegin), SQLITE_STATIC);
    }
    void bind(int i, int iValue) { sqlite3_bind_int(m_pStatement, i, iValue); }
    void bind(int i, sqlite3_int64 iValue) { sqlite3_bind_int64(m_pStatement, i, iValue); }

private:
    Statement& m_statement;
    sqlite3_stmt* m_pStatement;
};

template <class Statement>
class HandWritten : public Contestant
{
public:
    explicit HandWritten(const std::string& strPath) : m_db(strPath) { runSql(m_db, kCreateTable); }

    sqlite3* connection() override { return m_db; }

    std::size_t list() override
    {
        clear();
        Use<Statement> use(m_list);
        return readRows(use);
    }

    std::size_t page(std::size_t offset) override { return pageOf(m_page, offset); }

    std::size_t sorted(std::size_t offset) override { return pageOf(m_sorted, offset); }

    std::size_t filter(std::size_t window) override
    {
        clear();
        const Window& wanted = input().windows[window];
        const std::string strPattern = kCommentPattern;
        Use<Statement> use(m_filter);
        use.bind(1, wanted.strFrom);
        use.bind(2, wanted.strTo);
        use.bind(3, static_cast<sqlite3_int64>(wanted.iBefore));
        use.bind(4, strPattern);
        return readRows(use);
    }

    std::size_t count(std::size_t window) override
    {
        const Window& wanted = input().windows[window];
        Use<Statement> use(m_count);
        use.bind(1, wanted.strFrom);
        use.bind(2, wanted.strTo);
        return step(use) ? static_cast<std::size_t>(sqlite3_column_int64(use, 0)) : 0;
    }

    std::size_t createAll(std::size_t i) override
    {
        runSql(m_db, "BEGIN");
        for (const Json::Value& jRec : input().arrays[i])
            insert(jRec);
        runSql(m_db, "COMMIT");
        return input().arrays[i].size();
    }

    std::size_t forEach(const Visit& visit) override
    {
        Use<Statement> use(m_list);
        return visitAll(
            visit, [&] { return step(use); }, [&](Json::Value& jRec) { readRow(use, jRec); });
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        insert(input().records[i]);
        Use<Statement> use(m_stored);
        use.bind(1, sqlite3_last_insert_rowid(m_db));
        return readOne(use);
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        Use<Statement> use(m_fetch);
        use.bind(1, input().keys[i]);
        return readOne(use);
    }

    std::size_t update(std::size_t i) override
    {
        const Json::Value& jRec = input().changes[i];
        Use<Statement> use(m_update);
        use.bind(1, jRec["comment"]);
        use.bind(2, jRec["count"].asInt());
        use.bind(3, jRec["enabled"].asBool() ? 1 : 0);
        use.bind(4, input().keys[i]);
        m_db.check(sqlite3_step(use), SQLITE_DONE);
        return static_cast<std::size_t>(sqlite3_changes(m_db));
    }

    std::size_t remove(std::size_t i) override
    {
        Use<Statement> use(m_delete);
        use.bind(1, input().keys[i]);
        m_db.check(sqlite3_step(use), SQLITE_DONE);
        return static_cast<std::size_t>(sqlite3_changes(m_db));
    }

private:
    void insert(const Json::Value& jRec)
    {
        const std::string strLimits = m_json.write(jRec["limits"]);
        const std::string strPorts = m_json.write(jRec["ports"]);
        Use<Statement> use(m_insert);
        use.bind(1, jRec["address"]);
        use.bind(2, jRec["comment"]);
        use.bind(3, jRec["count"].asInt());
        use.bind(4, static_cast<sqlite3_int64>(jRec["created"].asInt64()));
        use.bind(5, jRec["enabled"].asBool() ? 1 : 0);
        use.bind(6, strLimits);
        use.bind(7, strPorts);
        use.bind(8, jRec["serial"]);
        m_db.check(sqlite3_step(use), SQLITE_DONE);
    }

    std::size_t pageOf(Statement& statement, std::size_t offset)
    {
        clear();
        Use<Statement> use(statement);
        use.bind(1, static_cast<int>(kPage));
        use.bind(2, static_cast<sqlite3_int64>(offset));
        return readRows(use);
    }

    bool step(sqlite3_stmt* pStatement)
    {
        const int err = sqlite3_step(pStatement);
        if (err != SQLITE_ROW)
            m_db.check(err, SQLITE_DONE);
        return err == SQLITE_ROW;
    }

    std::size_t readRows(sqlite3_stmt* pStatement)
    {
        return readAll([&] { return step(pStatement); }, [&](Json::Value& jRec) { readRow(pStatement, jRec); });
    }

    std::size_t readOne(sqlite3_stmt* pStatement)
    {
        if (!step(pStatement))
            return 0;
        readRow(pStatement, m_jResult);
        return 1;
    }

    void readRow(sqlite3_stmt* pStatement, Json::Value& jRec)
    {
        jRec["address"] = columnText(pStatement, 0);
        jRec["comment"] = columnText(pStatement, 1);
        jRec["count"] = sqlite3_column_int(pStatement, 2);
        jRec["created"] = static_cast<Json::Int64>(sqlite3_column_int64(pStatement, 3));
        jRec["enabled"] = sqlite3_column_int(pStatement, 4) != 0;
        readJson(pStatement, 5, jRec["limits"]);
        readJson(pStatement, 6, jRec["ports"]);
        jRec["serial"] = columnText(pStatement, 7);
    }

    void readJson(sqlite3_stmt* pStatement, int i, Json::Value& jValue)
    {
        const char* szText = columnText(pStatement, i);
        m_json.read(szText, static_cast<std::size_t>(sqlite3_column_bytes(pStatement, i)), jValue);
    }

    Connection m_db;
    JsonColumns m_json;
    Statement m_list{m_db, kSelect};
    Statement m_page{m_db, kSelectPage};
    Statement m_sorted{m_db, kSelectSorted};
    Statement m_filter{m_db, kSelectWindow};
    Statement m_count{m_db, kCountWindow};
    Statement m_insert{m_db, kInsert};
    Statement m_stored{m_db, kSelectStored};
    Statement m_fetch{m_db, kSelectKey};
    Statement m_update{m_db, kUpdate};
    Statement m_delete{m_db, kDelete};
};

}  // namespace

std::unique_ptr<Contestant> openHandWrittenPerCall(const std::string& strPath)
{
    return std::make_unique<HandWritten<Prepared<false>>>(strPath);
}

std::unique_ptr<Contestant> openHandWrittenKept(const std::string& strPath)
{
    return std::make_unique<HandWritten<Prepared<true>>>(strPath);
}

}  // namespace bench
