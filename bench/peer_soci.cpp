// SPDX-License-Identifier: MIT
//
// SOCI with JsonCpp: columns exchanged with plain variables, the faster of its two ways to read rows.

#include <soci/soci.h>

#include "contestant.h"
#include "json_columns.h"

namespace bench
{

// Opens the session and gives its sqlite3*. SOCI's SQLite backend includes sqlite3.h inside a namespace, so what needs
// it stands in a file of its own.
void* openSociSession(soci::session& session, const std::string& strPath);

namespace
{

constexpr const char* kPageSql = VORN_BENCH_SELECT " LIMIT :limit OFFSET :offset";
constexpr const char* kInsertSql =
    VORN_BENCH_INSERT "(:address,:comment,:count,:created,:enabled,:limits,:ports,:serial)";
constexpr const char* kStoredSql = VORN_BENCH_SELECT " WHERE rowid = :id";
constexpr const char* kFetchSql = VORN_BENCH_SELECT " WHERE serial = :serial";
constexpr const char* kUpdateSql =
    "UPDATE device SET comment = :comment, count = :count, enabled = :enabled WHERE serial = :serial";
constexpr const char* kDeleteSql = "DELETE FROM device WHERE serial = :serial";

class Soci : public Contestant
{
public:
    explicit Soci(const std::string& strPath) : m_pDb(static_cast<sqlite3*>(openSociSession(m_session, strPath)))
    {
        m_session << kCreateTable;
    }

    sqlite3* connection() override { return m_pDb; }

    std::size_t list() override
    {
        clear();
        return readRows(intoRow(m_session.prepare << kSelect));
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        const int limit = static_cast<int>(kPage);
        const auto first = static_cast<long long>(offset);
        return readRows((intoRow(m_session.prepare << kPageSql), soci::use(limit), soci::use(first)));
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        const Json::Value& jRec = input().records[i];
        m_row.strAddress = jRec["address"].asString();
        m_row.strComment = jRec["comment"].asString();
        m_row.iCount = jRec["count"].asInt();
        m_row.iCreated = jRec["created"].asInt64();
        m_row.iEnabled = jRec["enabled"].asBool() ? 1 : 0;
        m_row.strLimits = m_json.write(jRec["limits"]);
        m_row.strPorts = m_json.write(jRec["ports"]);
        m_row.strSerial = jRec["serial"].asString();
        m_session << kInsertSql, soci::use(m_row.strAddress), soci::use(m_row.strComment), soci::use(m_row.iCount),
            soci::use(m_row.iCreated), soci::use(m_row.iEnabled), soci::use(m_row.strLimits), soci::use(m_row.strPorts),
            soci::use(m_row.strSerial);

        long long id = 0;
        m_session.get_last_insert_id(kTable, id);
        intoRow(m_session << kStoredSql), soci::use(id);
        return readOne();
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        intoRow(m_session << kFetchSql), soci::use(input().keys[i]);
        return readOne();
    }

    std::size_t update(std::size_t i) override
    {
        const Json::Value& jRec = input().changes[i];
        const std::string strComment = jRec["comment"].asString();
        const int iCount = jRec["count"].asInt();
        const int iEnabled = jRec["enabled"].asBool() ? 1 : 0;
        return change((m_session.prepare << kUpdateSql, soci::use(strComment), soci::use(iCount), soci::use(iEnabled),
                       soci::use(input().keys[i])));
    }

    std::size_t remove(std::size_t i) override
    {
        return change((m_session.prepare << kDeleteSql, soci::use(input().keys[i])));
    }

private:
    struct Row
    {
        std::string strAddress;
        std::string strComment;
        int iCount = 0;
        long long iCreated = 0;
        int iEnabled = 0;
        std::string strLimits;
        std::string strPorts;
        std::string strSerial;
    };

    // Has the columns of the statement put into the row.
    template <class Statement>
    Statement& intoRow(Statement&& statement)
    {
        return statement, soci::into(m_row.strAddress), soci::into(m_row.strComment), soci::into(m_row.iCount),
               soci::into(m_row.iCreated), soci::into(m_row.iEnabled), soci::into(m_row.strLimits),
               soci::into(m_row.strPorts), soci::into(m_row.strSerial);
    }

    std::size_t readRows(soci::statement statement)
    {
        statement.execute();
        return readAll([&] { return statement.fetch(); }, [this](Json::Value& jRec) { readRow(jRec); });
    }

    std::size_t readOne()
    {
        if (!m_session.got_data())
            return 0;
        readRow(m_jResult);
        return 1;
    }

    void readRow(Json::Value& jRec)
    {
        jRec["address"] = m_row.strAddress;
        jRec["comment"] = m_row.strComment;
        jRec["count"] = m_row.iCount;
        jRec["created"] = static_cast<Json::Int64>(m_row.iCreated);
        jRec["enabled"] = m_row.iEnabled != 0;
        m_json.read(m_row.strLimits.data(), m_row.strLimits.size(), jRec["limits"]);
        m_json.read(m_row.strPorts.data(), m_row.strPorts.size(), jRec["ports"]);
        jRec["serial"] = m_row.strSerial;
    }

    static std::size_t change(soci::statement statement)
    {
        statement.execute(true);
        return static_cast<std::size_t>(statement.get_affected_rows());
    }

    soci::session m_session;
    sqlite3* m_pDb;
    JsonColumns m_json;
    Row m_row;
};

}  // namespace

std::unique_ptr<Contestant> openSoci(const std::string& strPath)
{
    return std::make_unique<Soci>(strPath);
}

}  // namespace bench
