// SPDX-License-Identifier: MIT
//
// A connection to a database in memory on which hostile SQL can neither leave the process nor run for long, and on
// which the same statements always do the same.

#ifndef VORN_FUZZ_DATABASE_H
#define VORN_FUZZ_DATABASE_H

#include <sqlite3.h>

#include <string>

namespace fuzz
{

class Database
{
public:
    Database();
    ~Database();  // a connection that cannot be closed ends the process: something of it is still in use
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    sqlite3* handle() { return m_pDb; }

    // Starts the next call with the same random numbers and the same allowance of work as on every other connection.
    void rewind();

    // Every row with its rowid, kinds and bytes included, or the error texts of a table that cannot be read.
    std::string dump(const std::string& strTable);

private:
    static int refuse(void*, int iAction, const char*, const char* szFunction, const char*, const char*);
    static int count(void* pThis);

    sqlite3* m_pDb = nullptr;
    int m_nSteps = 0;
};

}  // namespace fuzz

#endif  // VORN_FUZZ_DATABASE_H
