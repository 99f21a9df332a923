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

// Prints what each statement takes that is kept, SQLite's part of it included.
void probeStatements()
{
    sqlite3* pDb = nullptr;
    require(sqlite3_open(":memory:", &pDb) == SQLITE_OK, "sqlite3_open");
    {
        const std::unique_ptr<vorn::Table> table = open(pDb, "kept");
        use(*table);
        const size_t before = heapBytes();
        size_t statements = 0;
        for (const char* szMember : {"address", "created", "enabled", "id", "limits", "owner"})
            for (const char* szDirection : {"asc", "desc"})
            {
                Json::Value jRequest;
                jRequest["sort_by"] = szMember;
                jRequest["sort_direction"] = szDirection;
                Json::Value jAll;
                require(table->recList(jRequest, jAll) == 0, "recList");
                ++statements;
            }
        std::printf("statement_bytes %zu\n", (heapBytes() - before) / statements);
    }
    require(sqlite3_close(pDb) == SQLITE_OK, "sqlite3_close");
}

}  // namespace

int main()
{
    probe<vorn::Table>("libvorntable.so", open, use);
    probeStatements();
    return 0;
}
