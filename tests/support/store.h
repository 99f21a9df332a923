// SPDX-License-Identifier: MIT
//
// Databases and stores for tests. Every Store gets a table name that the process has not seen before, because the
// library keeps the type map of a name for ever.

#ifndef VORNJSONDB_TESTS_STORE_H
#define VORNJSONDB_TESTS_STORE_H

#include <memory>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"

namespace support
{

// Parses JSON text; throws when it is not JSON.
Json::Value json(const std::string& text);

// "t1", "t2", ...: never the same name twice in a process.
std::string freshTable();

// {name: {"member": members}}
Json::Value definitionOf(const std::string& name, const Json::Value& members);

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

// A connection. Its end fails the test when SQLite refuses to close it, as it does while a statement is busy.
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

// A VornJsonDbApi with its connection and the arguments of its construction.
class Store
{
public:
    // members: the "member" object as JSON text. columns: what stands between the parentheses of CREATE TABLE; by
    // default every member as a column without a type.
    explicit Store(const std::string& members, const std::string& columns = "",
                   std::shared_ptr<Database> database = std::make_shared<Database>());

    VornJsonDbApi* operator->() { return m_api.get(); }
    Database& db() { return *m_database; }
    const std::string& name() const { return m_name; }
    Json::Value& definition() { return m_definition; }
    const std::string& createStatement() const { return m_createStatement; }

    // The library's type map of the table.
    Json::Value& types();

    // The rows of the table in the order of their rowids.
    std::vector<std::string> rows() { return m_database->rows("select * from " + m_name + " order by rowid"); }

private:
    std::shared_ptr<Database> m_database;
    std::string m_name;
    Json::Value m_definition;
    std::string m_createStatement;
    std::unique_ptr<VornJsonDbApi> m_api;
};

}  // namespace support

#endif  // VORNJSONDB_TESTS_STORE_H
