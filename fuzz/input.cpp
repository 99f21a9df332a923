// SPDX-License-Identifier: MIT

#include "input.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "check.h"

namespace fuzz
{

namespace
{

const Json::Value& nothing()
{
    static const Json::Value jNothing;
    return jNothing;
}

// Whether a width or precision in the text could make some 100 MB of a few bytes.
bool hasLargeWidth(const std::string& strText)
{
    // A width that gives no text at all is no burden.
    constexpr std::string_view kNoText = "2000000000";
    constexpr std::string_view kBeforeType = "-+ #!,.*l0123456789";
    constexpr std::size_t kMaxDigits = 5;
    for (std::size_t i = strText.find('%'); i != std::string::npos; i = strText.find('%', i))
    {
        ++i;
        while (i < strText.size() && kBeforeType.find(strText[i]) != std::string_view::npos)
        {
            const std::size_t end = std::min(strText.find_first_not_of("0123456789", i), strText.size());
            if (end - i > kMaxDigits && strText.compare(i, end - i, kNoText) != 0)
                return true;
            i = std::max(end, i + 1);
        }
    }
    return false;
}

}  // namespace

std::optional<Json::Value> readInput(const std::uint8_t* data, std::size_t size)
{
    static const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    const auto* const szText = reinterpret_cast<const char*>(data);
    Json::Value jInput;
    try
    {
        if (size == 0 || hasLargeWidth(std::string(szText, size)) ||
            !reader->parse(szText, szText + size, &jInput, nullptr))
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

namespace
{

std::optional<model::Step> readStep(const Json::Value& jStep)
{
    const std::string strCall = textOf(part(jStep, 0U));
    for (const model::CallShape& shape : model::kCallShapes)
    {
        if (strCall != shape.szName)
            continue;
        model::Step step;
        step.call = shape.call;
        Json::ArrayIndex i = 0;
        for (const char* sz = shape.szArguments; *sz != '\0'; ++sz)
        {
            const Json::Value& jArgument = part(jStep, ++i);
            switch (*sz)
            {
                case 'f':
                    step.first = jArgument;
                    break;
                case 's':
                    step.second = jArgument;
                    break;
                case 't':
                    step.text = textOf(jArgument);
                    break;
                case 'n':
                    if (jArgument.isString())
                        step.name = jArgument.asCString();  // as it is given to the library: up to its first NUL
                    break;
                case 'i':
                    step.number = smallNumberOf(jArgument);
                    break;
                case 'b':
                    step.flag = flagOf(jArgument);
                    break;
                default:
                    step.texts = textsOf(jArgument);
            }
        }
        return step;
    }
    return std::nullopt;
}

}  // namespace

void compareSteps(model::Comparison& comparison, const Json::Value& jInput)
{
    constexpr Json::ArrayIndex kMaxSteps = 12;
    const Json::Value& jSteps = part(jInput, "steps");
    for (Json::ArrayIndex i = 0; jSteps.isArray() && i < jSteps.size() && i < kMaxSteps; ++i)
    {
        const std::optional<model::Step> step = readStep(jSteps[i]);
        const std::string strDifference = step ? comparison.differenceIn(*step) : std::string();
        FUZZ_CHECK(strDifference.empty(), strDifference);
    }
}

void giveTypesBack(std::string strName)
{
    Json::Value jNoTableDef;
    VORN_JSON_DB::recType(jNoTableDef, strName) = Json::Value(Json::objectValue);
}

}  // namespace fuzz
