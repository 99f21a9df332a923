// SPDX-License-Identifier: MIT

#include "record_prototype.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "row_value.h"
#include "type_map.h"

RecordPrototype::RecordPrototype(std::vector<TypeMember>& members) : m_order(members.size()), m_slots(members.size())
{
    std::iota(m_order.begin(), m_order.end(), std::size_t{0});
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
    if (m_jRecord.isNull() || static_cast<std::size_t>(n_column) != m_order.size() ||
        std::find(column_value, column_value + n_column, nullptr) != column_value + n_column ||
        std::find(column_name, column_name + n_column, nullptr) != column_name + n_column)
        return false;
    if (!matches(members, column_name) && !learnOrder(members, column_name))
        return false;

    Json::Value jRow(m_jRecord);
    auto slot = m_slots.begin();
    for (Json::Value& jValue : jRow)
        *slot++ = &jValue;
    for (std::size_t i = 0; i < m_order.size(); ++i)
    {
        TypeMember& member = members[m_order[i]];
        convertColumn(member.type, member.reader, column_value[i], *m_slots[m_order[i]]);
    }
    jRec.swapPayload(jRow);
    return true;
}

bool RecordPrototype::matches(const std::vector<TypeMember>& members, char** column_name) const
{
    for (std::size_t i = 0; i < m_order.size(); ++i)
        if (std::strcmp(members[m_order[i]].strName.c_str(), column_name[i]) != 0)
            return false;
    return true;
}

bool RecordPrototype::learnOrder(const std::vector<TypeMember>& members, char** column_name)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < m_order.size(); ++i)
    {
        const auto it = std::lower_bound(members.begin(), members.end(), column_name[i],
                                         [](const TypeMember& member, const char* szName)
                                         { return member.strName.compare(szName) < 0; });
        const auto found = static_cast<std::size_t>(it - members.begin());
        if (it == members.end() || it->strName != column_name[i] ||
            std::find(order.begin(), order.end(), found) != order.end())
            return false;
        order.push_back(found);
    }
    m_order.swap(order);
    return true;
}
