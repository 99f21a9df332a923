// SPDX-License-Identifier: MIT

#include "cell_value.h"

#include <cfloat>
#include <cmath>
#include <limits>

#include "../core/json_text.h"
#include "failure.h"

namespace vorn
{

namespace
{

constexpr std::size_t kRoom = 60;  // for the text of most JSON columns
constexpr int kMaxDepth = 1000;    // as deep as the JSON reader goes

enum class Fit
{
    Fits,
    WrongKind,
    BeyondRange
};

struct Range
{
    std::int64_t iMin;
    std::int64_t iMax;
};

Range rangeOf(ValueClass valueClass)
{
    switch (valueClass)
    {
        case ValueClass::Int32:
            return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
        case ValueClass::UInt32:
            return {0, std::numeric_limits<std::uint32_t>::max()};
        case ValueClass::UInt63:
            return {0, std::numeric_limits<std::int64_t>::max()};
        default:
            return {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()};
    }
}

Fit wholeNumber(const Json::Value& jValue, const Range& range, std::int64_t& iValue)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    switch (jValue.type())
    {
        case Json::intValue:
            iValue = jValue.asInt64();
            break;
        case Json::uintValue:
            if (jValue.asUInt64() > static_cast<std::uint64_t>(range.iMax))
                return Fit::BeyondRange;
            iValue = static_cast<std::int64_t>(jValue.asUInt64());
            break;
        case Json::realValue:
        {
            const double dValue = jValue.asDouble();
            if (!std::isfinite(dValue))
                return Fit::BeyondRange;
            if (dValue != std::trunc(dValue))
                return Fit::WrongKind;
            if (dValue < -kTwoTo63 || dValue >= kTwoTo63)
                return Fit::BeyondRange;
            iValue = static_cast<std::int64_t>(dValue);
            break;
        }
        default:
            return Fit::WrongKind;
    }
    return iValue < range.iMin || iValue > range.iMax ? Fit::BeyondRange : Fit::Fits;
}

Fit realNumber(const Json::Value& jValue, bool blFloat, double& dValue)
{
    if (jValue.type() != Json::realValue && jValue.type() != Json::intValue && jValue.type() != Json::uintValue)
        return Fit::WrongKind;
    dValue = jValue.asDouble();
    if (!std::isfinite(dValue) || (blFloat && std::fabs(dValue) > FLT_MAX))
        return Fit::BeyondRange;
    if (blFloat)
        dValue = static_cast<double>(static_cast<float>(dValue));
    return Fit::Fits;
}

// What cannot be read back must not be stored: too deep, or a number that JSON does not have.
Fit jsonFit(const Json::Value& jValue, int depth = 0)  // NOLINT(misc-no-recursion): kMaxDepth bounds it
{
    if (jValue.type() == Json::realValue)
        return std::isfinite(jValue.asDouble()) ? Fit::Fits : Fit::BeyondRange;
    if (jValue.type() != Json::arrayValue && jValue.type() != Json::objectValue)
        return Fit::Fits;
    if (depth == kMaxDepth)
        return Fit::WrongKind;
    for (const Json::Value& jInner : jValue)
        if (const Fit fit = jsonFit(jInner, depth + 1); fit != Fit::Fits)
            return fit;
    return Fit::Fits;
}

// Sets the value too, unless it is the text of a JSON type, which costs more.
Fit fitOf(ValueClass valueClass, Json::ValueType type, const Json::Value& jValue, BoundValue& value)
{
    switch (valueClass)
    {
        case ValueClass::String:
            if (type != Json::stringValue)
                return Fit::WrongKind;
            value.setBorrowed(textOf(jValue));
            return Fit::Fits;
        case ValueClass::Bool:
            if (type != Json::booleanValue)
                return Fit::WrongKind;
            value.setInteger(jValue.asBool() ? 1 : 0);
            return Fit::Fits;
        case ValueClass::Float:
        case ValueClass::Double:
        {
            double dValue = 0;
            const Fit fit = realNumber(jValue, valueClass == ValueClass::Float, dValue);
            value.setReal(dValue);
            return fit;
        }
        case ValueClass::Object:
            return type == Json::objectValue ? jsonFit(jValue) : Fit::WrongKind;
        case ValueClass::Array:
            return type == Json::arrayValue ? jsonFit(jValue) : Fit::WrongKind;
        case ValueClass::AnyJson:
            return jsonFit(jValue);
        default:
        {
            std::int64_t iValue = 0;
            const Fit fit = wholeNumber(jValue, rangeOf(valueClass), iValue);
            value.setInteger(iValue);
            return fit;
        }
    }
}

bool isJson(ValueClass valueClass)
{
    return valueClass == ValueClass::Object || valueClass == ValueClass::Array || valueClass == ValueClass::AnyJson;
}

bool report(Fit fit, const Member& member, std::string_view path, Status& status)
{
    return fail(status, fit == Fit::WrongKind ? Code::BadType : Code::OutOfRange, path, "% must be ^.",
                describe(member));
}

}  // namespace

