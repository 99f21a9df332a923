// SPDX-License-Identifier: MIT
//
// Preloaded into a program it registers Ceph's VFS with SQLite before the program begins, so that a program of which
// nothing was changed can open "file:///POOL:NAMESPACE/NAME.db?vfs=ceph". A host that knows of Ceph does the same
// itself.

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace
{

__attribute__((constructor)) void registerVfs()
{
    sqlite3* pDb = nullptr;
    char* szError = nullptr;
    const bool blDone = sqlite3_open(":memory:", &pDb) == SQLITE_OK &&
                        sqlite3_db_config(pDb, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr) == SQLITE_OK &&
                        sqlite3_load_extension(pDb, "libcephsqlite.so", nullptr, &szError) == SQLITE_OK;
    if (!blDone)
    {
        std::fprintf(stderr, "register_vfs: %s\n", szError != nullptr ? szError : sqlite3_errmsg(pDb));
        std::abort();
    }
    sqlite3_close(pDb);
}

}  // namespace
