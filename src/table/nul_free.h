// SPDX-License-Identifier: MIT
//
// SQLite's JSON functions end a text at NUL. So texts meet them in another form: the character 1 followed by '0' for
// NUL, and by '1' for itself. The order of texts stays, and no two become the same.

#ifndef VORN_NUL_FREE_H
#define VORN_NUL_FREE_H

#include <string>
#include <string_view>

namespace vorn
{

inline bool needsNulFree(std::string_view text)
{
    return text.find('\0') != std::string_view::npos || text.find('\1') != std::string_view::npos;
}

// The text in that form.
std::string nulFree(std::string_view text);

// A JSON text in which all texts and names have that form. SQL that gives the same: see nulFreeSql().
std::string nulFreeJson(std::string_view json);

// SQL for nulFreeJson() of the cell, NULL where the cell holds no JSON.
std::string nulFreeSql(std::string_view column);

// SQL for the text that the SQL expression holds in that form.
std::string withNulSql(const std::string& strExpression);

}  // namespace vorn

#endif  // VORN_NUL_FREE_H
