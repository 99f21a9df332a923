// SPDX-License-Identifier: MIT

#include "run.h"

#include <sqlite3.h>

#include "failure.h"
#include "sqlite_status.h"

namespace vorn
{

namespace
{

int bindValue(sqlite3_stmt* pStatement, int iPlace, const BoundValue& value)
{
    switch (value.kind())
    {
        case BoundValue::Kind::Integer:
            return sqlite3_bind_int64(pStatement, iPlace, value.integer());
        case BoundValue::Kind::Real:
            return sqlite3_bind_double(pStatement, iPlace, value.real());
        case BoundValue::Kind::Text:
            return sqlite3_bind_text64(pStatement, iPlace, value.text().data(), value.text().size(), SQLITE_STATIC,
                                       SQLITE_UTF8);
        case BoundValue::Kind::Value:
            return sqlite3_bind_value(pStatement, iPlace, value.sqlite());
        default:
            return sqlite3_bind_null(pStatement, iPlace);
    }
}

// A filter that is too much for SQLite.
bool isTooMuch(std::string_view message)
{
    for (const std::string_view beginning :
         {"too many", "Expression tree is too large", "parser stack overflow", "query or expression"})
        if (message.substr(0, beginning.size()) == beginning)
            return true;
    return false;
}

// The text must be one statement, as only the host's may fail to be.
bool prepareOne(sqlite3* pDb, const std::string& strSql, Waiter& waiter, StatementPointer& pStatement, Status& status)
{
    const char* szTail = "";
    if (!prepare(pDb, strSql, waiter, pStatement, status, &szTail))
        return false;
    StatementPointer pSecond;
    Status unused;
    if (pStatement != nullptr &&
        (*szTail == '\0' || (prepare(pDb, szTail, waiter, pSecond, unused) && pSecond == nullptr)))
        return true;
    pStatement.reset();
    return fail(status, Code::BadRequest, "", "The SQL text must be one statement.");
}

}  // namespace

bool Run::start(const Shape& shape, const std::vector<BoundValue>& values, Status& status)
{
    constexpr int kMaxSchemaChanges = 100;

    m_blInTransaction = sqlite3_get_autocommit(m_store.pDb) == 0;
    for (int iChanges = 0;;)
    {
        if (!prepareFor(shape, status) || !bind(values, status))
            return false;
        const int iStep = sqlite3_step(statement());
        m_blRow = iStep == SQLITE_ROW;
        if (m_blRow || iStep == SQLITE_DONE)
            return true;

        const int iResult = failureOf(m_store.pDb, statement());
        const bool blWrites = sqlite3_stmt_readonly(statement()) == 0;
        if (iResult == SQLITE_SCHEMA && ++iChanges < kMaxSchemaChanges)
        {
            m_pKept.reset();
            if (shape.kind == StatementKind::Text)
                continue;
            m_store.forget();
            if (m_store.blSavepoint)  // what the operation has done so far may have been wrong
                return failStep(iResult, false, status);
            continue;
        }
        bool blStale = false;
        if (!waitFor(iResult, m_store.pDb, m_store.schema(), blWrites, m_waiter, blStale))
            return failStep(iResult, blStale, status);
    }
}

bool Run::next(Status& status)
{
    const int iStep = sqlite3_step(statement());
    m_blRow = iStep == SQLITE_ROW;
    if (m_blRow || iStep == SQLITE_DONE)
        return true;
    return failStep(failureOf(m_store.pDb, statement()), false, status);
}

void Run::release() noexcept
{
    if (m_pKept == nullptr)
        return;
    sqlite3_reset(statement());
    sqlite3_clear_bindings(statement());
    m_store.cache.giveBack(std::move(m_pKept), m_iGeneration);
}

bool Run::prepareFor(const Shape& shape, Status& status)
{
    if (m_pKept != nullptr && m_pKept->isOf(shape))
    {
        sqlite3_reset(statement());
        return true;
    }
    release();
    m_iGeneration = m_store.cache.generation();
    m_pKept = m_store.cache.take(shape);
    if (m_pKept != nullptr)
        return true;
    const bool blOfTable = shape.kind != StatementKind::Text;
    if (blOfTable)
    {
        if (m_store.isOutdated())
            m_store.forget();
        if (!m_store.look(m_waiter, status))
            return false;
    }
    m_iGeneration = m_store.cache.generation();

    auto pKept = std::make_unique<KeptStatement>();
    pKept->kind = shape.kind;
    pKept->strTail = shape.tail;
    pKept->blKeep = shape.blKeep;
    if (shape.pMembers != nullptr)
        pKept->strMembers = shape.pMembers->bits();
    if (!prepareOne(m_store.pDb, statementText(m_store, shape), m_waiter, pKept->pStatement, status))
    {
        if (blOfTable && (status.code == Code::OutOfRange ||
                          (status.sqlite == SQLITE_ERROR && isTooMuch(sqlite3_errmsg(m_store.pDb)))))
            status.code = Code::BadRequest;
        return false;
    }
    if (shape.kind == StatementKind::Select)
    {
        std::vector<const Member*> members;
        for (const Member& member : m_store.definition.members())
            if (shape.pMembers == nullptr || shape.pMembers->has(m_store.placeOf(member)))
                members.push_back(&member);
        pKept->reader = RowReader(std::move(members), !m_store.pFacts->strRowid.empty());
    }
    m_pKept = std::move(pKept);
    return true;
}

bool Run::bind(const std::vector<BoundValue>& values, Status& status)
{
    int iPlace = 0;
    for (const BoundValue& value : values)
        if (bindValue(statement(), ++iPlace, value) != SQLITE_OK)
            return failSqlite(status, m_store.pDb, sqlite3_extended_errcode(m_store.pDb));
    return true;
}

bool Run::failStep(int iResult, bool blStale, Status& status)
{
    if (blStale)
        return failStale(status, iResult);
    failSqlite(status, m_store.pDb, iResult, &m_store.definition);
    noteRollback(status, m_store.pDb, m_blInTransaction && !m_store.blOwnTransaction);
    return false;
}

bool runToEnd(Run& run, const Shape& shape, const std::vector<BoundValue>& values, Status& status)
{
    if (!run.start(shape, values, status))
        return false;
    while (run.isRow())
        if (!run.next(status))
            return false;
    return true;
}

bool runToEnd(Store& store, Waiter& waiter, const Shape& shape, const std::vector<BoundValue>& values, Status& status)
{
    Run run(store, waiter);
    return runToEnd(run, shape, values, status);
}

}  // namespace vorn
