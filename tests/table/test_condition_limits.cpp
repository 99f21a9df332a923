// SPDX-License-Identifier: MIT
//
// Filters that are deep, long or hostile.

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "filter_table.h"

namespace table_tests
{
namespace
{

constexpr int kMaxLevel = 32;

Json::Value listOf(const char* szName, const std::vector<Json::Value>& filters)
{
    Json::Value jFilter;
    for (const Json::Value& jInner : filters)
        jFilter[szName].append(jInner);
    return jFilter;
}

// A filter of so many levels that means the same as the innermost one.
Json::Value chain(int levels, const Json::Value& jInnermost)
{
    Json::Value jFilter = jInnermost;
    for (int i = 1; i < levels; ++i)
        jFilter = i % 2 != 0 ? listOf("$or", {jFilter, json(R"({"n":-1})")})
                             : listOf("$and", {json(R"({"n":{"$gt":0}})"), jFilter});
    return jFilter;
}

// Wraps the filter, which finds n=1, so often that it has the levels. Each letter of the pattern is a way to wrap; two
// of them turn the meaning around. Beside the filter stand others that are as deep, before it and behind.
Json::Value nested(int levels, const std::string& strPattern, const Json::Value& jInnermost, bool& blNegated)
{
    const Json::Value jAlways = json(R"({"n":{"$gt":0}})");
    const Json::Value jNever = json(R"({"n":{"$lt":0}})");
    Json::Value jFilter = jInnermost;
    for (int i = 1; i < levels; ++i)
        switch (strPattern[static_cast<std::size_t>(i) % strPattern.size()])
        {
            case 'a':
                jFilter = listOf("$and", {chain(i, jAlways), jFilter, jAlways});
                break;
            case 'o':
                jFilter = listOf("$or", {jNever, chain(i, jNever), jFilter, chain(i, jNever)});
                break;
            case 'r':
                jFilter = listOf("$nor", {chain(i, jNever), jFilter});
                blNegated = !blNegated;
                break;
            default:
            {
                Json::Value jNot;
                jNot["$not"] = jFilter;
                jFilter = jNot;
                blNegated = !blNegated;
                break;
            }
        }
    return jFilter;
}

TEST(ConditionLimits, ThirtyTwoLevelsWorkInEveryMixtureAndOneMoreIsRefused)
{
    FilterTable table("n:int j:Json::Value");
    for (int i = 1; i <= 3; ++i)
        table.add(json("{\"id\":" + std::to_string(i) + ",\"n\":" + std::to_string(i) + ",\"j\":{\"a\":{\"b\":\"" +
                       std::to_string(i) + "\",\"c\":[" + std::to_string(i) + "]}}}"));
    std::vector<std::string> patterns = {"a", "o", "r", "n", "aor", "raono"};
    for (const char cFirst : {'a', 'o', 'r', 'n'})
        for (const char cSecond : {'a', 'o', 'r', 'n'})
            if (cFirst != cSecond)
                patterns.push_back({cFirst, cSecond});
    for (const char* szInnermost : {R"({"n":1})", R"({"j.a.b":{"$beginsWith":"1"}})", R"({"j.a.c":{"$all":[1]}})",
                                    R"~({"vornSqlWhereFilter":"n = (SELECT min(n) FROM t)"})~"})
        for (const std::string& strPattern : patterns)
        {
            SCOPED_TRACE(strPattern + " around " + szInnermost);
            bool blNegated = false;
            Json::Value jFilter = nested(kMaxLevel, strPattern, json(szInnermost), blNegated);
            EXPECT_EQ(blNegated ? "2 3" : "1", table.ids(jFilter)) << table->status().text;
            jFilter["$sort_by"] = "n";
            jFilter["$limit"] = 3;
            EXPECT_EQ(blNegated ? "2 3" : "1", table.ids(jFilter)) << table->status().text;
            const Json::Value jDeeper = nested(kMaxLevel + 1, strPattern, json(szInnermost), blNegated);
            EXPECT_EQ("BadRequest $", table.ids(jDeeper).substr(0, 12));
        }
}

TEST(ConditionLimits, NotInsideAMemberCountsAsALevel)
{
    FilterTable table("n:int");
    table.add(json(R"({"id":1,"n":1})"));
    table.add(json(R"({"id":2})"));
    Json::Value jOperators = json(R"({"$eq":1})");
    for (int level = 2; level <= kMaxLevel + 1; ++level)
    {
        Json::Value jOuter;
        jOuter["$not"] = jOperators;
        jOperators = jOuter;
        Json::Value jFilter;
        jFilter["n"] = jOperators;
        EXPECT_EQ(level > kMaxLevel ? "BadRequest $not" : level % 2 == 0 ? "2" : "1", table.ids(jFilter));
    }
}

// Half of the rows, by lists that are as long as this.
TEST(ConditionLimits, ListsOfAHundredThousandValuesWorkWithAnyLimitOfParameters)
{
    constexpr int kRows = 20;
    FilterTable table("s:string i:int d:double j:Json::Value");
    for (int i = 0; i < kRows; ++i)
    {
        Json::Value jRecord;
        jRecord["id"] = i;
        jRecord["s"] = "t'" + std::to_string(i);
        jRecord["i"] = i;
        jRecord["d"] = i / 7.0;
        jRecord["j"]["v"] = i % 4 == 0 ? Json::Value(i) : Json::Value(i / 7.0);
        jRecord["j"]["l"].append(i % 2);
        table.add(jRecord);
    }
    for (const int iMaxValues : {250000, 999})
    {
        sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, iMaxValues);
        for (const int length : {1000, 5000, 100000})
        {
            Json::Value jTexts;
            Json::Value jWhole;
            Json::Value jReals;
            Json::Value jMixed;
            for (int i = 0; i < length; ++i)
            {
                const int iValue = i % 2 == 0 ? i : -i;
                jTexts.append("t'" + std::to_string(iValue));
                jWhole.append(iValue);
                jReals.append(iValue / 7.0);
                jMixed.append(iValue % 4 == 0 ? Json::Value(iValue) : Json::Value(iValue / 7.0));
            }
            for (const char* szOperator : {"$in", "$nin"})
            {
                Json::Value jFilter;
                jFilter["s"][szOperator] = jTexts;
                const std::string strFound = table.ids(jFilter);
                EXPECT_EQ(std::string(szOperator) == "$in" ? "0 2 4 6 8 10 12 14 16 18" : "1 3 5 7 9 11 13 15 17 19",
                          strFound);
                jFilter.clear();
                jFilter["i"][szOperator] = jWhole;
                EXPECT_EQ(strFound, table.ids(jFilter));
                jFilter.clear();
                jFilter["d"][szOperator] = jReals;
                EXPECT_EQ(strFound, table.ids(jFilter));
                jFilter.clear();
                jFilter["j.v"][szOperator] = jMixed;
                EXPECT_EQ(strFound, table.ids(jFilter));
            }
            Json::Value jOnes(Json::arrayValue);
            jOnes.resize(static_cast<unsigned>(length));
            for (Json::Value& jOne : jOnes)
                jOne = 1.0;
            Json::Value jFilter;
            jFilter["j.l"]["$all"] = jOnes;
            EXPECT_EQ("1 3 5 7 9 11 13 15 17 19", table.ids(jFilter));
        }
    }
}

TEST(ConditionLimits, RealsOfEverySizeAreFoundInLongListsAndNotTheirNeighbours)
{
    FilterTable table("d:double f:float");
    sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, 200);
    std::mt19937_64 random(20261121);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same values in every run
    std::vector<double> reals = {0.0, -0.0, 5e-324, -5e-324, 2.2250738585072014e-308, 1.7976931348623157e308, 0.1};
    while (reals.size() < 500)
    {
        const std::uint64_t iBits = random();
        double dValue = 0;
        std::memcpy(&dValue, &iBits, sizeof dValue);
        if (std::isfinite(dValue))
            reals.push_back(dValue);
    }
    Json::Value jRecords;
    Json::Value jExact;
    Json::Value jNeighbours;
    for (std::size_t i = 0; i < reals.size(); ++i)
    {
        Json::Value jRecord;
        jRecord["id"] = static_cast<Json::Int>(i);
        jRecord["d"] = reals[i];
        jRecords.append(jRecord);
        jExact.append(reals[i]);
        if (std::fabs(reals[i]) > 1e-320 && std::fabs(reals[i]) < 1e308)
            jNeighbours.append(std::nextafter(reals[i], 1e308));
    }
    ASSERT_EQ(500, table->recCreateAll(jRecords)) << table->status().text;
    Json::Value jFilter;
    jFilter["d"] = jExact;
    EXPECT_EQ(500, table->recCount(jFilter));
    jFilter["d"] = jNeighbours;
    EXPECT_EQ(0, table->recCount(jFilter));
}

