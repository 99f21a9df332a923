// SPDX-License-Identifier: MIT
//
// POCO Data with Poco::JSON: its own kind of record from end to end.

#include <Poco/Data/SQLite/Connector.h>
#include <Poco/Data/SQLite/Utility.h>
#include <Poco/Data/Session.h>
#include <Poco/Data/Statement.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>

#include <sstream>

#include "contestant.h"
#include "json_columns.h"

namespace bench
{

namespace
{

using Poco::Data::Statement;
using Poco::Data::Keywords::into;
using Poco::Data::Keywords::now;
using Poco::Data::Keywords::use;

Poco::Data::Session openSession(const std::string& strPath)
{
    Poco::Data::SQLite::Connector::registerConnector();
    return Poco::Data::Session("SQLite", strPath);
}

class PocoData : public Contestant
{
public:
    explicit PocoData(const std::string& strPath) : m_session(openSession(strPath)) { m_session << kCreateTable, now; }

    sqlite3* connection() override { return Poco::Data::SQLite::Utility::dbHandle(m_session); }

    void give(Input& input) override
    {
        Contestant::give(input);
        m_records = convert(input.records);
        m_changes = convert(input.changes);
        m_keys = input.keys;
    }

    std::size_t list() override
    {
        clear();
        Columns columns;
        Statement select(m_session);
        select << kSelect;
        return readAll(select, columns);
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        Columns columns;
        int limit = static_cast<int>(kPage);
        auto first = static_cast<Poco::Int64>(offset);
        Statement select(m_session);
        select << kSelectPage, use(limit), use(first);
        return readAll(select, columns);
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        const Poco::JSON::Object& record = *m_records[i];
        Row row;
        row.strAddress = record.getValue<std::string>("address");
        row.strComment = record.getValue<std::string>("comment");
        row.iCount = record.getValue<Poco::Int32>("count");
        row.iCreated = record.getValue<Poco::Int64>("created");
        row.iEnabled = record.getValue<bool>("enabled") ? 1 : 0;
        row.strLimits = write(*record.getObject("limits"));
        row.strPorts = write(*record.getArray("ports"));
        row.strSerial = record.getValue<std::string>("serial");
        m_session << kInsert, use(row.strAddress), use(row.strComment), use(row.iCount), use(row.iCreated),
            use(row.iEnabled), use(row.strLimits), use(row.strPorts), use(row.strSerial), now;

        Poco::Int64 id = sqlite3_last_insert_rowid(connection());
        Statement select(m_session);
        select << kSelectStored, use(id);
        return readOne(select);
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        Statement select(m_session);
        select << kSelectKey, use(m_keys[i]);
        return readOne(select);
    }

    std::size_t update(std::size_t i) override
    {
        const Poco::JSON::Object& record = *m_changes[i];
        auto strComment = record.getValue<std::string>("comment");
        auto iCount = record.getValue<Poco::Int32>("count");
        Poco::Int32 iEnabled = record.getValue<bool>("enabled") ? 1 : 0;
        Statement update(m_session);
        update << kUpdate, use(strComment), use(iCount), use(iEnabled), use(m_keys[i]);
        return update.execute();
    }

    std::size_t remove(std::size_t i) override
    {
        Statement remove(m_session);
        remove << kDelete, use(m_keys[i]);
        return remove.execute();
    }

    Json::Value result() const override
    {
        std::ostringstream text;
        if (m_record)
            m_record->stringify(text);
        else
            m_list.stringify(text);
        Json::Value jResult;
        JsonColumns().read(text.str().data(), text.str().size(), jResult);
        return jResult;
    }

    void clear() override
    {
        m_list.clear();
        m_record.reset();
    }

private:
    struct Row
    {
        std::string strAddress;
        std::string strComment;
        Poco::Int32 iCount = 0;
        Poco::Int64 iCreated = 0;
        Poco::Int32 iEnabled = 0;
        std::string strLimits;
        std::string strPorts;
        std::string strSerial;
    };

    // POCO reads many rows column by column.
    struct Columns
    {
        std::vector<std::string> addresses;
        std::vector<std::string> comments;
        std::vector<Poco::Int32> counts;
        std::vector<Poco::Int64> created;
        std::vector<Poco::Int32> enabled;
        std::vector<std::string> limits;
        std::vector<std::string> ports;
        std::vector<std::string> serials;
    };

    static std::vector<Poco::JSON::Object::Ptr> convert(const std::vector<Json::Value>& records)
    {
        std::vector<Poco::JSON::Object::Ptr> converted;
        converted.reserve(records.size());
        JsonColumns json;
        for (const Json::Value& jRec : records)
            converted.push_back(Poco::JSON::Parser().parse(json.write(jRec)).extract<Poco::JSON::Object::Ptr>());
        return converted;
    }

    template <class Value>
    static std::string write(const Value& value)
    {
        std::ostringstream text;
        value.stringify(text);
        return text.str();
    }

    std::size_t readAll(Statement& select, Columns& columns)
    {
        select, into(columns.addresses), into(columns.comments), into(columns.counts), into(columns.created),
            into(columns.enabled), into(columns.limits), into(columns.ports), into(columns.serials), now;
        for (std::size_t i = 0; i < columns.serials.size(); ++i)
            m_list.add(makeRecord(columns.addresses[i], columns.comments[i], columns.counts[i], columns.created[i],
                                  columns.enabled[i], columns.limits[i], columns.ports[i], columns.serials[i]));
        return m_list.size();
    }

    std::size_t readOne(Statement& select)
    {
        Row row;
        select, into(row.strAddress), into(row.strComment), into(row.iCount), into(row.iCreated), into(row.iEnabled),
            into(row.strLimits), into(row.strPorts), into(row.strSerial);
        if (select.execute() == 0)
            return 0;
        m_record = makeRecord(row.strAddress, row.strComment, row.iCount, row.iCreated, row.iEnabled, row.strLimits,
                              row.strPorts, row.strSerial);
        return 1;
    }

    Poco::JSON::Object::Ptr makeRecord(const std::string& strAddress, const std::string& strComment, Poco::Int32 iCount,
                                       Poco::Int64 iCreated, Poco::Int32 iEnabled, const std::string& strLimits,
                                       const std::string& strPorts, const std::string& strSerial)
    {
        Poco::JSON::Object::Ptr record = new Poco::JSON::Object;
        record->set("address", strAddress);
        record->set("comment", strComment);
        record->set("count", iCount);
        record->set("created", iCreated);
        record->set("enabled", iEnabled != 0);
        record->set("limits", read(strLimits));
        record->set("ports", read(strPorts));
        record->set("serial", strSerial);
        return record;
    }

    Poco::Dynamic::Var read(const std::string& strText)
    {
        m_parser.reset();
        return m_parser.parse(strText);
    }

    Poco::Data::Session m_session;
    Poco::JSON::Parser m_parser;
    std::vector<Poco::JSON::Object::Ptr> m_records;
    std::vector<Poco::JSON::Object::Ptr> m_changes;
    std::vector<std::string> m_keys;
    Poco::JSON::Array m_list;
    Poco::JSON::Object::Ptr m_record;
};

}  // namespace

std::unique_ptr<Contestant> openPoco(const std::string& strPath)
{
    return std::make_unique<PocoData>(strPath);
}

}  // namespace bench
