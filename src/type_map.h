// SPDX-License-Identifier: MIT
//
// A table's type map in the form that the library works with: members in order of their names, types as CppType.

#ifndef VORN_TYPE_MAP_H
#define VORN_TYPE_MAP_H

#include <json/json.h>

#include <string>
#include <vector>

#include "cpp_type.h"

struct TypeMember
{
    std::string strName;
    std::string strTypeName;
    CppType type;
    bool blHasDefault;
    Json::Value jDefault;
};

class TypeMap
{
public:
    TypeMap() = default;
    explicit TypeMap(const Json::Value& jType);  // a type map as VORN_JSON_DB::recType() gives it

    const std::vector<TypeMember>& members() const { return m_members; }

    // The member of that name, or null. Names mostly arrive in order: expected, where the last search ended, is tried
    // first and moved behind the member found.
    const TypeMember* find(const char* szName, std::size_t length, std::size_t& expected) const;

private:
    std::vector<TypeMember> m_members;
};

// The type map of the table, built from recType() when the table is first asked for. Where recType() fails, and has
// logged why, it has no members, and the next call asks recType() again. Maps live as long as the process and are never
// freed: records that callers hold may use their member names as static keys.
const TypeMap& typeMapOf(Json::Value& jTableDef, std::string& strName);

#endif  // VORN_TYPE_MAP_H
