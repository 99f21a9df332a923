// SPDX-License-Identifier: MIT
//
// SOCI with JsonCpp: columns exchanged with plain variables, the faster of its two ways to read rows.

#include <soci/soci.h>

#include "contestant.h"
#include "json_columns.h"
#include "peer_statement.h"

namespace bench
{

// Opens the session and gives its sqlite3*. SOCI's SQLite backend includes sqlite3.h inside a namespace, so what needs
// it stands in a file of its own.
void* openSociSession(soci::session& session, const std::string& strPath);

namespace
{

constexpr const char* kPageSql = VORN_BENCH_SELECT " LIMIT :limit OFFSET :offset";
constexpr const char* kSortedSql = VORN_BENCH_SELECT " ORDER BY created DESC LIMIT :limit OFFSET :offset";
constexpr const char* kWindowSql =
    VORN_BENCH_SELECT " WHERE serial >= :from AND serial < :to AND created < :before AND comment LIKE :pattern";
constexpr const char* kCountSql = "SELECT count(*) FROM device WHERE enabled AND serial >= :from AND serial < :to";
constexpr const char* kInsertSql =
    VORN_BENCH_INSERT "(:address,:comment,:count,:created,:enabled,:limits,:ports,:serial)";
constexpr const char* kStoredSql = VORN_BENCH_SELECT " WHERE rowid = :id";
constexpr const char* kFetchSql = VORN_BENCH_SELECT " WHERE serial = :serial";
constexpr const char* kUpdateSql =
    "UPDATE device SET comment = :comment, count = :count, enabled = :enabled WHERE serial = :serial";
constexpr const char* kDeleteSql = "DELETE FROM device WHERE serial = :serial";

template <bool blKept>
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

    std::size_t page(std::size_t offset) override { return pageOf(kPageSql, offset); }

    std::size_t sorted(std::size_t offset) override { return pageOf(kSortedSql, offset); }

    std::size_t filter(std::size_t window) override
    {
        clear();
        const Window& wanted = input().windows[window];
        const long long iBefore = wanted.iBefore;
        const std::string strPattern = kCommentPattern;
        return readRows((intoRow(m_session.prepare << kWindowSql), soci::use(wanted.strFrom), soci::use(wanted.strTo),
                         soci::use(iBefore), soci::use(strPattern)));
    }

    std::size_t count(std::size_t window) override
    {
        const Window& wanted = input().windows[window];
        long long iCount = 0;
        m_session << kCountSql, soci::into(iCount), soci::use(wanted.strFrom), soci::use(wanted.strTo);
        return static_cast<std::size_t>(iCount);
    }

    std::size_t createAll(std::size_t i) override
    {
        soci::transaction transaction(m_session);
        soci::statement statement = insertStatement();
        for (const Json::Value& jRec : input().arrays[i])
            insert(statement, jRec);
        transaction.commit();
        return input().arrays[i].size();
    }

    std::size_t forEach(const Visit& visit) override
    {
        soci::statement statement = intoRow(m_session.prepare << kSelect);
        statement.execute();
        return visitAll(
            visit, [&] { return statement.fetch(); }, [this](Json::Value& jRec) { readRow(jRec); });
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        m_insert.use([this] { return insertStatement(); },
                     [&](soci::statement& statement) { insert(statement, input().records[i]); });
        m_session.get_last_insert_id(kTable, m_id);
        return m_stored.use([this]() -> soci::statement
                            { return (intoRow(m_session.prepare << kStoredSql), soci::use(m_id)); },
                            [this](soci::statement& statement) { return readOne(statement); });
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        m_strKey = input().keys[i];
        return m_fetch.use([this]() -> soci::statement
                           { return (intoRow(m_session.prepare << kFetchSql), soci::use(m_strKey)); },
                           [this](soci::statement& statement) { return readOne(statement); });
    }

    std::size_t update(std::size_t i) override
    {
        const Json::Value& jRec = input().changes[i];
        m_row.strComment = jRec["comment"].asString();
        m_row.iCount = jRec["count"].asInt();
        m_row.iEnabled = jRec["enabled"].asBool() ? 1 : 0;
        m_strKey = input().keys[i];
        return m_update.use(
            [this]() -> soci::statement
            {
                return (m_session.prepare << kUpdateSql, soci::use(m_row.strComment), soci::use(m_row.iCount),
                        soci::use(m_row.iEnabled), soci::use(m_strKey));
            },
            change);
    }

    std::size_t remove(std::size_t i) override
    {
        m_strKey = input().keys[i];
        return m_delete.use(
            [this]() -> soci::statement { return (m_session.prepare << kDeleteSql, soci::use(m_strKey)); }, change);
    }

private:
    using Kept = PeerStatement<soci::statement, blKept>;

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

    soci::statement insertStatement()
    {
        return (m_session.prepare << kInsertSql, soci::use(m_row.strAddress), soci::use(m_row.strComment),
                soci::use(m_row.iCount), soci::use(m_row.iCreated), soci::use(m_row.iEnabled),
                soci::use(m_row.strLimits), soci::use(m_row.strPorts), soci::use(m_row.strSerial));
    }

    void insert(soci::statement& statement, const Json::Value& jRec)
    {
        m_row.strAddress = jRec["address"].asString();
        m_row.strComment = jRec["comment"].asString();
        m_row.iCount = jRec["count"].asInt();
        m_row.iCreated = jRec["created"].asInt64();
        m_row.iEnabled = jRec["enabled"].asBool() ? 1 : 0;
        m_row.strLimits = m_json.write(jRec["limits"]);
        m_row.strPorts = m_json.write(jRec["ports"]);
        m_row.strSerial = jRec["serial"].asString();
        statement.execute(true);
    }

    std::size_t pageOf(const char* szSql, std::size_t offset)
    {
        clear();
        const int limit = static_cast<int>(kPage);
        const auto first = static_cast<long long>(offset);
        return readRows((intoRow(m_session.prepare << szSql), soci::use(limit), soci::use(first)));
    }

    std::size_t readRows(soci::statement statement)
    {
        statement.execute();
        return readAll([&] { return statement.fetch(); }, [this](Json::Value& jRec) { readRow(jRec); });
    }

    std::size_t readOne(soci::statement& statement)
    {
        if (!statement.execute(true))
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

    static std::size_t change(soci::statement& statement)
    {
        statement.execute(true);
        return static_cast<std::size_t>(statement.get_affected_rows());
    }

    soci::session m_session;
    sqlite3* m_pDb;
    JsonColumns m_json;
    Row m_row;
    std::string m_strKey;
    long long m_id = 0;
    Kept m_insert;
    Kept m_stored;
    Kept m_fetch;
    Kept m_update;
    Kept m_delete;
};

}  // namespace

std::unique_ptr<Contestant> openSoci(const std::string& strPath, bool blKept)
{
    if (blKept)
        return std::make_unique<Soci<true>>(strPath);
    return std::make_unique<Soci<false>>(strPath);
}

}  // namespace bench
