// SPDX-License-Identifier: MIT

#include "column_type.h"

namespace vorn
{

const ColumnType* columnTypeOf(std::string_view strTypeName)
{
    static constexpr ColumnType kTypes[] = {
        {"string", ValueClass::String},
        {"bool", ValueClass::Bool},
        {"int", ValueClass::Int32},
        {"unsigned int", ValueClass::UInt32},
        {"unsigned", ValueClass::UInt32},
        {"uid_t", ValueClass::UInt32},
        {"long long", ValueClass::Int64},
        {"long", ValueClass::Int64},
        {"time_t", ValueClass::Int64},
        {"unsigned long long", ValueClass::UInt63},
        {"unsigned long", ValueClass::UInt63},
        {"float", ValueClass::Float},
        {"double", ValueClass::Double},
        {"Json::objectValue", ValueClass::Object},
        {"Json::arrayValue", ValueClass::Array},
        {"Json::Value", ValueClass::AnyJson},
    };
    for (const ColumnType& type : kTypes)
        if (strTypeName == type.szName)
            return &type;
    return nullptr;
}

}  // namespace vorn
