// SPDX-License-Identifier: MIT

#include "facts.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>

#include "definition.h"
#include "query.h"

namespace vorn
{

namespace
{

bool readColumns(sqlite3* pDb, const Definition& definition, Waiter& waiter, std::vector<TableColumn>& columns,
                 Status& status)
{
    return eachRow(pDb, "PRAGMA table_xinfo(" + definition.quotedName() + ")", waiter, status,
                   [&columns](sqlite3_stmt* pRow)
                   {
                       constexpr int kName = 1;
                       constexpr int kType = 2;
                       constexpr int kDefault = 4;
                       constexpr int kKey = 5;
                       constexpr int kHidden = 6;
                       TableColumn column;
                       column.strName = columnString(pRow, kName);
                       column.strType = columnString(pRow, kType);
                       column.blFillsItself = (sqlite3_column_type(pRow, kDefault) != SQLITE_NULL &&
                                               !sameName(columnString(pRow, kDefault), "null")) ||
                                              sqlite3_column_int(pRow, kHidden) > 1;  // a generated column
                       column.iKey = sqlite3_column_int(pRow, kKey);
                       columns.push_back(std::move(column));
                   });
}

const TableColumn* findColumn(const std::vector<TableColumn>& columns, std::string_view name)
{
    const auto it = std::find_if(columns.begin(), columns.end(),
                                 [name](const TableColumn& column) { return sameName(column.strName, name); });
    return it != columns.end() ? &*it : nullptr;
}

// The first of the rowid's names that no column of the table has taken; "" where there is no rowid.
std::string rowidName(sqlite3* pDb, const Definition& definition, const std::vector<TableColumn>& columns)
{
    for (const char* szName : {"rowid", "_rowid_", "oid"})
        if (findColumn(columns, szName) == nullptr)
            return sqlite3_table_column_metadata(pDb, nullptr, definition.name().c_str(), szName, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr) == SQLITE_OK
                       ? definition.quotedName() + '.' + szName
                       : std::string();
    return {};
}

// Where the table is, and the version of the schema there: first, so that the facts are never older.
bool readPlace(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    // A name stands for the table in temp, else for the one in the first database that has it.
    const auto lookAt = [&facts](sqlite3_stmt* pRow)
    {
        const std::string strSchema = columnString(pRow, 0);
        if (facts.strSchema.empty() || strSchema == "temp")
            facts.strSchema = strSchema;
    };
    return eachRow(pDb, "PRAGMA table_list(" + definition.quotedName() + ")", waiter, status, lookAt) &&
           (facts.strSchema.empty() || readSchemaVersion(pDb, facts.strSchema, waiter, facts.iVersion, status));
}

bool readTriggers(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    for (const std::string& strSchema : {facts.strSchema, std::string("temp")})
    {
        const auto lookAt = [&facts, &definition](sqlite3_stmt* pRow)
        { facts.blTriggers = facts.blTriggers || sameName(columnString(pRow, 0), definition.name()); };
        if (!strSchema.empty() &&
            !eachRow(pDb, "SELECT tbl_name FROM " + quoted(strSchema) + ".sqlite_master WHERE type = 'trigger'", waiter,
                     status, lookAt))
            return false;
    }
    return true;
}

}  // namespace

bool readSchemaVersion(sqlite3* pDb, const std::string& strSchema, Waiter& waiter, std::int64_t& iVersion,
                       Status& status)
{
    return eachRow(pDb, "PRAGMA " + quoted(strSchema) + ".schema_version", waiter, status,
                   [&iVersion](sqlite3_stmt* pRow) { iVersion = sqlite3_column_int64(pRow, 0); });
}

bool readFacts(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    Facts read;
    std::vector<TableColumn>& columns = read.columns;
    if (!readPlace(pDb, definition, waiter, read, status) || !readColumns(pDb, definition, waiter, columns, status))
        return false;
    read.blExists = !columns.empty();

    for (const Member& member : definition.members())
    {
        const TableColumn* pColumn = findColumn(columns, member.name);
        if (pColumn == nullptr && read.strMissing.empty())
            read.strMissing = member.name;
        read.fillsItself.push_back(pColumn != nullptr && pColumn->blFillsItself);
    }

    std::map<int, const TableColumn*> key;
    for (const TableColumn& column : columns)
        if (column.iKey > 0)
            key.emplace(column.iKey, &column);
    for (const auto& [iPlace, pColumn] : key)
    {
        const auto it =
            std::find_if(definition.members().begin(), definition.members().end(),
                         [pColumn = pColumn](const Member& member) { return sameName(member.name, pColumn->strName); });
        read.key.push_back({quoted(pColumn->strName), it != definition.members().end() ? &*it : nullptr});
    }

    for (const KeyColumn& column : read.key)
        read.strByKey +=
            (read.strByKey.empty() ? " WHERE " : " AND ") + definition.quotedName() + '.' + column.strQuoted + " = ?";
    read.strRowid = read.blExists ? rowidName(pDb, definition, columns) : std::string();
    read.strByRowid = " WHERE " + read.strRowid + " = ?";
    if (!readTriggers(pDb, definition, waiter, read, status))
        return false;
    if (key.size() == 1 && sameName(key.begin()->second->strType, "integer"))
    {
        // A key of the type INTEGER is the rowid, unless it stands in an index of its own.
        bool blIndex = false;
        const auto lookAt = [&blIndex](sqlite3_stmt* pRow)
        {
            constexpr int kOrigin = 3;
            blIndex = blIndex || columnString(pRow, kOrigin) == "pk";
        };
        if (!eachRow(pDb, "PRAGMA index_list(" + definition.quotedName() + ")", waiter, status, lookAt))
            return false;
        read.blRowidKey = !blIndex;
        if (read.blRowidKey && read.key.front().pMember != nullptr)
            read.fillsItself[static_cast<std::size_t>(read.key.front().pMember - definition.members().data())] = true;
    }
    facts = std::move(read);
    return true;
}

bool refreshSchema(sqlite3* pDb, const Definition& definition, Status& status)
{
    const bool blInTransaction = sqlite3_get_autocommit(pDb) == 0;
    // Running a statement compares the schema with the file's; so does one that cannot be compiled.
    sqlite3_stmt* pStatement = nullptr;
    const std::string strSql = "SELECT 1 FROM " + definition.quotedName() + " LIMIT 0";
    sqlite3_prepare_v2(pDb, strSql.c_str(), static_cast<int>(strSql.size()) + 1, &pStatement, nullptr);
    const StatementPointer pOwner(pStatement);
    if (pStatement != nullptr)
        sqlite3_step(pStatement);
    if (!blInTransaction || sqlite3_get_autocommit(pDb) == 0)
        return true;
    failSqlite(status, pDb, sqlite3_extended_errcode(pDb));
    noteRollback(status, pDb, blInTransaction);
    return false;
}

}  // namespace vorn
