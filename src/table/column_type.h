// SPDX-License-Identifier: MIT
//
// The names of value types that a definition may use, and what values of each are.

#ifndef VORN_COLUMN_TYPE_H
#define VORN_COLUMN_TYPE_H

#include <string_view>

namespace vorn
{

enum class ValueClass : unsigned char
{
    String,
    Bool,
    Int32,
    UInt32,
    Int64,
    UInt63,  // a whole number from 0 to 2^63-1: SQLite orders no larger one
    Float,
    Double,
    Object,
    Array,
    AnyJson
};

struct ColumnType
{
    const char* szName;
    ValueClass valueClass;
};

// The row of that exact name, or null.
const ColumnType* columnTypeOf(std::string_view strTypeName);

}  // namespace vorn

#endif  // VORN_COLUMN_TYPE_H
