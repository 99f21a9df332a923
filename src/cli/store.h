// SPDX-License-Identifier: MIT
//
// The database, the definition and the table that the command line names.

#ifndef VORN_CLI_STORE_H
#define VORN_CLI_STORE_H

#include <json/json.h>
#include <sqlite3.h>
#include <vorn/table.h>

#include <memory>
#include <string>

#include "options.h"

namespace cli
{

enum class Access
{
    Read,
    Write,
    Create  // the file too, where there is none
};

class Store
{
public:
    Store(const Options& options, Access access);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    vorn::Table& table() { return *m_pTable; }
    sqlite3* connection() { return m_pConnection.get(); }

    // The "member" object of the table's definition.
    const Json::Value& members() const { return m_jMembers; }

private:
    std::unique_ptr<sqlite3, decltype(&sqlite3_close)> m_pConnection;
    Json::Value m_jMembers;
    std::unique_ptr<vorn::Table> m_pTable;
};

// Opens the database or throws; SIGINT interrupts what runs on it.
sqlite3* openDatabase(const Options& options, Access access);

// Whether SIGINT has come.
bool isInterrupted();

// The whole text of a file, or of standard input for "-".
std::string readText(const std::string& strFile);

}  // namespace cli

#endif  // VORN_CLI_STORE_H
