// SPDX-License-Identifier: MIT
//
// A table's type map in the form that the library works with: members in order of their names, types as CppType.

#ifndef VORN_TYPE_MAP_H
#define VORN_TYPE_MAP_H

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

#include "../core/cpp_type.h"
#include "../core/json_reader.h"
#include "record_prototype.h"

// What is read for every row and every statement stands first.
struct TypeMember
{
    std::string strName;
    CppType type;
    bool blHasDefault;
    JsonReader reader;  // of the column, where its type is a JSON type
    Json::Value jDefault;
    std::string strTypeName;
};

class TypeMap
{
public:
    explicit TypeMap(const Json::Value& jType);  // a type map as VORN_JSON_DB::recType() gives it, which stays

    const Json::Value& json() const { return m_jType; }
    std::vector<TypeMember>& members() { return m_members; }

    // The member of that name, or null. Names mostly arrive in order: expected, where the last search ended, is tried
    // first and moved behind the member found.
    TypeMember* find(std::string_view name, std::size_t& expected);

    // See RecordPrototype::fill().
    bool fillRecord(int n_column, char** column_value, char** column_name, Json::Value& jRec)
    {
        return m_prototype.fill(m_members, n_column, column_value, column_name, jRec);
    }

private:
    const Json::Value& m_jType;
    std::vector<TypeMember> m_members;
    RecordPrototype m_prototype;
};

// The type map of the table, built from recType() when the table is first asked for. Where recType() fails, and has
// logged why, it has no members, and the next call asks recType() again. Maps live as long as the process and are never
// freed: records that callers hold may use their member names as static keys.
TypeMap& typeMapOf(Json::Value& jTableDef, std::string& strName);

#endif  // VORN_TYPE_MAP_H
