// SPDX-License-Identifier: MIT
//
// Operators on a member's column. The column stands bare on the left, so that an index and its collation serve.

#include <sqlite3.h>

#include <cmath>

#include "cell_value.h"
#include "condition_parts.h"
#include "failure.h"
#include "value_lists.h"

namespace vorn
{

namespace
{

bool isWhole(ValueClass valueClass)
{
    return valueClass == ValueClass::Int32 || valueClass == ValueClass::UInt32 || valueClass == ValueClass::Int64 ||
           valueClass == ValueClass::UInt63;
}

bool isJson(ValueClass valueClass)
{
    return valueClass == ValueClass::Object || valueClass == ValueClass::Array || valueClass == ValueClass::AnyJson;
}

bool failKind(ConditionParts& parts, const Subject& subject, const char* szText)
{
    return fail(parts.status, Code::BadType, subject.name, szText);
}

void append(ConditionParts& parts, const Subject& subject, const char* szRest)
{
    parts.strSql += subject.pMember->column();
    parts.strSql += szRest;
}

bool writeEqual(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    if (jOperand.isNull())
    {
        append(parts, subject, blNegated ? " IS NOT NULL" : " IS NULL");
        return true;
    }
    parts.values.emplace_back();
    if (!toBound(*subject.pMember, jOperand, subject.name, parts.values.back(), parts.status))
        return false;
    append(parts, subject, blNegated ? " IS NOT ?" : " = ?");
    return true;
}

bool writeIn(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    if (!checkList(parts, subject, jOperand))
        return false;
    const std::size_t begin = parts.values.size();
    bool blNull = false;
    for (const Json::Value& jValue : jOperand)
    {
        if (jValue.isNull())
        {
            blNull = true;
            continue;
        }
        parts.values.emplace_back();
        if (!toBound(*subject.pMember, jValue, subject.name, parts.values.back(), parts.status))
            return false;
    }
    if (parts.values.size() == begin)
    {
        if (blNull)
            append(parts, subject, blNegated ? " IS NOT NULL" : " IS NULL");
        else
            parts.strSql += blNegated ? '1' : '0';
        return true;
    }
    // NOT IN does not hold for NULL: right where NULL is one of the values, and to be added where it is not.
    const bool blOrNull = blNull != blNegated;
    parts.strSql += blOrNull ? "(" : "";
    append(parts, subject, blNegated ? " NOT IN " : " IN ");
    writeList(parts.values, begin, parts.listMax, parts.strSql);
    if (blOrNull)
    {
        parts.strSql += " OR ";
        append(parts, subject, " IS NULL)");
    }
    return true;
}

// A whole-number member compares with every finite number, others with the values that they can have.
bool toOperand(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, BoundValue& value)
{
    const ValueClass valueClass = subject.pMember->pType->valueClass;
    if (valueClass == ValueClass::Bool || isJson(valueClass))
        return failKind(parts, subject, "% is neither a number nor a text, and has no order.");
    if (jOperand.isNull())
        return failKind(parts, subject, "% cannot be compared with null; use $exists.");
    if (!isWhole(valueClass))
        return toBound(*subject.pMember, jOperand, subject.name, value, parts.status);
    if (jOperand.isInt64())
    {
        if (jOperand.type() == Json::realValue)
            value = BoundValue::real(jOperand.asDouble());
        else
            value = BoundValue::integer(jOperand.asInt64());
        return true;
    }
    if (!jOperand.isNumeric())
        return failKind(parts, subject, "% can be compared with numbers only.");
    if (!std::isfinite(jOperand.asDouble()))
        return fail(parts.status, Code::OutOfRange, subject.name, "% can be compared with finite numbers only.");
    value = BoundValue::real(jOperand.asDouble());
    return true;
}

bool writeOrder(ConditionParts& parts, const Subject& subject, const char* szOperator, const Json::Value& jOperand)
{
    parts.values.emplace_back();
    if (!toOperand(parts, subject, jOperand, parts.values.back()))
        return false;
    append(parts, subject, szOperator);
    return true;
}

// A range that an index serves, and exact whatever the column's collation is.
bool writePrefix(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand)
{
    if (!checkPattern(parts, subject, Operator::BeginsWith, jOperand))
        return false;
    std::string strAfter = afterPrefix(textOf(jOperand));
    parts.values.push_back(BoundValue::borrowed(textOf(jOperand)));
    append(parts, subject, " >= ? COLLATE BINARY AND ");
    if (strAfter.empty())
    {
        append(parts, subject, " < x''");  // the least BLOB is greater than every text
        return true;
    }
    append(parts, subject, " < ? COLLATE BINARY");
    parts.values.push_back(BoundValue::owned(std::move(strAfter)));
    return true;
}

bool writePattern(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand)
{
    if (!checkPattern(parts, subject, op, jOperand))
        return false;
    parts.values.push_back(BoundValue::borrowed(textOf(jOperand)));
    append(parts, subject, op == Operator::Like ? " LIKE ?" : " GLOB ?");
    return true;
}

bool writePositive(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand)
{
    switch (op)
    {
        case Operator::Gt:
            return writeOrder(parts, subject, " > ?", jOperand);
        case Operator::Gte:
            return writeOrder(parts, subject, " >= ?", jOperand);
        case Operator::Lt:
            return writeOrder(parts, subject, " < ?", jOperand);
        case Operator::Lte:
            return writeOrder(parts, subject, " <= ?", jOperand);
        case Operator::BeginsWith:
            return writePrefix(parts, subject, jOperand);
        default:
            return writePattern(parts, subject, op, jOperand);
    }
}

}  // namespace

bool checkList(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand)
{
    return jOperand.isArray() || failKind(parts, subject, "% wants an array of values here.");
}

bool checkFlag(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand)
{
    return jOperand.isBool() || failKind(parts, subject, "% wants true or false for $exists.");
}

bool checkPattern(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand)
{
    if (!subject.blPath && subject.pMember->pType->valueClass != ValueClass::String)
        return failKind(parts, subject, "% is no text, which $beginsWith, $like and $glob are for.");
    if (!jOperand.isString())
        return failKind(parts, subject, "% wants a text here.");
    if (op == Operator::BeginsWith)
        return true;
    const std::string_view pattern = textOf(jOperand);
    if (pattern.find('\0') != std::string_view::npos)
        return fail(parts.status, Code::BadRequest, op == Operator::Like ? "$like" : "$glob",
                    "A pattern must not hold a NUL.");
    const int iMax = sqlite3_limit(parts.pDb, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);
    if (pattern.size() > static_cast<std::size_t>(iMax))
        return fail(parts.status, Code::OutOfRange, subject.name, "A pattern must not be longer than ^ bytes.",
                    std::to_string(iMax));
    return true;
}

std::string afterPrefix(std::string_view prefix)
{
    std::string strAfter(prefix);
    while (!strAfter.empty() && strAfter.back() == '\xff')
        strAfter.pop_back();
    if (!strAfter.empty())
        strAfter.back() = static_cast<char>(static_cast<unsigned char>(strAfter.back()) + 1);
    return strAfter;
}

bool writeColumnCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                          bool blNegated)
{
    switch (op)
    {
        case Operator::Eq:
            return writeEqual(parts, subject, jOperand, blNegated);
        case Operator::In:
            return writeIn(parts, subject, jOperand, blNegated);
        case Operator::Exists:
            if (!checkFlag(parts, subject, jOperand))
                return false;
            append(parts, subject, jOperand.asBool() != blNegated ? " IS NOT NULL" : " IS NULL");
            return true;
        default:
            break;
    }
    // Neither true nor false where the column is NULL, which the complement must hold for.
    parts.strSql += blNegated ? "(" : "";
    if (!writePositive(parts, subject, op, jOperand))
        return false;
    parts.strSql += blNegated ? ") IS NOT 1" : "";
    return true;
}

}  // namespace vorn
