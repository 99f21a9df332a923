// SPDX-License-Identifier: MIT
//
// The model's record operations.

#include "model_table.h"

#include <cstddef>
#include <optional>

namespace model
{

namespace
{

struct Rows
{
    const Columns* columns;
    Json::Value* out;
};

int addRow(void* context, int count, char** texts, char** names)
{
    const Rows* rows = static_cast<Rows*>(context);
    std::vector<std::string> columnNames;
    std::vector<std::optional<std::string>> columnTexts;
    for (int i = 0; i < count; i++)
    {
        columnNames.emplace_back(names[i]);
        columnTexts.push_back(texts[i] ? std::optional<std::string>(texts[i]) : std::nullopt);
    }
    const std::optional<Json::Value> record = rowRecord(*rows->columns, columnNames, columnTexts);
    if (!record)
    {
        return 1;
    }
    rows->out->append(*record);
    return 0;
}

}  // namespace

Table::Table(sqlite3* db, std::string name, Json::Value definition)
    : m_db(db), m_name(std::move(name)), m_definition(std::move(definition)), m_columns(columnsOf(m_definition, m_name))
{
}

int Table::run(const std::string& sql, Json::Value* rows)
{
    Rows context{&m_columns, rows};
    char* error = nullptr;
    const int status = sqlite3_exec(m_db, sql.c_str(), rows ? addRow : nullptr, &context, &error);
    m_error = error ? error : "";
    sqlite3_free(error);
    if (status != SQLITE_OK)
    {
        m_refused.emplace_back(m_error, sql);
        return -1;
    }
    return rows ? 0 : sqlite3_changes(m_db);
}

int Table::failedWrite()
{
    if (m_error.find("UNIQUE constraint failed") != std::string::npos)
    {
        m_message = "DUPLICATE_PRIMARY_KEY";
    }
    return -1;
}

int Table::save(Json::Value& record, bool insert)
{
    const std::optional<std::string> sql = saveText(m_name, m_columns, record, insert);
    Json::Value rows(Json::arrayValue);
    if (!sql || run(*sql, &rows) < 0 || rows.size() == 0)
    {
        return -1;
    }
    record = Json::Value(rows[0]);
    return 0;
}

int Table::create(const Json::Value& in, Json::Value& out)
{
    if (in.size() == 0)
    {
        return failedWrite();
    }
    Json::Value record = withDefaults(m_definition, m_name, in);
    if (!typesFit(m_columns, record) || save(record, true) < 0)
    {
        return failedWrite();
    }
    out = record;
    return 0;
}

int Table::list(const Json::Value& param, Json::Value& out)
{
    if (out.type() != Json::nullValue && out.type() != Json::arrayValue)
    {
        return -1;
    }
    const Fragment condition = memberList("", m_columns, param, 1);
    if (condition.result < 0)
    {
        return -1;
    }
    const Fragment clause = sortAndPage("", param);
    return run(selectText(m_name, m_columns, condition.text, clause.text), &out);
}

int Table::getOne(const Json::Value& param, Json::Value& out)
{
    Json::Value rows(Json::arrayValue);
    if (list(param, rows) < 0)
    {
        return -1;
    }
    if (rows.size() == 0)
    {
        return 0;
    }
    if (out.type() != Json::nullValue && out.type() != Json::objectValue)
    {
        return -1;
    }
    for (const std::string& name : rows[0].getMemberNames())
    {
        out[name] = rows[0][name];
    }
    return 1;
}

int Table::updateByWhere(const Json::Value& values, const std::string& condition)
{
    if (condition.empty() || values.size() == 0)
    {
        return -1;
    }
    Json::Value columns = values;
    columns.removeMember("vornSqlWhereFilter");
    const Fragment assignments = memberList("", m_columns, columns, 2);
    if (assignments.result < 0)
    {
        return -1;
    }
    return run(updateText(m_name, assignments.text, condition), nullptr) < 0 ? -1 : 0;
}

int Table::updateByFilter(const Json::Value& filter, const Json::Value& values)
{
    if (filter.type() != Json::objectValue || filter.size() == 0 || values.type() != Json::objectValue)
    {
        return failedWrite();
    }
    const Fragment condition = memberList("", m_columns, filter, 1);
    if (condition.result < 0 || condition.text.empty() || !typesFit(m_columns, values))
    {
        return failedWrite();
    }
    return updateByWhere(values, condition.text) < 0 ? failedWrite() : 0;
}

int Table::remove(const Json::Value& param, bool allowAll)
{
    if (param.type() != Json::objectValue)
    {
        return -1;
    }
    const Fragment condition = memberList("", m_columns, param, 1);
    if (condition.result < 0 || (condition.text.empty() && !allowAll))
    {
        return -1;
    }
    return run(deleteText(m_name, condition.text), nullptr);
}

int Table::removeByArray(const std::vector<std::string>& values, const std::string& name)
{
    const auto column = m_columns.find(name);
    if (values.empty() || column == m_columns.end() || column->second != "string")
    {
        return -1;
    }
    Json::Value param;
    for (const std::string& value : values)
    {
        param[name].append(value);
    }
    return remove(param, false);
}

int Table::removeByName(const std::string& value, const std::string& name)
{
    return value.empty() ? -1 : removeByArray({value}, name);
}

}  // namespace model
