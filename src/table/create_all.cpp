// SPDX-License-Identifier: MIT
//
// Many new records at once.

#include "insert.h"
#include "operations.h"
#include "savepoint.h"

namespace vorn
{

namespace
{

// Records that were made one after the other mostly lie so in memory, and a look at the next ones waits for it longer
// than it works. So what lies some records ahead is asked for; if it is something else, nothing is lost.
constexpr int kAhead = 6144;  // bytes
constexpr int kSpan = 2048;
constexpr int kLine = 64;

// How many records from the first on are good. By iterators: every index would be looked up in a tree.
template <typename Good>
Json::ArrayIndex countGood(const Json::Value& jRecArray, Good isGood)
{
    Json::ArrayIndex count = 0;
    for (const Json::Value& jRec : jRecArray)
    {
        const char* const pAhead = reinterpret_cast<const char*>(&jRec) + kAhead;
        for (int i = 0; i < kSpan; i += kLine)
            __builtin_prefetch(pAhead + i);
        if (!isGood(jRec))
            break;
        ++count;
    }
    return count;
}

}  // namespace

long long createAll(Store& store, const Json::Value& jRecArray, Status& status)
{
    if (!jRecArray.isNull() && !jRecArray.isArray())
    {
        fail(status, Code::BadRequest, "", "Records must come in an array.");
        return -1;
    }
    const Json::ArrayIndex size = jRecArray.size();
    const auto isRecord = [&](const Json::Value& jRec) { return checkRecord(store.definition, jRec, status); };
    if (countGood(jRecArray, isRecord) != size)
    {
        Json::ArrayIndex bad = 0;
        while (isRecord(jRecArray[bad]))  // no record where an array has left out an index
            ++bad;
        status.index = bad;
        return -1;
    }
    if (size == 0)
        return 0;

    const auto areGood = [&](auto isGood)
    {
        const Json::ArrayIndex count = countGood(jRecArray, isGood);
        if (count != size)
            status.index = count;
        return count == size;
    };
    Waiter waiter(store.iLockTimeout);
    const auto attempt = [&](const Facts& facts)
    {
        if (!areGood([&](const Json::Value& jRec)
                     { return checkRequired(store.definition, facts, jRec, true, true, status); }))
            return false;
        Savepoint savepoint(store, waiter);
        Run run(store, waiter);
        const auto isStored = [&](const Json::Value& jRec)
        {
            RecordValues record(store.definition);
            bindChecked(store.definition, jRec, record);
            return insert(store, waiter, run, record, status);
        };
        if (!savepoint.begin(status) || !areGood(isStored))
            return false;
        run.release();
        return savepoint.keep(status);
    };
    return withFacts(store, waiter, status, attempt) ? static_cast<long long>(size) : -1;
}

}  // namespace vorn
