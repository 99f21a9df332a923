// SPDX-License-Identifier: MIT

#ifndef VORNJSONDB_TESTS_JSON_VALUE_H
#define VORNJSONDB_TESTS_JSON_VALUE_H

#include <json/json.h>

#include <string>

namespace support
{

// Parses JSON text, NaN and Infinity included; throws when it is not JSON.
Json::Value json(const std::string& text);

}  // namespace support

#endif  // VORNJSONDB_TESTS_JSON_VALUE_H
