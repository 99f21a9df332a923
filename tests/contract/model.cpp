// SPDX-License-Identifier: MIT
//
// The model's texts. Plain on purpose: one rule after the other, nothing shared, nothing fast.

#include "model.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>

namespace model
{

namespace
{

std::string print(const char* format, double number)
{
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, format, number);
    return buffer;
}

std::string realText(double number)
{
    const std::string text = print("%.17g", number);
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string quotedJson(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text)
    {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            out += std::string("\\") + c;
        else if (c == '\b')
            out += "\\b";
        else if (c == '\f')
            out += "\\f";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (code < 0x20)
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(code));
            out += escape;
        }
        else
            out += c;
    }
    return out + "\"";
}

std::string signedDigits(const Json::Value& value)
{
    if (value.type() == Json::nullValue)
        return "0";
    if (value.type() == Json::booleanValue)
        return value.asBool() ? "1" : "0";
    if (value.type() == Json::intValue)
        return std::to_string(value.asLargestInt());
    if (value.type() == Json::uintValue)
    {
        if (value.asLargestUInt() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            throw Refused("unsigned beyond the signed range");
        return std::to_string(value.asLargestUInt());
    }
    if (value.type() == Json::realValue)
    {
        const double number = value.asDouble();
        if (number >= 9223372036854775808.0 || number < -9223372036854775808.0)
            throw Refused("real out of range");
        return std::to_string(static_cast<long long>(number));
    }
    throw Refused("no integer");
}

std::string unsignedDigits(const Json::Value& value)
{
    if (value.type() == Json::uintValue)
        return std::to_string(value.asLargestUInt());
    const std::string digits = signedDigits(value);
    // -0.5 is refused too, although it would be cut to 0.
    if (digits[0] == '-' || (value.type() == Json::realValue && value.asDouble() < 0))
        throw Refused("negative");
    return digits;
}

// What "%d" prints of asInt().
std::string intDigits(const Json::Value& value)
{
    const std::string digits = signedDigits(value);
    const long long number = std::strtoll(digits.c_str(), nullptr, 10);
    if (number > std::numeric_limits<std::int32_t>::max() || number < std::numeric_limits<std::int32_t>::min())
        throw Refused("beyond 32 bits");
    if (value.type() == Json::realValue && (value.asDouble() > 2147483647.0 || value.asDouble() < -2147483648.0))
        throw Refused("beyond 32 bits");
    return digits;
}

double number(const Json::Value& value)
{
    if (value.type() == Json::nullValue)
        return 0;
    if (value.type() == Json::booleanValue)
        return value.asBool() ? 1 : 0;
    if (value.type() == Json::intValue)
        return static_cast<double>(value.asLargestInt());
    if (value.type() == Json::uintValue)
        return static_cast<double>(value.asLargestUInt());
    if (value.type() == Json::realValue)
        return value.asDouble();
    throw Refused("no number");
}

std::string literal(const std::string& text)
{
    return "'" + doubledQuotes(text) + "'";
}

std::optional<std::string> valueText(const std::string& type, const Json::Value& value)
{
    if (type == "string")
        return literal(bareText(value));
    if (type == "long long" || type == "int" || type == "long" || type == "bool")
        return signedDigits(value);
    if (type == "unsigned long long" || type == "unsigned int" || type == "unsigned long" || type == "unsigned")
        return unsignedDigits(value);
    if (type == "float")
        return print("%f", static_cast<double>(static_cast<float>(number(value))));
    if (type == "double")
        return print("%f", number(value));
    if (type == "Json::objectValue" || type == "Json::arrayValue")
        return literal(jsonText(value));
    return std::nullopt;
}

struct Formatted
{
    std::string text;
    bool cut = false;
};

// What a formatter makes of text that it has written itself once before.
Formatted formattedAgain(const std::string& text)
{
    const std::string consuming = "dgzqQwcouxXfeEGinpTSrs";
    const std::string modifiers = "-+ #!,.*l0123456789";
    Formatted out;
    for (std::size_t i = 0; i < text.size(); i++)
    {
        if (text[i] != '%')
        {
            out.text += text[i];
            continue;
        }
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (next == '\0' || consuming.find(next) != std::string::npos || modifiers.find(next) != std::string::npos)
            throw Undefined("a conversion inside a value");
        if (next != '%')
        {
            out.cut = true;
            return out;
        }
        out.text += '%';
        i++;
    }
    return out;
}

bool isJsonType(const std::string& type)
{
    return type == "Json::Value" || type == "Json::objectValue" || type == "Json::arrayValue";
}

}  // namespace

