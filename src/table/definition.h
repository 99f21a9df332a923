// SPDX-License-Identifier: MIT
//
// The definition of a table, checked once: what every operation knows of its members.

#ifndef VORN_DEFINITION_H
#define VORN_DEFINITION_H

#include <json/json.h>
#include <vorn/status.h>

#include <string>
#include <string_view>
#include <vector>

#include "../core/cpp_type.h"

namespace vorn
{

struct Member
{
    std::string_view name;  // lives as long as the process and ends in a NUL, so that records can point to it
    const ColumnType* pType = nullptr;  // the row of the table of types
    std::string strEqual;               // " WHERE "table"."name" = ?": the condition of most operations
    std::size_t tableLength = 0;        // of "table" in it
    bool blKey = false;
    bool blUnique = false;
    bool blRequired = false;
    bool blIndex = false;
    bool blHasDefault = false;
    Json::Value jDefault;

    // "table"."name", and "name", as SQL writes identifiers.
    std::string_view column() const
    {
        return std::string_view(strEqual).substr(kBefore.size(), strEqual.size() - kBefore.size() - kBehind.size());
    }
    std::string_view quotedName() const { return column().substr(tableLength + 1); }

    static constexpr std::string_view kBefore = " WHERE ";
    static constexpr std::string_view kBehind = " = ?";
};

class Definition
{
public:
    // False, with the status BadDefinition, where the definition does not have the shape.
    static bool read(const std::string& strName, const Json::Value& jTableDef, Definition& definition, Status& status);

    const std::string& name() const { return m_strName; }
    const std::string& quotedName() const { return m_strQuotedName; }
    const std::vector<Member>& members() const { return m_members; }  // in order of their names
    bool hasRequired() const { return m_blRequired; }                 // or key members

    // The member of that name, or null.
    const Member* find(std::string_view name) const;

private:
    std::string m_strName;
    std::string m_strQuotedName;
    std::vector<Member> m_members;
    bool m_blRequired = false;
};

// A name as SQL writes an identifier: in double quotes, its own doubled.
std::string quoted(std::string_view name);

}  // namespace vorn

#endif  // VORN_DEFINITION_H
