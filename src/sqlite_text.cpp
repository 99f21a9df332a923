// SPDX-License-Identifier: MIT

#include "sqlite_text.h"

#include <cstring>

char* escaped(const char* szText)
{
    const char* const szFirstQuote = std::strchr(szText, '\'');
    std::size_t length = std::strlen(szText);
    for (const char* sz = szFirstQuote; sz != nullptr; sz = std::strchr(sz + 1, '\''))
        ++length;
    auto* const szEscaped = static_cast<char*>(sqlite3_malloc64(length + 1));
    if (szEscaped == nullptr)
        return nullptr;

    char* szOut = szEscaped;
    const char* szPiece = szText;
    for (const char* sz = szFirstQuote; sz != nullptr; sz = std::strchr(sz + 1, '\''))
    {
        const auto pieceLength = static_cast<std::size_t>(sz + 1 - szPiece);
        std::memcpy(szOut, szPiece, pieceLength);
        szOut += pieceLength;
        szPiece = sz;  // which writes the quote a second time
    }
    std::memcpy(szOut, szPiece, std::strlen(szPiece) + 1);
    return szEscaped;
}