Columns columnsOf(const Json::Value& definition, const std::string& table)
{
    Columns columns;
    const Json::Value& members = definition[table]["member"];
    for (auto member = members.begin(); member != members.end(); ++member)
        columns[member.name()] = (*member)["cpptype"].asString();
    return columns;
}

std::string jsonText(const Json::Value& value)
{
    if (value.type() == Json::nullValue)
        return "null";
    if (value.type() == Json::stringValue)
        return quotedJson(value.asString());
    if (value.type() == Json::realValue)
        return realText(value.asDouble());
    std::string out;
    if (value.type() == Json::arrayValue)
    {
        for (const Json::Value& item : value)
            out += (out.empty() ? "" : ",") + jsonText(item);
        return "[" + out + "]";
    }
    if (value.type() == Json::objectValue)
    {
        for (auto member = value.begin(); member != value.end(); ++member)
            out += (out.empty() ? "" : ",") + quotedJson(member.name()) + ":" + jsonText(*member);
        return "{" + out + "}";
    }
    return bareText(value);
}

std::string bareText(const Json::Value& value)
{
    if (value.type() == Json::nullValue)
        return "";
    if (value.type() == Json::booleanValue)
        return value.asBool() ? "true" : "false";
    if (value.type() == Json::intValue)
        return std::to_string(value.asLargestInt());
    if (value.type() == Json::uintValue)
        return std::to_string(value.asLargestUInt());
    if (value.type() == Json::realValue)
        return realText(value.asDouble());
    if (value.type() == Json::stringValue)
        return value.asString();
    throw Refused("no scalar");
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
        const std::optional<std::string> value = valueText(type, record[name]);
        if (!value)
            return std::nullopt;
        const Formatted before = formattedAgain(out);
        out = before.text;
        if (!before.cut)
            out += *value;
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
        return name + "='" + doubledQuotes(bareText(value)) + "'";
    if (isJsonType(type))
        return name + "='" + doubledQuotes(jsonText(value)) + "'";
    if (type == "bool")
        return name + "=" + intDigits(value);
    return name + "=" + doubledQuotes(bareText(value));
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
    {
        if (type == "string")
            out += "'" + doubledQuotes(bareText(item)) + "'";
        else if (isJsonType(type))
            out += "'" + doubledQuotes(jsonText(item)) + "'";
        else
            out += doubledQuotes(bareText(item));
    }
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
        if (param["sort_by"].type() != Json::stringValue)
            throw Refused("sort_by is no string");
        out += " order by '" + doubledQuotes(param["sort_by"].asString()) + "'";
        if (param.isMember("sort_direction"))
            out += bareText(param["sort_direction"]) == "desc" ? " DESC" : " ASC";
    }
    if (param.isMember("limit"))
    {
        out += " LIMIT " + jsonText(param["limit"]);
        if (param.isMember("offset"))
            out += " OFFSET " + jsonText(param["offset"]);
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

std::optional<Json::Value> rowRecord(const Columns& columns, const std::vector<std::string>& names,
                                     const std::vector<std::optional<std::string>>& texts)
{
    Json::Value record(Json::objectValue);
    for (std::size_t i = 0; i < names.size(); i++)
    {
        const auto column = columns.find(names[i]);
        if (column == columns.end())
            return std::nullopt;
        if (!texts[i])
            continue;
        const std::string& type = column->second;
        const char* const text = texts[i]->c_str();
        if (type == "string")
            record[names[i]] = text;
        else if (type == "int" || type == "unsigned int")
            record[names[i]] = static_cast<Json::Int>(std::strtol(text, nullptr, 10));
        else if (type == "long long" || type == "unsigned long long")
            record[names[i]] = static_cast<Json::Int64>(std::strtoll(text, nullptr, 10));
        else if (type == "bool")
            record[names[i]] = std::strtol(text, nullptr, 10) == 1;
        else if (isJsonType(type))
        {
            const Json::CharReaderBuilder builder;
            const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
            Json::Value parsed;
            if (!reader->parse(text, text + texts[i]->size(), &parsed, nullptr))
                parsed = Json::Value();
            record[names[i]] = parsed;
        }
        else
            return std::nullopt;
    }
    return record;
}

bool typesFit(const Columns& columns, const Json::Value& record)
{
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
