// SPDX-License-Identifier: MIT
//
// Operators on paths into JSON cells.

#include "../core/text.h"
#include "cell_value.h"
#include "condition_parts.h"
#include "failure.h"
#include "join.h"
#include "json_row.h"
#include "nul_free.h"

namespace vorn
{

namespace
{

bool writePresent(ConditionParts& parts, const Subject& subject, bool blNegated)
{
    const std::string strRow = writeExists(parts, subject, blNegated);
    appendAll(parts.strSql, {strRow, ".type<>'null')"});
    return !strRow.empty();
}

bool writeEqual(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    if (jOperand.isNull())
        return writePresent(parts, subject, !blNegated);
    const std::string strRow = writeExists(parts, subject, blNegated);
    ListValue item;
    if (strRow.empty() || !toRowValue(parts, subject, jOperand, item))
        return false;
    appendAll(parts.strSql, {rowValue(strRow), "=", parameterOf(item.blJsonReal), ")"});
    parts.values.push_back(std::move(item.value));
    return true;
}

bool readList(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, std::vector<ListValue>& list,
              bool& blNull)
{
    if (!checkList(parts, subject, jOperand))
        return false;
    list.reserve(jOperand.size());
    for (const Json::Value& jValue : jOperand)
    {
        if (jValue.isNull())
        {
            blNull = true;
            continue;
        }
        list.emplace_back();
        if (!toRowValue(parts, subject, jValue, list.back()))
            return false;
    }
    return true;
}

// Where null is among the values, the absent is what it stands for: "present and none of the others" is denied then.
bool writeIn(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    std::vector<ListValue> list;
    bool blNull = false;
    if (!readList(parts, subject, jOperand, list, blNull))
        return false;
    if (list.empty() && !blNull)
    {
        parts.strSql += blNegated ? '1' : '0';
        return true;
    }
    if (list.empty())
        return writePresent(parts, subject, !blNegated);
    const std::string strRow = writeExists(parts, subject, blNegated != blNull);
    if (strRow.empty())
        return false;
    if (blNull)
        appendAll(parts.strSql, {strRow, ".type<>'null' AND "});
    appendAll(parts.strSql, {rowValue(strRow), blNull ? " NOT IN " : " IN "});
    writeJsonList(list, parts.listMax, parts.strSql, parts.values);
    parts.strSql += ')';
    return true;
}

// Numbers compare with numbers, and texts with texts.
bool writeOrder(ConditionParts& parts, const Subject& subject, const char* szOperator, const Json::Value& jOperand,
                bool blNegated)
{
    const bool blText = jOperand.isString();
    if (!blText && !jOperand.isNumeric())
        return fail(parts.status, Code::BadType, subject.name, "% can be compared with numbers and texts only.");
    ListValue item;
    const std::string strRow = writeExists(parts, subject, blNegated);
    if (strRow.empty() || !toRowValue(parts, subject, jOperand, item))
        return false;
    appendAll(parts.strSql, {strRow, blText ? ".type='text' AND " : ".type IN ('integer','real') AND ",
                             rowValue(strRow), szOperator, parameterOf(item.blJsonReal), ")"});
    parts.values.push_back(std::move(item.value));
    return true;
}

bool writePrefix(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    if (!checkPattern(parts, subject, Operator::BeginsWith, jOperand))
        return false;
    const std::string strRow = writeExists(parts, subject, blNegated);
    if (strRow.empty())
        return false;
    std::string strPrefix = '"' + nulFree(textOf(jOperand));
    std::string strAfter = afterPrefix(strPrefix);
    const std::string strValue = rowValue(strRow);
    appendAll(parts.strSql, {strValue, ">=? AND ", strValue, "<?)"});
    parts.values.push_back(BoundValue::owned(std::move(strPrefix)));
    parts.values.push_back(BoundValue::owned(std::move(strAfter)));
    return true;
}

bool writePattern(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                  bool blNegated)
{
    if (!checkPattern(parts, subject, op, jOperand))
        return false;
    const std::string strRow = writeExists(parts, subject, blNegated);
    if (strRow.empty())
        return false;
    // The text as it was stored: SQL's own operators then see it up to its first NUL, as in a member.
    appendAll(parts.strSql, {strRow, ".type='text' AND ", withNulSql(strRow + ".value"),
                             op == Operator::Like ? " LIKE ?)" : " GLOB ?)"});
    parts.values.push_back(BoundValue::borrowed(textOf(jOperand)));
    return true;
}

}  // namespace

bool writePathValue(ConditionParts& parts, const Subject& subject)
{
    // The row's name is known only behind the text that makes it.
    const std::size_t begin = parts.strSql.size();
    const std::string strRow = writeWalk(parts, subject);
    parts.strSql.insert(begin, join({"(SELECT ", strRow, ".value "}));
    parts.strSql += ')';
    return !strRow.empty();
}

bool writePathCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                        bool blNegated)
{
    switch (op)
    {
        case Operator::Eq:
            return writeEqual(parts, subject, jOperand, blNegated);
        case Operator::In:
            return writeIn(parts, subject, jOperand, blNegated);
        case Operator::Gt:
            return writeOrder(parts, subject, ">", jOperand, blNegated);
        case Operator::Gte:
            return writeOrder(parts, subject, ">=", jOperand, blNegated);
        case Operator::Lt:
            return writeOrder(parts, subject, "<", jOperand, blNegated);
        case Operator::Lte:
            return writeOrder(parts, subject, "<=", jOperand, blNegated);
        case Operator::Exists:
            return checkFlag(parts, subject, jOperand) && writePresent(parts, subject, jOperand.asBool() == blNegated);
        case Operator::BeginsWith:
            return writePrefix(parts, subject, jOperand, blNegated);
        default:
            return writePattern(parts, subject, op, jOperand, blNegated);
    }
}

}  // namespace vorn