bool isJsonValue(const Json::Value& jValue)
{
    return jsonFit(jValue) == Fit::Fits;
}

std::string_view textOf(const Json::Value& jString)
{
    const char* szBegin = "";
    const char* szEnd = szBegin;
    jString.getString(&szBegin, &szEnd);
    return {szBegin, static_cast<std::size_t>(szEnd - szBegin)};
}

std::string shown(std::string_view path)
{
    return toString(Json::Value(path.data(), path.data() + path.size()));
}

const char* describe(const Member& member)
{
    switch (member.pType->valueClass)
    {
        case ValueClass::String:
            return "a string";
        case ValueClass::Bool:
            return "a boolean";
        case ValueClass::Int32:
            return "a whole number from -2147483648 to 2147483647";
        case ValueClass::UInt32:
            return "a whole number from 0 to 4294967295";
        case ValueClass::Int64:
            return "a whole number from -9223372036854775808 to 9223372036854775807";
        case ValueClass::UInt63:
            return "a whole number from 0 to 9223372036854775807";
        case ValueClass::Float:
            return "a number in the range of float";
        case ValueClass::Double:
            return "a finite number";
        case ValueClass::Object:
            return "an object, at most 1000 levels deep, of finite numbers";
        case ValueClass::Array:
            return "an array, at most 1000 levels deep, of finite numbers";
        default:
            return "a JSON value, at most 1000 levels deep, of finite numbers";
    }
}

bool checkValue(const Member& member, const Json::Value& jValue, std::string_view path, Status& status)
{
    const Json::ValueType type = jValue.type();
    if (type == Json::nullValue)
        return true;
    if (type == Json::stringValue && member.pType->valueClass == ValueClass::String)
        return true;
    BoundValue unused;
    const Fit fit = fitOf(member.pType->valueClass, type, jValue, unused);
    return fit == Fit::Fits || report(fit, member, path, status);
}

bool toBound(const Member& member, const Json::Value& jValue, std::string_view path, BoundValue& value, Status& status)
{
    const Json::ValueType type = jValue.type();
    if (type == Json::nullValue)
    {
        value = BoundValue();
        return true;
    }
    const ValueClass valueClass = member.pType->valueClass;
    const Fit fit = fitOf(valueClass, type, jValue, value);
    if (fit != Fit::Fits)
        return report(fit, member, path, status);
    if (isJson(valueClass))
        value = BoundValue::owned(toString(jValue, kRoom));
    return true;
}

void bindChecked(const Member& member, const Json::Value& jValue, BoundValue& value)
{
    const ValueClass valueClass = member.pType->valueClass;
    if (jValue.type() == Json::nullValue)
        value = BoundValue();
    else if (isJson(valueClass))
        value = BoundValue::owned(toString(jValue, kRoom));
    else
        fitOf(valueClass, jValue.type(), jValue, value);
}

}  // namespace vorn
