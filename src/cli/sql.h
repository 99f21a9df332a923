// SPDX-License-Identifier: MIT
//
// Questions to SQLite about a table that no definition describes yet.

#ifndef VORN_CLI_SQL_H
#define VORN_CLI_SQL_H

#include <sqlite3.h>

#include <memory>
#include <string>

#include "error.h"

namespace cli
{

class Query
{
public:
    // strName is bound to the first parameter, where the SQL has one. Throws where SQLite cannot run it.
    Query(sqlite3* pDb, const std::string& strSql, const std::string& strName) : m_pDb(pDb)
    {
        sqlite3_stmt* pStatement = nullptr;
        require(sqlite3_prepare_v2(pDb, strSql.c_str(), -1, &pStatement, nullptr));
        m_statement.reset(pStatement);
        if (sqlite3_bind_parameter_count(pStatement) > 0)
            sqlite3_bind_text(pStatement, 1, strName.data(), static_cast<int>(strName.size()), SQLITE_TRANSIENT);
    }

    // Goes to the next row; false where there is none.
    bool step()
    {
        const int result = sqlite3_step(m_statement.get());
        if (result != SQLITE_DONE)
            require(result == SQLITE_ROW ? SQLITE_OK : result);
        return result == SQLITE_ROW;
    }

    std::string text(int column) const
    {
        const unsigned char* const szText = sqlite3_column_text(m_statement.get(), column);
        return szText != nullptr ? reinterpret_cast<const char*>(szText) : "";
    }
    long long number(int column) const { return sqlite3_column_int64(m_statement.get(), column); }

private:
    void require(int result) const
    {
        if (result == SQLITE_OK)
            return;
        const vorn::Code code = result == SQLITE_BUSY                                 ? vorn::Code::Locked
                                : result == SQLITE_NOTADB || result == SQLITE_CORRUPT ? vorn::Code::Corrupt
                                                                                      : vorn::Code::Sqlite;
        throw failure(code, std::string("the database cannot be read: ") + sqlite3_errmsg(m_pDb));
    }

    sqlite3* m_pDb;
    std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> m_statement{nullptr, &sqlite3_finalize};
};

// A name as SQL writes it.
inline std::string quoted(const std::string& strName)
{
    std::string strQuoted = "\"";
    for (const char c : strName)
        strQuoted.append(c == '"' ? 2 : 1, c);
    return strQuoted + '"';
}

}  // namespace cli

#endif  // VORN_CLI_SQL_H
