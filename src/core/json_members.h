// SPDX-License-Identifier: MIT
//
// Walking along the members of a JSON object, and setting values.

#ifndef VORN_JSON_MEMBERS_H
#define VORN_JSON_MEMBERS_H

#include <json/json.h>

#include <string_view>

inline std::string_view nameOf(const Json::ValueIteratorBase& it)
{
    const char* szEnd = nullptr;
    const char* szName = it.memberName(&szEnd);
    return {szName, static_cast<std::size_t>(szEnd - szName)};
}

// Sets the value alone; assigning it would also move the comments that JsonCpp keeps beside every value.
inline void setPayload(Json::Value& jValue, Json::Value jNew)
{
    jValue.swapPayload(jNew);
}

// Finds the members of a record for names that come in ascending order, in one walk along the record.
class RecordCursor
{
public:
    // A value that is neither an object nor null throws at the first find(), as its isMember() would.
    explicit RecordCursor(const Json::Value& jRec) : m_jRec(jRec), m_it(jRec.begin()), m_itEnd(jRec.end()) {}

    // The member of that name, or null. Names must ascend from call to call.
    const Json::Value* find(std::string_view name)
    {
        if (!m_jRec.isObject())
            return m_jRec.find(name.data(), name.data() + name.size());
        while (m_it != m_itEnd)
        {
            const int order = nameOf(m_it).compare(name);
            if (order > 0)
                return nullptr;
            const Json::Value& jValue = *m_it;
            ++m_it;
            if (order == 0)
                return &jValue;
        }
        return nullptr;
    }

private:
    const Json::Value& m_jRec;
    Json::ValueConstIterator m_it;
    Json::ValueConstIterator m_itEnd;
};

#endif  // VORN_JSON_MEMBERS_H
