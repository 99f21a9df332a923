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

}  // namespace cli

#endif  // VORN_CLI_UTF8_H
