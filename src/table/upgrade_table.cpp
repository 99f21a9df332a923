// SPDX-License-Identifier: MIT
//
// Adding to the table what the definition has and the table lacks.

#include <sqlite3.h>

#include <algorithm>

#include "cell_value.h"
#include "ddl.h"
#include "failure.h"
#include "join.h"
#include "operations.h"
#include "query.h"
#include "savepoint.h"
#include "script.h"

namespace vorn
{

namespace
{

bool hasColumn(const Facts& facts, const Member& member)
{
    return std::any_of(facts.columns.begin(), facts.columns.end(),
                       [&member](const TableColumn& column) { return sameName(column.strName, member.name); });
}

bool hasIndex(const std::vector<TableIndex>& indexes, const Member& member, bool blUnique)
{
    if (blUnique)
        return isUnique(indexes, {member.name});
    return std::any_of(indexes.begin(), indexes.end(),
                       [&member](const TableIndex& index)
                       { return !index.columns.empty() && sameName(index.columns.front(), member.name); });
}

// The statements for what the table lacks.
bool upgradeTexts(Store& store, const Facts& facts, Waiter& waiter, std::vector<std::string>& texts, Status& status)
{
    std::vector<TableIndex> indexes;
    NameSet names;
    if (!readIndexes(store.pDb, store.definition, facts, waiter, indexes, status) ||
        !names.read(store.pDb, facts.strSchema, waiter, status))
        return false;
    for (const Member& member : store.definition.members())
    {
        if (hasColumn(facts, member))
            continue;
        if (member.blKey || (member.blRequired && member.jDefault.isNull()))
            return fail(status, Code::Constraint, member.name,
                        "A column for % cannot be added: it is part of the key, or required and without a default.");
        texts.push_back(join({"ALTER TABLE ", store.definition.quotedName(), " ADD COLUMN ", columnText(member)}));
    }
    for (const Member& member : store.definition.members())
        for (const bool blUnique : {false, true})
            if ((blUnique ? member.blUnique : member.blIndex) && !hasIndex(indexes, member, blUnique))
                texts.push_back(indexText(store.definition, member, blUnique, names));
    return true;
}

bool runTexts(Store& store, const std::vector<std::string>& texts, Waiter& waiter, Status& status)
{
    Savepoint savepoint(store, waiter);
    if (!savepoint.begin(status))
        return false;
    for (const std::string& strText : texts)
        if (!runScript(store.pDb, strText, waiter, status, &store.definition))
            return false;
    return savepoint.keep(status);
}

}  // namespace

bool upgradeTable(Store& store, Status& status)
{
    Waiter waiter(store.iLockTimeout);
    std::vector<std::string> tried;
    for (;;)
    {
        Facts facts;
        std::vector<std::string> texts;
        if (!refreshSchema(store.pDb, store.definition, status) ||
            !readFacts(store.pDb, store.definition, waiter, facts, status) ||
            (facts.blExists && !upgradeTexts(store, facts, waiter, texts, status)))
            return false;
        if (!facts.blExists)
            texts.push_back(createTableText(store.definition));
        if (texts.empty() ||
            (facts.blExists ? runTexts(store, texts, waiter, status) : makeTable(store, waiter, status)))
            return true;

        // Another connection may have done a part while this one waited for the lock: then something else is lacking.
        if (status.sqlite != SQLITE_ERROR || texts == tried)
            return false;
        tried.swap(texts);
        status = Status();
    }
}

}  // namespace vorn
