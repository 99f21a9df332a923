// SPDX-License-Identifier: MIT
//
// What a value list must read like: SQLite's own formatter, called with the whole text so far as the format and the
// value as its argument, wherever that call is defined; and SQLite's SQL function format() where a '%' in the text
// reaches for an argument that is not there or is of another kind.

#ifndef VORN_TESTS_MODEL_FORMAT_H
#define VORN_TESTS_MODEL_FORMAT_H

#include <json/json.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace model
{

// Neither the plain call nor the SQL function says what the text must be.
struct Undefined : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// The text so far with one more value of that type behind it; nothing where the type cannot be written. Throws
// Json::Exception for a value of the wrong kind, std::logic_error where the formatter gives no text, and Undefined.
std::optional<std::string> formatted(const std::string& strSoFar, const std::string& strType,
                                     const Json::Value& jValue);

}  // namespace model

#endif  // VORN_TESTS_MODEL_FORMAT_H
