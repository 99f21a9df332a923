// SPDX-License-Identifier: MIT
//
// The database, the definition and the table that the command line names.

#ifndef VORN_CLI_STORE_H
#define VORN_CLI_STORE_H

#include <json/json.h>
#include <sqlite3.h>
#include <vorn/table.h>
#include <vorn/transaction.h>

#include <memory>
#include <string>

#include "options.h"
#include "signals.h"

namespace cli
{

enum class Access
{
    Read,
    Write,
    Create  // the file and the table too, where there are none
};

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

class Store
{
public:
    // With blTransaction all that follows, and making the table too, is undone unless transaction().commit() is called.
    Store(const Options& options, Access access, bool blTransaction = false);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    vorn::Table& table() { return *m_table; }
    vorn::Transaction& transaction() { return *m_transaction; }
    sqlite3* connection() { return m_connection.get(); }
    const std::string& name() const { return m_strName; }

    // The "member" object of the table's definition.
    const Json::Value& members() const { return m_jMembers; }

private:
    Connection m_connection;
    std::unique_ptr<vorn::Transaction> m_transaction;
    std::string m_strName;
    Json::Value m_jMembers;
    std::unique_ptr<vorn::Table> m_table;
};

// Opens the database or throws. Signals interrupt what runs on it, and waiting for locks; options must outlive it.
Connection openDatabase(const Options& options, Access access);

// The whole text of a file, or of standard input for "-".
std::string readText(const std::string& strFile);

}  // namespace cli

#endif  // VORN_CLI_STORE_H
