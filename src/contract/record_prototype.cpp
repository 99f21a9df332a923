// SPDX-License-Identifier: MIT

#include "record_prototype.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "row_value.h"
#include "type_map.h"

RecordPrototype::RecordPrototype(std::vector<TypeMember>& members) : m_columns(members.size())
{
    std::iota(m_columns.begin(), m_columns.end(), std::size_t{0});
    Json::Value jRecord(Json::objectValue);
    for (TypeMember& member : members)
    {
        Json::Value jUnused;
        if (member.strName.size() != std::strlen(member.strName.c_str()) ||
            !convertColumn(member.type, member.reader, "", jUnused))
            return;
        jRecord[Json::StaticString(member.strName.c_str())] = Json::Value();
    }
    m_jRecord.swap(jRecord);
}

bool RecordPrototype::fill(std::vector<TypeMember>& members, int n_column, char** column_value, char** column_name,
                           Json::Value& jRec)
{
    if (m_jRecord.isNull() || static_cast<std::size_t>(n_column) != m_columns.size() ||
        std::find(column_value, column_value + n_column, nullptr) != column_value + n_column ||
        std::find(column_name, column_name + n_column, nullptr) != column_name + n_column)
        return false;
    if (!matches(members, column_name) && !learnColumns(members, column_name))
        return false;

    Json::Value jRow(m_jRecord);
    auto column = m_columns.begin();
    auto member = members.begin();
    for (Json::Value& jValue : jRow)
    {
        convertColumn(member->type, member->reader, column_value[*column], jValue);
        ++column;
        ++member;
    }
    jRec.swapPayload(jRow);
    return true;
}

bool RecordPrototype::matches(const std::vector<TypeMember>& members, char** column_name) const
{
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (std::strcmp(members[i].strName.c_str(), column_name[m_columns[i]]) != 0)
            return false;
    return true;
}

bool RecordPrototype::learnColumns(const std::vector<TypeMember>& members, char** column_name)
{
    const std::size_t nowhere = m_columns.size();
    std::vector<std::size_t> columns(m_columns.size(), nowhere);
    for (std::size_t i = 0; i < m_columns.size(); ++i)
    {
        const auto it = std::lower_bound(members.begin(), members.end(), column_name[i],
                                         [](const TypeMember& member, const char* szName)
                                         { return member.strName.compare(szName) < 0; });
        if (it == members.end() || it->strName != column_name[i])
            return false;
        std::size_t& column = columns[static_cast<std::size_t>(it - members.begin())];
        if (column != nowhere)  // the second column of that name
            return false;
        column = i;
    }
    m_columns.swap(columns);
    return true;
}
