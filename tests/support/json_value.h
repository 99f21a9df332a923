// SPDX-License-Identifier: MIT
//
// JSON texts as JsonCpp itself reads and writes them with the libraries' settings, and a comparison that overlooks
// nothing.

#ifndef VORNJSONDB_TESTS_JSON_VALUE_H
#define VORNJSONDB_TESTS_JSON_VALUE_H

#include <json/json.h>

#include <string>

namespace support
{

// Parses JSON text, NaN and Infinity included; throws when it is not JSON.
Json::Value json(const std::string& text);

// The value of the text up to its first NUL, or null where JsonCpp's reader refuses it or throws.
Json::Value readReference(const std::string& strText);

std::string writeReference(const Json::Value& jValue);

// How many arrays and objects stand around the innermost value.
int depthOf(const Json::Value& jValue);

// Same kinds, same bits, same members in the same order. Json::Value's own comparison calls NaN unlike itself and -0.0
// like 0.0.
bool identical(const Json::Value& jLeft, const Json::Value& jRight);

}  // namespace support

#endif  // VORNJSONDB_TESTS_JSON_VALUE_H
