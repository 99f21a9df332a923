// SPDX-License-Identifier: MIT
//
// What type a member has, judged by its values.

#ifndef VORN_CLI_TYPE_GUESS_H
#define VORN_CLI_TYPE_GUESS_H

#include <json/json.h>

#include <array>
#include <set>
#include <string>

namespace cli
{

class TypeGuess
{
public:
    // Null values say nothing.
    void look(const Json::Value& jValue);

    // The name of a type that all values fit; "string" where there was none. blTexts: values of several kinds are texts
    // then, as in CSV, and not "Json::Value".
    std::string typeName(bool blTexts) const;

    // How sure that is, as one sentence.
    std::string sureness(unsigned long long records) const;

    static constexpr std::size_t kRemembered = 10000;  // values that are compared

    // Whether the values, as far as they were remembered, differ, and each of the records has one.
    bool mayBeKey(unsigned long long records) const;

private:
    enum Kind
    {
        kBool,
        kInt32,
        kInt64,
        kUnsigned64,  // beyond the signed ones
        kReal,
        kText,
        kObject,
        kArray,
        kKinds
    };

    unsigned long long total() const;
    bool only(std::initializer_list<Kind> kinds) const;

    std::array<unsigned long long, kKinds> m_counts{};
    std::set<std::size_t> m_values;  // their hashes
    bool m_blDistinct = true;
};

}  // namespace cli

#endif  // VORN_CLI_TYPE_GUESS_H
