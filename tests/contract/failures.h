// SPDX-License-Identifier: MIT
//
// Failures that tests provoke: SQLite without memory, and the lines of a statement that SQLite refused.

#ifndef VORN_TESTS_FAILURES_H
#define VORN_TESTS_FAILURES_H

#include <sqlite3.h>

#include <string>

#include "log_capture.h"

// While it lives, SQLite gets no more memory than it holds plus the allowance. Its formatter then returns null.
class NoSqliteMemory
{
public:
    explicit NoSqliteMemory(int allowance = 0) { sqlite3_hard_heap_limit64(sqlite3_memory_used() + 1 + allowance); }
    ~NoSqliteMemory()
    {
        sqlite3_hard_heap_limit64(0);
        sqlite3_soft_heap_limit64(0);
    }
    NoSqliteMemory(const NoSqliteMemory&) = delete;
    NoSqliteMemory& operator=(const NoSqliteMemory&) = delete;
};

// A text that the formatter has no memory for under an allowance of a tenth of its size.
inline std::string hugeText()
{
    return std::string(1000000, 'h');
}
constexpr int smallAllowance = 100000;

inline support::ExpectedLines refusedBySqlite(const std::string& error, const std::string& sql)
{
    return {support::trace("i=0,errno=<number>, run sql failed, error=" + error + ", sql=" + sql),
            support::debug("run sql fail, err=" + error)};
}

inline support::ExpectedLine sqlError(const std::string& error, const std::string& sql)
{
    return support::trace("sql error, err=" + error + ", sql=" + sql);
}

#endif
