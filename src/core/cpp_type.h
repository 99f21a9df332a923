// SPDX-License-Identifier: MIT
//
// The names of value types that a table definition may use. Everything that chooses by "cpptype" chooses by CppType.

#ifndef VORN_CPP_TYPE_H
#define VORN_CPP_TYPE_H

#include <string>

enum class CppType : unsigned char
{
    String,
    Int,
    UnsignedInt,
    LongLong,
    UnsignedLongLong,
    JsonValue,
    JsonObject,
    JsonArray,
    Bool,
    Long,
    UnsignedLong,
    Unsigned,
    Float,
    Double,
    Uid,
    Time,
    Other
};

// The type of that exact name; Other for every name that the library does not know.
CppType cppTypeOf(const std::string& strTypeName);

#endif  // VORN_CPP_TYPE_H
