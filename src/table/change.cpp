// SPDX-License-Identifier: MIT
//
// Changing and deleting records by a filter.

#include <sqlite3.h>

#include "cell_value.h"
#include "conditions.h"
#include "failure.h"
#include "operations.h"
#include "record.h"
#include "run.h"

namespace vorn
{

namespace
{

bool compileFilter(Store& store, const Json::Value& jFilter, bool blAllowAll, Compiled& compiled, Status& status)
{
    return compile(store.definition, store.pDb, jFilter, FilterKind::Filter, compiled, status) &&
           (compiled.blCondition || blAllowAll ||
            fail(status, Code::BadRequest, "", "An empty filter means every record, which must be allowed expressly."));
}

long long changeRows(Store& store, Waiter& waiter, const Shape& shape, const std::vector<BoundValue>& values,
                     Status& status)
{
    return runToEnd(store, waiter, shape, values, status) ? sqlite3_changes64(store.pDb) : -1;
}

long long deleteCompiled(Store& store, const Compiled& compiled, Status& status)
{
    Waiter waiter(store.iLockTimeout);
    return changeRows(store, waiter, {StatementKind::Delete, nullptr, compiled.sql(), compiled.blKeep}, compiled.values,
                      status);
}

}  // namespace

long long updateRecords(Store& store, const Json::Value& jFilter, const Json::Value& jValues, bool blAllowAll,
                        Status& status)
{
    RecordValues record(store.definition);
    if (!bindRecord(store.definition, jValues, false, record, status))
        return -1;
    if (record.values.empty())
    {
        fail(status, Code::BadRequest, "", "There is no value to set.");
        return -1;
    }
    Compiled compiled;
    compiled.values = std::move(record.values);  // those of the filter follow
    if (!compileFilter(store, jFilter, blAllowAll, compiled, status))
        return -1;
    Waiter waiter(store.iLockTimeout);
    if (!store.look(waiter, status) || !checkRequired(store.definition, *store.pFacts, jValues, false, false, status))
        return -1;
    return changeRows(store, waiter, {StatementKind::Update, &record.members, compiled.sql(), compiled.blKeep},
                      compiled.values, status);
}

long long deleteRecords(Store& store, const Json::Value& jFilter, bool blAllowAll, Status& status)
{
    Compiled compiled;
    if (!compileFilter(store, jFilter, blAllowAll, compiled, status))
        return -1;
    return deleteCompiled(store, compiled, status);
}

long long deleteByTexts(Store& store, const std::vector<std::string>& values, const char* szKey, Status& status)
{
    const Member* pMember = szKey != nullptr ? store.definition.find(szKey) : nullptr;
    if (pMember == nullptr)
    {
        const std::string_view name = szKey != nullptr ? szKey : "";
        fail(status, Code::UnknownMember, name, "The definition has no member %.");
        return -1;
    }
    Json::Value jList(Json::arrayValue);
    JsonReader reader;
    const auto readValue = [&](const std::string& strValue, Json::Value& jValue)
    {
        return readText(*pMember, strValue, reader, store.strictReader, jValue) == Cell::Value ||
               fail(status, Code::BadType, szKey, "A text by which to delete is not that of ^.", describe(*pMember));
    };
    if (values.size() == 1)
    {
        Json::Value jValue;
        Compiled compiled;
        return readValue(values.front(), jValue) && compileEqual(*pMember, jValue, compiled, status)
                   ? deleteCompiled(store, compiled, status)
                   : -1;
    }
    for (const std::string& strValue : values)
        if (!readValue(strValue, jList.append(Json::Value())))
            return -1;
    Json::Value jFilter(Json::objectValue);
    jFilter[szKey]["$in"].swapPayload(jList);
    return deleteRecords(store, jFilter, false, status);
}

}  // namespace vorn
