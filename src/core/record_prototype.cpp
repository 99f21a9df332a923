// SPDX-License-Identifier: MIT

#include "record_prototype.h"

#include "json_members.h"

RecordPrototype::RecordPrototype(const std::vector<std::string_view>& names) : m_jRecord(Json::objectValue)
{
    for (std::string_view name : names)
        m_jRecord[Json::StaticString(name.data())] = Json::Value();
}

void RecordPrototype::removeNulls(Json::Value& jRow)
{
    auto it = jRow.begin();
    while (it != jRow.end())
    {
        const Json::Value& jValue = *it;
        const std::string_view name = nameOf(it);
        ++it;  // first: removing the member ends an iterator that stands at it
        if (jValue.isNull())
            jRow.removeMember(name.data(), name.data() + name.size(), nullptr);
    }
}
