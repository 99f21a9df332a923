// SPDX-License-Identifier: MIT

#include "ddl.h"

#include <algorithm>
#include <charconv>

#include "../core/text.h"
#include "cell_value.h"
#include "join.h"
#include "query.h"

namespace vorn
{

namespace
{

bool isSoleKey(const Definition& definition, const Member& member)
{
    return member.blKey && std::count_if(definition.members().begin(), definition.members().end(),
                                         [](const Member& other) { return other.blKey; }) == 1;
}

std::string textLiteral(std::string_view text)
{
    static constexpr char kHexDigits[] = "0123456789abcdef";
    if (text.find('\0') != std::string_view::npos)  // a literal would end there
    {
        std::string strHex = "(CAST(x'";
        for (const char c : text)
        {
            strHex += kHexDigits[static_cast<unsigned char>(c) >> 4];
            strHex += kHexDigits[static_cast<unsigned char>(c) & 15];
        }
        return strHex + "' AS TEXT))";
    }
    std::string strLiteral = "'";
    for (const char c : text)
        strLiteral.append(c == '\'' ? 2 : 1, c);
    return strLiteral + '\'';
}

// Of a value that is not null.
std::string literal(const BoundValue& value)
{
    switch (value.kind())
    {
        case BoundValue::Kind::Integer:
            return std::to_string(value.integer());
        case BoundValue::Kind::Real:
        {
            char szText[32];
            return {szText, std::to_chars(szText, szText + sizeof szText, value.real()).ptr};
        }
        default:
            return textLiteral(value.text());
    }
}

}  // namespace

const char* columnTypeName(const Member& member)
{
    switch (member.pType->valueClass)
    {
        case ValueClass::Float:
        case ValueClass::Double:
            return "REAL";
        case ValueClass::String:
        case ValueClass::Object:
        case ValueClass::Array:
        case ValueClass::AnyJson:
            return "TEXT";
        default:
            return "INTEGER";
    }
}

std::string columnText(const Member& member)
{
    std::string strText = join({member.quotedName(), " ", columnTypeName(member)});
    if (member.blKey || member.blRequired)
        strText += " NOT NULL";
    BoundValue value;
    Status unused;  // the definition has checked the default
    if (!member.jDefault.isNull() && toBound(member, member.jDefault, member.name, value, unused))
        appendAll(strText, {" DEFAULT ", literal(value)});
    return strText;
}

std::string createTableText(const Definition& definition)
{
    std::string strColumns;
    std::string strKey;
    for (const Member& member : definition.members())
    {
        strColumns += strColumns.empty() ? "" : ", ";
        // Alone, a key of an integer type is the rowid and numbers itself.
        if (isSoleKey(definition, member) && std::string_view(columnTypeName(member)) == "INTEGER")
        {
            appendAll(strColumns, {member.quotedName(), " INTEGER PRIMARY KEY"});
            continue;
        }
        strColumns += columnText(member);
        if (member.blKey)
            appendAll(strKey, {strKey.empty() ? ", PRIMARY KEY (" : ", ", member.quotedName()});
    }
    return join({"CREATE TABLE ", definition.quotedName(), " (", strColumns, strKey, strKey.empty() ? ")" : "))"});
}

bool NameSet::read(sqlite3* pDb, const std::string& strSchema, Waiter& waiter, Status& status)
{
    m_strSchema = quoted(strSchema);
    return eachRow(pDb, join({"SELECT name FROM ", m_strSchema, ".sqlite_master"}), waiter, status,
                   [this](sqlite3_stmt* pRow) { m_names.push_back(columnString(pRow, 0)); });
}

std::string NameSet::unused(const std::string& strName)
{
    std::string strFree = strName;
    const auto isTaken = [this, &strFree]
    {
        return std::any_of(m_names.begin(), m_names.end(),
                           [&strFree](const std::string& strOther) { return sameName(strFree, strOther); });
    };
    for (int i = 2; isTaken(); ++i)
        strFree = join({strName, ":", std::to_string(i)});
    m_names.push_back(strFree);
    return strFree;
}

std::string indexText(const Definition& definition, const Member& member, bool blUnique, NameSet& names)
{
    const std::string strName = join({definition.name(), ":", member.name, blUnique ? ":unique" : ":index"});
    return join({blUnique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ", names.schema(), ".",
                 quoted(names.unused(strName)), " ON ", definition.quotedName(), " (", member.quotedName(), ")"});
}

}  // namespace vorn
