// SPDX-License-Identifier: MIT

#include "request_keys.h"

#include <sqlite3.h>

#include <algorithm>

#include "cell_value.h"
#include "failure.h"
#include "member_set.h"
#include "suggestion.h"

namespace vorn
{

namespace
{

constexpr std::string_view kNames[] = {"sort_by", "sort_direction", "limit", "offset", "fields"};

}  // namespace

RequestKeys::Key RequestKeys::keyOf(std::string_view name)
{
    if (!name.empty() && name[0] == '$')
        name.remove_prefix(1);
    const auto it = std::find(std::begin(kNames), std::end(kNames), name);
    return static_cast<Key>(it - std::begin(kNames));
}

const char* RequestKeys::nearest(std::string_view name)
{
    Suggestion suggestion(name.substr(1));
    for (const std::string_view known : kNames)
        suggestion.consider(known);
    return suggestion.nearest().empty() ? "" : suggestion.nearest().data();
}

bool RequestKeys::failKey(Key key, Status& status, const char* szText) const
{
    return fail(status, Code::BadRequest, m_names[key], szText);
}

bool RequestKeys::take(Key key, std::string_view name, const Json::Value& jValue, Status& status)
{
    m_names[key] = name;
    if (m_pValues[key] != nullptr)
        return failKey(key, status, "% is given in both of its spellings.");
    m_pValues[key] = &jValue;
    return true;
}

bool RequestKeys::write(const Definition& definition, ConditionParts& parts, bool blOne, Compiled& compiled)
{
    const std::size_t begin = parts.strSql.size();
    if (!writeOrder(definition, parts))
        return false;
    const std::size_t end = parts.strSql.size();
    if (!writePage(parts, blOne))
        return false;
    if (m_blSorts && parts.strSql.size() != end)
    {
        compiled.pageOrderBegin = begin;
        compiled.pageOrderSize = end - begin;
    }
    return readFields(definition, parts.status, compiled.fields);
}

// Whether "sort_direction" turns the order around.
bool RequestKeys::readDirection(Status& status, bool& blDescending) const
{
    const Json::Value* pDirection = m_pValues[SortDirection];
    if (pDirection == nullptr)
        return true;
    if (!pDirection->isString() || (textOf(*pDirection) != "asc" && textOf(*pDirection) != "desc"))
        return failKey(SortDirection, status, "% must be \"asc\" or \"desc\".");
    const Json::Value* pKey = m_pValues[SortBy];
    if (pKey != nullptr && pKey->isArray() && pKey->size() == 1)
        pKey = &(*pKey)[0];
    if (pKey == nullptr || !pKey->isString() || textOf(*pKey).substr(0, 1) == "-")
        return failKey(SortDirection, status, "% needs a single \"sort_by\" without \"-\" in front.");
    blDescending = textOf(*pDirection) == "desc";
    return true;
}

bool RequestKeys::writeSortKey(const Definition& definition, ConditionParts& parts, const Json::Value& jKey,
                               const char* szSeparator)
{
    if (!jKey.isString())
        return failKey(SortBy, parts.status, "% must be a member's name, or an array of them.");
    std::string_view name = textOf(jKey);
    const bool blDescending = name.substr(0, 1) == "-";
    if (blDescending)
        name.remove_prefix(1);
    Subject subject;
    if (!readSubject(definition, name, subject, parts.status))
        return false;
    if (*szSeparator != ',')  // the rows come in the order of their first key where that has an index
        m_blSorts =
            subject.blPath || (!subject.pMember->blKey && !subject.pMember->blUnique && !subject.pMember->blIndex);
    parts.strSql += szSeparator;
    if (!subject.blPath)
        parts.strSql += subject.pMember->column();
    else if (!writePathValue(parts, subject))
        return false;
    parts.strSql += blDescending ? " DESC" : "";
    return true;
}

bool RequestKeys::writeOrder(const Definition& definition, ConditionParts& parts)
{
    bool blDescending = false;
    if (!readDirection(parts.status, blDescending))
        return false;
    const Json::Value* pKey = m_pValues[SortBy];
    if (pKey == nullptr)
        return true;
    if (!pKey->isArray())
    {
        if (!writeSortKey(definition, parts, *pKey, " ORDER BY "))
            return false;
    }
    else
    {
        const int iMax = sqlite3_limit(parts.pDb, SQLITE_LIMIT_COLUMN, -1);
        if (pKey->empty() || pKey->size() > static_cast<unsigned>(iMax))
            return failKey(SortBy, parts.status, "% has no names, or too many for SQLite.");
        const char* szSeparator = " ORDER BY ";
        for (const Json::Value& jKey : *pKey)
        {
            if (!writeSortKey(definition, parts, jKey, szSeparator))
                return false;
            szSeparator = ", ";
        }
    }
    parts.strSql += blDescending ? " DESC" : "";
    return true;
}

bool RequestKeys::readNumber(Key key, Status& status, std::int64_t& iNumber) const
{
    const Json::Value& jNumber = *m_pValues[key];
    if (!jNumber.isInt64() || jNumber.asInt64() < 0)
        return failKey(key, status, "% must be a whole number that is not below 0.");
    iNumber = jNumber.asInt64();
    return true;
}

bool RequestKeys::writePage(ConditionParts& parts, bool blOne) const
{
    std::int64_t iLimit = -1;  // none
    std::int64_t iOffset = 0;
    if ((m_pValues[Limit] != nullptr && !readNumber(Limit, parts.status, iLimit)) ||
        (m_pValues[Offset] != nullptr && !readNumber(Offset, parts.status, iOffset)))
        return false;
    // SQLite sorts no more rows than the limit says.
    if (blOne && m_pValues[SortBy] != nullptr && iLimit != 0)
        iLimit = 1;
    if (iLimit < 0 && m_pValues[Offset] == nullptr)
        return true;
    parts.strSql += " LIMIT ?";
    parts.values.push_back(BoundValue::integer(iLimit));
    if (m_pValues[Offset] != nullptr)
    {
        parts.strSql += " OFFSET ?";
        parts.values.push_back(BoundValue::integer(iOffset));
    }
    return true;
}

bool RequestKeys::readFields(const Definition& definition, Status& status, std::vector<const Member*>& fields) const
{
    const Json::Value* pFields = m_pValues[Fields];
    if (pFields == nullptr)
        return true;
    if (!pFields->isArray() || pFields->empty())
        return failKey(Fields, status, "% must be an array of members' names that is not empty.");
    MemberSet set(definition.members().size());
    for (const Json::Value& jName : *pFields)
    {
        if (!jName.isString())
            return failKey(Fields, status, "% must be an array of members' names.");
        const Member* pMember = definition.find(textOf(jName));
        if (pMember == nullptr)
            return failUnknown(definition, textOf(jName), status);
        set.add(static_cast<std::size_t>(pMember - definition.members().data()));
    }
    for (std::size_t i = 0; i < definition.members().size(); ++i)
        if (set.has(i))
            fields.push_back(&definition.members()[i]);
    return true;
}

}  // namespace vorn
