// SPDX-License-Identifier: MIT

#include "record.h"

#include "../core/json_members.h"
#include "cell_value.h"
#include "failure.h"

namespace vorn
{

namespace
{

// The order of two names, which end in a NUL. Most differ at once.
int compareNames(std::string_view left, std::string_view right)
{
    const int iFirst = static_cast<unsigned char>(*left.data()) - static_cast<unsigned char>(*right.data());
    return iFirst != 0 ? iFirst : left.compare(right);
}

bool failKind(Status& status)
{
    return fail(status, Code::BadRequest, "", "A record must be an object.");
}

bool failUnknown(Status& status, std::string_view name)
{
    return fail(status, Code::UnknownMember, name, "The definition has no member %.");
}

enum class Walk
{
    Check,
    Bind,
    BindChecked
};

bool walkRecord(const Definition& definition, const Json::Value& jRec, bool blDefaults, Walk walk,
                RecordValues* pRecord, Status& status)
{
    auto it = jRec.begin();
    Json::ArrayIndex left = jRec.size();
    std::string_view name = left > 0 ? nameOf(it) : std::string_view();
    std::size_t place = 0;
    for (const Member& member : definition.members())
    {
        if (left == 0 && !blDefaults)
            break;
        // Both stand in the same order, so a name that comes before the member's is no member's.
        const int order = left > 0 ? compareNames(name, member.name) : 1;
        if (order < 0)
            break;
        const Json::Value* pValue = order == 0 ? &*it : blDefaults && member.blHasDefault ? &member.jDefault : nullptr;
        if (pValue != nullptr)
        {
            if (walk == Walk::Check)
            {
                if (!checkValue(member, *pValue, member.name, status))
                    return false;
            }
            else
            {
                BoundValue& value = pRecord->values.emplace_back();
                if (walk == Walk::BindChecked)
                    bindChecked(member, *pValue, value);
                else if (!toBound(member, *pValue, member.name, value, status))
                    return false;
                pRecord->members.add(place);
            }
        }
        if (order == 0)
        {
            ++it;
            name = --left > 0 ? nameOf(it) : std::string_view();
        }
        ++place;
    }
    return left == 0 || failUnknown(status, name);
}

}  // namespace

bool checkRecord(const Definition& definition, const Json::Value& jRec, Status& status)
{
    return jRec.isObject() ? walkRecord(definition, jRec, false, Walk::Check, nullptr, status) : failKind(status);
}

bool bindRecord(const Definition& definition, const Json::Value& jRec, bool blDefaults, RecordValues& record,
                Status& status)
{
    if (!jRec.isObject())
        return failKind(status);
    record.values.reserve(definition.members().size() + 1);  // an update's condition is mostly one value
    return walkRecord(definition, jRec, blDefaults, Walk::Bind, &record, status);
}

void bindChecked(const Definition& definition, const Json::Value& jRec, RecordValues& record)
{
    Status unused;
    record.values.reserve(definition.members().size());
    walkRecord(definition, jRec, true, Walk::BindChecked, &record, unused);
}

bool checkRequired(const Definition& definition, const Facts& facts, const Json::Value& jRec, bool blNew,
                   bool blDefaults, Status& status)
{
    if (!definition.hasRequired())
        return true;
    for (const Member& member : definition.members())
    {
        if (!member.blRequired && !member.blKey)
            continue;
        if (facts.blRowidKey && facts.key.front().pMember == &member && blNew)
            continue;
        const Json::Value* pValue = jRec.find(member.name.data(), member.name.data() + member.name.size());
        if (pValue == nullptr && !blNew)
            continue;
        if (pValue == nullptr && blDefaults && member.blHasDefault)
            pValue = &member.jDefault;
        if (pValue != nullptr ? pValue->isNull()
                              : !facts.fillsItself.has(static_cast<std::size_t>(&member - definition.members().data())))
            return fail(status, Code::Constraint, member.name, "% must not be absent.");
    }
    return true;
}

}  // namespace vorn
