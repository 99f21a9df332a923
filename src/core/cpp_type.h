// SPDX-License-Identifier: MIT
//
// The names of value types that a table definition may use, and what each of them means: one row per name. Whoever
// needs to know something about a type reads its row.

#ifndef VORN_CPP_TYPE_H
#define VORN_CPP_TYPE_H

#include <json/json.h>

#include <string_view>

// What values of a type are, where every type is taken at its word.
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

// How SQL text holds a value, or a column's text is read.
enum class Form : unsigned char
{
    None,  // not at all
    Text,
    Json,  // the text of a JSON value
    Bool,
    Int,  // in the range of int
    Int64,
    Unsigned,
    Float,
    Double,
    Bare  // as a text without quotes, whatever the value holds
};

// One row: the class's meaning, then what VornJsonDbApi makes of the type. Its columns do not agree with each other, on
// purpose: callers rely on each of them.
struct ColumnType
{
    const char* szName;
    ValueClass valueClass;
    bool (Json::Value::*fits)() const;  // what checkJsonType() asks of a value; null where it refuses the type
    Form saved;                         // in a value list
    Form read;                          // from a result row
    Form matched;                       // in the condition on one value
    Form listed;                        // as an item of a list condition
};

// What every name that is not known means to VornJsonDbApi.
extern const ColumnType kUnknownType;

// The row of that exact name, or null.
const ColumnType* columnTypeOf(std::string_view strTypeName);

#endif  // VORN_CPP_TYPE_H
