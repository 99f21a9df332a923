// SPDX-License-Identifier: MIT
//
// One column of a result row as a JSON value.

#ifndef VORN_ROW_VALUE_H
#define VORN_ROW_VALUE_H

#include <json/json.h>

#include "../core/cpp_type.h"
#include "../core/json_reader.h"

// Converts the text of a column (not null) by the member's type. False for types that cannot be read back.
bool convertColumn(CppType type, JsonReader& reader, const char* szText, Json::Value& jValue);

#endif  // VORN_ROW_VALUE_H
