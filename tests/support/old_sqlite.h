// SPDX-License-Identifier: MIT
//
// What the tests use of SQLite and the one in SQLCipher does not have. The cases that need it are left out there, see
// tests/cipher/left_out.txt.

#ifndef VORN_TESTS_OLD_SQLITE_H
#define VORN_TESTS_OLD_SQLITE_H

#include <sqlite3.h>

#if SQLITE_VERSION_NUMBER < 3031000

#define SQLITE_DBCONFIG_DQS_DML 1013
#define SQLITE_TESTCTRL_PRNG_SEED 28

inline sqlite3_int64 sqlite3_hard_heap_limit64(sqlite3_int64 /*limit*/)
{
    return -1;
}

#endif

#endif  // VORN_TESTS_OLD_SQLITE_H
