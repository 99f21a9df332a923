// SPDX-License-Identifier: MIT
//
// A vorn::Table of a name that no other test uses, with its connection, and what every failure must keep: the result,
// the status, and no stored or given value in its texts.

#ifndef VORN_TESTS_TABLE_FIXTURE_H
#define VORN_TESTS_TABLE_FIXTURE_H

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <vorn/table.h>
#include <vorn/transaction.h>

#include <atomic>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "database.h"
#include "json_value.h"

namespace vorn
{

inline void PrintTo(Code code, std::ostream* pOut)
{
    *pOut << codeName(code);
}

}  // namespace vorn

namespace table_tests
{

using support::Database;
using support::json;
using vorn::Code;

// Tests write these into values, and no text of a status may ever hold them.
constexpr const char* kSecret = "zq7x";
constexpr const char* kSecretNumber = "48271";

inline std::string freshName()
{
    static std::atomic<int> iCount{0};
    return "t" + std::to_string(++iCount);
}

inline std::string replaced(std::string strText, const std::string& strWhat, const std::string& strBy)
{
    for (std::size_t at = 0; (at = strText.find(strWhat, at)) != std::string::npos; at += strBy.size())
        strText.replace(at, strWhat.size(), strBy);
    return strText;
}

inline Json::Value definitionOf(const std::string& strName, const Json::Value& jMembers)
{
    Json::Value jTableDef;
    jTableDef[strName]["member"] = jMembers;
    return jTableDef;
}

// strMembers: the "member" object as JSON text. strCreate: what makes the table, with @ for its name.
class TestTable
{
public:
    explicit TestTable(const std::string& strMembers, const std::string& strCreate = "",
                       std::shared_ptr<Database> pDatabase = std::make_shared<Database>(),
                       std::string strName = freshName())
        : m_pDatabase(std::move(pDatabase)),
          m_strName(std::move(strName)),
          m_jTableDef(definitionOf(m_strName, json(strMembers))),
          m_pTable(std::make_unique<vorn::Table>(m_pDatabase->handle(), m_strName, m_jTableDef, sql(strCreate)))
    {
    }

    vorn::Table* operator->() { return m_pTable.get(); }
    vorn::Table& operator*() { return *m_pTable; }
    Database& db() { return *m_pDatabase; }
    const std::shared_ptr<Database>& database() const { return m_pDatabase; }
    sqlite3* handle() { return m_pDatabase->handle(); }
    const std::string& name() const { return m_strName; }
    const Json::Value& definition() const { return m_jTableDef; }
    void drop() { m_pTable.reset(); }

    std::string sql(const std::string& strSql) const { return replaced(strSql, "@", m_strName); }
    // Runs SQL with @ for the table's name; what it gives must be SQLITE_OK.
    void run(const std::string& strSql)
    {
        ASSERT_EQ(SQLITE_OK, m_pDatabase->run(sql(strSql))) << strSql << ": " << sqlite3_errmsg(handle());
    }
    std::vector<std::string> rows(const std::string& strSql = "SELECT * FROM @")
    {
        return m_pDatabase->rows(sql(strSql));
    }

    // What a request finds, as compact JSON; "Code member" when it fails.
    Json::Value list(const std::string& strRequest = "{}")
    {
        Json::Value jRows(Json::arrayValue);
        if (m_pTable->recList(json(strRequest), jRows) != 0)
            ADD_FAILURE() << strRequest << ": " << m_pTable->status().text;
        return jRows;
    }
    void create(const std::string& strRecord)
    {
        EXPECT_EQ(0, m_pTable->recCreate(json(strRecord))) << strRecord << ": " << m_pTable->status().text;
    }

private:
    std::shared_ptr<Database> m_pDatabase;
    std::string m_strName;
    Json::Value m_jTableDef;
    std::unique_ptr<vorn::Table> m_pTable;
};

inline std::string describe(const vorn::Status& status)
{
    return std::string(vorn::codeName(status.code)) + " [" + status.member + "] " + status.text + " (SQLite " +
           std::to_string(status.sqlite) + ")";
}

// A failure as every failure must be: -1, the code and the member, a text that holds no value.
inline testing::AssertionResult failed(const vorn::Status& status, long long nResult, Code code,
                                       const std::string& strMember = "")
{
    if (nResult != -1 || status.code != code || status.member != strMember)
        return testing::AssertionFailure() << "wanted " << vorn::codeName(code) << " [" << strMember << "], result "
                                           << nResult << ", " << describe(status);
    if (status.text.empty() || status.text.find('\n') != std::string::npos)
        return testing::AssertionFailure() << "not one sentence: " << describe(status);
    for (const char* szValue : {kSecret, kSecretNumber})
        if ((status.text + " " + status.member).find(szValue) != std::string::npos)
            return testing::AssertionFailure() << "shows a value: " << describe(status);
    return testing::AssertionSuccess();
}

inline testing::AssertionResult failed(const vorn::Table& table, long long nResult, Code code,
                                       const std::string& strMember = "")
{
    const std::string strShown = code == Code::Duplicate ? "DUPLICATE_PRIMARY_KEY" : table.status().text;
    if (table.getErrMsg() != strShown)
        return testing::AssertionFailure() << "getErrMsg() gives: " << table.getErrMsg();
    return failed(table.status(), nResult, code, strMember);
}

// A success as every success must be.
inline testing::AssertionResult done(const vorn::Table& table, long long nResult, long long nExpected = 0)
{
    if (nResult != nExpected || table.status().code != Code::Ok || !table.status().text.empty() ||
        !table.getErrMsg().empty())
        return testing::AssertionFailure()
               << "wanted " << nExpected << ", result " << nResult << ", " << describe(table.status());
    return testing::AssertionSuccess();
}

// The statements of the connection that are in the midst of their rows.
inline int busyStatements(sqlite3* pDb)
{
    int iCount = 0;
    for (sqlite3_stmt* pStatement = nullptr; (pStatement = sqlite3_next_stmt(pDb, pStatement)) != nullptr;)
        iCount += sqlite3_stmt_busy(pStatement);
    return iCount;
}

inline int keptStatements(sqlite3* pDb)
{
    int iCount = 0;
    for (sqlite3_stmt* pStatement = nullptr; (pStatement = sqlite3_next_stmt(pDb, pStatement)) != nullptr;)
        ++iCount;
    return iCount;
}

inline std::string compact(const Json::Value& jValue)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    builder["useSpecialFloats"] = true;
    return Json::writeString(builder, jValue);
}

}  // namespace table_tests

#endif  // VORN_TESTS_TABLE_FIXTURE_H
