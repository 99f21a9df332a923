// SPDX-License-Identifier: MIT

#include "cpp_type.h"

namespace
{

struct TypeName
{
    const char* szName;
    CppType type;
};

constexpr TypeName kTypeNames[] = {
    {"string", CppType::String},
    {"int", CppType::Int},
    {"unsigned int", CppType::UnsignedInt},
    {"long long", CppType::LongLong},
    {"unsigned long long", CppType::UnsignedLongLong},
    {"Json::Value", CppType::JsonValue},
    {"Json::objectValue", CppType::JsonObject},
    {"Json::arrayValue", CppType::JsonArray},
    {"bool", CppType::Bool},
    {"long", CppType::Long},
    {"unsigned long", CppType::UnsignedLong},
    {"unsigned", CppType::Unsigned},
    {"float", CppType::Float},
    {"double", CppType::Double},
    {"uid_t", CppType::Uid},
    {"time_t", CppType::Time},
};

}  // namespace

CppType cppTypeOf(const std::string& strTypeName)
{
    for (const TypeName& entry : kTypeNames)
        if (strTypeName == entry.szName)
            return entry.type;
    return CppType::Other;
}
