// SPDX-License-Identifier: MIT
//
// New records, and records that are saved.

#include "insert.h"
#include "operations.h"
#include "savepoint.h"

namespace vorn
{

namespace
{

// The parts of a record that has a key: the key's values in the key's order, and the others.
// They borrow from the record's values.
struct KeyedRecord
{
    explicit KeyedRecord(const Definition& definition) : others(definition) {}

    RecordValues others;
    std::vector<BoundValue> key;
};

// The place of a member's value among those of the record, which has the member.
std::size_t valuePlace(const Store& store, const RecordValues& record, const Member& member)
{
    std::size_t place = 0;
    for (std::size_t i = 0; i < store.placeOf(member); ++i)
        place += record.members.has(i) ? 1 : 0;
    return place;
}

bool isKey(const Facts& facts, const Member& member)
{
    for (const KeyColumn& column : facts.key)
        if (column.pMember == &member)
            return true;
    return false;
}

KeyedRecord splitKey(const Store& store, const Facts& facts, const RecordValues& record)
{
    KeyedRecord keyed(store.definition);
    for (const KeyColumn& column : facts.key)
        keyed.key.push_back(record.values[valuePlace(store, record, *column.pMember)].alias());
    std::size_t place = 0;
    for (const Member& member : store.definition.members())
    {
        if (!record.members.has(store.placeOf(member)))
            continue;
        if (!isKey(facts, member))
        {
            keyed.others.members.add(store.placeOf(member));
            keyed.others.values.push_back(record.values[place].alias());
        }
        ++place;
    }
    if (keyed.others.values.empty())  // an update must set something
    {
        keyed.others.members.add(store.placeOf(*facts.key.front().pMember));
        keyed.others.values.push_back(keyed.key.front().alias());
    }
    return keyed;
}

// Whether the record has its whole key; if not, the member that lacks.
bool hasKey(const Facts& facts, const Json::Value& jRec, std::string_view& lacking)
{
    for (const KeyColumn& column : facts.key)
    {
        const Member* pMember = column.pMember;
        const Json::Value* pValue =
            pMember != nullptr ? jRec.find(pMember->name.data(), pMember->name.data() + pMember->name.size()) : nullptr;
        if (pValue == nullptr || pValue->isNull())
        {
            lacking = pMember != nullptr ? pMember->name : std::string_view();
            return false;
        }
    }
    return true;
}

// Updates the record that has the key and reads it. blFound tells whether there is one.
bool updateAndRead(Store& store, const Facts& facts, Waiter& waiter, const RecordValues& record, bool& blFound,
                   Json::Value& jRec, Status& status)
{
    KeyedRecord keyed = splitKey(store, facts, record);
    std::vector<BoundValue>& values = keyed.others.values;
    for (const BoundValue& value : keyed.key)
        values.push_back(value.alias());
    const Shape shape{StatementKind::Update, &keyed.others.members, facts.strByKey};
    if (!runToEnd(store, waiter, shape, values, status))
        return false;
    blFound = sqlite3_changes64(store.pDb) != 0;
    if (!blFound)
    {
        {
            Run run(store, waiter);
            if (!run.start({StatementKind::Select, nullptr, facts.strByKey}, keyed.key, status))
                return false;
            blFound = run.isRow();
        }
        if (!blFound)
            return true;
        if (!runIgnored(store, waiter, {StatementKind::UpdateAbort, shape.pMembers, shape.tail}, values, status))
            return false;
    }
    return readBack(store, waiter, facts.strByKey, keyed.key, jRec, status);
}

}  // namespace

bool createRecord(Store& store, const Json::Value& jRec, bool blDefaults, Json::Value* pRecOut, Status& status)
{
    RecordValues record(store.definition);
    if (!bindRecord(store.definition, jRec, blDefaults, record, status))
        return false;
    Waiter waiter(store.iLockTimeout);
    Json::Value jStored;
    const auto attempt = [&](const Facts& facts)
    {
        if (!checkRequired(store.definition, facts, jRec, true, blDefaults, status))
            return false;
        if (pRecOut == nullptr && !facts.blTriggers)  // one statement is a transaction by itself
            return insert(store, waiter, record, status);
        Savepoint savepoint(store, waiter);
        return savepoint.begin(status) &&
               (pRecOut != nullptr ? insertAndRead(store, facts, waiter, record, jStored, status)
                                   : insert(store, waiter, record, status)) &&
               savepoint.keep(status);
    };
    if (!withFacts(store, waiter, status, attempt))
        return false;
    if (pRecOut != nullptr)
        pRecOut->swapPayload(jStored);
    return true;
}

bool saveRecord(Store& store, Json::Value& jRec, Status& status)
{
    RecordValues record(store.definition);
    if (!bindRecord(store.definition, jRec, false, record, status))
        return false;
    Waiter waiter(store.iLockTimeout);
    Json::Value jStored;
    const auto attempt = [&](const Facts& facts)
    {
        if (facts.key.empty())
            return fail(status, Code::BadRequest, "", "The table has no primary key by which a record can be saved.");
        std::string_view lacking;
        const bool blKey = hasKey(facts, jRec, lacking);
        if (!blKey && !facts.blRowidKey)
            return fail(status, Code::BadRequest, lacking, "A record without its primary key cannot be saved.");
        if (!checkRequired(store.definition, facts, jRec, !blKey, false, status))
            return false;
        Savepoint savepoint(store, waiter);
        bool blFound = false;
        if (!savepoint.begin(status) ||
            (blKey && !updateAndRead(store, facts, waiter, record, blFound, jStored, status)))
            return false;
        if (!blFound && (!checkRequired(store.definition, facts, jRec, true, false, status) ||
                         !insertAndRead(store, facts, waiter, record, jStored, status)))
            return false;
        return savepoint.keep(status);
    };
    if (!withFacts(store, waiter, status, attempt))
        return false;
    jRec.swapPayload(jStored);
    return true;
}

}  // namespace vorn
