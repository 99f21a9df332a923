// SPDX-License-Identifier: MIT
//
// The table that all contestants work on, and its records: the same in every run and on every machine.

#ifndef VORN_BENCH_DATA_H
#define VORN_BENCH_DATA_H

#include <json/json.h>
#include <sqlite3.h>

#include <string>
#include <vector>

namespace bench
{

constexpr const char* kTable = "device";
constexpr const char* kKey = "serial";

constexpr const char* kCreateTable =
    "CREATE TABLE IF NOT EXISTS device (address TEXT NOT NULL, comment TEXT NOT NULL, count INTEGER NOT NULL, "
    "created INTEGER NOT NULL, enabled INTEGER NOT NULL, limits TEXT NOT NULL, ports TEXT NOT NULL, "
    "serial TEXT NOT NULL PRIMARY KEY)";

// Every column, by name: the order of a record's members.
constexpr const char* kSelect = "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device";

// The statements of code that binds its values.
constexpr const char* kSelectPage =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device LIMIT ? OFFSET ?";
constexpr const char* kSelectStored =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device WHERE rowid = ?";
constexpr const char* kSelectKey =
    "SELECT address,comment,count,created,enabled,limits,ports,serial FROM device WHERE serial = ?";
constexpr const char* kInsert =
    "INSERT INTO device (address,comment,count,created,enabled,limits,ports,serial) VALUES (?,?,?,?,?,?,?,?)";
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

// New values for three members of record i.
Json::Value changesOf(std::size_t i);

// What an operation gets, by its index: made before the clock starts.
struct Input
{
    std::vector<std::string> keys;
    std::vector<Json::Value> records;
    std::vector<Json::Value> changes;
};
Input makeInput(const std::vector<std::size_t>& indices);

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
