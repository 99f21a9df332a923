// SPDX-License-Identifier: MIT

#include "type_guess.h"

#include <functional>
#include <initializer_list>
#include <numeric>

#include "record_sink.h"

namespace cli
{

void TypeGuess::look(const Json::Value& jValue)
{
    switch (jValue.type())
    {
        case Json::nullValue:
            return;
        case Json::booleanValue:
            ++m_counts[kBool];
            break;
        case Json::stringValue:
            ++m_counts[kText];
            break;
        case Json::objectValue:
            ++m_counts[kObject];
            break;
        case Json::arrayValue:
            ++m_counts[kArray];
            break;
        default:
            ++m_counts[jValue.isInt() ? kInt32 : jValue.isInt64() ? kInt64 : jValue.isUInt64() ? kUnsigned64 : kReal];
            break;
    }
    if (m_blDistinct && m_values.size() < kRemembered)
        m_blDistinct = m_values.insert(std::hash<std::string>()(compact(jValue))).second;
}

unsigned long long TypeGuess::total() const
{
    return std::accumulate(m_counts.begin(), m_counts.end(), 0ULL);
}

bool TypeGuess::only(std::initializer_list<Kind> kinds) const
{
    unsigned long long counted = 0;
    for (const Kind kind : kinds)
        counted += m_counts[kind];
    return counted == total();
}

std::string TypeGuess::typeName(bool blTexts) const
{
    if (total() == 0 || only({kText}))
        return "string";
    if (only({kBool}))
        return "bool";
    if (only({kInt32}))
        return "int";
    if (only({kInt32, kInt64}))
        return "long long";
    if (only({kInt32, kInt64, kUnsigned64, kReal}))
        return "double";
    if (blTexts)
        return "string";
    if (only({kObject}))
        return "Json::objectValue";
    if (only({kArray}))
        return "Json::arrayValue";
    return "Json::Value";
}

std::string TypeGuess::sureness(unsigned long long records) const
{
    const unsigned long long seen = total();
    if (seen == 0)
        return "a guess: none of " + std::to_string(records) + " records has a value";
    constexpr unsigned long long kFew = 20;
    const std::string strSeen = std::to_string(seen) + " of " + std::to_string(records) + " records have a value";
    if (seen < kFew)
        return "hardly sure: only " + strSeen;
    int kinds = 0;
    for (const unsigned long long count : m_counts)
        kinds += count > 0 ? 1 : 0;
    return (kinds > 1 ? "a wider type for values of several kinds: " : "sure: ") + strSeen;
}

bool TypeGuess::mayBeKey(unsigned long long records) const
{
    return records > 0 && m_blDistinct && total() == records && only({kInt32, kInt64, kText});
}

}  // namespace cli
