// SPDX-License-Identifier: MIT
//
// What the record operations are expected to do: the model's texts, run on a connection of their own.

#ifndef VORN_TESTS_MODEL_TABLE_H
#define VORN_TESTS_MODEL_TABLE_H

#include <json/json.h>
#include <sqlite3.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model.h"

namespace model
{

class Table
{
public:
    Table(sqlite3* db, std::string name, Json::Value definition);  // without columns where it defines none

    int save(Json::Value& record, bool insert);
    int create(const Json::Value& in, Json::Value& out);
    int fillDefaults(Json::Value& record, bool requireAll);
    int list(const Json::Value& param, Json::Value& out);
    int getOne(const Json::Value& param, Json::Value& out);
    int updateByWhere(const Json::Value& values, const std::string& condition);
    int updateByFilter(const Json::Value& filter, const Json::Value& values);
    int remove(const Json::Value& param, bool allowAll);
    int removeByArray(const std::vector<std::string>& values, const std::optional<std::string>& name);

    const std::string& name() const { return m_name; }
    const Columns& columns() const { return m_columns; }
    // The message that a caller reads after a duplicate key.
    const std::string& message() const { return m_message; }
    // Every text that SQLite refused, with SQLite's error text before it.
    const std::vector<std::pair<std::string, std::string>>& refused() const { return m_refused; }

    // Runs a text as the library is expected to, again while it fails with "database is locked". Rows are appended to
    // rows as records when it is given. The count of changed rows, 0 for queries, or -1.
    int run(const std::string& sql, Json::Value* rows);

private:
    int failedWrite();

    sqlite3* m_db;
    std::string m_name;
    Json::Value m_definition;
    Columns m_columns;
    std::string m_error;
    std::string m_message;
    std::vector<std::pair<std::string, std::string>> m_refused;
};

}  // namespace model

#endif
