// SPDX-License-Identifier: MIT

#include "facts.h"

#include <sqlite3.h>

#include "../core/text.h"
#include "definition.h"
#include "join.h"
#include "prepare.h"
#include "query.h"
#include "sqlite_status.h"

namespace vorn
{

namespace
{

bool readColumns(sqlite3* pDb, const Definition& definition, Waiter& waiter, std::vector<TableColumn>& columns,
                 Status& status)
{
    return eachRow(pDb, join({"PRAGMA table_xinfo(", definition.quotedName(), ")"}), waiter, status,
                   [&columns](sqlite3_stmt* pRow)
                   {
                       constexpr int kName = 1;
                       constexpr int kType = 2;
                       constexpr int kDefault = 4;
                       constexpr int kKey = 5;
                       constexpr int kHidden = 6;
                       columns.emplace_back();
                       TableColumn& column = columns.back();
                       column.strName = columnString(pRow, kName);
                       column.strType = columnString(pRow, kType);
                       column.blFillsItself = (sqlite3_column_type(pRow, kDefault) != SQLITE_NULL &&
                                               !sameName(columnString(pRow, kDefault), "null")) ||
                                              sqlite3_column_int(pRow, kHidden) > 1;  // a generated column
                       column.iKey = sqlite3_column_int(pRow, kKey);
                   });
}

const TableColumn* findColumn(const std::vector<TableColumn>& columns, std::string_view name)
{
    for (const TableColumn& column : columns)
        if (sameName(column.strName, name))
            return &column;
    return nullptr;
}

const Member* memberOf(const Definition& definition, std::string_view column)
{
    for (const Member& member : definition.members())
        if (sameName(member.name, column))
            return &member;
    return nullptr;
}

// The first of the rowid's names that no column of the table has taken; "" where there is no rowid.
std::string rowidName(sqlite3* pDb, const Definition& definition, const std::vector<TableColumn>& columns)
{
    for (const char* szName : {"rowid", "_rowid_", "oid"})
        if (findColumn(columns, szName) == nullptr)
            return sqlite3_table_column_metadata(pDb, nullptr, definition.name().c_str(), szName, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr) == SQLITE_OK
                       ? join({definition.quotedName(), ".", szName})
                       : std::string();
    return {};
}

// Where the table is, and the version of the schema there: first, so that the facts are never older.
bool readPlace(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    // A name stands for the table in temp, else for the one in the first database that has it.
    const auto lookAt = [&facts](sqlite3_stmt* pRow)
    {
        constexpr int kType = 2;
        const std::string strSchema = columnString(pRow, 0);
        if (!facts.strSchema.empty() && strSchema != "temp")
            return;
        facts.strSchema = strSchema;
        facts.blStored = columnString(pRow, kType) == "table";
    };
    return eachRow(pDb, join({"PRAGMA table_list(", definition.quotedName(), ")"}), waiter, status, lookAt) &&
           (facts.strSchema.empty() || readSchemaVersion(pDb, facts.strSchema, waiter, facts.iVersion, status));
}

bool readTriggers(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    for (const char* const szSchema : {facts.strSchema.c_str(), "temp"})
    {
        const auto lookAt = [&facts, &definition](sqlite3_stmt* pRow)
        { facts.blTriggers = facts.blTriggers || sameName(columnString(pRow, 0), definition.name()); };
        if (*szSchema != '\0' &&
            !eachRow(pDb, join({"SELECT tbl_name FROM ", quoted(szSchema), ".sqlite_master WHERE type = 'trigger'"}),
                     waiter, status, lookAt))
            return false;
    }
    return true;
}

}  // namespace

bool readSchemaVersion(sqlite3* pDb, const std::string& strSchema, Waiter& waiter, std::int64_t& iVersion,
                       Status& status)
{
    return eachRow(pDb, join({"PRAGMA ", quoted(strSchema), ".schema_version"}), waiter, status,
                   [&iVersion](sqlite3_stmt* pRow) { iVersion = sqlite3_column_int64(pRow, 0); });
}

bool readFacts(sqlite3* pDb, const Definition& definition, Waiter& waiter, Facts& facts, Status& status)
{
    Facts read;
    std::vector<TableColumn>& columns = read.columns;
    if (!readPlace(pDb, definition, waiter, read, status) || !readColumns(pDb, definition, waiter, columns, status))
        return false;
    read.blExists = !columns.empty();

    read.fillsItself = MemberSet(definition.members().size());
    for (std::size_t i = 0; i < definition.members().size(); ++i)
    {
        const std::string_view name = definition.members()[i].name;
        const TableColumn* pColumn = findColumn(columns, name);
        if (pColumn == nullptr && read.strMissing.empty())
            read.strMissing = name;
        if (pColumn != nullptr && pColumn->blFillsItself)
            read.fillsItself.add(i);
    }

    const char* szKeyType = "";
    for (std::size_t i = 0; i < columns.size(); ++i)  // the key's columns by their places in it, from 1
        for (const TableColumn& column : columns)
            if (column.iKey == static_cast<int>(i) + 1)
            {
                read.key.push_back({quoted(column.strName), memberOf(definition, column.strName)});
                szKeyType = column.strType.c_str();
            }

    for (const KeyColumn& column : read.key)
        appendAll(read.strByKey, {read.strByKey.empty() ? " WHERE " : " AND ", definition.quotedName(), ".",
                                  column.strQuoted, " = ?"});
    read.strRowid = read.blExists ? rowidName(pDb, definition, columns) : std::string();
    read.strByRowid = join({" WHERE ", read.strRowid, " = ?"});
    if (!readTriggers(pDb, definition, waiter, read, status))
        return false;
    if (read.key.size() == 1 && sameName(szKeyType, "integer"))
    {
        // A key of the type INTEGER is the rowid, unless it stands in an index of its own.
        bool blIndex = false;
        const auto lookAt = [&blIndex](sqlite3_stmt* pRow)
        {
            constexpr int kOrigin = 3;
            blIndex = blIndex || columnString(pRow, kOrigin) == "pk";
        };
        if (!eachRow(pDb, join({"PRAGMA index_list(", definition.quotedName(), ")"}), waiter, status, lookAt))
            return false;
        read.blRowidKey = !blIndex;
        if (read.blRowidKey && read.key.front().pMember != nullptr)
            read.fillsItself.add(static_cast<std::size_t>(read.key.front().pMember - definition.members().data()));
    }
    facts = std::move(read);
    return true;
}

bool refreshSchema(sqlite3* pDb, const Definition& definition, Status& status)
{
    const bool blInTransaction = sqlite3_get_autocommit(pDb) == 0;
    // Running a statement compares the schema with the file's; so does one that cannot be compiled.
    sqlite3_stmt* pStatement = nullptr;
    const std::string strSql = join({"SELECT 1 FROM ", definition.quotedName(), " LIMIT 0"});
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
