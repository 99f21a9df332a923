// SPDX-License-Identifier: MIT
//
// JSON values as text: what is stored for members of the JSON types, follows LIMIT and OFFSET, and stands in log lines.
// The texts are those of JsonCpp's stream writer, which made a create take 4 % more instructions (./dev figures).

#ifndef VORN_JSON_TEXT_H
#define VORN_JSON_TEXT_H

#include <json/json.h>

#include <string>

#include "json_reader.h"

// Compact text on one line: UTF-8 as it is, no comments, reals with 17 significant digits, "NaN" and "Infinity" where
// they occur. fromString() reads it back.
std::string toString(const Json::Value& jValue);

// The value of a JSON text; null when the text is not JSON or is nested deeper than JsonCpp's reader allows (1,000).
// The reader is the column's own, or a new one.
Json::Value fromString(const char* szText, JsonReader& reader);

#endif  // VORN_JSON_TEXT_H
