// SPDX-License-Identifier: MIT
//
// What the tests of '%' in value lists share: random formats and one-line value lists. VORN_TEST_SEED repeats a run.

#ifndef VORNJSONDB_TESTS_RANDOM_FORMAT_H
#define VORNJSONDB_TESTS_RANDOM_FORMAT_H

#include <stdexcept>
#include <string>
#include <vector>

#include "random.h"
#include "store.h"

namespace support
{

// One of the kinds of argument that a value list hands to the formatter.
struct Kind
{
    const char* type;
    std::vector<Json::Value> values;
    std::vector<const char*> fitting;  // conversions of this kind and size
};

class RandomFormat : public Random
{
public:
    // Flags, width and precision of a conversion.
    std::string modifiers()
    {
        std::string result;
        while (chance(30))
            result += "-+ #!0,"[below(7)];
        if (chance(30))
            result += std::to_string(1 + below(40));
        if (chance(30))
            result += "." + (chance(80) ? std::to_string(below(40)) : "");
        return result;
    }

    std::string literal()
    {
        static const char* const texts[] = {
            "INSERT INTO t (a,b) VALUES (", "'", "''", ",", " ", "é€", "\n", "off", "100", "\xff", "d", "s", "*", "."};
        return of(texts);
    }

    // A '%' that takes no value and goes on.
    std::string percentSign() { return "%" + modifiers() + (chance(20) ? "l%" : "%"); }

    // A '%' that ends the text.
    std::string unknown()
    {
        static const char* const types[] = {"y", "k", "T", "S", "'", "lly", "lll", "\xc3\xa9", "D", ")", "l5d"};
        return "%" + modifiers() + of(types);
    }

    std::string conversion(const std::string& type) { return "%" + modifiers() + type; }

    // A text with at most one conversion that takes a value, of the given kind.
    std::string definedFormat(const Kind& kind)
    {
        std::string result;
        bool taken = false;
        for (size_t pieces = below(8); pieces > 0; --pieces)
        {
            if (chance(20) && !taken)
            {
                result += conversion(of(kind.fitting));
                taken = true;
            }
            else
            {
                result += chance(40) ? percentSign() : chance(8) ? unknown() : literal();
            }
        }
        // An unfinished conversion, which the following text completes.
        return chance(10) ? result + "%" + modifiers() + (chance(20) ? "l" : "") : result;
    }
};

// A definition with the members a, b, c, ... of these types.
inline std::string memberList(std::initializer_list<const char*> types)
{
    Json::Value members;
    char name = 'a';
    for (const char* const type : types)
        members[std::string(1, name++)]["cpptype"] = type;
    return members.toStyledString();
}

// The value list behind the prefix. Throws when a value is refused.
inline std::string valueList(Store& store, const std::string& prefix, Json::Value record)
{
    std::string result = prefix;
    if (store->SqlExpandMemberSymbol(result, record) != 0)
        throw std::runtime_error("refused");
    return result;
}

// A record with the members a, b, c, ...
inline Json::Value recordOf(std::initializer_list<Json::Value> values)
{
    Json::Value record;
    char name = 'a';
    for (const Json::Value& value : values)
        record[std::string(1, name++)] = value;
    return record;
}

}  // namespace support

#endif  // VORNJSONDB_TESTS_RANDOM_FORMAT_H
