// SPDX-License-Identifier: MIT

#include "suggestion.h"

#include <algorithm>
#include <array>

#include "join.h"

namespace vorn
{

namespace
{

constexpr std::size_t kLongest = 64;  // who mistypes a longer name sees it without help

char folded(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// How many characters must be added, dropped, replaced or swapped with their neighbour to make one name the other.
std::size_t distanceOf(std::string_view left, std::string_view right)
{
    std::array<std::array<std::size_t, kLongest + 1>, 3> rows{};  // the last three rows of the matrix
    for (std::size_t j = 0; j <= right.size(); ++j)
        rows[0][j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i)
    {
        auto& row = rows[i % 3];
        const auto& above = rows[(i - 1) % 3];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j)
        {
            const bool blSame = folded(left[i - 1]) == folded(right[j - 1]);
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (blSame ? 0 : 1)});
            if (i > 1 && j > 1 && folded(left[i - 1]) == folded(right[j - 2]) &&
                folded(left[i - 2]) == folded(right[j - 1]))
                row[j] = std::min(row[j], rows[(i - 2) % 3][j - 2] + 1);
        }
    }
    return rows[left.size() % 3][right.size()];
}

}  // namespace

Suggestion::Suggestion(std::string_view given) : m_given(given), m_distance(given.size() / 3 + 2)
{
    if (given.size() > kLongest)
        m_distance = 0;
}

void Suggestion::consider(std::string_view known)
{
    if (m_distance == 0 || known.size() > kLongest)
        return;
    const std::size_t distance = distanceOf(m_given, known);
    if (distance >= m_distance || distance >= std::max(m_given.size(), known.size()))
        return;
    m_distance = distance;
    m_nearest = known;
}

std::string didYouMean(std::string_view nearest)
{
    return nearest.empty() ? "." : join({"; did you mean \"", nearest, "\"?"});
}

}  // namespace vorn
