// SPDX-License-Identifier: MIT
//
// The model's record operations.

#include "model_table.h"

namespace model
{

namespace
{

struct Rows
{
    const Columns* columns;
    Json::Value* out;
    bool stopped = false;
};

int addRow(void* context, int count, char** texts, char** names)
{
    Rows& rows = *static_cast<Rows*>(context);
    const std::optional<Json::Value> record = rowRecord(*rows.columns, count, texts, names);
    rows.stopped = !record;
    if (record)
        rows.out->append(*record);
    return rows.stopped ? 1 : 0;
}

}  // namespace

Table::Table(sqlite3* db, std::string name, Json::Value definition)
    : m_db(db),
      m_name(std::move(name)),
      m_definition(std::move(definition)),
      m_columns(columnsOf(m_definition, m_name).value_or(Columns()))
{
}

int Table::run(const std::string& sql, Json::Value* rows)
{
    constexpr int attempts = 500;
    m_error.clear();
    for (int i = 0; i < attempts && !sql.empty(); i++)
    {
        Rows context{&m_columns, rows};
        char* error = nullptr;
        const int status = sqlite3_exec(m_db, sql.c_str(), rows ? addRow : nullptr, &context, &error);
        m_error = error ? error : "";
        sqlite3_free(error);
        if (status == SQLITE_OK)
            return rows ? 0 : sqlite3_changes(m_db);
        m_refused.emplace_back(m_error, sql);
        // Hostile SQL can raise an error with this text.
        if (context.stopped || m_error.find("database is locked") == std::string::npos)
            break;
    }
    return -1;
}

int Table::failedWrite()
{
    if (m_error.find("UNIQUE constraint failed") != std::string::npos)
        m_message = "DUPLICATE_PRIMARY_KEY";
    return -1;
}

int Table::save(Json::Value& record, bool insert)
{
    const std::optional<std::string> sql = saveText(m_name, m_columns, record, insert);
    Json::Value rows(Json::arrayValue);
    if (!sql || run(*sql, &rows) < 0 || rows.empty())
        return -1;
    record = Json::Value(rows[0]);
    return 0;
}

int Table::create(const Json::Value& in, Json::Value& out)
{
    if (in.empty())
        return failedWrite();
    Json::Value record = withDefaults(m_definition, m_name, in);
    if (!typesFit(m_columns, record) || save(record, true) < 0)
        return failedWrite();
    out = record;
    return 0;
}

int Table::fillDefaults(Json::Value& record, bool requireAll)
{
    const Json::Value filled = withDefaults(m_definition, m_name, record);
    if (!requireAll)
    {
        record = filled;
        return 0;
    }
    for (const auto& [name, type] : m_columns)
        if (!record.isMember(name))
            return -1;
    return 0;
}

int Table::list(const Json::Value& param, Json::Value& out)
{
    if (out.type() != Json::nullValue && out.type() != Json::arrayValue)
        return -1;
    const Fragment condition = memberList("", m_columns, param, 1);
    if (condition.result < 0)
        return -1;
    const Fragment clause = sortAndPage("", param);
    return run(selectText(m_name, m_columns, condition.text, clause.text), &out);
}

int Table::getOne(const Json::Value& param, Json::Value& out)
{
    Json::Value rows(Json::arrayValue);
    if (list(param, rows) < 0)
        return -1;
    if (rows.empty())
        return 0;
    if (out.type() != Json::nullValue && out.type() != Json::objectValue)
        return -1;
    for (const std::string& name : rows[0].getMemberNames())
        out[name] = rows[0][name];
    return 1;
}

int Table::updateByWhere(const Json::Value& values, const std::string& condition)
{
    if (condition.empty() || values.empty())
        return -1;
    Json::Value columns = values;
    columns.removeMember("vornSqlWhereFilter");
    const Fragment assignments = memberList("", m_columns, columns, 2);
    if (assignments.result < 0)
        return -1;
    return run(updateText(m_name, assignments.text, condition), nullptr) < 0 ? -1 : 0;
}

int Table::updateByFilter(const Json::Value& filter, const Json::Value& values)
{
    if (filter.type() != Json::objectValue || filter.empty() || values.type() != Json::objectValue)
        return failedWrite();
    const Fragment condition = memberList("", m_columns, filter, 1);
    if (condition.result < 0 || condition.text.empty() || !typesFit(m_columns, values))
        return failedWrite();
    return updateByWhere(values, condition.text) < 0 ? failedWrite() : 0;
}

int Table::remove(const Json::Value& param, bool allowAll)
{
    if (param.type() != Json::objectValue)
        return -1;
    const Fragment condition = memberList("", m_columns, param, 1);
    if (condition.result < 0 || (condition.text.empty() && !allowAll))
        return -1;
    return run(deleteText(m_name, condition.text), nullptr);
}

int Table::removeByArray(const std::vector<std::string>& values, const std::optional<std::string>& name)
{
    const auto column = name ? m_columns.find(*name) : m_columns.end();
    if (values.empty() || column == m_columns.end() || column->second != "string")
        return -1;
    Json::Value param;
    for (const std::string& value : values)
        param[*name].append(value);
    return remove(param, false);
}

}  // namespace model
