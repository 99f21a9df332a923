// SPDX-License-Identifier: MIT

#include "definition.h"

#include <sqlite3.h>

#include <algorithm>

#include "../core/json_members.h"
#include "../core/schema.h"
#include "cell_value.h"
#include "failure.h"
#include "names.h"

namespace vorn
{

namespace
{

bool failDefinition(Status& status, std::string_view member, std::string text)
{
    return fail(status, Code::BadDefinition, member, std::move(text));
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
        return failDefinition(status, member, "\"" + std::string(flag) + "\" in the definition must be a boolean.");
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
            status.code = Code::BadDefinition;
            status.text = "The default in the definition does not fit: " + status.text;
            return false;
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
    std::vector<const Member*> sorted;
    sorted.reserve(members.size());
    for (const Member& member : members)
        sorted.push_back(&member);
    std::sort(sorted.begin(), sorted.end(),
              [](const Member* pLeft, const Member* pRight)
              { return sqlite3_stricmp(pLeft->name.data(), pRight->name.data()) < 0; });
    const auto same = std::adjacent_find(sorted.begin(), sorted.end(),
                                         [](const Member* pLeft, const Member* pRight)
                                         { return sqlite3_stricmp(pLeft->name.data(), pRight->name.data()) == 0; });
    return same == sorted.end() ||
           failDefinition(status, (*same)->name, "Two members' names differ in the case of ASCII letters only.");
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
        member.strQuoted = quoted(member.name);
        member.strColumn = read.m_strQuotedName + '.' + member.strQuoted;
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

const Member* Definition::find(std::string_view name, std::size_t& expected) const
{
    return findMember(m_members, name, expected);
}

}  // namespace vorn
