// SPDX-License-Identifier: MIT

#include "sqlite_text.h"

#include <cstring>

char* escaped(const char* szText)
{
    const std::string_view text(szText);
    if (text.size() > kFitsFormatter)
        return sqlite3_mprintf("%q", szText);
    std::size_t length = 0;
    escape(text, [&](std::string_view piece) { length += piece.size(); });
    auto* const szEscaped = static_cast<char*>(sqlite3_malloc64(length + 1));
    if (szEscaped == nullptr)
        return nullptr;

    char* szEnd = szEscaped;
    escape(text,
           [&](std::string_view piece)
           {
               std::memcpy(szEnd, piece.data(), piece.size());
               szEnd += piece.size();
           });
    *szEnd = '\0';
    return szEscaped;
}
