// SPDX-License-Identifier: MIT

#include "equal_filters.h"

#include "../core/json_members.h"

namespace vorn
{

namespace
{

constexpr Json::ArrayIndex kFew = 16;

// The value, or null where the filter is no such one.
const Json::Value* valueOf(const Json::Value& jFilter, bool blUnequal, std::string_view& name)
{
    if (!jFilter.isObject() || jFilter.size() != 1)
        return nullptr;
    name = nameOf(jFilter.begin());
    const Json::Value& jValue = *jFilter.begin();
    if (name.substr(0, 1) == "$" || jValue.isArray())
        return nullptr;
    if (!jValue.isObject() || jValue.empty() || nameOf(jValue.begin()).substr(0, 1) != "$")
        return blUnequal || jValue.isObject() ? nullptr : &jValue;
    const bool blThis = jValue.size() == 1 && nameOf(jValue.begin()) == (blUnequal ? "$ne" : "$eq");
    return blThis ? &*jValue.begin() : nullptr;
}

}  // namespace

EqualFilters equalFiltersAt(const Json::Value& jFilters, Json::ArrayIndex place, bool blUnequal)
{
    EqualFilters found;
    std::string_view name;
    if (jFilters.size() - place <= kFew || valueOf(jFilters[place], blUnequal, found.name) == nullptr)
        return found;
    for (; place < jFilters.size(); ++place)
    {
        const Json::Value* pValue = valueOf(jFilters[place], blUnequal, name);
        if (pValue == nullptr || name != found.name)
            break;
        found.jList.append(*pValue);
    }
    if (found.jList.size() <= kFew)
        found.jList.clear();
    return found;
}

}  // namespace vorn
