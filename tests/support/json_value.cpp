// SPDX-License-Identifier: MIT

#include "json_value.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace support
{

namespace
{

std::unique_ptr<Json::CharReader> makeReader()
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    builder["allowSpecialFloats"] = true;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

Json::StreamWriterBuilder makeWriterBuilder()
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["commentStyle"] = "None";
    builder["emitUTF8"] = true;
    builder["useSpecialFloats"] = true;
    builder["precision"] = 17;
    return builder;
}

std::uint64_t bitsOf(double dValue)
{
    std::uint64_t uBits = 0;
    static_assert(sizeof uBits == sizeof dValue);
    std::memcpy(&uBits, &dValue, sizeof uBits);
    return uBits;
}

}  // namespace

Json::Value json(const std::string& text)
{
    Json::CharReaderBuilder builder;
    builder["allowSpecialFloats"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors))
        throw std::runtime_error("not JSON: " + text + "\n" + errors);
    return value;
}

Json::Value readReference(const std::string& strText)
{
    static const std::unique_ptr<Json::CharReader> reader = makeReader();
    const char* const szText = strText.c_str();
    Json::Value jValue;
    try
    {
        if (!reader->parse(szText, szText + std::strlen(szText), &jValue, nullptr))
            return Json::Value();
    }
    catch (const Json::Exception&)
    {
        return Json::Value();
    }
    return jValue;
}

std::string writeReference(const Json::Value& jValue)
{
    static const Json::StreamWriterBuilder builder = makeWriterBuilder();
    return Json::writeString(builder, jValue);
}

int depthOf(const Json::Value& jValue)
{
    int deepest = 0;
    if (jValue.isArray() || jValue.isObject())
        for (const Json::Value& jItem : jValue)
            deepest = std::max(deepest, 1 + depthOf(jItem));
    return deepest;
}

bool identical(const Json::Value& jLeft, const Json::Value& jRight)
{
    if (jLeft.type() != jRight.type())
        return false;
    if (jLeft.type() == Json::realValue)
        return bitsOf(jLeft.asDouble()) == bitsOf(jRight.asDouble());
    if (jLeft.type() != Json::arrayValue && jLeft.type() != Json::objectValue)
        return jLeft == jRight;

    if (jLeft.size() != jRight.size())
        return false;
    auto right = jRight.begin();
    for (auto left = jLeft.begin(); left != jLeft.end(); ++left, ++right)
    {
        if (jLeft.isObject() && left.name() != right.name())
            return false;
        if (jLeft.isArray() && left.index() != right.index())
            return false;
        if (!identical(*left, *right))
            return false;
    }
    return true;
}

}  // namespace support
