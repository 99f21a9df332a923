// SPDX-License-Identifier: MIT
//
// A connection to a database in memory on which hostile SQL can neither leave the process nor run for long, and on
// which the same statements always do the same.

#ifndef VORNJSONDB_TESTS_SAFE_DATABASE_H
#define VORNJSONDB_TESTS_SAFE_DATABASE_H

#include <string>

#include "database.h"

namespace support
{

class SafeDatabase : public Database
{
public:
    SafeDatabase();

    // Starts the next call with the same random numbers and the same allowance of work as on every other connection.
    void rewind();

    // Every row with its rowid, kinds and bytes included, or the error texts of a table that cannot be read.
    std::string dump(const std::string& strTable);

private:
    static int refuse(void*, int iAction, const char* szPragma, const char* szSecond, const char*, const char*);
    static int count(void* pThis);

    int m_nSteps = 0;
};

}  // namespace support

#endif  // VORNJSONDB_TESTS_SAFE_DATABASE_H
