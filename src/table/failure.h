// SPDX-License-Identifier: MIT
//
// How the inside of the table says that something failed: fill the status, return false.

#ifndef VORN_FAILURE_H
#define VORN_FAILURE_H

#include <vorn/status.h>

#include <string_view>

namespace vorn
{

// In the text "%" stands for the member, in quotes, and "^" for the detail.
[[gnu::cold]] bool fail(Status& status, Code code, std::string_view member, const char* szText);
[[gnu::cold]] bool fail(Status& status, Code code, std::string_view member, const char* szText,
                        std::string_view detail);

}  // namespace vorn

#endif  // VORN_FAILURE_H
