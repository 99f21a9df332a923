// SPDX-License-Identifier: MIT

#include "json_row.h"

#include "../core/json_text.h"
#include "../core/text.h"
#include "cell_value.h"
#include "failure.h"
#include "join.h"
#include "nul_free.h"
#include "plain_members.h"

namespace vorn
{

namespace
{

// A name as SQL text. Names stand in the SQL text, as those of members do: they belong to the shape of a filter, and
// SQLite compares each parameter with all others when it prepares a statement.
std::string literal(std::string_view name)
{
    std::string strLiteral = "'";
    for (const char c : name)
        strLiteral.append(c == '\'' ? 2 : 1, c);
    return strLiteral += '\'';
}

}  // namespace

std::string rowValue(const std::string& strRow)
{
    return join({"CASE WHEN ", strRow, ".type='text' THEN '\"'||", strRow, ".value WHEN ", strRow,
                 ".type IN ('true','false','null') THEN ", strRow, ".type ELSE ", strRow, ".value END"});
}

bool toRowValue(ConditionParts& parts, const Subject& subject, const Json::Value& jValue, ListValue& item)
{
    if (!checkValue(anyJsonMember(), jValue, subject.name, parts.status))
        return false;
    item.blJsonReal = false;
    if (jValue.isString())
        item.value = BoundValue::owned('"' + nulFree(textOf(jValue)));
    else if (jValue.isInt64() && jValue.type() != Json::realValue)
        item.value = BoundValue::integer(jValue.asInt64());
    else
        item.value = BoundValue::owned(nulFreeJson(toString(jValue)));
    item.blJsonReal = jValue.isDouble() && item.value.kind() == BoundValue::Kind::Text;
    return true;
}

std::string writeWalk(ConditionParts& parts, const Subject& subject)
{
    constexpr int kMaxNames = 60;  // SQLite joins 64 tables at most

    // A row must not hide the table, whatever that is called.
    const char first = subject.pMember->column()[1];
    const char letter = first == 'j' || first == 'J' ? 'k' : 'j';
    const std::string strCell = nulFreeSql(subject.pMember->column());
    if (!subject.blPath)
    {
        appendAll(parts.strSql,
                  {"FROM (SELECT json_type(", strCell, ") AS type,", strCell, " AS value) AS ", {&letter, 1}});
        return std::string(1, letter);
    }

    std::string strRow;
    std::string strWhere;
    std::string_view rest = subject.path;
    for (int i = 1; i <= kMaxNames; ++i)
    {
        const std::size_t dot = rest.find('.');
        const bool blFirst = strRow.empty();
        if (blFirst)
            appendAll(parts.strSql, {"FROM json_each(", strCell});
        else
            appendAll(parts.strSql, {",json_each(CASE ", strRow, ".type WHEN 'object' THEN ", strRow, ".value END"});
        strRow = letter + std::to_string(i);
        appendAll(parts.strSql, {") AS ", strRow});
        appendAll(strWhere,
                  {blFirst ? " WHERE " : " AND ", strRow, ".\"key\"=", literal(nulFree(rest.substr(0, dot)))});
        if (dot == std::string_view::npos)
        {
            parts.strSql += strWhere;
            return strRow;
        }
        rest.remove_prefix(dot + 1);
    }
    fail(parts.status, Code::BadRequest, subject.name, "A path must not have more than ^ names.",
         std::to_string(kMaxNames));
    return std::string();
}

std::string writeExists(ConditionParts& parts, const Subject& subject, bool blNegated)
{
    parts.strSql += blNegated ? "NOT EXISTS (SELECT 1 " : "EXISTS (SELECT 1 ";
    std::string strRow = writeWalk(parts, subject);
    parts.strSql += subject.blPath ? " AND " : " WHERE ";
    return strRow;
}

}  // namespace vorn
