// SPDX-License-Identifier: MIT
//
// The smallest host of vorn::Table: it defines no flags.

#include <vorn/status.h>

#include <cstring>

int main()
{
    return std::strcmp(vorn::codeName(vorn::Status().code), "Ok");
}
