// SPDX-License-Identifier: MIT
//
// JSON values as text, and the values of JSON texts.

#ifndef VORN_JSON_TEXT_H
#define VORN_JSON_TEXT_H

#include <json/json.h>

#include <string>
#include <string_view>

// Compact text on one line, as JsonCpp's stream writer gives it: UTF-8 as it is, no comments, reals with 17 significant
// digits, "NaN" and "Infinity" where they occur. A text of up to room characters is written without growing.
std::string toString(const Json::Value& jValue, std::size_t room = 0);

// Sets jValue to what JsonCpp's reader makes of the text. False, with jValue null, where the reader refuses it or it is
// nested deeper than the reader allows.
bool readByJsonCpp(std::string_view text, Json::CharReader& anyReader, Json::Value& jValue);

#endif  // VORN_JSON_TEXT_H
