// SPDX-License-Identifier: MIT
//
// One statement that the host wrote.

#include <sqlite3.h>

#include <cctype>
#include <string_view>

#include "conditions.h"
#include "failure.h"
#include "operations.h"
#include "run.h"
#include "savepoint.h"

namespace vorn
{

namespace
{

// The first word of the text, behind blanks and comments, in capitals.
std::string firstWord(std::string_view text)
{
    while (!text.empty())
    {
        std::size_t length = text.find_first_not_of(" \t\n\f\r;");
        if (text.substr(0, 2) == "--")
            length = text.find('\n');
        else if (text.substr(0, 2) == "/*")
            length = text.find("*/", 2) + 2;
        if (length == 0)
            break;
        text.remove_prefix(std::min(length, text.size()));
    }
    std::string strWord;
    for (const char c : text)
    {
        if (std::isalpha(static_cast<unsigned char>(c)) == 0)
            break;
        strWord += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return strWord;
}

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words)
{
    for (const std::string_view other : words)
        if (word == other)
            return true;
    return false;
}

// The columns of a result: those that are named like a member are read by its type.
class ResultReader
{
public:
    ResultReader(Store& store, sqlite3_stmt* pStatement)
        : m_store(store), m_columns(static_cast<std::size_t>(sqlite3_column_count(pStatement)))
    {
        int iColumn = 0;
        for (Column& column : m_columns)
        {
            const char* szName = sqlite3_column_name(pStatement, iColumn++);
            column.strName = szName != nullptr ? szName : "";
            column.pMember = store.definition.find(column.strName);
        }
    }

    bool read(sqlite3_stmt* pStatement, Json::Value& jRow, Status& status)
    {
        Json::Value jRead(Json::objectValue);
        int iColumn = 0;
        for (Column& column : m_columns)
        {
            Json::Value jValue;
            if (column.pMember == nullptr)
                readAny(sqlite3_column_value(pStatement, iColumn), jValue);
            else if (readCell(*column.pMember, sqlite3_column_value(pStatement, iColumn), column.reader,
                              m_store.strictReader, jValue) == Cell::Bad)
                return failCell(status, *column.pMember);
            ++iColumn;
            if (!jValue.isNull())
                (column.pMember != nullptr ? jRead[Json::StaticString(column.pMember->name.data())]
                                           : jRead[column.strName])
                    .swapPayload(jValue);
        }
        jRow.swapPayload(jRead);
        return true;
    }

private:
    struct Column
    {
        std::string strName;
        const Member* pMember = nullptr;
        JsonReader reader;
    };

    Store& m_store;
    std::vector<Column> m_columns;
};

struct RawSql
{
    std::string strSql;
    std::vector<BoundValue> values;
    bool blData = false;  // INSERT and its like: they get a transaction, and their rows are counted
    bool blKeep = false;
};

long long runOnce(Store& store, Waiter& waiter, const RawSql& raw, Json::Value& jRows, bool& blColumns, Status& status)
{
    Run run(store, waiter);
    if (!run.start({StatementKind::Text, nullptr, raw.strSql, raw.blKeep}, raw.values, status))
        return -1;
    ResultReader reader(store, run.statement());
    blColumns = sqlite3_column_count(run.statement()) > 0;
    while (run.isRow())
    {
        Json::Value& jRow = jRows.append(Json::Value());
        if (!reader.read(run.statement(), jRow, status) || !run.next(status))
            return -1;
    }
    if (blColumns)
        return static_cast<long long>(jRows.size());
    return raw.blData ? sqlite3_changes64(store.pDb) : 0;
}

}  // namespace

long long runRawSql(Store& store, const std::string& strSql, const Json::Value& jParams, Json::Value& jRowsOut,
                    Status& status)
{
    RawSql raw;
    if (!compileRaw(RawKind::Statement, strSql, jParams, raw.strSql, raw.values, status))
        return -1;
    const std::string strWord = firstWord(raw.strSql);
    raw.blData = isOneOf(strWord, {"INSERT", "UPDATE", "DELETE", "REPLACE", "WITH"});
    raw.blKeep = raw.blData || isOneOf(strWord, {"SELECT", "VALUES"});

    Waiter waiter(store.iLockTimeout);
    {
        Run run(store, waiter);
        if (!run.prepareFor({StatementKind::Text, nullptr, raw.strSql, raw.blKeep}, status))
            return -1;
        raw.blData = raw.blData && sqlite3_stmt_readonly(run.statement()) == 0;
        if (sqlite3_column_count(run.statement()) > 0 && !jRowsOut.isNull() && !jRowsOut.isArray())
        {
            fail(status, Code::BadRequest, "", "What rows are appended to must be an array or null.");
            return -1;
        }
    }

    Json::Value jRows(Json::arrayValue);
    bool blColumns = false;
    long long iCount = -1;
    if (!raw.blData)
    {
        iCount = runOnce(store, waiter, raw, jRows, blColumns, status);
    }
    else
    {
        Savepoint savepoint(store, waiter);
        if (savepoint.begin(status))
            iCount = runOnce(store, waiter, raw, jRows, blColumns, status);
        if (iCount >= 0 && !savepoint.keep(status))
            iCount = -1;
    }
    if (iCount >= 0 && blColumns)
        appendRows(jRows, jRowsOut);
    return iCount;
}

}  // namespace vorn
