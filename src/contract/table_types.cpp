// SPDX-License-Identifier: MIT

#include "table_types.h"

#include <map>

#include <VornJsonDbApi.h>

namespace
{

std::vector<Member> membersOf(const Json::Value& jType, const std::vector<std::string>& names)
{
    std::vector<Member> members;
    members.reserve(names.size());
    for (const std::string& strName : names)
    {
        const Json::Value& jMember = jType[strName];
        const std::string strTypeName = jMember["cpptype"].asString();
        const ColumnType* pType = columnTypeOf(strTypeName);
        members.push_back({strName, pType != nullptr ? pType : &kUnknownType, jMember.isMember("cppDefaultValue"),
                           jMember["cppDefaultValue"], strTypeName});
    }
    return members;
}

}  // namespace

TableTypes::TableTypes(const Json::Value& jTypeMap)
    : jType(jTypeMap), names(jType.getMemberNames()), schema(membersOf(jType, names)), rows(schema)
{
}

TableTypes& typesOf(Json::Value& jTableDef, std::string& strName)
{
    static auto& allTypes = *new std::map<std::string, TableTypes>;
    const auto it = allTypes.find(strName);
    if (it != allTypes.end())
        return it->second;

    const Json::Value& jType = VORN_JSON_DB::recType(jTableDef, strName);
    if (jType.isObject())
        return allTypes.try_emplace(strName, jType).first->second;
    static TableTypes& noTypes = *new TableTypes(*new Json::Value);
    return noTypes;
}
