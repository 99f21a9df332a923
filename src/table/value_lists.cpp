// SPDX-License-Identifier: MIT

#include "value_lists.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "../core/json_text.h"
#include "nul_free.h"

namespace vorn
{

namespace
{

// Lists of nearly the same length share a statement: the last value is repeated until their number is a power of two.
// Longer lists than this make statements that are not kept.
constexpr std::size_t kLongestKept = 100;

std::size_t paddedLength(std::size_t length)
{
    if (length > kLongestKept)
        return length;
    std::size_t padded = 1;
    while (padded < length)
        padded *= 2;
    return std::min(padded, kLongestKept);
}

// Repeats the last value, so that the values from begin on are as many as the padded length says, and writes "?" or
// the like for each.
void pad(std::vector<BoundValue>& values, std::size_t begin, const char* szParameter, std::string& strSql)
{
    const std::size_t length = paddedLength(values.size() - begin);
    values.reserve(begin + length);
    while (values.size() - begin < length)
        values.push_back(BoundValue(values.back()));
    for (std::size_t i = 0; i < length; ++i)
    {
        if (strSql.back() != '(')
            strSql += ',';
        strSql += szParameter;
    }
}

void appendItem(std::string& strJson, std::string_view item)
{
    strJson += strJson.size() == 1 ? "" : ",";
    strJson += item;
}

std::string quotedJson(std::string_view text)
{
    return toString(Json::Value(text.data(), text.data() + text.size()));
}

// Reals as whole numbers by their powers of two: {"-1":[1,3]} is 0.5 and 1.5. Reading decimal digits can be off by
// the last bit, this is exact.
std::string powersOfTwo(const std::vector<BoundValue>& values, std::size_t begin)
{
    constexpr int kDigits = std::numeric_limits<double>::digits;
    constexpr int kLeastExponent = std::numeric_limits<double>::min_exponent - kDigits;

    std::map<int, std::string> lists;
    for (std::size_t i = begin; i < values.size(); ++i)
    {
        int iExponent = 0;
        std::frexp(values[i].real(), &iExponent);
        iExponent = std::max(iExponent - kDigits, kLeastExponent);
        std::string& strList = lists.try_emplace(iExponent, "[").first->second;
        appendItem(strList, std::to_string(static_cast<std::int64_t>(std::ldexp(values[i].real(), -iExponent))));
    }
    std::string strJson = "{";
    for (const auto& list : lists)
        appendItem(strJson, '"' + std::to_string(list.first) + "\":" + list.second + ']');
    return strJson += '}';
}

// All powers of two that a real can be, from the least one, which is the first parameter. CROSS keeps SQLite from
// searching the power anew for every value.
constexpr char kPowersOfTwoSql[] =
    "(WITH RECURSIVE p(k,f) AS (SELECT -1074,? UNION ALL SELECT k+1,f*2.0 FROM p WHERE k<971) SELECT i.value*p.f "
    "FROM json_each(?) AS o CROSS JOIN p ON p.k=CAST(o.\"key\" AS INTEGER) CROSS JOIN json_each(o.value) AS i)";

std::string jsonOf(const BoundValue& value)
{
    return value.kind() == BoundValue::Kind::Integer ? std::to_string(value.integer()) : quotedJson(value.text());
}

}  // namespace

void writeList(std::vector<BoundValue>& values, std::size_t begin, std::size_t listMax, std::string& strSql)
{
    if (values.size() - begin <= listMax)
    {
        strSql += '(';
        pad(values, begin, "?", strSql);
        strSql += ')';
        return;
    }
    std::string strJson;
    if (values[begin].kind() == BoundValue::Kind::Real)
    {
        strJson = powersOfTwo(values, begin);
        strSql += kPowersOfTwoSql;
        values.resize(begin);
        values.push_back(BoundValue::real(std::numeric_limits<double>::denorm_min()));
    }
    else
    {
        bool blNul = false;
        for (std::size_t i = begin; i < values.size(); ++i)
            blNul = blNul || (values[i].kind() == BoundValue::Kind::Text && needsNulFree(values[i].text()));
        strSql += "(SELECT " + (blNul ? withNulSql("value") : std::string("value")) + " FROM json_each(?))";
        strJson = "[";
        for (std::size_t i = begin; i < values.size(); ++i)
            appendItem(strJson, blNul ? quotedJson(nulFree(values[i].text())) : jsonOf(values[i]));
        strJson += ']';
        values.resize(begin);
    }
    values.push_back(BoundValue::owned(std::move(strJson)));
}

void writeJsonList(std::vector<ListValue>& list, std::size_t listMax, std::string& strSql,
                   std::vector<BoundValue>& values)
{
    if (list.size() > listMax)
    {
        std::string strJson = "[";
        for (const ListValue& item : list)
            appendItem(strJson, item.blJsonReal ? std::string(item.value.text()) : jsonOf(item.value));
        strSql += "(SELECT value FROM json_each(?))";
        values.push_back(BoundValue::owned(strJson += ']'));
        return;
    }
    const auto reals =
        std::stable_partition(list.begin(), list.end(), [](const ListValue& item) { return !item.blJsonReal; });
    strSql += '(';
    const auto append = [&](auto itBegin, auto itEnd, const char* szParameter)
    {
        const std::size_t begin = values.size();
        for (auto it = itBegin; it != itEnd; ++it)
            values.push_back(std::move(it->value));
        if (itBegin != itEnd)
            pad(values, begin, szParameter, strSql);
    };
    append(list.begin(), reals, "?");
    append(reals, list.end(), "CAST(? AS REAL)");
    strSql += ')';
}

}  // namespace vorn
