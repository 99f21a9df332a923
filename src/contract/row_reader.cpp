// SPDX-License-Identifier: MIT

#include "row_reader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>

#include "../core/json_members.h"
#include "../core/json_text.h"

namespace
{

// For texts that the columns' own readers do not know. It is never destroyed: the host's own static objects may read
// rows while they are destroyed.
Json::CharReader& anyReader()
{
    static Json::CharReader& reader = []() -> Json::CharReader&
    {
        Json::CharReaderBuilder builder;
        builder["collectComments"] = false;
        builder["allowSpecialFloats"] = true;
        return *builder.newCharReader();
    }();
    return reader;
}

bool convert(Form form, JsonReader& reader, const char* szText, Json::Value& jValue)
{
    constexpr int kDecimal = 10;
    switch (form)
    {
        case Form::Text:
            setPayload(jValue, Json::Value(szText));
            return true;
        case Form::Int:
            setPayload(jValue, Json::Value(static_cast<Json::Int>(std::strtol(szText, nullptr, kDecimal))));
            return true;
        case Form::Int64:
            setPayload(jValue, Json::Value(static_cast<Json::Int64>(std::strtoll(szText, nullptr, kDecimal))));
            return true;
        case Form::Json:  // null where the text is not JSON
            if (!reader.read(szText, jValue))
                readByJsonCpp(szText, anyReader(), jValue);
            return true;
        case Form::Bool:
            setPayload(jValue, Json::Value(std::strtol(szText, nullptr, kDecimal) == 1));
            return true;
        default:
            return false;
    }
}

RecordPrototype prototypeOf(const Schema& schema)
{
    std::vector<std::string_view> names;
    for (const Member& member : schema.members())
    {
        if (member.pType->read == Form::None || member.name.find('\0') != std::string_view::npos)
            return {};
        names.push_back(member.name);
    }
    return RecordPrototype(names);
}

}  // namespace

RowReader::RowReader(const Schema& schema)
    : m_schema(schema),
      m_readers(schema.members().size()),
      m_prototype(prototypeOf(schema)),
      m_columns(schema.members().size())
{
    std::iota(m_columns.begin(), m_columns.end(), std::size_t{0});
}

bool RowReader::readColumn(const Member& member, const char* szText, Json::Value& jValue)
{
    return convert(member.pType->read, m_readers[m_schema.indexOf(member)], szText, jValue);
}

bool RowReader::readRow(int n_column, char** column_value, char** column_name, Json::Value& jRec)
{
    if (m_prototype.isNone() || static_cast<std::size_t>(n_column) != m_columns.size() ||
        std::find(column_value, column_value + n_column, nullptr) != column_value + n_column ||
        std::find(column_name, column_name + n_column, nullptr) != column_name + n_column)
        return false;
    if (!matches(column_name) && !learnColumns(column_name))
        return false;

    m_prototype.fill(
        jRec, [&](std::size_t i, Json::Value& jValue)
        { return convert(m_schema.members()[i].pType->read, m_readers[i], column_value[m_columns[i]], jValue); });
    return true;
}

bool RowReader::matches(char** column_name) const
{
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (std::strcmp(m_schema.members()[i].name.data(), column_name[m_columns[i]]) != 0)
            return false;
    return true;
}

bool RowReader::learnColumns(char** column_name)
{
    const std::size_t nowhere = m_columns.size();
    std::vector<std::size_t> columns(m_columns.size(), nowhere);
    std::size_t expected = 0;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
    {
        const Member* pMember = m_schema.find(column_name[i], expected);
        if (pMember == nullptr)
            return false;
        std::size_t& column = columns[m_schema.indexOf(*pMember)];
        if (column != nowhere)  // the second column of that name
            return false;
        column = i;
    }
    m_columns.swap(columns);
    return true;
}
