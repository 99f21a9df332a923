// SPDX-License-Identifier: MIT
//
// What the library takes in a running process: its own mappings and the heap of its objects. Run by ./dev size, which
// reads the lines "name value".

#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"

bool blLogToStdout = false;
bool blDebugOutput = false;

namespace
{

void require(bool blTrue, const char* szWhat)
{
    if (blTrue)
        return;
    std::fprintf(stderr, "%s failed\n", szWhat);
    std::exit(1);
}

// The sum of one field, in KiB, over the mappings of the library's file.
long mappedKilobytes(const std::string& strField)
{
    std::ifstream smaps("/proc/self/smaps");
    long sum = 0;
    int iFound = 0;
    bool blOurs = false;
    std::string strLine;
    while (std::getline(smaps, strLine))
    {
        std::istringstream words(strLine);
        std::string strFirst;
        long value = 0;
        words >> strFirst;
        if (strFirst.back() != ':')  // the head of a mapping: a range of addresses first, its file last
            blOurs = strLine.find("libvornjsondb.so") != std::string::npos;
        else if (blOurs && strFirst == strField + ":" && words >> value)
        {
            sum += value;
            ++iFound;
        }
    }
    require(iFound > 0, "finding the library in /proc/self/smaps");
    return sum;
}

size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// A table of six columns, as a service of middle size has it.
Json::Value definitionOf(const std::string& strTable)
{
    Json::Value jDefinition;
    Json::Value& jMember = jDefinition[strTable]["member"];
    const char* const members[][2] = {{"address", "string"}, {"created", "long long"},        {"enabled", "bool"},
                                      {"id", "long long"},   {"limits", "Json::objectValue"}, {"owner", "int"}};
    for (const auto& member : members)
        jMember[member[0]]["cpptype"] = member[1];
    return jDefinition;
}

std::unique_ptr<VornJsonDbApi> open(sqlite3* pDb, std::string strTable)
{
    Json::Value jDefinition = definitionOf(strTable);
    std::string strCreate =
        "CREATE TABLE IF NOT EXISTS " + strTable + " (address TEXT, created, enabled, id, limits, owner)";
    return std::make_unique<VornJsonDbApi>(pDb, strTable, jDefinition, strCreate);
}

// A record goes in and comes back, so that the type map and everything else built at first use is there.
void use(VornJsonDbApi& api)
{
    Json::Value jRec;
    jRec["address"] = "203.0.113.7";
    jRec["limits"]["rate"] = 1.5;
    jRec["owner"] = 1000;
    require(api.recCreate(jRec, jRec) == 0, "recCreate");
    Json::Value jNone;
    Json::Value jAll;
    require(api.recList(jNone, jAll) == 0 && jAll.size() == 1, "recList");
}

}  // namespace

int main()
{
    constexpr size_t kCount = 200;
    sqlite3* pDb = nullptr;
    require(sqlite3_open(":memory:", &pDb) == SQLITE_OK, "sqlite3_open");
    {
        const std::unique_ptr<VornJsonDbApi> first = open(pDb, "first");
        use(*first);
        std::printf("resident_kib %ld\n", mappedKilobytes("Rss"));
        std::printf("copied_kib %ld\n", mappedKilobytes("Anonymous"));

        std::vector<std::unique_ptr<VornJsonDbApi>> objects;
        objects.reserve(kCount);
        const size_t before = heapBytes();
        for (size_t i = 0; i < kCount; ++i)
            objects.push_back(open(pDb, "first"));
        std::printf("object_bytes %zu\n", (heapBytes() - before) / kCount);
        objects.clear();

        // The type maps stay: what is left when the objects and SQLite's tables are gone.
        const size_t beforeTables = heapBytes();
        for (size_t i = 0; i < kCount; ++i)
        {
            const std::string strTable = "table" + std::to_string(i);
            use(*open(pDb, strTable));
            require(sqlite3_exec(pDb, ("DROP TABLE " + strTable).c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
                    "drop");
        }
        sqlite3_db_release_memory(pDb);
        std::printf("type_map_bytes %zu\n", (heapBytes() - beforeTables) / kCount);
    }
    require(sqlite3_close(pDb) == SQLITE_OK, "sqlite3_close");
    return 0;
}
