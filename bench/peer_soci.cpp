// SPDX-License-Identifier: MIT
//
// SOCI with JsonCpp: columns exchanged with plain variables, the faster of its two ways to read rows.

#include <soci/soci.h>

#include "contestant.h"
#include "json_columns.h"
#include "peer_soci_connection.h"

namespace bench
{

namespace
{

constexpr const char* kPageSql =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device LIMIT :limit OFFSET :offset";
constexpr const char* kInsertSql =
    "INSERT INTO device (address,comment,count,created,enabled,limits,ports,serial) VALUES "
    "(:address,:comment,:count,:created,:enabled,:limits,:ports,:serial)";
constexpr const char* kStoredSql =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device WHERE rowid = :id";
constexpr const char* kFetchSql =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device WHERE serial = :serial";
constexpr const char* kUpdateSql =
    "UPDATE device SET comment = :comment, count = :count, enabled = :enabled WHERE serial = :serial";
constexpr const char* kDeleteSql = "DELETE FROM device WHERE serial = :serial";

class Soci : public Contestant
{
public:
    explicit Soci(const std::string& strPath)
    {
        openSociSession(m_session, strPath);
        m_session << kCreateTable;
    }

    sqlite3* connection() override { return static_cast<sqlite3*>(sociConnection(m_session)); }

    std::size_t list() override
    {
        clear();
        return readAll((m_session.prepare << kSelect, soci::into(m_row.strAddress), soci::into(m_row.strComment),
                        soci::into(m_row.iCount), soci::into(m_row.iCreated), soci::into(m_row.iEnabled),
                        soci::into(m_row.strLimits), soci::into(m_row.strPorts), soci::into(m_row.strSerial)));
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        const int limit = static_cast<int>(kPage);
        const auto first = static_cast<long long>(offset);
        return readAll((m_session.prepare << kPageSql, soci::into(m_row.strAddress), soci::into(m_row.strComment),
                        soci::into(m_row.iCount), soci::into(m_row.iCreated), soci::into(m_row.iEnabled),
                        soci::into(m_row.strLimits), soci::into(m_row.strPorts), soci::into(m_row.strSerial),
                        soci::use(limit), soci::use(first)));
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
        m_session << kStoredSql, soci::into(m_row.strAddress), soci::into(m_row.strComment), soci::into(m_row.iCount),
            soci::into(m_row.iCreated), soci::into(m_row.iEnabled), soci::into(m_row.strLimits),
            soci::into(m_row.strPorts), soci::into(m_row.strSerial), soci::use(id);
        return readOne();
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        m_session << kFetchSql, soci::into(m_row.strAddress), soci::into(m_row.strComment), soci::into(m_row.iCount),
            soci::into(m_row.iCreated), soci::into(m_row.iEnabled), soci::into(m_row.strLimits),
            soci::into(m_row.strPorts), soci::into(m_row.strSerial), soci::use(input().keys[i]);
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

    std::size_t readAll(soci::statement statement)
    {
        m_jResult = Json::Value(Json::arrayValue);
        statement.execute();
        while (statement.fetch())
        {
            Json::Value jRec(Json::objectValue);
            readRow(jRec);
            m_jResult.append(std::move(jRec));
        }
        return m_jResult.size();
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
    JsonColumns m_json;
    Row m_row;
};

}  // namespace

std::unique_ptr<Contestant> openSoci(const std::string& strPath)
{
    return std::make_unique<Soci>(strPath);
}

}  // namespace bench
