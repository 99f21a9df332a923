// SPDX-License-Identifier: MIT
//
// Databases and stores for tests.

#include "store.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace support
{

Json::Value json(const std::string& text)
{
    Json::CharReaderBuilder builder;
    builder["allowSpecialFloats"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors))
    {
        throw std::runtime_error("not JSON: " + text + "\n" + errors);
    }
    return value;
}

std::string freshTable()
{
    static int counter = 0;
    return "t" + std::to_string(++counter);
}

Json::Value definitionOf(const std::string& name, const Json::Value& members)
{
    Json::Value definition(Json::objectValue);
    definition[name]["member"] = members;
    return definition;
}

TempFile::TempFile()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vornjsondb-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
    {
        throw std::runtime_error("cannot make a folder like " + pattern);
    }
    m_folder = pattern;
    m_path = m_folder + "/records.db";
}

TempFile::~TempFile()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

Database::Database(const std::string& path)
{
    if (sqlite3_open(path.c_str(), &m_pDb) != SQLITE_OK)
    {
        sqlite3_close(m_pDb);
        throw std::runtime_error("cannot open " + path);
    }
}

Database::~Database()
{
    if (m_pDb != nullptr)
    {
        EXPECT_EQ(SQLITE_OK, sqlite3_close(m_pDb)) << "the connection cannot be closed";
    }
}

int Database::close()
{
    const int status = sqlite3_close(m_pDb);
    if (status == SQLITE_OK)
    {
        m_pDb = nullptr;
    }
    return status;
}

int Database::run(const std::string& sql) const
{
    return sqlite3_exec(m_pDb, sql.c_str(), nullptr, nullptr, nullptr);
}

std::vector<std::string> Database::rows(const std::string& sql) const
{
    std::vector<std::string> result;
    const auto addRow = [](void* context, int count, char** values, char**)
    {
        std::string row;
        for (int i = 0; i < count; ++i)
        {
            row += (i > 0 ? "|" : "") + std::string(values[i] != nullptr ? values[i] : "NULL");
        }
        static_cast<std::vector<std::string>*>(context)->push_back(row);
        return 0;
    };
    if (sqlite3_exec(m_pDb, sql.c_str(), addRow, &result, nullptr) != SQLITE_OK)
    {
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(m_pDb));
    }
    return result;
}

StatementLog::StatementLog(const Database& database) : m_pDb(database.handle())
{
    const auto keep = [](unsigned, void* context, void*, void* text)
    {
        static_cast<StatementLog*>(context)->m_statements.emplace_back(static_cast<const char*>(text));
        return 0;
    };
    sqlite3_trace_v2(m_pDb, SQLITE_TRACE_STMT, keep, this);
}

StatementLog::~StatementLog()
{
    sqlite3_trace_v2(m_pDb, 0, nullptr, nullptr);
}

Store::Store(const std::string& members, const std::string& columns, std::shared_ptr<Database> database)
    : m_database(std::move(database)), m_name(freshTable()), m_definition(definitionOf(m_name, json(members)))
{
    std::string columnList = columns;
    if (columnList.empty())
    {
        for (const std::string& member : m_definition[m_name]["member"].getMemberNames())
        {
            columnList += (columnList.empty() ? "" : ",") + member;
        }
    }
    m_createStatement = "CREATE TABLE IF NOT EXISTS " + m_name + " (" + columnList + ")";
    m_api = std::make_unique<VornJsonDbApi>(m_database->handle(), m_name, m_definition, m_createStatement);
}

Json::Value& Store::types()
{
    return VORN_JSON_DB::recType(m_definition, m_name);
}

}  // namespace support
