// SPDX-License-Identifier: MIT
//
// What each operator finds, for every kind of member, for null and for what is absent.

#include <algorithm>

#include "condition_cases.h"

namespace table_tests
{
namespace
{

std::string complementOf(const std::string& strIds)
{
    std::string strOthers;
    for (int i = 1; i <= kConditionRecords; ++i)
        if ((" " + strIds + " ").find(" " + std::to_string(i) + " ") == std::string::npos)
            strOthers += (strOthers.empty() ? "" : " ") + std::to_string(i);
    return strOthers;
}

// The same filter with every list repeated many times over, and the filters of its first list of filters.
Json::Value stretched(const Json::Value& jFilter, bool blList = false, bool blFirst = true)
{
    constexpr int kFilters = 17;
    constexpr int kValues = 61;
    Json::Value jLonger = jFilter;
    const bool blValue = blList && jFilter.isObject() && (jFilter.empty() || jFilter.begin().name()[0] != '$');
    if (jFilter.isObject() && !blValue)
        for (auto it = jLonger.begin(); it != jLonger.end(); ++it)
        {
            const std::string strName = it.name();
            const bool blWithin = strName == "$and" || strName == "$or" || strName == "$nor";
            if (blWithin)
            {
                Json::Value jInners;
                for (const Json::Value& jInner : *it)
                {
                    const int iTimes = !blFirst ? 1 : jInners.empty() && it->size() > 1 ? 3 : kFilters;
                    for (int i = 0; i < iTimes; ++i)
                        jInners.append(stretched(jInner, false, false));
                }
                *it = jInners;
            }
            else if (strName == "$not")
                *it = stretched(*it, false, false);
            else if (strName != "$eq" && strName != "$ne" && strName != "vornSqlWhereParams")
                *it = stretched(*it, true);
        }
    if (jFilter.isArray() && blList && !jFilter.empty())
        for (int i = 1; i < kValues; ++i)
            for (const Json::Value& jItem : jFilter)
                jLonger.append(jItem);
    return jLonger;
}

TEST(Conditions, EachFilterFindsWhatItSaysAndItsComplementTheRest)
{
    FilterTable table(kConditionMembers);
    fill(table);
    for (const ConditionCase& c : kConditionCases)
    {
        SCOPED_TRACE(c.szFilter);
        const Json::Value jFilter = json(c.szFilter);
        Json::Value jNot;
        jNot["$not"] = jFilter;
        Json::Value jNor;
        jNor["$nor"].append(jFilter);
        Json::Value jAnd;
        jAnd["$and"].append(jFilter);
        jAnd["$and"].append(jFilter);
        EXPECT_EQ(c.szIds, table.ids(jFilter));
        EXPECT_EQ(complementOf(c.szIds), table.ids(jNot));
        EXPECT_EQ(complementOf(c.szIds), table.ids(jNor));
        EXPECT_EQ(c.szIds, table.ids(jAnd));
        const std::string strIds = c.szIds;
        const long long nCount = strIds.empty() ? 0 : 1 + std::count(strIds.begin(), strIds.end(), ' ');
        EXPECT_EQ(nCount, table->recCount(jFilter));
    }
}

TEST(Conditions, LongListsFindTheSameWithManyParametersAndWithOne)
{
    FilterTable table(kConditionMembers);
    fill(table);
    for (const int iMaxValues : {250000, 50})
    {
        sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, iMaxValues);
        for (const ConditionCase& c : kConditionCases)
        {
            SCOPED_TRACE(std::string(c.szFilter) + " with at most " + std::to_string(iMaxValues) + " parameters");
            const Json::Value jFilter = stretched(json(c.szFilter));
            Json::Value jNot;
            jNot["$not"] = jFilter;
            EXPECT_EQ(c.szIds, table.ids(jFilter));
            EXPECT_EQ(complementOf(c.szIds), table.ids(jNot));
        }
    }
}

}  // namespace
}  // namespace table_tests
