// SPDX-License-Identifier: MIT
//
// What a request says beside its filter: order, page and fields.

#ifndef VORN_REQUEST_KEYS_H
#define VORN_REQUEST_KEYS_H

#include <json/json.h>

#include <string_view>

#include "condition_parts.h"
#include "conditions.h"

namespace vorn
{

class RequestKeys
{
public:
    enum Key : unsigned char
    {
        SortBy,
        SortDirection,
        Limit,
        Offset,
        Fields,
        None
    };

    // The key of that name, with or without "$" in front.
    static Key keyOf(std::string_view name);
    // The nearest key's name without "$", or "", to a name with "$" in front.
    static const char* nearest(std::string_view name);

    // Takes note of a key. False where it has come before in its other spelling.
    bool take(Key key, std::string_view name, const Json::Value& jValue, Status& status);

    // Checks what was noted, appends " ORDER BY ..." and " LIMIT ? OFFSET ?" and sets compiled's fields and order of a
    // page. blOne: at most one row is wanted.
    bool write(const Definition& definition, ConditionParts& parts, bool blOne, Compiled& compiled);

private:
    bool writeOrder(const Definition& definition, ConditionParts& parts);
    bool writeSortKey(const Definition& definition, ConditionParts& parts, const Json::Value& jKey,
                      const char* szSeparator);
    bool readDirection(Status& status, bool& blDescending) const;
    bool readNumber(Key key, Status& status, std::int64_t& iNumber) const;
    bool writePage(ConditionParts& parts, bool blOne) const;
    bool readFields(const Definition& definition, Status& status, std::vector<const Member*>& fields) const;
    bool failKey(Key key, Status& status, const char* szText) const;

    const Json::Value* m_pValues[None] = {};
    std::string_view m_names[None];
    bool m_blSorts = false;  // whether SQLite has to sort, as far as the definition tells
};

}  // namespace vorn

#endif  // VORN_REQUEST_KEYS_H
