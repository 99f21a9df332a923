// SPDX-License-Identifier: MIT
//
// A host of both classes: what one stores, the other finds.

#include <VornJsonDbApi.h>
#include <vorn/table.h>

int main()
{
    sqlite3* pDb = nullptr;
    if (sqlite3_open(":memory:", &pDb) != SQLITE_OK)
        return 1;
    std::string strName = "host";
    std::string strCreate = "CREATE TABLE IF NOT EXISTS host (greeting TEXT)";
    Json::Value jDefinition;
    Json::Value jRec;
    jDefinition[strName]["member"]["greeting"]["cpptype"] = "string";
    jRec["greeting"] = "hello";
    bool blFound = false;
    {
        VornJsonDbApi api(pDb, strName, jDefinition, strCreate);
        vorn::Table table(pDb, strName, jDefinition);
        Json::Value jStored;
        blFound = api.recCreate(jRec, jStored) == 0 && table.recGetOne(jRec, jStored) == 1 && jStored == jRec;
    }
    return blFound && sqlite3_close(pDb) == SQLITE_OK ? 0 : 1;
}
