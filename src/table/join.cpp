// SPDX-License-Identifier: MIT

#include "join.h"

namespace vorn
{

std::string join(std::initializer_list<std::string_view> pieces)
{
    std::size_t length = 0;
    for (const std::string_view piece : pieces)
        length += piece.size();
    std::string strText;
    strText.reserve(length);
    for (const std::string_view piece : pieces)
        strText.append(piece.data(), piece.size());
    return strText;
}

}  // namespace vorn
