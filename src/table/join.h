// SPDX-License-Identifier: MIT
//
// Pieces as one text. A chain of + makes, and may have to destroy, a text for each of them.

#ifndef VORN_JOIN_H
#define VORN_JOIN_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace vorn
{

std::string join(std::initializer_list<std::string_view> pieces);

}  // namespace vorn

#endif  // VORN_JOIN_H
