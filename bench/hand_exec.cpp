// SPDX-License-Identifier: MIT
//
// What a service's programmer writes on sqlite3_exec: statements formatted by sqlite3_mprintf, a small row callback
// that converts the columns' texts.

#include <cstdlib>
#include <exception>

#include "contestant.h"
#include "sql_texts.h"
#include "statements.h"

namespace bench
{

namespace
{

class HandWrittenExec : public Contestant
{
public:
    explicit HandWrittenExec(const std::string& strPath) : m_db(strPath) { runSql(m_db, kCreateTable); }

    sqlite3* connection() override { return m_db; }

    std::size_t list() override { return readRows(kSelect); }

    std::size_t page(std::size_t offset) override { return readRows(pageSql(offset).get()); }

    std::size_t create(std::size_t i) override
    {
        clear();
        return readOne(createSql(input().records[i], m_json).get());
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        return readOne(fetchSql(input().keys[i]).get());
    }

    std::size_t update(std::size_t i) override { return change(updateSql(input().changes[i], input().keys[i]).get()); }

    std::size_t remove(std::size_t i) override { return change(deleteSql(input().keys[i]).get()); }

private:
    void run(const char* szSql, int (*callback)(void*, int, char**, char**))
    {
        const int err = sqlite3_exec(m_db, szSql, callback, this, nullptr);
        if (m_exception)
            std::rethrow_exception(m_exception);
        m_db.check(err);
    }

    std::size_t readRows(const char* szSql)
    {
        m_jResult = Json::Value(Json::arrayValue);
        run(szSql, appendRow);
        return m_jResult.size();
    }

    std::size_t readOne(const char* szSql)
    {
        run(szSql, readRow);
        return m_jResult.empty() ? 0 : 1;
    }

    std::size_t change(const char* szSql)
    {
        run(szSql, nullptr);
        return static_cast<std::size_t>(sqlite3_changes(m_db));
    }

    static int appendRow(void* pThis, int, char** column_value, char**)
    {
        auto& self = *static_cast<HandWrittenExec*>(pThis);
        return self.guarded(
            [&]
            {
                Json::Value jRec(Json::objectValue);
                self.fill(jRec, column_value);
                self.m_jResult.append(std::move(jRec));
            });
    }

    static int readRow(void* pThis, int, char** column_value, char**)
    {
        auto& self = *static_cast<HandWrittenExec*>(pThis);
        return self.guarded([&] { self.fill(self.m_jResult, column_value); });
    }

    // No exception may cross SQLite's frames.
    template <class Function>
    int guarded(const Function& function)
    {
        try
        {
            function();
            return 0;
        }
        catch (...)
        {
            m_exception = std::current_exception();
            return 1;
        }
    }

    void fill(Json::Value& jRec, char** column_value)
    {
        jRec["address"] = column_value[0];
        jRec["comment"] = column_value[1];
        jRec["count"] = static_cast<Json::Int>(std::strtol(column_value[2], nullptr, 10));
        jRec["created"] = static_cast<Json::Int64>(std::strtoll(column_value[3], nullptr, 10));
        jRec["enabled"] = column_value[4][0] == '1';
        m_json.read(column_value[5], std::strlen(column_value[5]), jRec["limits"]);
        m_json.read(column_value[6], std::strlen(column_value[6]), jRec["ports"]);
        jRec["serial"] = column_value[7];
    }

    Connection m_db;
    JsonColumns m_json;
    std::exception_ptr m_exception;
};

}  // namespace

std::unique_ptr<Contestant> openHandWrittenExec(const std::string& strPath)
{
    return std::make_unique<HandWrittenExec>(strPath);
}

}  // namespace bench
