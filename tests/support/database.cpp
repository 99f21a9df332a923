// SPDX-License-Identifier: MIT

#include "database.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace support
{

TempFile::TempFile()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vornjsondb-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot make a folder like " + pattern);
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
    if (close() != SQLITE_OK)
    {
        std::fprintf(stderr, "the connection cannot be closed: %s\n", sqlite3_errmsg(m_pDb));
        std::abort();
    }
}

int Database::close()
{
    const int status = sqlite3_close(m_pDb);
    if (status == SQLITE_OK)
        m_pDb = nullptr;
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
            row += (i > 0 ? "|" : "") + std::string(values[i] != nullptr ? values[i] : "NULL");
        static_cast<std::vector<std::string>*>(context)->push_back(row);
        return 0;
    };
    if (sqlite3_exec(m_pDb, sql.c_str(), addRow, &result, nullptr) != SQLITE_OK)
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(m_pDb));
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

}  // namespace support
