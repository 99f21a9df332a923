// SPDX-License-Identifier: MIT
//
// Asking the database about itself: queries that are prepared for one use.

#ifndef VORN_QUERY_H
#define VORN_QUERY_H

#include <vorn/status.h>

#include <string>
#include <string_view>

#include "function_ref.h"

struct sqlite3;
struct sqlite3_stmt;

namespace vorn
{

class Waiter;

// The text of a column; "" for NULL.
std::string columnString(sqlite3_stmt* pRow, int iColumn);

// As SQLite compares names: ASCII letters in either case are the same.
bool sameName(std::string_view left, std::string_view right);

// Calls visit(statement) for each row of the query.
bool eachRow(sqlite3* pDb, const std::string& strSql, Waiter& waiter, Status& status,
             FunctionRef<void(sqlite3_stmt*)> visit);

}  // namespace vorn

#endif  // VORN_QUERY_H
