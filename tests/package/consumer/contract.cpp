// SPDX-License-Identifier: MIT
//
// The smallest host: built outside the tree against an installed library.

#include <VornJsonDbApi.h>

int main()
{
    sqlite3* pDb = nullptr;
    if (sqlite3_open(":memory:", &pDb) != SQLITE_OK)
        return 1;
    std::string name = "host", create = "CREATE TABLE IF NOT EXISTS host (greeting TEXT)";
    Json::Value definition, record;
    definition[name]["member"]["greeting"]["cpptype"] = "string";
    record["greeting"] = "hello";
    const bool stored = VornJsonDbApi(pDb, name, definition, create).recCreate(record, record) == 0;
    return stored && sqlite3_close(pDb) == SQLITE_OK ? 0 : 1;
}
