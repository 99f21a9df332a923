// SPDX-License-Identifier: MIT

#ifndef VORN_MEMBER_SET_H
#define VORN_MEMBER_SET_H

#include <cstddef>
#include <string>

namespace vorn
{

// One bit for each member of the definition.
class MemberSet
{
public:
    explicit MemberSet(std::size_t size) : m_strBits((size + kBits - 1) / kBits, '\0') {}
    void add(std::size_t place)
    {
        char& bits = m_strBits[place / kBits];
        bits = static_cast<char>(static_cast<unsigned char>(bits) | 1U << place % kBits);
    }
    bool has(std::size_t place) const
    {
        return (static_cast<unsigned char>(m_strBits[place / kBits]) >> place % kBits & 1U) != 0;
    }
    const std::string& bits() const { return m_strBits; }

private:
    static constexpr std::size_t kBits = 8;
    std::string m_strBits;  // without an allocation of its own up to 120 members
};

}  // namespace vorn

#endif  // VORN_MEMBER_SET_H
