// SPDX-License-Identifier: MIT
//
// Reads the JSON texts that toString() writes, and most others, faster than JsonCpp's reader does.

#ifndef VORN_JSON_READER_H
#define VORN_JSON_READER_H

#include <json/json.h>

// Sets jValue to the value of the text and returns true, or returns false (jValue is then incomplete) where the text
// needs JsonCpp's reader: what is not strict JSON, "\u" escapes, numbers that need more than 18 digits or an exponent,
// texts nested deeper than 32 levels. Where it returns true, the value is the one that JsonCpp's reader gives.
bool readPlainJson(const char* szText, Json::Value& jValue);

#endif  // VORN_JSON_READER_H
