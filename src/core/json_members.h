// SPDX-License-Identifier: MIT
//
// Members of a JSON object by their names, and setting values.

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

// The member of that name, or null. A value that is neither an object nor null throws.
inline const Json::Value* memberNamed(const Json::Value& jRec, std::string_view name)
{
    return jRec.find(name.data(), name.data() + name.size());
}

#endif  // VORN_JSON_MEMBERS_H
