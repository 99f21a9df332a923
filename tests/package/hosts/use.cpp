// SPDX-License-Identifier: MIT
//
// What every host does: stores a record, and has one line logged with its flags as it defined them and one with
// blLogToStdout set. Only the second may reach standard output.

#include <VornJsonDbApi.h>

extern bool blLogToStdout;

extern "C" __attribute__((visibility("default"))) int useLibrary();

int useLibrary()
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
    const int iStored = VornJsonDbApi(pDb, strName, jDefinition, strCreate).recCreate(jRec, jRec);
    if (iStored != 0 || sqlite3_close(pDb) != SQLITE_OK)
        return 1;

    std::string strTime;
    if (VORN_JSON_DB::convert2ReadableTime(0, strTime, 0) != -1)
        return 1;
    blLogToStdout = true;
    return VORN_JSON_DB::convert2ReadableTime(0, strTime, 0) == -1 ? 0 : 1;
}
