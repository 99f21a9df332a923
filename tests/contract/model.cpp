// SPDX-License-Identifier: MIT
//
// The model's texts. Plain on purpose: one rule after the other, nothing shared, nothing fast.

#include "model.h"

#include <cstdlib>

#include "json_value.h"
#include "model_format.h"

namespace model
{

namespace
{

bool isJsonType(const std::string& type)
{
    return type == "Json::Value" || type == "Json::objectValue" || type == "Json::arrayValue";
}

}  // namespace

std::optional<Columns> columnsOf(const Json::Value& definition, const std::string& table)
{
    const auto member = [](const Json::Value& value, const std::string& name)
    { return value.isObject() ? value.get(name, Json::Value()) : Json::Value(); };
    const Json::Value members = member(member(definition, table), "member");
    if (!members.isObject() || members.empty())
        return std::nullopt;
    Columns columns;
    for (auto it = members.begin(); it != members.end(); ++it)
    {
        if (!member(*it, "cpptype").isString())
            return std::nullopt;
        columns[it.name()] = (*it)["cpptype"].asString();
    }
    return columns;
}

std::string doubledQuotes(const std::string& text)
{
    std::string out;
    for (const char c : text)
    {
        if (c == '\0')
            break;
        out += c;
        if (c == '\'')
            out += c;
    }
    return out;
}

std::string columnList(const Columns& columns, const Json::Value* record)
{
    std::string out;
    for (const auto& [name, type] : columns)
    {
        if (record && !record->isMember(name))
            continue;
        out += name;
        if (name != columns.rbegin()->first)
            out += ",";
    }
    return out;
}

std::optional<std::string> valueList(const std::string& textSoFar, const Columns& columns, const Json::Value& record)
{
    std::string out = textSoFar;
    for (const auto& [name, type] : columns)
    {
        if (!record.isMember(name))
            continue;
        const std::optional<std::string> text = formatted(out, type, record[name]);
        if (!text)
            return std::nullopt;
        out = *text;
        out += name == columns.rbegin()->first ? ") " : ",";
    }
    return out;
}

std::optional<std::string> matchCondition(const Columns& columns, const std::string& name, const Json::Value& value)
{
    const auto column = columns.find(name);
    if (column == columns.end())
        return std::nullopt;
    const std::string& type = column->second;
    if (type == "string")
        return name + "='" + doubledQuotes(value.asString()) + "'";
    if (isJsonType(type))
        return name + "='" + doubledQuotes(support::writeReference(value)) + "'";
    if (type == "bool")
        return name + "=" + std::to_string(value.asInt());
    return name + "=" + doubledQuotes(value.asString());
}

std::optional<std::string> listCondition(const Columns& columns, const std::string& name, const Json::Value& list)
{
    const auto column = columns.find(name);
    if (column == columns.end() || list.type() != Json::arrayValue)
        return std::nullopt;
    const std::string& type = column->second;
    if (list.size() == 0)
        return "";
    std::string out = name + " in (";
    for (const Json::Value& item : list)
        if (type == "string")
            out += "'" + doubledQuotes(item.asString()) + "'";
        else if (isJsonType(type))
            out += "'" + doubledQuotes(support::writeReference(item)) + "'";
        else
            out += doubledQuotes(item.asString());
    return out + " )";
}

Fragment memberList(const std::string& textSoFar, const Columns& columns, const Json::Value& param, int joiner)
{
    const Fragment refused{-1, textSoFar};
    if (param.type() != Json::objectValue && param.type() != Json::nullValue)
        return refused;
    if (joiner < 0 || joiner > 2)
        return refused;
    const char* const joiners[] = {" or ", " and ", " , "};
    std::string out = textSoFar;
    bool written = false;
    for (const std::string& name : param.getMemberNames())
    {
        const bool raw = name == "vornSqlWhereFilter";
        if (!raw && columns.count(name) == 0)
            continue;
        if (written)
            out += joiners[joiner];
        else if (joiner != 2)
            out += " (";
        written = true;

        const Json::Value& value = param[name];
        if (raw)
        {
            if (value.type() != Json::stringValue)
                return {-1, out};
            out += " " + value.asString() + " ";
        }
        else if (value.type() == Json::arrayValue)
            out += listCondition(columns, name, value).value();
        else
            out += matchCondition(columns, name, value).value();
    }
    if (!written)
        return {1, textSoFar};
    if (joiner != 2)
        out += " )";
    return {0, out};
}

Fragment sortAndPage(const std::string& textSoFar, const Json::Value& param)
{
    if (param.type() != Json::objectValue && param.type() != Json::nullValue)
        return {-1, textSoFar};
    std::string out = textSoFar;
    if (param.isMember("sort_by"))
    {
        out += " order by '" + doubledQuotes(param["sort_by"].asCString()) + "'";
        if (param.isMember("sort_direction"))
            out += param["sort_direction"].asString() == "desc" ? " DESC" : " ASC";
    }
    if (param.isMember("limit"))
    {
        out += " LIMIT " + support::writeReference(param["limit"]);
        if (param.isMember("offset"))
            out += " OFFSET " + support::writeReference(param["offset"]);
    }
    return {0, out};
}

std::optional<std::string> saveText(const std::string& table, const Columns& columns, const Json::Value& record,
                                    bool insert)
{
    std::string out = insert ? "INSERT INTO " : "REPLACE INTO ";
    out += table + " (" + columnList(columns, &record) + ") VALUES (";
    const std::optional<std::string> withValues = valueList(out, columns, record);
    if (!withValues)
        return std::nullopt;
    return *withValues + ";select * from " + table + " where rowid == last_insert_rowid();";
}

std::string selectText(const std::string& table, const Columns& columns, const std::string& condition,
                       const std::string& clause)
{
    std::string out = "SELECT " + columnList(columns, nullptr) + " FROM " + table + " ";
    if (!condition.empty())
        out += " WHERE " + condition;
    return out + clause + ";";
}

std::string updateText(const std::string& table, const std::string& assignments, const std::string& condition)
{
    return "UPDATE " + table + " SET " + assignments + " WHERE " + condition + ";";
}

std::string deleteText(const std::string& table, const std::string& condition)
{
    return "DELETE FROM " + table + " " + (condition.empty() ? "" : " WHERE " + condition) + ";";
}

std::optional<Json::Value> rowRecord(const Columns& columns, int count, char** texts, char** names)
{
    Json::Value record(Json::objectValue);
    for (int i = 0; i < count; i++)
    {
        const auto column = names[i] != nullptr ? columns.find(names[i]) : columns.end();
        if (column == columns.end())
            return std::nullopt;
        if (texts[i] == nullptr)
            continue;
        const std::string& type = column->second;
        const char* const text = texts[i];
        if (type == "string")
            record[names[i]] = text;
        else if (type == "int" || type == "unsigned int")
            record[names[i]] = static_cast<Json::Int>(std::strtol(text, nullptr, 10));
        else if (type == "long long" || type == "unsigned long long")
            record[names[i]] = static_cast<Json::Int64>(std::strtoll(text, nullptr, 10));
        else if (type == "bool")
            record[names[i]] = std::strtol(text, nullptr, 10) == 1;
        else if (isJsonType(type))
            record[names[i]] = support::readReference(text);
        else
            return std::nullopt;
    }
    return record;
}

bool typesFit(const Columns& columns, const Json::Value& record)
{
    if (!record.isObject())
        return false;
    for (const std::string& name : record.getMemberNames())
    {
        const auto column = columns.find(name);
        if (column == columns.end())
            continue;
        const std::string& type = column->second;
        const Json::Value& value = record[name];
        bool fits = false;
        if (type == "int" || type == "long long" || type == "uid_t" || type == "time_t")
            fits = value.isIntegral();
        else if (type == "bool")
            fits = value.type() == Json::booleanValue;
        else if (type == "string")
            fits = value.type() == Json::stringValue;
        else if (type == "Json::arrayValue")
            fits = value.type() == Json::arrayValue;
        else if (type == "Json::objectValue")
            fits = value.type() == Json::objectValue;
        if (!fits)
            return false;
    }
    return true;
}

Json::Value withDefaults(const Json::Value& definition, const std::string& table, const Json::Value& record)
{
    Json::Value out = record;
    const Json::Value& members = definition[table]["member"];
    for (auto member = members.begin(); member != members.end(); ++member)
        if (!out.isMember(member.name()) && member->isMember("cppDefaultValue"))
            out[member.name()] = (*member)["cppDefaultValue"];
    return out;
}

}  // namespace model
