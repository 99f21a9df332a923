// SPDX-License-Identifier: MIT
//
// The table that all contestants work on, and its records: the same in every run and on every machine.

#ifndef VORN_BENCH_DATA_H
#define VORN_BENCH_DATA_H

#include <json/json.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "json_columns.h"

namespace bench
{

// A table with its columns in the order of their names, which is that of a record's members.
struct Shape
{
    struct Column
    {
        std::string strName;
        std::string strType;  // as the library's definitions name it
    };
    std::string strTable;
    std::string strCreate;
    std::vector<Column> columns;
};

constexpr const char* kTable = "device";
constexpr const char* kKey = "serial";
const Shape& deviceShape();

// The statements of the table device; those with question marks are for code that binds its values.
#define VORN_BENCH_SELECT "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device"
#define VORN_BENCH_INSERT "INSERT INTO device (address,comment,count,created,enabled,limits,ports,serial) VALUES "
constexpr const char* kCreateTable =
    "CREATE TABLE IF NOT EXISTS device (address TEXT NOT NULL, comment TEXT NOT NULL, count INTEGER NOT NULL, "
    "created INTEGER NOT NULL, enabled INTEGER NOT NULL, limits TEXT NOT NULL, ports TEXT NOT NULL, "
    "serial TEXT NOT NULL PRIMARY KEY)";
constexpr const char* kSelect = VORN_BENCH_SELECT;
constexpr const char* kSelectPage = VORN_BENCH_SELECT " LIMIT ? OFFSET ?";
constexpr const char* kSelectSorted = VORN_BENCH_SELECT " ORDER BY created DESC LIMIT ? OFFSET ?";
constexpr const char* kSelectWindow =
    VORN_BENCH_SELECT " WHERE serial >= ? AND serial < ? AND created < ? AND comment LIKE ?";
constexpr const char* kCountWindow = "SELECT count(*) FROM device WHERE enabled AND serial >= ? AND serial < ?";
constexpr const char* kSelectStored = VORN_BENCH_SELECT " WHERE rowid = ?";
constexpr const char* kSelectKey = VORN_BENCH_SELECT " WHERE serial = ?";
constexpr const char* kInsert = VORN_BENCH_INSERT "(?,?,?,?,?,?,?,?)";
constexpr const char* kUpdate = "UPDATE device SET comment = ?, count = ?, enabled = ? WHERE serial = ?";
constexpr const char* kDelete = "DELETE FROM device WHERE serial = ?";

// Rows of one page.
constexpr std::size_t kPage = 50;

// A service shows the first pages: far ones would measure how SQLite passes over rows.
constexpr std::size_t kPages = 5;
inline std::size_t pageOffset(std::size_t i)
{
    return i % kPages * kPage;
}

// The row that the i-th fetch or update takes: all over the table.
inline std::size_t spread(std::size_t i, std::size_t rows)
{
    return i * 7919 % rows;
}

std::string keyOf(std::size_t i);
Json::Value recordOf(std::size_t i);
Json::Value recordsOf(std::size_t first, std::size_t count);

// New values for three members of record i.
Json::Value changesOf(std::size_t i);

// What filters ask for: rows by a range of keys, the first page of them by their time, and a text that all comments
// have.
struct Window
{
    std::string strFrom;
    std::string strTo;
    Json::Int64 iBefore;
    std::size_t enabled;  // how many rows in the range of keys are enabled
};
constexpr const char* kCommentPattern = "%second rack%";

// What an operation gets, by its index: made before the clock starts.
struct Input
{
    std::vector<std::string> keys;
    std::vector<Json::Value> records;
    std::vector<Json::Value> changes;
    std::vector<Json::Value> arrays;  // of records that are stored at once
    std::vector<Window> windows;      // the first one begins with the first row, each other one a page later
};
Input makeInput(const std::vector<std::size_t>& indices);

// Binds a member's value to the i-th question mark, whatever its kind. The value must outlive the statement's use.
void bindValue(sqlite3_stmt* pStatement, int i, const Json::Value& jValue, JsonColumns& json);

// Adds records first to first + count - 1 to the table, which is made where it is missing.
void fillTable(sqlite3* pDb, std::size_t first, std::size_t count);

// Runs a statement that must succeed.
void runSql(sqlite3* pDb, const std::string& strSql);

// Every row, in order of its key, as the storage classes and texts that are stored; and the row that a record should
// give.
std::vector<std::string> dumpTable(sqlite3* pDb);
std::string storedRow(const Json::Value& jRec);

}  // namespace bench

#endif  // VORN_BENCH_DATA_H
