// SPDX-License-Identifier: MIT
//
// How the inside of the table says that something failed: fill the status, return false.

#ifndef VORN_FAILURE_H
#define VORN_FAILURE_H

#include <vorn/status.h>

#include <string>
#include <string_view>

namespace vorn
{

inline bool fail(Status& status, Code code, std::string_view member, std::string text)
{
    status = Status();
    status.code = code;
    status.member = member;
    status.text = std::move(text);
    return false;
}

}  // namespace vorn

#endif  // VORN_FAILURE_H
