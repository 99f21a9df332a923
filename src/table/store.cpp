// SPDX-License-Identifier: MIT

#include "store.h"

#include <sqlite3.h>

#include "cell_value.h"
#include "failure.h"

namespace vorn
{

namespace
{

// The members of the shape, each as write gives it, with commas between them.
template <typename Write>
std::string joined(const Store& store, const MemberSet* pMembers, Write write)
{
    std::string strText;
    for (const Member& member : store.definition.members())
    {
        if (pMembers != nullptr && !pMembers->has(store.placeOf(member)))
            continue;
        if (!strText.empty())
            strText += ", ";
        strText += write(member);
    }
    return strText;
}

std::string insertText(const Store& store, const MemberSet& members, const char* szInsert = "INSERT")
{
    const std::string strNames = joined(store, &members, [](const Member& member) { return member.strQuoted; });
    const std::string strInto = std::string(szInsert) + " INTO " + store.definition.quotedName();
    if (strNames.empty())
        return strInto + " DEFAULT VALUES";
    return strInto + " (" + strNames + ") VALUES (" + joined(store, &members, [](const Member&) { return "?"; }) + ')';
}

std::string keyText(const Store& store)
{
    std::string strText;
    for (const KeyColumn& column : store.pFacts->key)
        strText += (strText.empty() ? "" : ", ") + column.strQuoted;
    return strText;
}

}  // namespace

bool failMissing(const Definition& definition, const Facts& facts, Status& status)
{
    if (!facts.blExists)
        return fail(status, Code::Missing, "",
                    "The table " + shown(definition.name()) + " does not exist; tableUpgrade() makes it.");
    return fail(status, Code::Missing, facts.strMissing,
                "The table has no column for " + shown(facts.strMissing) + "; tableUpgrade() adds it.");
}

bool Store::look(Waiter& waiter, Status& status)
{
    if (pFacts != nullptr)
        return true;
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
    std::string strTail(shape.tail);
    switch (shape.kind)
    {
        case StatementKind::Select:
            return "SELECT " + joined(store, shape.pMembers, [](const Member& member) { return member.strColumn; }) +
                   (store.pFacts->strRowid.empty() ? "" : ", " + store.pFacts->strRowid) + " FROM " + strTable +
                   strTail;
        case StatementKind::Count:
            return "SELECT count(*) FROM " + strTable + strTail;
        case StatementKind::Insert:
            return insertText(store, *shape.pMembers);
        case StatementKind::InsertKey:
            return insertText(store, *shape.pMembers) + " RETURNING " + keyText(store);
        case StatementKind::InsertAbort:
            return insertText(store, *shape.pMembers, "INSERT OR ABORT");
        case StatementKind::Update:
        case StatementKind::UpdateAbort:
            return (shape.kind == StatementKind::Update ? "UPDATE " : "UPDATE OR ABORT ") + strTable + " SET " +
                   joined(store, shape.pMembers, [](const Member& member) { return member.strQuoted + " = ?"; }) +
                   strTail;
        case StatementKind::Delete:
            return "DELETE FROM " + strTable + strTail;
        default:
            return strTail;
    }
}

}  // namespace vorn
