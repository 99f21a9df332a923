// SPDX-License-Identifier: MIT

#include "json_text.h"

#include <cmath>
#include <cstring>
#include <string_view>

#include "json_members.h"

namespace
{

void appendQuoted(std::string& strOut, std::string_view text)
{
    static constexpr char kHexDigits[] = "0123456789abcdef";
    static constexpr char kSpecial[] = "\"\\\b\f\n\r\t";
    static constexpr char kLetters[] = "\"\\bfnrt";

    strOut += '"';
    const char* const szEnd = text.data() + text.size();
    const char* szPlain = text.data();  // characters from here on are written as they are
    for (const char* sz = szPlain; sz != szEnd; ++sz)
    {
        const auto c = static_cast<unsigned char>(*sz);
        if (c >= ' ' && c != '"' && c != '\\')
            continue;
        strOut.append(szPlain, sz);
        szPlain = sz + 1;
        strOut += '\\';
        const char* const szSpecial = c != '\0' ? std::strchr(kSpecial, c) : nullptr;
        if (szSpecial != nullptr)
            strOut += kLetters[szSpecial - kSpecial];
        else
            strOut.append("u00").append(1, kHexDigits[c >> 4]).append(1, kHexDigits[c & 15]);
    }
    strOut.append(szPlain, szEnd);
    strOut += '"';
}

void appendReal(std::string& strOut, double dValue)
{
    constexpr unsigned kSignificantDigits = 17;
    if (std::isnan(dValue))
        strOut += "NaN";
    else if (std::isinf(dValue))
        strOut += dValue < 0 ? "-Infinity" : "Infinity";
    else
        strOut += Json::valueToString(dValue, kSignificantDigits, Json::PrecisionType::significantDigits);
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the value that the caller built, as in JsonCpp's own writer
void append(std::string& strOut, const Json::Value& jValue)
{
    switch (jValue.type())
    {
        case Json::nullValue:
            strOut += "null";
            break;
        case Json::intValue:
            strOut += std::to_string(jValue.asLargestInt());
            break;
        case Json::uintValue:
            strOut += std::to_string(jValue.asLargestUInt());
            break;
        case Json::realValue:
            appendReal(strOut, jValue.asDouble());
            break;
        case Json::stringValue:
        {
            const char* szBegin = "";
            const char* szEnd = szBegin;
            jValue.getString(&szBegin, &szEnd);
            appendQuoted(strOut, {szBegin, static_cast<std::size_t>(szEnd - szBegin)});
            break;
        }
        case Json::booleanValue:
            strOut += jValue.asBool() ? "true" : "false";
            break;
        case Json::arrayValue:
        {
            char separator = '[';
            Json::ArrayIndex next = 0;
            for (auto it = jValue.begin(); it != jValue.end(); ++it, ++next)
            {
                for (; next < it.index(); ++next)  // items that were never set
                {
                    strOut += separator;
                    strOut += "null";
                    separator = ',';
                }
                strOut += separator;
                append(strOut, *it);
                separator = ',';
            }
            strOut += separator == '[' ? "[]" : "]";
            break;
        }
        case Json::objectValue:
        {
            char separator = '{';
            for (auto it = jValue.begin(); it != jValue.end(); ++it)
            {
                strOut += separator;
                appendQuoted(strOut, nameOf(it));
                strOut += ':';
                append(strOut, *it);
                separator = ',';
            }
            strOut += separator == '{' ? "{}" : "}";
            break;
        }
    }
}

}  // namespace

std::string toString(const Json::Value& jValue, std::size_t room)
{
    std::string strText;
    strText.reserve(room);
    append(strText, jValue);
    return strText;
}

bool readByJsonCpp(std::string_view text, Json::CharReader& anyReader, Json::Value& jValue)
{
    bool blRead = false;
    try
    {
        blRead = anyReader.parse(text.data(), text.data() + text.size(), &jValue, nullptr);
    }
    catch (const Json::RuntimeError& error)
    {
        // JsonCpp raises the same kind of error where memory runs out, which is no fault of the text.
        if (std::strstr(error.what(), "stackLimit") == nullptr)
            throw;
    }
    if (!blRead)  // it leaves what it had read so far
        setPayload(jValue, Json::Value());
    return blRead;
}
