// SPDX-License-Identifier: MIT

#include "filter_model.h"

#include <algorithm>
#include <cmath>

namespace table_tests
{

namespace
{

bool isJsonType(const std::string& strType)
{
    return strType.rfind("Json::", 0) == 0;
}

bool isRealType(const std::string& strType)
{
    return strType == "float" || strType == "double";
}

// -1, 0 or 1. Doubles cannot tell all whole numbers of 64 bits apart.
int compareNumbers(const Json::Value& jLeft, const Json::Value& jRight)
{
    const auto wholeOf = [](const Json::Value& j) { return static_cast<long long>(j.asInt64()); };
    const auto isWhole = [](const Json::Value& j)
    { return j.type() == Json::intValue || (j.type() == Json::uintValue && j.isInt64()); };
    if (isWhole(jLeft) && isWhole(jRight))
        return wholeOf(jLeft) < wholeOf(jRight) ? -1 : wholeOf(jLeft) > wholeOf(jRight) ? 1 : 0;
    if (!isWhole(jLeft) && !isWhole(jRight))
        return jLeft.asDouble() < jRight.asDouble() ? -1 : jLeft.asDouble() > jRight.asDouble() ? 1 : 0;
    if (!isWhole(jLeft))
        return -compareNumbers(jRight, jLeft);
    const double dRight = jRight.asDouble();
    if (dRight >= 9223372036854775808.0)
        return -1;
    if (dRight < -9223372036854775808.0)
        return 1;
    const double dFloor = std::floor(dRight);
    const auto nFloor = static_cast<long long>(dFloor);
    if (wholeOf(jLeft) != nFloor)
        return wholeOf(jLeft) < nFloor ? -1 : 1;
    return dRight > dFloor ? -1 : 0;
}

// Texts as bytes, which is how SQLite's own collation has them.
int compareTexts(const Json::Value& jLeft, const Json::Value& jRight)
{
    const int iOrder = jLeft.asString().compare(jRight.asString());
    return iOrder < 0 ? -1 : iOrder > 0 ? 1 : 0;
}

// What a name in a filter means for one record.
struct Place
{
    std::string strType;                  // "" inside a member
    const Json::Value* pValue = nullptr;  // null: absent
};

Place placeOf(const Types& types, const std::string& strName, const Json::Value& jRecord)
{
    std::string strMember = strName;
    while (types.count(strMember) == 0)
        strMember.resize(strMember.rfind('.'));
    Place place;
    if (jRecord.isMember(strMember))
        place.pValue = &jRecord[strMember];
    if (strMember.size() == strName.size())
    {
        place.strType = types.at(strMember);
        return place;
    }
    std::string strRest = strName.substr(strMember.size() + 1);
    while (place.pValue != nullptr)
    {
        const std::size_t end = strRest.find('.');
        const std::string strPart = strRest.substr(0, end);
        const bool blThere =
            place.pValue->isObject() && place.pValue->isMember(strPart) && !(*place.pValue)[strPart].isNull();
        place.pValue = blThere ? &(*place.pValue)[strPart] : nullptr;
        if (end == std::string::npos)
            break;
        strRest.erase(0, end + 1);
    }
    return place;
}

// Inside JSON: kinds differ, but 1 equals 1.0.
bool sameInside(const Json::Value& jLeft, const Json::Value& jRight)
{
    if (jLeft.isNumeric() && jRight.isNumeric())
        return compareNumbers(jLeft, jRight) == 0;
    return compactText(jLeft) == compactText(jRight);
}

bool equals(const Place& place, const Json::Value& jValue)
{
    if (jValue.isNull() || place.pValue == nullptr)
        return jValue.isNull() && place.pValue == nullptr;
    if (place.strType.empty())
        return sameInside(*place.pValue, jValue);
    if (isJsonType(place.strType))
        return compactText(*place.pValue) == compactText(jValue);
    const Json::Value jStored = asStored(place.strType, jValue);
    return jStored.isNumeric() ? compareNumbers(*place.pValue, jStored) == 0 : *place.pValue == jStored;
}

bool in(const Place& place, const Json::Value& jValues)
{
    return std::any_of(jValues.begin(), jValues.end(),
                       [&](const Json::Value& jValue) { return equals(place, jValue); });
}

// True where the value stands in the order as asked: fits(-1) for smaller.
template <typename Fits>
bool ordered(const Place& place, const Json::Value& jOperand, Fits fits)
{
    if (place.pValue == nullptr)
        return false;
    if (place.pValue->isString() && jOperand.isString())
        return fits(compareTexts(*place.pValue, jOperand));
    if (place.pValue->isNumeric() && jOperand.isNumeric())
        return fits(compareNumbers(*place.pValue, place.strType == "float" ? asStored("float", jOperand) : jOperand));
    return false;
}

char folded(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The next character, which may be several bytes.
std::size_t characterAt(const std::string& strText, std::size_t at)
{
    std::size_t size = 1;
    while (at + size < strText.size() && (strText[at + size] & 0xc0) == 0x80)
        ++size;
    return size;
}

// LIKE with its '%' and '_', or GLOB with '*', '?' and simple sets in brackets.
bool fits(const std::string& strPattern, std::size_t p, const std::string& strText, std::size_t t, bool blGlob)
{
    for (; p < strPattern.size(); ++p)
    {
        const char c = strPattern[p];
        if (c == (blGlob ? '*' : '%'))
        {
            for (std::size_t from = t; from <= strText.size(); ++from)
                if (fits(strPattern, p + 1, strText, from, blGlob))
                    return true;
            return false;
        }
        if (t >= strText.size())
            return false;
        if (c == (blGlob ? '?' : '_'))
        {
            t += characterAt(strText, t);
            continue;
        }
        if (blGlob && c == '[')
        {
            const std::size_t end = strPattern.find(']', p + 2);
            if (end == std::string::npos || strPattern.substr(p + 1, end - p - 1).find(strText[t]) == std::string::npos)
                return false;
            p = end;
            ++t;
            continue;
        }
        if (blGlob ? c != strText[t] : folded(c) != folded(strText[t]))
            return false;
        ++t;
    }
    return t == strText.size();
}

bool holdsAll(const Json::Value& jArray, const Json::Value& jValues)
{
    return std::all_of(jValues.begin(), jValues.end(),
                       [&](const Json::Value& jValue)
                       {
                           return std::any_of(jArray.begin(), jArray.end(),
                                              [&](const Json::Value& jItem) { return sameInside(jItem, jValue); });
                       });
}

bool operatorsHold(const Place& place, const Json::Value& jOperators);

bool operatorHolds(const Place& place, const std::string& strOperator, const Json::Value& jOperand)
{
    const bool blText = place.pValue != nullptr && place.pValue->isString();
    const bool blArray = place.pValue != nullptr && place.pValue->isArray();
    if (strOperator == "$eq")
        return equals(place, jOperand);
    if (strOperator == "$ne")
        return !equals(place, jOperand);
    if (strOperator == "$in")
        return in(place, jOperand);
    if (strOperator == "$nin")
        return !in(place, jOperand);
    if (strOperator == "$gt")
        return ordered(place, jOperand, [](int i) { return i > 0; });
    if (strOperator == "$gte")
        return ordered(place, jOperand, [](int i) { return i >= 0; });
    if (strOperator == "$lt")
        return ordered(place, jOperand, [](int i) { return i < 0; });
    if (strOperator == "$lte")
        return ordered(place, jOperand, [](int i) { return i <= 0; });
    if (strOperator == "$exists")
        return jOperand.asBool() == (place.pValue != nullptr);
    if (strOperator == "$beginsWith")
        return blText && place.pValue->asString().compare(0, jOperand.asString().size(), jOperand.asString()) == 0;
    if (strOperator == "$like" || strOperator == "$glob")  // SQL's own, which see a text up to its first NUL
        return blText && fits(jOperand.asString(), 0, place.pValue->asString().c_str(), 0, strOperator == "$glob");
    if (strOperator == "$all")
        return blArray && holdsAll(*place.pValue, jOperand);
    if (strOperator == "$size")
        return blArray && place.pValue->size() == jOperand.asUInt();
    return !operatorsHold(place, jOperand);  // $not
}

bool operatorsHold(const Place& place, const Json::Value& jOperators)
{
    for (auto it = jOperators.begin(); it != jOperators.end(); ++it)
        if (!operatorHolds(place, it.name(), *it))
            return false;
    return true;
}

bool entryHolds(const Types& types, const std::string& strName, const Json::Value& jEntry, const Json::Value& jRecord)
{
    const auto holds = [&](const Json::Value& jFilter) { return matches(types, jFilter, jRecord); };
    if (strName == "$and")
        return std::all_of(jEntry.begin(), jEntry.end(), holds);
    if (strName == "$or")
        return std::any_of(jEntry.begin(), jEntry.end(), holds);
    if (strName == "$nor")
        return std::none_of(jEntry.begin(), jEntry.end(), holds);
    if (strName == "$not")
        return !holds(jEntry);
    const Place place = placeOf(types, strName, jRecord);
    if (jEntry.isArray())
        return in(place, jEntry);
    if (jEntry.isObject() && !jEntry.empty() && jEntry.begin().name()[0] == '$')
        return operatorsHold(place, jEntry);
    return equals(place, jEntry);
}

// A key of a request in either spelling; a member of the plain name has it for itself.
const Json::Value* key(const Types& types, const Json::Value& jRequest, const std::string& strKey)
{
    if (jRequest.isMember("$" + strKey))
        return &jRequest["$" + strKey];
    return types.count(strKey) == 0 && jRequest.isMember(strKey) ? &jRequest[strKey] : nullptr;
}

constexpr const char* kRequestKeys[] = {"sort_by", "sort_direction", "limit", "offset", "fields"};

int compareForSort(const Place& left, const Place& right)
{
    if (left.pValue == nullptr || right.pValue == nullptr)
        return (left.pValue != nullptr ? 1 : 0) - (right.pValue != nullptr ? 1 : 0);
    if (isJsonType(left.strType))
        return compareTexts(compactText(*left.pValue), compactText(*right.pValue));
    if (left.pValue->isBool())
        return (left.pValue->asBool() ? 1 : 0) - (right.pValue->asBool() ? 1 : 0);
    if (left.pValue->isNumeric() != right.pValue->isNumeric())
        return left.pValue->isNumeric() ? -1 : 1;
    return left.pValue->isNumeric() ? compareNumbers(*left.pValue, *right.pValue)
                                    : compareTexts(*left.pValue, *right.pValue);
}

}  // namespace

std::string compactText(const Json::Value& jValue)
{
    static const Json::StreamWriterBuilder builder = []
    {
        Json::StreamWriterBuilder made;
        made["indentation"] = "";
        made["emitUTF8"] = true;
        return made;
    }();
    return Json::writeString(builder, jValue);
}

Json::Value asStored(const std::string& strType, const Json::Value& jValue)
{
    if (jValue.isNull() || strType == "string" || strType == "bool" || isJsonType(strType))
        return jValue;
    if (strType == "float")
        return static_cast<double>(static_cast<float>(jValue.asDouble()));
    if (isRealType(strType))
        return jValue.asDouble();
    if (strType.rfind("unsigned", 0) == 0 || strType == "uid_t")
        return Json::Value(jValue.asUInt64());
    return Json::Value(jValue.asInt64());
}

bool matches(const Types& types, const Json::Value& jFilter, const Json::Value& jRecord)
{
    for (auto it = jFilter.begin(); it != jFilter.end(); ++it)
        if (!entryHolds(types, it.name(), *it, jRecord))
            return false;
    return true;
}

std::vector<Json::Value> found(const Types& types, const Json::Value& jRequest, const std::vector<Json::Value>& records)
{
    Json::Value jFilter = jRequest;
    for (const std::string strKey : kRequestKeys)
    {
        jFilter.removeMember("$" + strKey);
        if (types.count(strKey) == 0)
            jFilter.removeMember(strKey);
    }
    std::vector<Json::Value> rows;
    std::copy_if(records.begin(), records.end(), std::back_inserter(rows),
                 [&](const Json::Value& jRecord) { return matches(types, jFilter, jRecord); });

    if (const Json::Value* pSort = key(types, jRequest, "sort_by"))
    {
        Json::Value jKeys = *pSort;
        if (!jKeys.isArray())
        {
            jKeys = Json::Value();
            const Json::Value* pDirection = key(types, jRequest, "sort_direction");
            jKeys.append((pDirection != nullptr && *pDirection == "desc" ? "-" : "") + pSort->asString());
        }
        const auto before = [&](const Json::Value& jLeft, const Json::Value& jRight)
        {
            for (const Json::Value& jKey : jKeys)
            {
                const bool blDown = jKey.asString()[0] == '-';
                const std::string strName = jKey.asString().substr(blDown ? 1 : 0);
                const int iOrder = compareForSort(placeOf(types, strName, jLeft), placeOf(types, strName, jRight));
                if (iOrder != 0)
                    return blDown ? iOrder > 0 : iOrder < 0;
            }
            return false;
        };
        std::stable_sort(rows.begin(), rows.end(), before);
    }
    if (const Json::Value* pOffset = key(types, jRequest, "offset"))
        rows.erase(rows.begin(),
                   rows.begin() + static_cast<long>(std::min<std::size_t>(rows.size(), pOffset->asUInt())));
    if (const Json::Value* pLimit = key(types, jRequest, "limit"))
        rows.resize(std::min<std::size_t>(rows.size(), pLimit->asUInt()));
    if (const Json::Value* pFields = key(types, jRequest, "fields"))
        for (Json::Value& jRow : rows)
        {
            Json::Value jPart(Json::objectValue);
            for (const Json::Value& jName : *pFields)
                if (jRow.isMember(jName.asString()))
                    jPart[jName.asString()] = jRow[jName.asString()];
            jRow = jPart;
        }
    return rows;
}

}  // namespace table_tests
