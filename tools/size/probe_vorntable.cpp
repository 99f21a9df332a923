// SPDX-License-Identifier: MIT

#include <vorn/table.h>

#include "probe.h"

namespace
{

std::unique_ptr<vorn::Table> open(sqlite3* pDb, const std::string& strTable)
{
    return std::make_unique<vorn::Table>(pDb, strTable, definitionOf(strTable));
}

void use(vorn::Table& table)
{
    Json::Value jRec = sampleRecord();
    require(table.recCreate(jRec, jRec) == 0, "recCreate");
    Json::Value jAll;
    require(table.recList(Json::Value(), jAll) == 0 && jAll.size() == 1, "recList");
}

}  // namespace

int main()
{
    probe<vorn::Table>("libvorntable.so", open, use);
    return 0;
}
