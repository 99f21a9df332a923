// SPDX-License-Identifier: MIT
//
// How the table in the database differs from the definition.

#include <sqlite3.h>

#include <algorithm>

#include "../core/text.h"
#include "cell_value.h"
#include "ddl.h"
#include "failure.h"
#include "join.h"
#include "operations.h"
#include "query.h"
#include "sqlite_status.h"

namespace vorn
{

namespace
{

// SQLite's rules for what a declared type means.
std::string_view affinityOf(const std::string& strType)
{
    struct Rule
    {
        const char* szPattern;
        const char* szAffinity;
    };
    static constexpr Rule kRules[] = {{"%int%", "INTEGER"}, {"%char%", "TEXT"}, {"%clob%", "TEXT"}, {"%text%", "TEXT"},
                                      {"%blob%", "BLOB"},   {"%real%", "REAL"}, {"%floa%", "REAL"}, {"%doub%", "REAL"}};
    for (const Rule& rule : kRules)
        if (sqlite3_strlike(rule.szPattern, strType.c_str(), 0) == 0)
            return rule.szAffinity;
    return strType.empty() ? "BLOB" : "NUMERIC";
}

const TableColumn* columnOf(const Facts& facts, std::string_view name)
{
    for (const TableColumn& column : facts.columns)
        if (sameName(column.strName, name))
            return &column;
    return nullptr;
}

Json::Value toJson(std::string_view text)
{
    return Json::Value(text.data(), text.data() + text.size());
}

void reportColumns(const Definition& definition, const Facts& facts, Json::Value& jReport)
{
    for (const Member& member : definition.members())
    {
        const TableColumn* pColumn = columnOf(facts, member.name);
        if (pColumn == nullptr)
        {
            jReport["missing"].append(toJson(member.name));
        }
        else if (affinityOf(pColumn->strType) != columnTypeName(member))
        {
            Json::Value jType;
            jType["member"] = toJson(member.name);
            jType["declared"] = member.pType->szName;
            jType["column"] = pColumn->strType;
            jReport["types"].append(std::move(jType));
        }
    }
    for (const TableColumn& column : facts.columns)
        if (std::none_of(definition.members().begin(), definition.members().end(),
                         [&column](const Member& member) { return sameName(member.name, column.strName); }))
            jReport["undeclared"].append(column.strName);
}

bool reportKeys(Store& store, const Facts& facts, Waiter& waiter, Json::Value& jReport, Status& status)
{
    std::vector<TableIndex> indexes;
    if (!readIndexes(store.pDb, store.definition, facts, waiter, indexes, status))
        return false;
    std::vector<std::string_view> key;
    for (const Member& member : store.definition.members())
        if (member.blKey)
            key.push_back(member.name);
    const bool blKey = isUnique(indexes, key);
    for (const Member& member : store.definition.members())
        if ((member.blKey && !blKey) || (member.blUnique && !isUnique(indexes, {member.name})))
            jReport["keys"].append(toJson(member.name));
    return true;
}

// Every cell that cannot be read.
bool reportCells(Store& store, const Facts& facts, Waiter& waiter, Json::Value& jCells, Status& status)
{
    std::vector<const Member*> members;
    std::string strSql;
    for (const Member& member : store.definition.members())
        if (columnOf(facts, member.name) != nullptr)
        {
            members.push_back(&member);
            appendAll(strSql, {strSql.empty() ? "SELECT " : ", ", member.column()});
        }
    if (members.empty())
        return true;
    if (!facts.strRowid.empty())
        appendAll(strSql, {", ", facts.strRowid});
    appendAll(strSql, {" FROM ", store.definition.quotedName()});

    std::vector<JsonReader> readers(members.size());
    const auto lookAt = [&](sqlite3_stmt* pRow)
    {
        for (std::size_t i = 0; i < members.size(); ++i)
        {
            Json::Value jUnused;
            if (readCell(*members[i], sqlite3_column_value(pRow, static_cast<int>(i)), readers[i], store.strictReader,
                         jUnused) != Cell::Bad)
                continue;
            Json::Value jCell;
            jCell["member"] = toJson(members[i]->name);
            if (!facts.strRowid.empty())
                jCell["rowid"] = static_cast<Json::Int64>(sqlite3_column_int64(pRow, static_cast<int>(members.size())));
            jCell["text"] = join({"What is stored is not ", describe(*members[i]), "."});
            jCells.append(std::move(jCell));
        }
    };
    const bool blInTransaction = sqlite3_get_autocommit(store.pDb) == 0;
    const bool blRead = eachRow(store.pDb, strSql, waiter, status, lookAt);
    if (!blRead)
        noteRollback(status, store.pDb, blInTransaction);
    return blRead;
}

}  // namespace

bool checkTable(Store& store, Json::Value& jReportOut, bool blCells, Status& status)
{
    Waiter waiter(store.iLockTimeout);
    Facts facts;
    if (!refreshSchema(store.pDb, store.definition, status) ||
        !readFacts(store.pDb, store.definition, waiter, facts, status))
        return false;

    Json::Value jReport(Json::objectValue);
    for (const char* szEntry : {"keys", "missing", "types", "undeclared"})
        jReport[szEntry] = Json::Value(Json::arrayValue);
    reportColumns(store.definition, facts, jReport);
    if (!reportKeys(store, facts, waiter, jReport, status))
        return false;
    if (blCells)
    {
        Json::Value& jCells = jReport["cells"] = Json::Value(Json::arrayValue);
        if (!reportCells(store, facts, waiter, jCells, status))
            return false;
    }
    const std::string strBad = blCells && !jReport["cells"].empty() ? jReport["cells"][0]["member"].asString() : "";
    jReportOut.swapPayload(jReport);
    if (!facts.strMissing.empty())
        return failMissing(store.definition, facts, status);
    return strBad.empty() || failCell(status, *store.definition.find(strBad));
}

}  // namespace vorn
