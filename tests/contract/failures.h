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

// What recSave() writes after a failed condition; the text so far is shown with SQLite's error text.
inline support::ExpectedLines saveFailed(const std::string& condition, bool create, const std::string& record,
                                         const std::string& types)
{
    return {support::failed(condition),
            support::trace(std::string("blCreate=") + (create ? "1" : "0") + ", jRecInOut=" + record),
            support::trace("jType=" + types)};
}

// All lines of a recSave() whose statement SQLite refused.
inline support::ExpectedLines saveRefused(const std::string& sql, const std::string& error, bool create,
                                          const std::string& record, const std::string& types)
{
    return support::linesOf(refusedBySqlite(error, sql),
                            saveFailed("0 > runSqlEx(strSql, DbCallBackFillList, &jArrayTmp)", create, record, types),
                            sqlError(error, sql));
}

// The text of a save, from its start to its read-back.
inline std::string saveSql(const std::string& verb, const std::string& table, const std::string& lists)
{
    return verb + " INTO " + table + " " + lists + ";select * from " + table + " where rowid == last_insert_rowid();";
}

#endif
