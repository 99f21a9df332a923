// SPDX-License-Identifier: MIT
//
// A record with certain members, copied for each row that is read: JsonCpp copies an object far faster than it enters
// members one by one.

#ifndef VORN_RECORD_PROTOTYPE_H
#define VORN_RECORD_PROTOTYPE_H

#include <json/json.h>

#include <string_view>
#include <vector>

class RecordPrototype
{
public:
    // None: it cannot be filled.
    RecordPrototype() = default;

    // The names ascend, hold no NUL, end in one, and outlive every record: they are its keys without a copy.
    explicit RecordPrototype(const std::vector<std::string_view>& names);

    bool isNone() const { return m_jRecord.isNull(); }

    // Makes jRec, which is null or an empty object, a record of these members. setMember(i, jValue) gives the i-th
    // member, which is null, its value and returns true, or leaves it null and returns false: the record then lacks it.
    template <typename SetMember>
    void fill(Json::Value& jRec, SetMember setMember) const
    {
        Json::Value jRow(m_jRecord);
        bool blWhole = true;
        std::size_t i = 0;
        for (Json::Value& jValue : jRow)
            blWhole = setMember(i++, jValue) && blWhole;
        if (!blWhole)
            removeNulls(jRow);
        jRec.swapPayload(jRow);
    }

private:
    static void removeNulls(Json::Value& jRow);

    Json::Value m_jRecord;
};

#endif  // VORN_RECORD_PROTOTYPE_H
