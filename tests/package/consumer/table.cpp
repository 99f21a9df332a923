// SPDX-License-Identifier: MIT
//
// The smallest host of vorn::Table: it defines no flags.

#include <sqlite3.h>
#include <vorn/table.h>

int main()
{
    sqlite3* pDb = nullptr;
    if (sqlite3_open(":memory:", &pDb) != SQLITE_OK)
        return 1;
    Json::Value jDefinition;
    Json::Value jRec;
    jDefinition["host"]["member"]["greeting"]["cpptype"] = "string";
    jRec["greeting"] = "hello";
    bool blStored = false;
    {
        vorn::Table table(pDb, "host", jDefinition);
        blStored = table.recCreate(jRec, jRec) == 0 && table.recCount(jRec) == 1;
    }
    return blStored && sqlite3_close(pDb) == SQLITE_OK ? 0 : 1;
}
