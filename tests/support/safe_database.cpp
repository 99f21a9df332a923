// SPDX-License-Identifier: MIT

#include "safe_database.h"

namespace support
{

namespace
{

void appendRows(std::string& strOut, sqlite3* pDb, const std::string& strQuery)
{
    sqlite3_stmt* pStatement = nullptr;
    if (sqlite3_prepare_v2(pDb, strQuery.c_str(), -1, &pStatement, nullptr) != SQLITE_OK)
    {
        strOut += sqlite3_errmsg(pDb);
        return;
    }
    while (sqlite3_step(pStatement) == SQLITE_ROW)
    {
        for (int i = 0; i < sqlite3_column_count(pStatement); ++i)
        {
            strOut += std::to_string(sqlite3_column_type(pStatement, i)) + ":";
            if (const void* const pBytes = sqlite3_column_blob(pStatement, i))
                strOut.append(static_cast<const char*>(pBytes),
                              static_cast<std::size_t>(sqlite3_column_bytes(pStatement, i)));
            strOut += '|';
        }
        strOut += '\n';
    }
    if (sqlite3_finalize(pStatement) != SQLITE_OK)
        strOut += sqlite3_errmsg(pDb);
}

}  // namespace

SafeDatabase::SafeDatabase()
{
    sqlite3* const pDb = handle();
    sqlite3_limit(pDb, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(pDb, SQLITE_LIMIT_LENGTH, 200000);
    sqlite3_limit(pDb, SQLITE_LIMIT_TRIGGER_DEPTH, 5);
    sqlite3_set_authorizer(pDb, refuse, nullptr);
    sqlite3_progress_handler(pDb, 1000, count, this);
}

void SafeDatabase::rewind()
{
    sqlite3_test_control(SQLITE_TESTCTRL_PRNG_SEED, 1, nullptr);
    m_nSteps = 0;
}

std::string SafeDatabase::dump(const std::string& strTable)
{
    rewind();
    std::string strOut;
    appendRows(strOut, handle(), "select rowid from " + strTable);
    appendRows(strOut, handle(), "select * from " + strTable);
    appendRows(strOut, handle(), "select type, name, sql from sqlite_schema");
    rewind();
    return strOut;
}

// What reaches beyond the connection, and what tells the time; what tells of the tables does neither.
int SafeDatabase::refuse(void*, int iAction, const char* szPragma, const char* szSecond, const char*, const char*)
{
    switch (iAction)
    {
        case SQLITE_PRAGMA:
            for (const char* szName :
                 {"table_info", "table_xinfo", "table_list", "index_list", "index_info", "index_xinfo"})
                if (sqlite3_stricmp(szPragma, szName) == 0)
                    return SQLITE_OK;
            // May be read, but not set.
            return sqlite3_stricmp(szPragma, "schema_version") == 0 && szSecond == nullptr ? SQLITE_OK : SQLITE_DENY;
        case SQLITE_ATTACH:
        case SQLITE_DETACH:
        case SQLITE_CREATE_VTABLE:
            return SQLITE_DENY;
        case SQLITE_FUNCTION:
            for (const char* szName : {"date", "time", "datetime", "julianday", "unixepoch", "strftime", "current_date",
                                       "current_time", "current_timestamp", "load_extension"})
                if (sqlite3_stricmp(szSecond, szName) == 0)
                    return SQLITE_DENY;
            return SQLITE_OK;
        default:
            return SQLITE_OK;
    }
}

int SafeDatabase::count(void* pThis)
{
    constexpr int kMaxThousandSteps = 50;
    return ++static_cast<SafeDatabase*>(pThis)->m_nSteps > kMaxThousandSteps ? 1 : 0;
}

}  // namespace support
