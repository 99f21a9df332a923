// SPDX-License-Identifier: MIT
//
// Operators on JSON arrays, which a member or a path may hold.

#include <set>

#include "../core/json_text.h"
#include "../core/text.h"
#include "cell_value.h"
#include "condition_parts.h"
#include "failure.h"
#include "json_row.h"
#include "plain_members.h"

namespace vorn
{

namespace
{

bool writeSize(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    BoundValue size;
    if (jOperand.isNull())
        return fail(parts.status, Code::BadType, subject.name, "% wants a whole number for $size.");
    if (!toBound(wholeNumberMember(), jOperand, subject.name, size, parts.status))
        return false;
    if (size.integer() < 0)
        return fail(parts.status, Code::OutOfRange, subject.name, "$size must not be below 0.");
    const std::string strRow = writeExists(parts, subject, blNegated);
    if (strRow.empty())
        return false;
    appendAll(parts.strSql, {"CASE ", strRow, ".type WHEN 'array' THEN json_array_length(", strRow, ".value) END=?)"});
    parts.values.push_back(std::move(size));
    return true;
}

// 1 and 1.0 are one value.
std::string textOfOne(const Json::Value& jValue)
{
    return toString(jValue.isInt64() ? Json::Value(jValue.asInt64()) : jValue);
}

// An array holds all of the values if as many different items of it are among them as there are different values.
bool writeAll(ConditionParts& parts, const Subject& subject, const Json::Value& jOperand, bool blNegated)
{
    if (!checkList(parts, subject, jOperand))
        return false;
    if (jOperand.empty())
        return fail(parts.status, Code::BadRequest, "$all", "$all wants at least one value.");
    std::vector<ListValue> list;
    std::set<std::string> different;
    for (const Json::Value& jValue : jOperand)
    {
        list.emplace_back();
        if (!toRowValue(parts, subject, jValue, list.back()))
            return false;
        different.insert(textOfOne(jValue));
    }
    const std::string strRow = writeExists(parts, subject, blNegated);
    if (strRow.empty())
        return false;
    const std::string strItem = strRow + 'i';
    const std::string strValue = rowValue(strItem);
    appendAll(parts.strSql,
              {"(SELECT count(DISTINCT ", strValue, ") FROM json_each(CASE ", strRow, ".type WHEN 'array' THEN ",
               strRow, ".value END) AS ", strItem, " WHERE ", strValue, " IN "});
    writeJsonList(list, parts.listMax, parts.strSql, parts.values);
    parts.strSql += ")=?)";
    parts.values.push_back(BoundValue::integer(static_cast<std::int64_t>(different.size())));
    return true;
}

}  // namespace

bool writeArrayCondition(ConditionParts& parts, const Subject& subject, Operator op, const Json::Value& jOperand,
                         bool blNegated)
{
    const ValueClass valueClass = subject.pMember->pType->valueClass;
    if (!subject.blPath && valueClass != ValueClass::Array && valueClass != ValueClass::AnyJson)
        return fail(parts.status, Code::BadType, subject.name, "% holds no arrays, which $all and $size are for.");
    return op == Operator::All ? writeAll(parts, subject, jOperand, blNegated)
                               : writeSize(parts, subject, jOperand, blNegated);
}

}  // namespace vorn
