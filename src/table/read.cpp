// SPDX-License-Identifier: MIT
//
// Listing, fetching, visiting and counting records.

#include <sqlite3.h>

#include "conditions.h"
#include "failure.h"
#include "heap_order.h"
#include "operations.h"
#include "run.h"

namespace vorn
{

namespace
{

// A request on its way: what it compiles to, and the run of its statement.
class Request
{
public:
    explicit Request(Store& store) : m_store(store), m_fields(store.definition.members().size()) {}

    bool compileIt(const Json::Value& jRequest, FilterKind kind, Status& status)
    {
        if (!compile(m_store.definition, m_store.pDb, jRequest, kind, m_compiled, status))
            return false;
        for (const Member* pMember : m_compiled.fields)
            m_fields.add(m_store.placeOf(*pMember));
        return true;
    }

    Shape shape(StatementKind kind) const
    {
        return {kind, m_compiled.fields.empty() ? nullptr : &m_fields, m_compiled.sql(), m_compiled.blKeep,
                m_compiled.pageOrder()};
    }

    const std::vector<BoundValue>& values() const { return m_compiled.values; }

private:
    Store& m_store;
    MemberSet m_fields;
    Compiled m_compiled;
};

bool canAppend(const Json::Value& jArrayOut, Status& status)
{
    return jArrayOut.isNull() || jArrayOut.isArray() ||
           fail(status, Code::BadRequest, "", "What rows are appended to must be an array or null.");
}

Json::Value toJson(const BoundValue& value)
{
    switch (value.kind())
    {
        case BoundValue::Kind::Integer:
            return Json::Value(static_cast<Json::Int64>(value.integer()));
        case BoundValue::Kind::Real:
            return Json::Value(value.real());
        case BoundValue::Kind::Text:
            return Json::Value(value.text().data(), value.text().data() + value.text().size());
        default:
            return Json::Value();
    }
}

}  // namespace

void appendRows(Json::Value& jRows, Json::Value& jArrayOut)
{
    if (jArrayOut.isNull() || jArrayOut.empty())
        jArrayOut.swapPayload(jRows);
    else
        for (Json::Value& jRow : jRows)
            jArrayOut.append(Json::Value()).swapPayload(jRow);
}

bool listRecords(Store& store, const Json::Value& jRequest, Json::Value& jRecArrayOut, Status& status)
{
    Request request(store);
    if (!request.compileIt(jRequest, FilterKind::Request, status) || !canAppend(jRecArrayOut, status))
        return false;
    Json::Value jRows(Json::arrayValue);
    {
        Waiter waiter(store.iLockTimeout);
        Run run(store, waiter);
        if (!run.start(request.shape(StatementKind::Select), request.values(), status))
            return false;
        HeapOrder order;
        while (run.isRow())
        {
            Json::Value& jRow = jRows.append(Json::Value());
            order.note(&jRow);
            if (!run.read(jRow, status) || !run.next(status))
                return false;
        }
    }
    appendRows(jRows, jRecArrayOut);
    return true;
}

long long visitRecords(Store& store, const Json::Value& jRequest, const std::function<bool(Json::Value&)>& visit,
                       Status& status)
{
    if (!visit)
    {
        fail(status, Code::Misuse, "", "The visitor is empty.");
        return -1;
    }
    Request request(store);
    if (!request.compileIt(jRequest, FilterKind::Request, status))
        return -1;
    Waiter waiter(store.iLockTimeout);
    Run run(store, waiter);
    if (!run.start(request.shape(StatementKind::Select), request.values(), status))
        return -1;
    long long iCount = 0;
    while (run.isRow())
    {
        Json::Value jRec;
        if (!run.read(jRec, status))
            return -1;
        ++iCount;
        if (!visit(jRec))
            break;
        if (!run.next(status))
            return -1;
    }
    return iCount;
}

int getRecord(Store& store, const Json::Value& jRequest, Json::Value& jRecOut, Status& status)
{
    Request request(store);
    if (!request.compileIt(jRequest, FilterKind::One, status))
        return -1;
    Json::Value jRec;
    {
        Waiter waiter(store.iLockTimeout);
        Run run(store, waiter);
        if (!run.start(request.shape(StatementKind::Select), request.values(), status))
            return -1;
        if (!run.isRow())
            return 0;
        if (!run.read(jRec, status))
            return -1;
    }
    jRecOut.swapPayload(jRec);
    return 1;
}

long long countRecords(Store& store, const Json::Value& jFilter, Status& status)
{
    Request request(store);
    if (!request.compileIt(jFilter, FilterKind::Filter, status))
        return -1;
    Waiter waiter(store.iLockTimeout);
    Run run(store, waiter);
    if (!run.start(request.shape(StatementKind::Count), request.values(), status))
        return -1;
    return sqlite3_column_int64(run.statement(), 0);
}

bool explainRequest(Store& store, const Json::Value& jRequest, Json::Value& jOut, Status& status)
{
    Request request(store);
    if (!request.compileIt(jRequest, FilterKind::Request, status))
        return false;
    Json::Value jPlan(Json::objectValue);
    {
        Waiter waiter(store.iLockTimeout);
        if (store.isOutdated())
            store.forget();
        if (!store.look(waiter, status))
            return false;
        const std::string strSql = statementText(store, request.shape(StatementKind::Select));
        const std::string strExplain = "EXPLAIN QUERY PLAN " + strSql;
        Json::Value& jParameters = jPlan["parameters"] = Json::Value(Json::arrayValue);
        for (const BoundValue& value : request.values())
            jParameters.append(toJson(value));
        Json::Value& jLines = jPlan["plan"] = Json::Value(Json::arrayValue);

        constexpr int kDetail = 3;
        Run run(store, waiter);
        if (!run.start({StatementKind::Text, nullptr, strExplain, false}, request.values(), status))
            return false;
        while (run.isRow())
        {
            jLines.append(reinterpret_cast<const char*>(sqlite3_column_text(run.statement(), kDetail)));
            if (!run.next(status))
                return false;
        }
        jPlan["sql"] = strSql;
    }
    jOut.swapPayload(jPlan);
    return true;
}

}  // namespace vorn
