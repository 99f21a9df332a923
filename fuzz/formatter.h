// SPDX-License-Identifier: MIT
//
// What a value list must read like: SQLite's own formatter, called with the whole text so far as the format and the
// value as its argument, wherever that call is defined; and SQLite's SQL function format() where a '%' in the text
// reaches for an argument that is not there or is of another kind.

#ifndef VORN_FUZZ_FORMATTER_H
#define VORN_FUZZ_FORMATTER_H

#include <json/json.h>
#include <sqlite3.h>

#include <map>
#include <optional>
#include <string>

namespace fuzz
{

// Member name -> type name.
using Types = std::map<std::string, std::string>;

enum class Outcome
{
    Written,
    Refused,     // a type that cannot be written
    WrongKind,   // JsonCpp's exception
    NoText,      // the formatter gave nothing
    NotDefined,  // neither of the two says what the text must be
};

struct ValueList
{
    Outcome outcome;
    std::string strText;
};

ValueList expectedValueList(const std::string& strStart, const Types& types, const Json::Value& jRecord);

// Whether a width or precision in the text could make some 100 MB of a few bytes.
bool hasLargeWidth(const std::string& strText);

}  // namespace fuzz

#endif  // VORN_FUZZ_FORMATTER_H
