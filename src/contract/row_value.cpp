// SPDX-License-Identifier: MIT

#include "row_value.h"

#include <cstdlib>

#include "../core/json_text.h"

namespace
{

// Sets the value alone; assigning it would also move the comments that JsonCpp keeps beside every value.
void set(Json::Value& jValue, Json::Value jNew)
{
    jValue.swapPayload(jNew);
}

}  // namespace

bool convertColumn(CppType type, JsonReader& reader, const char* szText, Json::Value& jValue)
{
    constexpr int kDecimal = 10;
    switch (type)
    {
        case CppType::String:
            set(jValue, Json::Value(szText));
            return true;
        case CppType::Int:
        case CppType::UnsignedInt:  // comes back signed
            set(jValue, Json::Value(static_cast<Json::Int>(std::strtol(szText, nullptr, kDecimal))));
            return true;
        case CppType::LongLong:
        case CppType::UnsignedLongLong:  // comes back signed
            set(jValue, Json::Value(static_cast<Json::Int64>(std::strtoll(szText, nullptr, kDecimal))));
            return true;
        case CppType::JsonValue:
        case CppType::JsonObject:
        case CppType::JsonArray:
            set(jValue, fromString(szText, reader));
            return true;
        case CppType::Bool:
            set(jValue, Json::Value(std::strtol(szText, nullptr, kDecimal) == 1));
            return true;
        default:
            return false;
    }
}
