// SPDX-License-Identifier: MIT

#include "wide.h"

#include <VornJsonDbApi.h>

#include <cstdio>
#include <stdexcept>

#include "connection.h"
#include "json_columns.h"
#include "measure.h"

namespace bench
{

namespace
{

constexpr std::size_t kBatchMembers = 20000;

Json::Value valueOf(const std::string& strType, std::size_t row, std::size_t column)
{
    const auto n = static_cast<int>(row * 31 + column * 7);
    if (strType == "string")
        return "value " + std::to_string(n) + ", the customer's";
    if (strType == "int")
        return n;
    if (strType == "long long")
        return Json::Int64{1700000000000} + n;
    if (strType == "bool")
        return n % 3 != 0;
    Json::Value jValue(strType == "Json::arrayValue" ? Json::arrayValue : Json::objectValue);
    for (int i = 0; i < 3; ++i)
    {
        if (jValue.isArray())
            jValue.append(n + i);
        else
            jValue["limit" + std::to_string(i)] = n + i;
    }
    return jValue;
}

}  // namespace

Wide::Wide(std::size_t members) : m_strTable("wide" + std::to_string(members))
{
    static const char* const types[] = {"string",           "string", "int", "long long", "bool", "Json::objectValue",
                                        "Json::arrayValue", "string"};
    for (std::size_t i = 0; i < members; ++i)
    {
        char szName[32];
        std::snprintf(szName, sizeof szName, "member%03zu", i);
        m_columns.push_back({szName, types[i % std::size(types)]});
    }
    for (std::size_t row = 0; row < kBatchMembers / members; ++row)
    {
        Json::Value jRec;
        for (std::size_t i = 0; i < members; ++i)
            jRec[m_columns[i].strName] = valueOf(m_columns[i].strType, row, i);
        m_records.push_back(std::move(jRec));
    }
}

std::string Wide::strCreateTable() const
{
    std::string strSql = "CREATE TABLE IF NOT EXISTS " + m_strTable + " (";
    for (const Column& column : m_columns)
    {
        const bool blText = column.strType == "string" || column.strType.compare(0, 6, "Json::") == 0;
        strSql += column.strName + (blText ? " TEXT," : " INTEGER,");
    }
    strSql.back() = ')';
    return strSql;
}

Cost Wide::measured(void (Wide::*work)(Json::Value&))
{
    Cost cost;
    const std::size_t allocationsBefore = allocations();
    const std::int64_t timeBefore = cpuTime();
    {
        Json::Value jRecords;
        (this->*work)(jRecords);
    }
    cost.nanoseconds = cpuTime() - timeBefore;
    cost.allocations = allocations() - allocationsBefore;
    cost.records = m_records.size() * m_columns.size();
    return cost;
}

Cost Wide::create()
{
    runSql(connection(), "DELETE FROM " + m_strTable);
    return measured(&Wide::createAll);
}

Cost Wide::list()
{
    {
        Json::Value jRecords;  // see Place::run()
        listAll(jRecords);
    }
    return measured(&Wide::listAll);
}

void Wide::createAll(Json::Value&)
{
    for (Json::Value& jRec : m_records)
    {
        Json::Value jStored;
        createOne(jRec, jStored);
        if (jStored.size() != m_columns.size())
            throw std::runtime_error("a wide record came back with other members");
    }
}

void Wide::prove()
{
    create();
    Json::Value jRecords;
    listAll(jRecords);
    for (Json::ArrayIndex i = 0; i < m_records.size(); ++i)
    {
        if (jRecords[i] != m_records[i])
            throw std::runtime_error("a wide record came back with other values");
    }
}

namespace
{

class WideLibrary : public Wide
{
public:
    explicit WideLibrary(std::size_t members)
        : Wide(members),
          m_jTableDef(tableDefinition()),
          m_strCreate(strCreateTable()),
          m_api(m_db, m_strTable, m_jTableDef, m_strCreate)
    {
    }

    sqlite3* connection() override { return m_db; }

    void createOne(Json::Value& jRec, Json::Value& jStored) override
    {
        if (m_api.recCreate(jRec, jStored) != 0)
            throw std::runtime_error("the library cannot create a wide record");
    }

    void listAll(Json::Value& jRecords) override
    {
        Json::Value jParam;
        if (m_api.recList(jParam, jRecords) != 0)
            throw std::runtime_error("the library cannot list wide records");
    }

private:
    Json::Value tableDefinition() const
    {
        Json::Value jTableDef;
        for (const Column& column : m_columns)
            jTableDef[m_strTable]["member"][column.strName]["cpptype"] = column.strType;
        return jTableDef;
    }

