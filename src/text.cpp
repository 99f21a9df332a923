// SPDX-License-Identifier: MIT

#include "text.h"

#include <algorithm>

void appendAll(std::string& strOut, std::initializer_list<std::string_view> pieces)
{
    std::size_t length = strOut.size();
    for (std::string_view piece : pieces)
        length += piece.size();
    if (length <= strOut.capacity())
    {
        for (std::string_view piece : pieces)
            strOut += piece;
        return;
    }

    std::string strLonger;  // a piece may be part of the text, so that stays until all are taken over
    strLonger.reserve(std::max(length, 2 * strOut.capacity()));
    strLonger += strOut;
    for (std::string_view piece : pieces)
        strLonger += piece;
    strOut.swap(strLonger);
}
