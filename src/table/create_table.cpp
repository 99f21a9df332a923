// SPDX-License-Identifier: MIT
//
// Making the table, by the host's statements or by the definition.

#include <sqlite3.h>

#include <algorithm>

#include "ddl.h"
#include "operations.h"
#include "savepoint.h"
#include "script.h"

namespace vorn
{

namespace
{

bool exists(Store& store, Waiter& waiter, bool& blExists, Status& status)
{
    refreshSchema(store.pDb, store.definition);
    Facts facts;
    if (!readFacts(store.pDb, store.definition, waiter, facts, status))
        return false;
    blExists = facts.blExists;
    return true;
}

bool readNames(Store& store, Waiter& waiter, std::vector<std::string>& names, Status& status)
{
    StatementPointer pStatement;
    if (!prepare(store.pDb, "SELECT name FROM main.sqlite_master", waiter, pStatement, status))
        return false;
    while (sqlite3_step(pStatement.get()) == SQLITE_ROW)
        names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(pStatement.get(), 0)));
    return true;
}

bool make(Store& store, Waiter& waiter, Status& status)
{
    Savepoint savepoint(store, waiter);
    std::vector<std::string> names;
    if (!savepoint.begin(status) || !runScript(store.pDb, createTableText(store.definition), waiter, status) ||
        !readNames(store, waiter, names, status))
        return false;
    const auto isTaken = [&names](const std::string& strName)
    {
        return std::any_of(names.begin(), names.end(),
                           [&strName](const std::string& strOther)
                           { return sqlite3_stricmp(strName.c_str(), strOther.c_str()) == 0; });
    };
    for (const Member& member : store.definition.members())
        for (const std::string& strText : indexTexts(store.definition, member, isTaken))
            if (!runScript(store.pDb, strText, waiter, status))
                return false;
    return savepoint.keep(status);
}

}  // namespace

bool createTable(Store& store, Status& status)
{
    Waiter waiter(store.iLockTimeout);
    if (!store.strSqlCreate.empty())
    {
        refreshSchema(store.pDb, store.definition);  // what exists already then needs no writer's lock
        return runScript(store.pDb, store.strSqlCreate, waiter, status);
    }
    bool blExists = false;
    if (!exists(store, waiter, blExists, status))
        return false;
    if (blExists || make(store, waiter, status))
        return true;

    // Another connection may have made it meanwhile.
    Status unused;
    if (status.sqlite != SQLITE_ERROR || !exists(store, waiter, blExists, unused) || !blExists)
        return false;
    status = Status();
    return true;
}

}  // namespace vorn
