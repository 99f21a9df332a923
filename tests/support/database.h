// SPDX-License-Identifier: MIT
//
// A connection, what it runs, and a file for it: SQLite alone, for the tests of either library and for the fuzzers.

#ifndef VORNJSONDB_TESTS_DATABASE_H
#define VORNJSONDB_TESTS_DATABASE_H

#include <sqlite3.h>

#include <string>
#include <vector>

namespace support
{

// A path for a database file in a folder of its own, which is removed with everything in it.
class TempFile
{
public:
    TempFile();
    ~TempFile();
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_folder;
    std::string m_path;
};

// A connection. Its end ends the process when SQLite refuses to close it, as it does while a statement is in use.
class Database
{
public:
    explicit Database(const std::string& path = ":memory:");
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    sqlite3* handle() const { return m_pDb; }
    int close();

    // Runs SQL text; returns SQLite's status.
    int run(const std::string& sql) const;

    // The rows of a query: columns joined by "|", SQL NULL as "NULL".
    std::vector<std::string> rows(const std::string& sql) const;

private:
    sqlite3* m_pDb = nullptr;
};

// Keeps the text of every statement that a connection starts, until destroyed.
class StatementLog
{
public:
    explicit StatementLog(const Database& database);
    ~StatementLog();
    StatementLog(const StatementLog&) = delete;
    StatementLog& operator=(const StatementLog&) = delete;

    const std::vector<std::string>& statements() const { return m_statements; }

private:
    sqlite3* m_pDb;
    std::vector<std::string> m_statements;
};

}  // namespace support

#endif  // VORNJSONDB_TESTS_DATABASE_H
