// SPDX-License-Identifier: MIT

#include "definition.h"

#include <sqlite3.h>

#include <cstdlib>

#include "../core/json_members.h"
#include "cell_value.h"
#include "failure.h"
#include "join.h"
#include "names.h"

namespace vorn
{

namespace
{

bool failDefinition(Status& status, std::string_view member, const char* szText)
{
    return fail(status, Code::BadDefinition, member, szText);
}

const Json::Value* memberOf(const Json::Value& jObject, std::string_view name)
{
    return jObject.find(name.data(), name.data() + name.size());
}

bool readFlag(const Json::Value& jEntry, std::string_view flag, std::string_view member, bool& blFlag, Status& status)
{
    const Json::Value* pFlag = memberOf(jEntry, flag);
    if (pFlag == nullptr)
        return true;
    if (!pFlag->isBool())
        return fail(status, Code::BadDefinition, member, "\"^\" in the definition must be a boolean.", flag);
    blFlag = pFlag->asBool();
    return true;
}

bool readMember(std::string_view name, const Json::Value& jEntry, Member& member, Status& status)
{
    if (name.empty() || name.find('\0') != std::string_view::npos || name[0] == '$' || name[0] == '-')
        return failDefinition(status, name, "A member's name must not be empty, hold a NUL or begin with '$' or '-'.");
    if (!jEntry.isObject())
        return failDefinition(status, name, "A member's entry in the definition must be an object.");

    const Json::Value* pTypeName = memberOf(jEntry, "cpptype");
    if (pTypeName == nullptr || !pTypeName->isString())
        return failDefinition(status, name, "A member's entry in the definition needs the text \"cpptype\".");
    member.pType = columnTypeOf(pTypeName->asString());
    if (member.pType == nullptr)
        return failDefinition(status, name, "The definition names a type that does not exist.");

    if (!readFlag(jEntry, "key", name, member.blKey, status) ||
        !readFlag(jEntry, "unique", name, member.blUnique, status) ||
        !readFlag(jEntry, "required", name, member.blRequired, status) ||
        !readFlag(jEntry, "index", name, member.blIndex, status))
        return false;

    member.name = internedName(name);
    if (const Json::Value* pDefault = memberOf(jEntry, "cppDefaultValue"))
    {
        if (!checkValue(member, *pDefault, name, status))
        {
            const std::string strText = std::move(status.text);
            return fail(status, Code::BadDefinition, name, "The default in the definition does not fit: ^", strText);
        }
        if (member.blUnique && !pDefault->isNull())
            return failDefinition(status, name, "A \"unique\" member can have no default but null.");
        member.blHasDefault = true;
        Json::Value jCopy(*pDefault);  // copyPayload() leaves a value that cannot be destroyed when memory runs out
        member.jDefault.swapPayload(jCopy);
    }
    return true;
}

// Names that differ in ASCII case only are one name to SQLite.
bool checkCase(const std::vector<Member>& members, Status& status)
{
    std::vector<const char*> names;
    names.reserve(members.size());
    for (const Member& member : members)
        names.push_back(member.name.data());
    std::qsort(
        names.data(), names.size(), sizeof names[0],
        [](const void* pLeft, const void* pRight)
        { return sqlite3_stricmp(*static_cast<const char* const*>(pLeft), *static_cast<const char* const*>(pRight)); });
    for (std::size_t i = 1; i < names.size(); ++i)
        if (sqlite3_stricmp(names[i - 1], names[i]) == 0)
            return failDefinition(status, names[i - 1], "Two members' names differ in the case of ASCII letters only.");
    return true;
}

}  // namespace

std::string quoted(std::string_view name)
{
    std::string strQuoted = "\"";
    for (const char c : name)
        strQuoted.append(c == '"' ? 2 : 1, c);
    return strQuoted += '"';
}

bool Definition::read(const std::string& strName, const Json::Value& jTableDef, Definition& definition, Status& status)
{
    if (strName.empty() || strName.find('\0') != std::string::npos)
        return failDefinition(status, "", "A table's name must not be empty or hold a NUL.");
    const Json::Value* pTable = jTableDef.isObject() ? memberOf(jTableDef, strName) : nullptr;
    const Json::Value* pMembers = pTable != nullptr && pTable->isObject() ? memberOf(*pTable, "member") : nullptr;
    if (pMembers == nullptr || !pMembers->isObject() || pMembers->empty())
        return failDefinition(status, "",
                              "The definition must hold {TABLE: {\"member\": {NAME: {\"cpptype\": TYPE}}}} for this "
                              "table, with at least one member.");

    Definition read;
    read.m_strName = strName;
    read.m_strQuotedName = quoted(strName);
    int iKeys = 0;
    for (auto it = pMembers->begin(); it != pMembers->end(); ++it)
    {
        Member member;
        if (!readMember(nameOf(it), *it, member, status))
            return false;
        member.strEqual = join({Member::kBefore, read.m_strQuotedName, ".", quoted(member.name), Member::kBehind});
        member.tableLength = read.m_strQuotedName.size();
        read.m_blRequired = read.m_blRequired || member.blKey || member.blRequired;
        iKeys += member.blKey ? 1 : 0;
        read.m_members.push_back(std::move(member));
    }
    if (!checkCase(read.m_members, status))
        return false;
    for (const Member& member : read.m_members)
        if (iKeys == 1 && member.blKey && member.pType->valueClass == ValueClass::Bool)
            return failDefinition(status, member.name, "A boolean cannot be the only member of the key.");
    definition = std::move(read);
    return true;
}

}  // namespace vorn
