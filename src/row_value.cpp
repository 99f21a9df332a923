// SPDX-License-Identifier: MIT

#include "row_value.h"

#include <cstdlib>

#include "json_text.h"

bool convertColumn(CppType type, const char* szText, Json::Value& jValue)
{
    constexpr int kDecimal = 10;
    switch (type)
    {
        case CppType::String:
            jValue = szText;
            return true;
        case CppType::Int:
        case CppType::UnsignedInt:  // comes back signed
            jValue = static_cast<Json::Int>(std::strtol(szText, nullptr, kDecimal));
            return true;
        case CppType::LongLong:
        case CppType::UnsignedLongLong:  // comes back signed
            jValue = static_cast<Json::Int64>(std::strtoll(szText, nullptr, kDecimal));
            return true;
        case CppType::JsonValue:
        case CppType::JsonObject:
        case CppType::JsonArray:
            jValue = fromString(szText);
            return true;
        case CppType::Bool:
            jValue = std::strtol(szText, nullptr, kDecimal) == 1;
            return true;
        default:
            return false;
    }
}
