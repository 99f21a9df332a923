// SPDX-License-Identifier: MIT

#include "insert.h"

namespace vorn
{

namespace
{

bool failTrigger(Status& status, const char* szWhat)
{
    return fail(status, Code::Constraint, "", szWhat);
}

}  // namespace

bool runIgnored(Store& store, Waiter& waiter, const Shape& shape, const std::vector<BoundValue>& values, Status& status)
{
    return runToEnd(store, waiter, shape, values, status) &&
           (sqlite3_changes64(store.pDb) != 0 || failTrigger(status, "A trigger keeps the record from being stored."));
}

bool insert(Store& store, Waiter& waiter, const RecordValues& record, Status& status)
{
    Run run(store, waiter);
    return insert(store, waiter, run, record, status);
}

bool insert(Store& store, Waiter& waiter, Run& run, const RecordValues& record, Status& status)
{
    if (!runToEnd(run, {StatementKind::Insert, &record.members}, record.values, status))
        return false;
    return sqlite3_changes64(store.pDb) != 0 ||
           runIgnored(store, waiter, {StatementKind::InsertAbort, &record.members}, record.values, status);
}

bool readBack(Store& store, Waiter& waiter, std::string_view tail, const std::vector<BoundValue>& values,
              Json::Value& jRec, Status& status)
{
    Run run(store, waiter);
    if (!run.start({StatementKind::Select, nullptr, tail}, values, status))
        return false;
    if (!run.isRow())
        return failTrigger(status, "A trigger takes the record away.");
    return run.read(jRec, status);
}

bool insertAndRead(Store& store, const Facts& facts, Waiter& waiter, const RecordValues& record, Json::Value& jRec,
                   Status& status)
{
    if (!facts.strRowid.empty())
    {
        if (!insert(store, waiter, record, status))
            return false;
        std::vector<BoundValue> rowid;
        rowid.push_back(BoundValue::integer(sqlite3_last_insert_rowid(store.pDb)));
        return readBack(store, waiter, facts.strByRowid, rowid, jRec, status);
    }
    if (facts.key.empty())
        return fail(status, Code::BadRequest, "", "Records of this table cannot be read back: it has no key.");

    // Without a rowid the statement tells the key, in which defaults of the columns may stand.
    Run run(store, waiter);
    if (!run.start({StatementKind::InsertKey, &record.members}, record.values, status))
        return false;
    if (!run.isRow())
        return runIgnored(store, waiter, {StatementKind::InsertAbort, &record.members}, record.values, status) &&
               failTrigger(status, "A trigger keeps the record from being stored.");
    std::vector<BoundValue> key;
    key.reserve(facts.key.size());
    for (int i = 0; i < static_cast<int>(facts.key.size()); ++i)
        key.push_back(BoundValue::sqlite(sqlite3_column_value(run.statement(), i)));
    return readBack(store, waiter, facts.strByKey, key, jRec, status) && run.next(status);
}

bool withFacts(Store& store, Waiter& waiter, Status& status, FunctionRef<bool(const Facts&)> attempt)
{
    constexpr int kTries = 100;
    const int iAutocommit = sqlite3_get_autocommit(store.pDb);
    for (int i = 0; i < kTries; ++i)
    {
        if (!store.look(waiter, status))
            return false;
        const std::shared_ptr<const Facts> pFacts = store.pFacts;
        const unsigned iSchema = store.iSchema;
        if (attempt(*pFacts))
            return true;
        if (sqlite3_get_autocommit(store.pDb) != iAutocommit)  // SQLite has ended the caller's transaction
            return false;
        if (store.iSchema == iSchema)
        {
            if (!store.isOutdated())
                return false;
            store.forget();
        }
        status = Status();
    }
    return fail(status, Code::Sqlite, "", "The schema of the database changes all the time.");
}

}  // namespace vorn
