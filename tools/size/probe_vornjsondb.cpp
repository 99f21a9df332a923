// SPDX-License-Identifier: MIT

#include <VornJsonDbApi.h>

#include "probe.h"

bool blLogToStdout = false;
bool blDebugOutput = false;

namespace
{

std::unique_ptr<VornJsonDbApi> open(sqlite3* pDb, const std::string& strTable)
{
    std::string strName = strTable;
    Json::Value jDefinition = definitionOf(strTable);
    std::string strCreate =
        "CREATE TABLE IF NOT EXISTS " + strTable + " (address TEXT, created, enabled, id, limits, owner)";
    return std::make_unique<VornJsonDbApi>(pDb, strName, jDefinition, strCreate);
}

void use(VornJsonDbApi& api)
{
    Json::Value jRec = sampleRecord();
    require(api.recCreate(jRec, jRec) == 0, "recCreate");
    Json::Value jNone;
    Json::Value jAll;
    require(api.recList(jNone, jAll) == 0 && jAll.size() == 1, "recList");
}

}  // namespace

int main()
{
    probe<VornJsonDbApi>("libvornjsondb.so", open, use);
    return 0;
}
