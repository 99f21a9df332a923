// SPDX-License-Identifier: MIT

#include "type_map.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

#include <VornJsonDbApi.h>

namespace
{

std::vector<TypeMember> membersOf(const Json::Value& jType)
{
    std::vector<TypeMember> members;
    members.reserve(jType.size());
    for (auto it = jType.begin(); it != jType.end(); ++it)
    {
        const Json::Value& jMember = *it;
        const std::string strTypeName = jMember["cpptype"].asString();
        members.push_back({it.name(), cppTypeOf(strTypeName), jMember.isMember("cppDefaultValue"), JsonReader(),
                           jMember["cppDefaultValue"], strTypeName});
    }
    return members;
}

}  // namespace

TypeMap::TypeMap(const Json::Value& jType) : m_jType(jType), m_members(membersOf(jType)), m_prototype(m_members) {}

TypeMember* TypeMap::find(std::string_view name, std::size_t& expected)
{
    // Names of a record mostly ascend and mostly belong to the next few members. Won 1 % of an update's instructions,
    // which an update needs to stay within a quarter of hand-written code (./dev figures).
    constexpr std::size_t kNear = 4;
    const std::size_t nearEnd = std::min(expected + kNear, m_members.size());
    for (std::size_t i = expected; i < nearEnd; ++i)
    {
        if (m_members[i].strName != name)
            continue;
        expected = i + 1;
        return &m_members[i];
    }

    const auto it =
        std::lower_bound(m_members.begin(), m_members.end(), name,
                         [](const TypeMember& member, std::string_view wanted) { return member.strName < wanted; });
    if (it == m_members.end() || it->strName != name)
        return nullptr;
    expected = static_cast<std::size_t>(it - m_members.begin()) + 1;
    return &*it;
}

TypeMap& typeMapOf(Json::Value& jTableDef, std::string& strName)
{
    static auto& typeMaps = *new std::map<std::string, TypeMap>;
    const auto it = typeMaps.find(strName);
    if (it != typeMaps.end())
        return it->second;

    const Json::Value& jType = VORN_JSON_DB::recType(jTableDef, strName);
    if (!jType.isObject())
    {
        static const Json::Value jNoType;
        static TypeMap noMembers{jNoType};
        return noMembers;
    }
    return typeMaps.emplace(strName, TypeMap(jType)).first->second;
}
