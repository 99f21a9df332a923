// SPDX-License-Identifier: MIT

#ifndef VORN_CLI_UTF8_H
#define VORN_CLI_UTF8_H

#include <string>
#include <string_view>

namespace cli
{

// Whether the bytes are UTF-8: no half characters, no surrogates, nothing longer than it need be.
bool isUtf8(std::string_view bytes);

// The bytes with U+FFFD in place of those that are no UTF-8.
std::string asUtf8(std::string_view bytes);

// The text for a terminal or a line of an error: asUtf8(), and U+FFFD in place of control characters too, which could
// make a terminal do anything. Line feeds stay where blLines.
std::string harmless(std::string_view bytes, bool blLines);

// JSON with control characters written as \u00XX that JSON itself would let stand: 0x7F to 0x9F.
std::string escaped(std::string strJson);

}  // namespace cli

#endif  // VORN_CLI_UTF8_H
