// SPDX-License-Identifier: MIT
//
// A host of vorn::Table alone, which is told why it fails.

#include <vorn/table.h>
#include <vorn/transaction.h>
#ifdef SQLITE_VERSION
#error "the headers of vorn::Table bring SQLite's along"
#endif

#include <cstring>

int main()
{
    const Json::Value jNone;
    vorn::Table table(nullptr, "host", jNone);
    const vorn::Transaction transaction(nullptr);
    const bool blTold = table.recCount(jNone) < 0 && !transaction.isOpen() &&
                        table.status().code == vorn::Code::BadDefinition && !table.getErrMsg().empty() &&
                        std::strcmp(vorn::codeName(transaction.status().code), "Misuse") == 0;
    return blTold ? 0 : 1;
}
