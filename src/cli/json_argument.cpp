// SPDX-License-Identifier: MIT

#include "json_argument.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

#include "error.h"
#include "store.h"

namespace cli
{

namespace
{

bool readJson(std::string_view text, Json::Value& jValue, std::string* pstrError)
{
    static const std::unique_ptr<Json::CharReader> reader = []
    {
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        builder["strictRoot"] = false;
        return std::unique_ptr<Json::CharReader>(builder.newCharReader());
    }();
    try
    {
        return reader->parse(text.data(), text.data() + text.size(), &jValue, pstrError);
    }
    catch (const Json::Exception& error)  // nested too deeply
    {
        if (pstrError != nullptr)
            *pstrError = error.what();
        return false;
    }
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Reads a number as JSON writes it, in a tenth of the time that JsonCpp's reader takes, which matters in long files.
// False where it is none, and where it has so many digits that it had better be left to that reader.
bool readNumber(std::string_view text, Json::Value& jValue)
{
    constexpr std::size_t kMostDigits = 18;
    const std::size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
    std::size_t end = first;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    if (end == first || end - first > kMostDigits || (text[first] == '0' && end > first + 1))
        return false;
    if (end == text.size())
    {
        Json::Int64 iValue = 0;
        std::from_chars(text.data(), text.data() + end, iValue);
        jValue = iValue;
        return true;
    }
    if (text[end] != '.' || !isDigit(text.back()))
        return false;
    double dValue = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), dValue, std::chars_format::fixed);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || !isDigit(text[end + 1]))
        return false;
    jValue = dValue;
    return true;
}

// Whether the text may be something else than a text: it begins like a value of JSON. 007, which JsonCpp takes for a
// number, is none.
bool mayBeJson(std::string_view text)
{
    const std::size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
    if (text.size() > first + 1 && text[first] == '0' && isDigit(text[first + 1]))
        return false;
    constexpr std::string_view kBeginnings = "{[\"-0123456789tfn \t\r\n";
    return !text.empty() && kBeginnings.find(text.front()) != std::string_view::npos;
}

constexpr std::array<const char*, 14> kOperators{"eq",  "ne",     "gt",   "gte",  "lt",  "lte",  "in",
                                                 "nin", "exists", "like", "glob", "all", "size", "beginsWith"};

bool isOperator(const std::string& strName)
{
    return std::find(kOperators.begin(), kOperators.end(), strName) != kOperators.end();
}

// The declared member that a path begins with: the longest one, as in filters.
const Json::Value* memberOf(const Json::Value& jMembers, const std::string& strPath)
{
    for (std::size_t length = strPath.size(); length != std::string::npos && length > 0;
         length = strPath.rfind('.', length - 1))
    {
        const Json::Value* const pMember = jMembers.find(strPath.data(), strPath.data() + length);
        if (pMember != nullptr)
            return pMember;
    }
    return nullptr;
}

// The type that a value for this path is read as: inside a JSON member whatever it looks like.
std::string typeOf(const Json::Value& jMembers, const std::string& strPath)
{
    const Json::Value* const pMember = memberOf(jMembers, strPath);
    if (pMember == nullptr || !jMembers.isMember(strPath) || !pMember->isObject())
        return "";
    const Json::Value& jType = (*pMember)["cpptype"];
    return jType.isString() ? jType.asString() : "";
}

Json::Value listValue(const std::string& strType, const std::string& strText)
{
    Json::Value jList(Json::arrayValue);
    std::size_t start = 0;
    while (start <= strText.size())
    {
        const std::size_t end = std::min(strText.find(',', start), strText.size());
        jList.append(valueOf(strType, strText.substr(start, end - start)));
        start = end + 1;
    }
    return jList;
}

Json::Value operandOf(const std::string& strOperator, const std::string& strType, const std::string& strText)
{
    if (strOperator == "in" || strOperator == "nin" || strOperator == "all")
        return listValue(strOperator == "all" ? "" : strType, strText);
    if (strOperator == "exists")
        return valueOf("bool", strText);
    if (strOperator == "size")
        return valueOf("long long", strText);
    if (strOperator == "like" || strOperator == "glob" || strOperator == "beginsWith")
        return strText;
    return valueOf(strType, strText);
}