    Connection m_db{":memory:"};
    Json::Value m_jTableDef;
    std::string m_strCreate;
    VornJsonDbApi m_api;
};

// Statements prepared per call, values bound, columns read by type.
class WideHandWritten : public Wide
{
public:
    explicit WideHandWritten(std::size_t members) : Wide(members)
    {
        runSql(m_db, strCreateTable());
        m_strSelect = "SELECT ";
        std::string strMarks;
        for (const Column& column : m_columns)
        {
            m_strSelect += column.strName + ',';
            strMarks += "?,";
        }
        m_strSelect.back() = ' ';
        strMarks.back() = ')';
        m_strSelect += "FROM " + m_strTable;
        m_strInsert = "INSERT INTO " + m_strTable + " VALUES (" + strMarks;
    }

    sqlite3* connection() override { return m_db; }

    void createOne(Json::Value& jRec, Json::Value& jStored) override
    {
        {
            const Statement statement = prepare(m_strInsert);
            for (std::size_t i = 0; i < m_columns.size(); ++i)
                bind(statement.get(), static_cast<int>(i) + 1, jRec[m_columns[i].strName]);
            m_db.check(sqlite3_step(statement.get()), SQLITE_DONE);
        }
        const Statement statement = prepare(m_strSelect + " WHERE rowid = ?");
        sqlite3_bind_int64(statement.get(), 1, sqlite3_last_insert_rowid(m_db));
        m_db.check(sqlite3_step(statement.get()), SQLITE_ROW);
        readRow(statement.get(), jStored);
    }

    void listAll(Json::Value& jRecords) override
    {
        jRecords = Json::Value(Json::arrayValue);
        const Statement statement = prepare(m_strSelect);
        while (sqlite3_step(statement.get()) == SQLITE_ROW)
        {
            Json::Value jRec(Json::objectValue);
            readRow(statement.get(), jRec);
            jRecords.append(std::move(jRec));
        }
    }

private:
    using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

    Statement prepare(const std::string& strSql)
    {
        sqlite3_stmt* pStatement = nullptr;
        m_db.check(sqlite3_prepare_v2(m_db, strSql.c_str(), -1, &pStatement, nullptr));
        return Statement(pStatement, sqlite3_finalize);
    }

    void bind(sqlite3_stmt* pStatement, int i, const Json::Value& jValue)
    {
        if (jValue.isString())
        {
            sqlite3_bind_text(pStatement, i, jValue.asCString(), -1, SQLITE_STATIC);
        }
        else if (jValue.isArray() || jValue.isObject())
        {
            const std::string strText = m_json.write(jValue);
            sqlite3_bind_text(pStatement, i, strText.data(), static_cast<int>(strText.size()), SQLITE_TRANSIENT);
        }
        else
        {
            sqlite3_bind_int64(pStatement, i, jValue.asInt64());
        }
    }

    void readRow(sqlite3_stmt* pStatement, Json::Value& jRec)
    {
        for (std::size_t column = 0; column < m_columns.size(); ++column)
        {
            const int i = static_cast<int>(column);
            const std::string& strType = m_columns[column].strType;
            Json::Value& jValue = jRec[m_columns[column].strName];
            switch (strType[0])
            {
                case 's':
                    jValue = text(pStatement, i);
                    break;
                case 'i':
                    jValue = sqlite3_column_int(pStatement, i);
                    break;
                case 'l':
                    jValue = static_cast<Json::Int64>(sqlite3_column_int64(pStatement, i));
                    break;
                case 'b':
                    jValue = sqlite3_column_int(pStatement, i) != 0;
                    break;
                default:
                {
                    const char* szText = text(pStatement, i);
                    m_json.read(szText, static_cast<std::size_t>(sqlite3_column_bytes(pStatement, i)), jValue);
                    break;
                }
            }
        }
    }

    static const char* text(sqlite3_stmt* pStatement, int i)
    {
        return reinterpret_cast<const char*>(sqlite3_column_text(pStatement, i));
    }

    Connection m_db{":memory:"};
    JsonColumns m_json;
    std::string m_strSelect;
    std::string m_strInsert;
};

}  // namespace

std::unique_ptr<Wide> openWideLibrary(std::size_t members)
{
    return std::make_unique<WideLibrary>(members);
}

std::unique_ptr<Wide> openWideHandWritten(std::size_t members)
{
    return std::make_unique<WideHandWritten>(members);
}

}  // namespace bench
