// SPDX-License-Identifier: MIT
//
// Making the table, by the host's statements or by the definition.

#include <sqlite3.h>

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
    Facts facts;
    if (!refreshSchema(store.pDb, store.definition, status) ||
        !readFacts(store.pDb, store.definition, waiter, facts, status))
        return false;
    blExists = facts.blExists;
    return true;
}

}  // namespace

bool makeTable(Store& store, Waiter& waiter, Status& status)
{
    Savepoint savepoint(store, waiter);
    NameSet names;
    if (!savepoint.begin(status) || !runScript(store.pDb, createTableText(store.definition), waiter, status) ||
        !names.read(store.pDb, "main", waiter, status))
        return false;
    for (const Member& member : store.definition.members())
        for (const bool blUnique : {false, true})
            if ((blUnique ? member.blUnique : member.blIndex) &&
                !runScript(store.pDb, indexText(store.definition, member, blUnique, names), waiter, status))
                return false;
    return savepoint.keep(status);
}

bool createTable(Store& store, Status& status)
{
    Waiter waiter(store.iLockTimeout);
    if (!store.strSqlCreate.empty())
    {
        // What exists already then needs no writer's lock.
        return refreshSchema(store.pDb, store.definition, status) &&
               runScript(store.pDb, store.strSqlCreate, waiter, status);
    }
    bool blExists = false;
    if (!exists(store, waiter, blExists, status))
        return false;
    if (blExists || makeTable(store, waiter, status))
        return true;

    // Another connection may have made it meanwhile.
    Status unused;
    if (status.sqlite != SQLITE_ERROR || !exists(store, waiter, blExists, unused) || !blExists)
        return false;
    status = Status();
    return true;
}

}  // namespace vorn
