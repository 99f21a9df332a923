// SPDX-License-Identifier: MIT

#include "text.h"

void appendAll(std::string& strOut, std::initializer_list<std::string_view> pieces)
{
    std::size_t length = strOut.size();
    for (std::string_view piece : pieces)
        length += piece.size();
    strOut.reserve(length);
    for (std::string_view piece : pieces)
        strOut.append(piece);
}
