// SPDX-License-Identifier: MIT
//
// Appending several pieces, of which none is part of the text, at once: all of them, or none when memory runs out.

#ifndef VORN_TEXT_H
#define VORN_TEXT_H

#include <initializer_list>
#include <string>
#include <string_view>

void appendAll(std::string& strOut, std::initializer_list<std::string_view> pieces);

#endif  // VORN_TEXT_H
