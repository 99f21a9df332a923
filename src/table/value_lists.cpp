// SPDX-License-Identifier: MIT

#include "value_lists.h"

#include <json/json.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "../core/json_text.h"
#include "../core/text.h"
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
        values.push_back(values.back().alias());
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

// Reals as whole numbers by their powers of two: {"-1":[1,3]} is 0.5 and 1.5. A power may come more than once. Reading
// decimal digits can be off by the last bit, this is exact.
std::string powersOfTwo(const std::vector<BoundValue>& values, std::size_t begin)
{
    constexpr int kDigits = std::numeric_limits<double>::digits;
    constexpr int kLeastExponent = std::numeric_limits<double>::min_exponent - kDigits;

    std::string strJson;
    int iLast = std::numeric_limits<int>::max();
    for (std::size_t i = begin; i < values.size(); ++i)
    {
        int iExponent = 0;
        std::frexp(values[i].real(), &iExponent);
        iExponent = std::max(iExponent - kDigits, kLeastExponent);
        if (iExponent == iLast)
            strJson += ',';
        else
            appendAll(strJson, {strJson.empty() ? "{\"" : "],\"", std::to_string(iExponent), "\":["});
        iLast = iExponent;
        strJson += std::to_string(static_cast<std::int64_t>(std::ldexp(values[i].real(), -iExponent)));
    }
    return strJson += "]}";
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
        appendAll(strSql, {"(SELECT ", blNul ? withNulSql("value") : "value", " FROM json_each(?))"});
        strJson = "[";
        for (std::size_t i = begin; i < values.size(); ++i)
            if (blNul)
                appendItem(strJson, quotedJson(nulFree(values[i].text())));
            else
                appendItem(strJson, jsonOf(values[i]));
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
            if (item.blJsonReal)
                appendItem(strJson, item.value.text());
            else
                appendItem(strJson, jsonOf(item.value));
        strSql += "(SELECT value FROM json_each(?))";
        values.push_back(BoundValue::owned(strJson += ']'));
        return;
    }
    strSql += '(';
    for (const bool blJsonReal : {false, true})
    {
        const std::size_t begin = values.size();
        for (ListValue& item : list)
            if (item.blJsonReal == blJsonReal)
                values.push_back(std::move(item.value));
        if (values.size() > begin)
            pad(values, begin, parameterOf(blJsonReal), strSql);
    }
    strSql += ')';
}

}  // namespace vorn
