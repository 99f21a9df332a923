// SPDX-License-Identifier: MIT

#include "cpp_type.h"

namespace
{

using Json::Value;

constexpr ColumnType kTypes[] = {
    // name, class, fits, saved, read, matched, listed
    {"string", ValueClass::String, &Value::isString, Form::Text, Form::Text, Form::Text, Form::Text},
    {"int", ValueClass::Int32, &Value::isIntegral, Form::Int64, Form::Int, Form::Bare, Form::Bare},
    {"unsigned int", ValueClass::UInt32, nullptr, Form::Unsigned, Form::Int, Form::Bare, Form::Bare},
    {"long long", ValueClass::Int64, &Value::isIntegral, Form::Int64, Form::Int64, Form::Bare, Form::Bare},
    {"unsigned long long", ValueClass::UInt63, nullptr, Form::Unsigned, Form::Int64, Form::Bare, Form::Bare},
    {"Json::Value", ValueClass::AnyJson, nullptr, Form::None, Form::Json, Form::Json, Form::Json},
    {"Json::objectValue", ValueClass::Object, &Value::isObject, Form::Json, Form::Json, Form::Json, Form::Json},
    {"Json::arrayValue", ValueClass::Array, &Value::isArray, Form::Json, Form::Json, Form::Json, Form::Json},
    {"bool", ValueClass::Bool, &Value::isBool, Form::Int64, Form::Bool, Form::Bool, Form::Bare},
    {"long", ValueClass::Int64, nullptr, Form::Int64, Form::None, Form::Bare, Form::Bare},
    {"unsigned long", ValueClass::UInt63, nullptr, Form::Unsigned, Form::None, Form::Bare, Form::Bare},
    {"unsigned", ValueClass::UInt32, nullptr, Form::Unsigned, Form::None, Form::Bare, Form::Bare},
    {"float", ValueClass::Float, nullptr, Form::Float, Form::None, Form::Bare, Form::Bare},
    {"double", ValueClass::Double, nullptr, Form::Double, Form::None, Form::Bare, Form::Bare},
    {"uid_t", ValueClass::UInt32, &Value::isIntegral, Form::None, Form::None, Form::Bare, Form::Bare},
    {"time_t", ValueClass::Int64, &Value::isIntegral, Form::None, Form::None, Form::Bare, Form::Bare},
};

}  // namespace

constexpr ColumnType kUnknownType = {"", ValueClass::AnyJson, nullptr, Form::None, Form::None, Form::Bare, Form::Bare};

const ColumnType* columnTypeOf(std::string_view strTypeName)
{
    for (const ColumnType& type : kTypes)
        if (strTypeName == type.szName)
            return &type;
    return nullptr;
}
