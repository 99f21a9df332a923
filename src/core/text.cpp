// SPDX-License-Identifier: MIT

#include "text.h"

#include <algorithm>

void appendAll(std::string& strOut, std::initializer_list<std::string_view> pieces)
{
    // A condition or a short statement seldom needs more, so it grows once: 1 % of an update's instructions (./dev
    // figures).
    constexpr std::size_t kRoom = 120;

    std::size_t length = strOut.size();
    for (std::string_view piece : pieces)
        length += piece.size();
    if (length <= strOut.capacity())
    {
        for (std::string_view piece : pieces)
            strOut.append(piece.data(), piece.size());
        return;
    }

    std::string strLonger;  // a piece may be part of the text, so that stays until all are taken over
    strLonger.reserve(std::max(length + kRoom, 2 * strOut.capacity()));
    strLonger += strOut;
    for (std::string_view piece : pieces)
        strLonger.append(piece.data(), piece.size());
    strOut.swap(strLonger);
}