TEST(ConditionLimits, TenThousandFiltersWorkInEachKindOfList)
{
    FilterTable table("n:int s:string+ j:Json::Value");
    for (int i = 0; i < 4; ++i)
    {
        Json::Value jRecord;
        jRecord["id"] = i;
        jRecord["n"] = i;
        jRecord["s"] = std::to_string(i);
        jRecord["j"]["k"] = i;
        table.add(jRecord);
    }
    for (const char* szMember : {"n", "s", "j.k"})
        for (const char* szOperator : {"$or", "$nor", "$and"})
        {
            const bool blAnd = std::string(szOperator) == "$and";
            Json::Value jFilter;
            for (int i = 2; i < 10002; ++i)
            {
                Json::Value jInner;
                const Json::Value jValue =
                    std::string(szMember) == "s" ? Json::Value(std::to_string(i)) : Json::Value(i);
                (blAnd ? jInner[szMember]["$ne"] : jInner[szMember]) = jValue;
                jFilter[szOperator].append(jInner);
            }
            SCOPED_TRACE(std::string(szMember) + szOperator);
            for (const int iMaxValues : {250000, 999})  // filters that are alike are one list of values
            {
                sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, iMaxValues);
                EXPECT_EQ(std::string(szOperator) == "$or" ? "2 3" : "0 1", table.ids(jFilter));
            }
        }
}

