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
        Statement select(m_session);
        select << kSelect;
        return readAll(select);
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        int limit = static_cast<int>(kPage);
        auto first = static_cast<Poco::Int64>(offset);
        Statement select(m_session);
        select << kSelectPage, use(limit), use(first);
        return readAll(select);
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        const Poco::JSON::Object& record = *m_records[i];
        Columns<One> row;
        row.address = record.getValue<std::string>("address");
        row.comment = record.getValue<std::string>("comment");
        row.count = record.getValue<Poco::Int32>("count");
        row.created = record.getValue<Poco::Int64>("created");
        row.enabled = record.getValue<bool>("enabled") ? 1 : 0;
        row.limits = write(*record.getObject("limits"));
        row.ports = write(*record.getArray("ports"));
        row.serial = record.getValue<std::string>("serial");
        m_session << kInsert, use(row.address), use(row.comment), use(row.count), use(row.created), use(row.enabled),
            use(row.limits), use(row.ports), use(row.serial), now;

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
    template <class Value>
    using One = Value;
    template <class Value>
    using Many = std::vector<Value>;

    // One row, or many: POCO reads those column by column.
    template <template <class> class Of>
    struct Columns
    {
        Of<std::string> address;
        Of<std::string> comment;
        Of<Poco::Int32> count{};
        Of<Poco::Int64> created{};
        Of<Poco::Int32> enabled{};
        Of<std::string> limits;
        Of<std::string> ports;
        Of<std::string> serial;
    };

    template <class Columns>
    static Statement& intoColumns(Statement& select, Columns& columns)
    {
        return select, into(columns.address), into(columns.comment), into(columns.count), into(columns.created),
               into(columns.enabled), into(columns.limits), into(columns.ports), into(columns.serial);
    }

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

    std::size_t readAll(Statement& select)
    {
        Columns<Many> columns;
        intoColumns(select, columns), now;
        for (std::size_t i = 0; i < columns.serial.size(); ++i)
            m_list.add(makeRecord(
                columns, [i](const auto& column) -> const auto& { return column[i]; }));
        return m_list.size();
    }

    std::size_t readOne(Statement& select)
    {
        Columns<One> row;
        intoColumns(select, row);
        if (select.execute() == 0)
            return 0;
        m_record = makeRecord(
            row, [](const auto& column) -> const auto& { return column; });
        return 1;
    }

    template <class Columns, class ValueOf>
    Poco::JSON::Object::Ptr makeRecord(const Columns& columns, const ValueOf& valueOf)
    {
        Poco::JSON::Object::Ptr record = new Poco::JSON::Object;
        record->set("address", valueOf(columns.address));
        record->set("comment", valueOf(columns.comment));
        record->set("count", valueOf(columns.count));
        record->set("created", valueOf(columns.created));
        record->set("enabled", valueOf(columns.enabled) != 0);
        record->set("limits", read(valueOf(columns.limits)));
        record->set("ports", read(valueOf(columns.ports)));
        record->set("serial", valueOf(columns.serial));
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
