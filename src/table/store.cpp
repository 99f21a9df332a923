// SPDX-License-Identifier: MIT

#include "store.h"

#include <sqlite3.h>

#include "../core/text.h"
#include "cell_value.h"
#include "failure.h"

namespace vorn
{

namespace
{

// Appends something for each of the set's members, or for all where there is no set, with commas between.
void appendMembers(std::string& strText, const Store& store, const MemberSet* pMembers,
                   std::string_view (*textOf)(const Member&), std::string_view behind = {})
{
    const char* szSeparator = "";
    for (const Member& member : store.definition.members())
    {
        if (pMembers != nullptr && !pMembers->has(store.placeOf(member)))
            continue;
        appendAll(strText, {szSeparator, textOf(member), behind});
        szSeparator = ", ";
    }
}

std::string_view quotedNameOf(const Member& member)
{
    return member.quotedName();
}

void appendInsert(std::string& strText, const Store& store, const MemberSet& members, const char* szInsert)
{
    appendAll(strText, {szInsert, " INTO ", store.definition.quotedName(), " ("});
    const std::size_t begin = strText.size();
    appendMembers(strText, store, &members, quotedNameOf);
    if (strText.size() == begin)
    {
        strText.replace(begin - 2, 2, " DEFAULT VALUES");
        return;
    }
    strText += ") VALUES (";
    appendMembers(strText, store, &members, [](const Member&) -> std::string_view { return "?"; });
    strText += ')';
}

}  // namespace

bool failMissing(const Definition& definition, const Facts& facts, Status& status)
{
    if (!facts.blExists)
        return fail(status, Code::Missing, "", "The table ^ does not exist; tableUpgrade() makes it.",
                    shown(definition.name()));
    return fail(status, Code::Missing, facts.strMissing, "The table has no column for %; tableUpgrade() adds it.");
}

bool Store::lookAnew(Waiter& waiter, Status& status)
{
    Facts facts;
    for (const bool blAgain : {false, true})
    {
        if (blAgain && !refreshSchema(pDb, definition, status))
            return false;
        if (!readFacts(pDb, definition, waiter, facts, status))
            return false;
        if (facts.blExists && facts.strMissing.empty())
        {
            pFacts = std::make_shared<Facts>(std::move(facts));
            return true;
        }
    }
    return failMissing(definition, facts, status);
}

bool Store::isOutdated()
{
    if (pFacts == nullptr)
        return true;
    if (sqlite3_get_autocommit(pDb) == 0 && sqlite3_txn_state(pDb, nullptr) == SQLITE_TXN_NONE)
    {
        for (const Member& member : definition.members())
            if (sqlite3_table_column_metadata(pDb, nullptr, definition.name().c_str(), member.name.data(), nullptr,
                                              nullptr, nullptr, nullptr, nullptr) != SQLITE_OK)
                return true;
        return false;
    }
    Waiter noWaiting(0);
    Status unused;
    std::int64_t iVersion = 0;
    return readSchemaVersion(pDb, pFacts->strSchema, noWaiting, iVersion, unused) && iVersion != pFacts->iVersion;
}

void Store::forget()
{
    release();
    ++iSchema;
}

void Store::release()
{
    pFacts.reset();
    pUndo.reset();
    pUndoOwn.reset();
    cache.clear();
}

std::string statementText(const Store& store, const Shape& shape)
{
    const std::string& strTable = store.definition.quotedName();
    std::string strText;
    switch (shape.kind)
    {
        case StatementKind::Select:
            strText = "SELECT ";
            appendMembers(strText, store, shape.pMembers,
                          [](const Member& member) -> std::string_view { return member.column(); });
            if (!store.pFacts->strRowid.empty())
                appendAll(strText, {", ", store.pFacts->strRowid});
            appendAll(strText, {" FROM ", strTable});
            // What SQLite sorts are whole rows, so it is given rowids alone where most of the rows are not wanted.
            if (!shape.pageOrder.empty() && store.pFacts->blStored && !store.pFacts->strRowid.empty())
            {
                const std::string& strRowid = store.pFacts->strRowid;
                appendAll(strText, {" WHERE ", strRowid, " IN (SELECT ", strRowid, " FROM ", strTable, shape.tail, ")",
                                    shape.pageOrder});
                return strText;
            }
            break;
        case StatementKind::Count:
            appendAll(strText, {"SELECT count(*) FROM ", strTable});
            break;
        case StatementKind::Insert:
            appendInsert(strText, store, *shape.pMembers, "INSERT");
            break;
        case StatementKind::InsertKey:
        {
            appendInsert(strText, store, *shape.pMembers, "INSERT");
            const char* szSeparator = " RETURNING ";
            for (const KeyColumn& column : store.pFacts->key)
            {
                appendAll(strText, {szSeparator, column.strQuoted});
                szSeparator = ", ";
            }
            break;
        }
        case StatementKind::InsertAbort:
            appendInsert(strText, store, *shape.pMembers, "INSERT OR ABORT");
            break;
        case StatementKind::Update:
        case StatementKind::UpdateAbort:
            appendAll(strText,
                      {shape.kind == StatementKind::Update ? "UPDATE " : "UPDATE OR ABORT ", strTable, " SET "});
            appendMembers(strText, store, shape.pMembers, quotedNameOf, " = ?");
            break;
        case StatementKind::Delete:
            appendAll(strText, {"DELETE FROM ", strTable});
            break;
        default:
            break;
    }
    strText += shape.tail;
    return strText;
}

}  // namespace vorn