TEST(ConditionLimits, TenThousandFiltersThatDifferWorkWithinTheLimitOfParameters)
{
    FilterTable table("n:int s:string");
    for (int i = 0; i < 4; ++i)
        table.add(json("{\"id\":" + std::to_string(i) + ",\"n\":" + std::to_string(i) + ",\"s\":\"x\"}"));
    Json::Value jFilter;
    for (int i = 1; i <= 10000; ++i)
        jFilter["$or"].append(i % 2 != 0 ? json(R"({"n":{"$gt":2}})") : json(R"({"s":{"$gt":"y"}})"));
    EXPECT_EQ("3", table.ids(jFilter)) << table->status().text;
    sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, 999);
    EXPECT_EQ("BadRequest ", table.ids(jFilter));
}

TEST(ConditionLimits, TooMuchInSeveralWaysAtOnceIsABadRequest)
{
    FilterTable table("n:int j:Json::Value");
    table.add(json(R"({"id":1,"n":1})"));
    Json::Value jFilter = json(R"({"n":1})");
    for (int i = 1; i < kMaxLevel; ++i)
    {
        const char* szOperator = i % 2 != 0 ? "$or" : "$and";
        Json::Value jNext;
        for (int k = 0; k < 300; ++k)
            jNext[szOperator].append(json(R"({"j.a.b.c.d":{"$ne":7}})"));
        jNext[szOperator].append(jFilter);
        jFilter = jNext;
    }
    const std::string strFound = table.ids(jFilter);
    EXPECT_TRUE(strFound == "1" || strFound == "BadRequest ") << strFound << table->status().text;
}

TEST(ConditionLimits, APathMayHaveSixtyNames)
{
    FilterTable table("j:Json::Value");
    Json::Value jRecord;
    jRecord["id"] = 1;
    Json::Value* pInner = &jRecord["j"];
    std::string strPath = "j";
    for (int i = 0; i < 60; ++i)
    {
        pInner = &(*pInner)["k"];
        strPath += ".k";
    }
    *pInner = 5;
    table.add(jRecord);
    Json::Value jFilter;
    jFilter[strPath] = 5;
    EXPECT_EQ("1", table.ids(jFilter)) << table->status().text;
    jFilter["sort_by"] = "-" + strPath;
    jFilter["limit"] = 1;
    EXPECT_EQ("1", table.ids(jFilter)) << table->status().text;
    jFilter.clear();
    for (const char* szOperand : {"5", "null", "[5]", "[5,null]", R"({"$gt":5})", R"({"$beginsWith":"x"})",
                                  R"({"$like":"x"})", R"({"$exists":true})", R"({"$size":1})", R"({"$all":[1]})"})
    {
        jFilter[strPath + ".k"] = json(szOperand);
        EXPECT_EQ("BadRequest " + strPath + ".k", table.ids(jFilter)) << szOperand;
    }
    jFilter.clear();
    jFilter["sort_by"] = "-" + strPath + ".k";
    EXPECT_EQ("BadRequest " + strPath + ".k", table.ids(jFilter));
}

}  // namespace
}  // namespace table_tests
