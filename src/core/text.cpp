// SPDX-License-Identifier: MIT

#include "text.h"

#include <algorithm>

void appendAll(std::string& strOut, std::initializer_list<std::string_view> pieces)
{
    constexpr std::size_t kRoom = 250;  // most conditions and statements grow once

    std::size_t length = strOut.size();
    for (std::string_view piece : pieces)
        length += piece.size();
    if (length > strOut.capacity())
        strOut.reserve(std::max(length + kRoom, 2 * strOut.capacity()));
    for (std::string_view piece : pieces)
        strOut.append(piece.data(), piece.size());
}
