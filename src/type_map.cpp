// SPDX-License-Identifier: MIT

#include "type_map.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>

#include "VornJsonDbApi.h"

namespace
{

std::vector<TypeMember> membersOf(const Json::Value& jType)
{
    std::vector<TypeMember> members;
    members.reserve(jType.size());
    for (auto it = jType.begin(); it != jType.end(); ++it)
    {
        const Json::Value& jMember = *it;
        std::string strTypeName = jMember["cpptype"].asString();
        const CppType type = cppTypeOf(strTypeName);
        members.push_back({it.name(), std::move(strTypeName), type, jMember.isMember("cppDefaultValue"),
                           jMember["cppDefaultValue"], JsonReader()});
    }
    return members;
}

}  // namespace

TypeMap::TypeMap(const Json::Value& jType) : m_members(membersOf(jType)), m_prototype(m_members) {}

TypeMember* TypeMap::find(std::string_view name, std::size_t& expected)
{
    auto it = m_members.begin() + static_cast<std::ptrdiff_t>(std::min(expected, m_members.size()));
    if (it == m_members.end() || it->strName != name)
    {
        it =
            std::lower_bound(m_members.begin(), m_members.end(), name,
                             [](const TypeMember& member, std::string_view wanted) { return member.strName < wanted; });
        if (it == m_members.end() || it->strName != name)
            return nullptr;
    }
    expected = static_cast<std::size_t>(it - m_members.begin()) + 1;
    return &*it;
}

TypeMap& typeMapOf(Json::Value& jTableDef, std::string& strName)
{
    static auto& typeMaps = *new std::map<std::string, TypeMap>;
    static TypeMap noMembers{Json::Value()};

    const auto it = typeMaps.find(strName);
    if (it != typeMaps.end())
        return it->second;

    const Json::Value& jType = VORN_JSON_DB::recType(jTableDef, strName);
    if (!jType.isObject())
        return noMembers;
    return typeMaps.emplace(strName, TypeMap(jType)).first->second;
}
