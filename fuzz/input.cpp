// SPDX-License-Identifier: MIT

#include "input.h"

#include <memory>

namespace fuzz
{

namespace
{

const Json::Value& nothing()
{
    static const Json::Value jNothing;
    return jNothing;
}

}  // namespace

std::optional<Json::Value> readInput(const std::uint8_t* data, std::size_t size)
{
    static const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    const auto* const szText = reinterpret_cast<const char*>(data);
    Json::Value jInput;
    try
    {
        if (size == 0 || !reader->parse(szText, szText + size, &jInput, nullptr))
            return std::nullopt;
    }
    catch (const Json::Exception&)
    {
        return std::nullopt;
    }
    return jInput;
}

const Json::Value& part(const Json::Value& jInput, const char* szName)
{
    return jInput.isObject() ? jInput[szName] : nothing();
}

const Json::Value& part(const Json::Value& jInput, Json::ArrayIndex index)
{
    return jInput.isArray() && index < jInput.size() ? jInput[index] : nothing();
}

std::string textOf(const Json::Value& jValue)
{
    return jValue.isString() ? jValue.asString() : std::string();
}

std::vector<std::string> textsOf(const Json::Value& jArray)
{
    std::vector<std::string> texts;
    if (jArray.isArray())
        for (const Json::Value& jItem : jArray)
            texts.push_back(textOf(jItem));
    return texts;
}

bool flagOf(const Json::Value& jValue)
{
    return jValue.isBool() && jValue.asBool();
}

int smallNumberOf(const Json::Value& jValue)
{
    return jValue.isInt() ? jValue.asInt() : 0;
}

}  // namespace fuzz