// PATH=VALUE or PATH.OPERATOR=VALUE.
Json::Value shortFilter(const Json::Value& jMembers, const std::string& strArgument)
{
    const std::size_t equals = strArgument.find('=');
    if (equals == std::string::npos || equals == 0)
        throw badUsage("'" + strArgument + "' is no filter: write member=value, member.gt=value or a JSON object");
    std::string strPath = strArgument.substr(0, equals);
    const std::string strText = strArgument.substr(equals + 1);

    Json::Value jFilter;
    const std::size_t dot = strPath.rfind('.');
    if (!jMembers.isMember(strPath) && dot != std::string::npos && isOperator(strPath.substr(dot + 1)))
    {
        const std::string strOperator = strPath.substr(dot + 1);
        strPath.resize(dot);
        jFilter[strPath]["$" + strOperator] = operandOf(strOperator, typeOf(jMembers, strPath), strText);
    }
    else
    {
        const Json::Value jValue = valueOf(typeOf(jMembers, strPath), strText);
        if (jValue.isNull())
            jFilter[strPath] = jValue;
        else
            jFilter[strPath]["$eq"] = jValue;
    }
    return jFilter;
}

Json::Value objectArgument(const std::string& strArgument, const std::string& strWhat)
{
    Json::Value jObject = parseJson(strArgument == "-" ? readText("-") : strArgument, strWhat);
    if (!jObject.isObject())
        throw badUsage(strWhat + " is no JSON object");
    return jObject;
}

bool isJson(const std::string& strArgument)
{
    return strArgument == "-" || (!strArgument.empty() && strArgument.front() == '{');
}

}  // namespace

Json::Value parseJson(const std::string& strText, const std::string& strWhat)
{
    Json::Value jValue;
    std::string strError;
    if (readJson(strText, jValue, &strError))
        return jValue;
    std::replace(strError.begin(), strError.end(), '\n', ' ');
    throw badUsage(strWhat + " is no JSON: " + strError);
}

Json::Value valueOf(std::string_view type, std::string_view text)
{
    if (type == "bool" && (text == "true" || text == "false"))
        return text == "true";
    Json::Value jValue;
    if (type != "string" && (readNumber(text, jValue) || (mayBeJson(text) && readJson(text, jValue, nullptr))))
        return jValue;
    return {text.data(), text.data() + text.size()};
}

Json::Value filterOf(const Json::Value& jMembers, const std::vector<std::string>& arguments)
{
    Json::Value jAll(Json::arrayValue);
    for (const std::string& strArgument : arguments)
        jAll.append(isJson(strArgument) ? objectArgument(strArgument, "the filter")
                                        : shortFilter(jMembers, strArgument));
    if (jAll.empty())
        return Json::objectValue;
    if (jAll.size() == 1)
        return jAll[0];
    Json::Value jFilter;
    jFilter["$and"] = std::move(jAll);
    return jFilter;
}

Json::Value recordOf(const Json::Value& jMembers, const std::vector<std::string>& arguments)
{
    Json::Value jRec(Json::objectValue);
    for (const std::string& strArgument : arguments)
    {
        if (isJson(strArgument))
        {
            const Json::Value jObject = objectArgument(strArgument, "the record");
            for (auto it = jObject.begin(); it != jObject.end(); ++it)
                jRec[it.name()] = *it;
            continue;
        }
        const std::size_t equals = strArgument.find('=');
        if (equals == std::string::npos || equals == 0)
            throw badUsage("'" + strArgument + "' gives no value: write member=value or a JSON object");
        const std::string strName = strArgument.substr(0, equals);
        jRec[strName] = valueOf(typeOf(jMembers, strName), strArgument.substr(equals + 1));
    }
    return jRec;
}

Json::Value listOf(const std::string& strText)
{
    return listValue("string", strText);
}

}  // namespace cli
