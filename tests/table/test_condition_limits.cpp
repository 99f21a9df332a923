// SPDX-License-Identifier: MIT
//
// Filters that are deep, long or hostile.

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "filter_table.h"

namespace table_tests
{
namespace
{

constexpr int kMaxLevel = 32;

// A filter of that many levels around the innermost. The digits of the pattern say what each level is; every level has
// conditions beside the next one, before and behind it in the order of names.
Json::Value nested(int levels, const std::string& strPattern)
{
    Json::Value jFilter = json(R"({"n":1})");
    for (int i = 1; i < levels; ++i)
    {
        Json::Value jNext;
        switch (strPattern[static_cast<std::size_t>(i) % strPattern.size()])
        {
            case '0':
                jNext["$and"].append(json(R"({"$or":[{"n":1},{"n":7}]})"));
                jNext["$and"].append(jFilter);
                break;
            case '1':
                jNext["$or"].append(json(R"({"n":8,"o.a":9})"));
                jNext["$or"].append(jFilter);
                break;
            case '2':
                jNext["$nor"].append(json(R"({"n":9})"));
                jNext["$nor"].append(json(R"({"$not":{}})"));
                jNext["$not"]["$and"].append(jFilter);
                i += 2;
                jNext["$nor"].append(Json::Value(Json::objectValue));
                jNext["$nor"][2]["$not"] = jFilter;
                jNext.removeMember("$not");
                break;
            default:
                jNext["$not"] = jFilter;
                break;
        }
        jFilter = jNext;
    }
    return jFilter;
}

int levelsOf(const Json::Value& jFilter)
{
    int iDeepest = 0;
    if (jFilter.isObject())
        for (auto it = jFilter.begin(); it != jFilter.end(); ++it)
        {
            if (it.name() == "$not")
                iDeepest = std::max(iDeepest, levelsOf(*it));
            else if (it.name()[0] == '$')
                for (const Json::Value& jInner : *it)
                    iDeepest = std::max(iDeepest, levelsOf(jInner));
        }
    return iDeepest + 1;
}

}  // namespace
}  // namespace table_tests
