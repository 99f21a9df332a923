// SPDX-License-Identifier: MIT
//
// From what a cell holds to the JSON value of its member.

#ifndef VORN_READ_CELL_H
#define VORN_READ_CELL_H

#include <json/json.h>

#include <memory>
#include <string_view>

#include "../core/json_reader.h"
#include "definition.h"

struct sqlite3_value;

namespace vorn
{

enum class Cell : unsigned char
{
    Value,
    Absent,
    Bad  // it holds something that is no value of the member
};

// Reads texts of the JSON types: strict JSON of values that can be stored.
class StrictReader
{
public:
    bool read(std::string_view text, JsonReader& reader, Json::Value& jValue);

private:
    std::unique_ptr<Json::CharReader> m_pReader;  // made when it is first needed, because it is costly
};

// The value that a text stands for; a NUL stands behind it. jValue is null, stays so
// where the cell is absent, and is of no use where it is bad.
Cell readText(const Member& member, std::string_view text, JsonReader& reader, StrictReader& strictReader,
              Json::Value& jValue);

// The same for a column of a statement's row. What converts without loss is converted. A value is asked as often as one
// likes, where asking the statement would take the connection's mutex each time: a tenth of what a list costs.
Cell readCell(const Member& member, sqlite3_value* pCell, JsonReader& reader, StrictReader& strictReader,
              Json::Value& jValue);

// A column that belongs to no member: what the cell holds.
void readAny(sqlite3_value* pCell, Json::Value& jValue);

}  // namespace vorn

#endif  // VORN_READ_CELL_H
