// SPDX-License-Identifier: MIT
//
// Stores for the tests of libvornjsondb. Every Store gets a table name that the process has not seen before, because
// the library keeps the type map of a name for ever.

#ifndef VORNJSONDB_TESTS_STORE_H
#define VORNJSONDB_TESTS_STORE_H

#include <memory>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"
#include "database.h"
#include "json_value.h"

namespace support
{

// "t1", "t2", ...: never the same name twice in a process.
std::string freshTable();

// {name: {"member": members}}
Json::Value definitionOf(const std::string& name, const Json::Value& members);

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
