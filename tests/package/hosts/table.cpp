// SPDX-License-Identifier: MIT
//
// A host of vorn::Table alone.

#include <vorn/table.h>
#include <vorn/transaction.h>
#ifdef SQLITE_VERSION
#error "the headers of vorn::Table bring SQLite's along"
#endif

#include <cstring>

int main()
{
    return std::strcmp(vorn::codeName(vorn::Code::Ok), "Ok");
}
