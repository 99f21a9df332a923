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
#include "peer_statement.h"

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

template <bool blKept>
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
        m_arrays.clear();
        for (const Json::Value& jRecords : input.arrays)
            m_arrays.push_back(convert({jRecords.begin(), jRecords.end()}));
    }

    std::size_t list() override
    {
        clear();
        Statement select(m_session);
        select << kSelect;
        return readAll(select);
    }

    std::size_t page(std::size_t offset) override { return pageOf(kSelectPage, offset); }

    std::size_t sorted(std::size_t offset) override { return pageOf(kSelectSorted, offset); }

    std::size_t filter(std::size_t window) override
    {
        clear();
        Window& wanted = input().windows[window];
        Poco::Int64 iBefore = wanted.iBefore;
        std::string strPattern = kCommentPattern;
        Statement select(m_session);
        select << kSelectWindow, use(wanted.strFrom), use(wanted.strTo), use(iBefore), use(strPattern);
        return readAll(select);
    }

    std::size_t count(std::size_t window) override
    {
        Window& wanted = input().windows[window];
        Poco::Int64 iCount = 0;
        m_session << kCountWindow, into(iCount), use(wanted.strFrom), use(wanted.strTo), now;
        return static_cast<std::size_t>(iCount);
    }

    std::size_t createAll(std::size_t i) override
    {
        m_session.begin();
        Statement statement = insertStatement();
        for (const Poco::JSON::Object::Ptr& record : m_arrays[i])
            insert(statement, *record);
        m_session.commit();
        return m_arrays[i].size();
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        m_insertion.use([this] { return insertStatement(); },
                        [&](Statement& statement) { insert(statement, *m_records[i]); });
        m_id = sqlite3_last_insert_rowid(connection());
        return readOne(m_readBack, kSelectStored, m_id);
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        m_row.serial = m_keys[i];
        return readOne(m_fetch, kSelectKey, m_row.serial);
    }

    std::size_t update(std::size_t i) override
    {
        const Poco::JSON::Object& record = *m_changes[i];
        m_row.comment = record.getValue<std::string>("comment");
        m_row.count = record.getValue<Poco::Int32>("count");
        m_row.enabled = record.getValue<bool>("enabled") ? 1 : 0;
        m_row.serial = m_keys[i];
        return m_update.use(
            [this]
            {
                Statement update(m_session);
                update << kUpdate, use(m_row.comment), use(m_row.count), use(m_row.enabled), use(m_row.serial);
                return update;
            },
            [](Statement& update) { return update.execute(); });
    }

    std::size_t remove(std::size_t i) override
    {
        m_row.serial = m_keys[i];
        return m_delete.use(
            [this]
            {
                Statement remove(m_session);
                remove << kDelete, use(m_row.serial);
                return remove;
            },
            [](Statement& remove) { return remove.execute(); });
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
    using Kept = PeerStatement<Statement, blKept>;

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

    Statement insertStatement()
    {
        Statement statement(m_session);
        statement << kInsert, use(m_row.address), use(m_row.comment), use(m_row.count), use(m_row.created),
            use(m_row.enabled), use(m_row.limits), use(m_row.ports), use(m_row.serial);
        return statement;
    }

    void insert(Statement& statement, const Poco::JSON::Object& record)
    {
        m_row.address = record.getValue<std::string>("address");
        m_row.comment = record.getValue<std::string>("comment");
        m_row.count = record.getValue<Poco::Int32>("count");
        m_row.created = record.getValue<Poco::Int64>("created");
        m_row.enabled = record.getValue<bool>("enabled") ? 1 : 0;
        m_row.limits = write(*record.getObject("limits"));
        m_row.ports = write(*record.getArray("ports"));
        m_row.serial = record.getValue<std::string>("serial");
        statement.execute();
    }

    std::size_t pageOf(const char* szSql, std::size_t offset)
    {
        clear();
        int limit = static_cast<int>(kPage);
        auto first = static_cast<Poco::Int64>(offset);
        Statement select(m_session);
        select << szSql, use(limit), use(first);
        return readAll(select);
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

    // By a statement with one value, which lives as long as this.
    template <class Value>
    std::size_t readOne(Kept& kept, const char* szSql, Value& value)
    {
        const auto make = [&]
        {
            Statement select(m_session);
            select << szSql, use(value);
            intoColumns(select, m_stored);
            return select;
        };
        if (kept.use(make, [](Statement& select) { return select.execute(); }) == 0)
            return 0;
        m_record = makeRecord(
            m_stored, [](const auto& column) -> const auto& { return column; });
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
    std::vector<std::vector<Poco::JSON::Object::Ptr>> m_arrays;
    Columns<One> m_row;     // what statements take
    Columns<One> m_stored;  // what they give
    Poco::Int64 m_id = 0;
    Kept m_insertion;
    Kept m_readBack;
    Kept m_fetch;
    Kept m_update;
    Kept m_delete;
    Poco::JSON::Array m_list;
    Poco::JSON::Object::Ptr m_record;
};

}  // namespace

std::unique_ptr<Contestant> openPoco(const std::string& strPath, bool blKept)
{
    if (blKept)
        return std::make_unique<PocoData<true>>(strPath);
    return std::make_unique<PocoData<false>>(strPath);
}

}  // namespace bench
