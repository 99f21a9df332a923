// SPDX-License-Identifier: MIT
//
// What holds after every operation of vorn::Table, whatever it was given.

#ifndef VORN_FUZZ_TABLE_OUTCOME_H
#define VORN_FUZZ_TABLE_OUTCOME_H

#include <sqlite3.h>
#include <vorn/table.h>

#include <string>

#include "check.h"

namespace fuzz
{

// A failure has a code and a sentence, a success neither; no statement is busy. Whether it succeeded.
inline bool succeeded(const vorn::Table& table, long long nResult, sqlite3* pDb)
{
    const vorn::Status& status = table.status();
    FUZZ_CHECK(nResult >= -1, "result " + std::to_string(nResult));
    FUZZ_CHECK((nResult == -1) == (status.code != vorn::Code::Ok), vorn::codeName(status.code));
    FUZZ_CHECK(status.text.empty() == (status.code == vorn::Code::Ok), vorn::codeName(status.code));
    for (sqlite3_stmt* pStatement = nullptr; (pStatement = sqlite3_next_stmt(pDb, pStatement)) != nullptr;)
        FUZZ_CHECK(sqlite3_stmt_busy(pStatement) == 0, sqlite3_sql(pStatement));
    return nResult != -1;
}

// The same where the host has opened no transaction.
inline bool succeededAlone(const vorn::Table& table, long long nResult, sqlite3* pDb)
{
    FUZZ_CHECK(sqlite3_get_autocommit(pDb) != 0, "a transaction is open");
    return succeeded(table, nResult, pDb);
}

}  // namespace fuzz

#endif  // VORN_FUZZ_TABLE_OUTCOME_H
