// SPDX-License-Identifier: MIT
//
// A table's type map in the form that the library works with.

#ifndef VORN_TABLE_TYPES_H
#define VORN_TABLE_TYPES_H

#include <json/json.h>

#include <string>
#include <vector>

#include "../core/schema.h"
#include "row_reader.h"

struct TableTypes
{
    explicit TableTypes(const Json::Value& jTypeMap);
    TableTypes(const TableTypes&) = delete;  // its parts refer to each other
    TableTypes& operator=(const TableTypes&) = delete;

    const Json::Value& jType;              // as VORN_JSON_DB::recType() gives it
    const std::vector<std::string> names;  // of the members
    const Schema schema;
    RowReader rows;
};

// The types of the table, built from recType() when the table is first asked for. Where recType() fails, and has logged
// why, they have no members, and the next call asks recType() again. They live as long as the process and are never
// freed: records that callers hold may use their member names as static keys.
TableTypes& typesOf(Json::Value& jTableDef, std::string& strName);

#endif  // VORN_TABLE_TYPES_H
