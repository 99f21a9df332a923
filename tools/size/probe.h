// SPDX-License-Identifier: MIT
//
// What a library takes in a running process: its own mappings and the heap of its objects. The probes are run by
// ./dev size, which reads the lines "name value".

#ifndef VORN_PROBE_H
#define VORN_PROBE_H

#include <json/json.h>
#include <malloc.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

inline void require(bool blTrue, const char* szWhat)
{
    if (blTrue)
        return;
    std::fprintf(stderr, "%s failed\n", szWhat);
    std::exit(1);
}

// The sum of one field, in KiB, over the mappings of the library's file.
inline long mappedKilobytes(const std::string& strLibrary, const std::string& strField)
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
            blOurs = strLine.find(strLibrary) != std::string::npos;
        else if (blOurs && strFirst == strField + ":" && words >> value)
        {
            sum += value;
            ++iFound;
        }
    }
    require(iFound > 0, "finding the library in /proc/self/smaps");
    return sum;
}

inline size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// A table of six columns, as a service of middle size has it.
inline Json::Value definitionOf(const std::string& strTable)
{
    Json::Value jDefinition;
    Json::Value& jMember = jDefinition[strTable]["member"];
    const char* const members[][2] = {{"address", "string"}, {"created", "long long"},        {"enabled", "bool"},
                                      {"id", "long long"},   {"limits", "Json::objectValue"}, {"owner", "int"}};
    for (const auto& member : members)
        jMember[member[0]]["cpptype"] = member[1];
    return jDefinition;
}

inline Json::Value sampleRecord()
{
    Json::Value jRec;
    jRec["address"] = "203.0.113.7";
    jRec["limits"]["rate"] = 1.5;
    jRec["owner"] = 1000;
    return jRec;
}

// What every probe does with its library's class: open(pDb, table) makes an object of a table with the columns of
// definitionOf(), use(object) stores a record and reads it back.
template <class Object>
void probe(const std::string& strLibrary, std::unique_ptr<Object> (*open)(sqlite3*, const std::string&),
           void (*use)(Object&))
{
    constexpr size_t kCount = 200;
    sqlite3* pDb = nullptr;
    require(sqlite3_open(":memory:", &pDb) == SQLITE_OK, "sqlite3_open");
    {
        const std::unique_ptr<Object> first = open(pDb, "first");
        use(*first);
        std::printf("resident_kib %ld\n", mappedKilobytes(strLibrary, "Rss"));
        std::printf("copied_kib %ld\n", mappedKilobytes(strLibrary, "Anonymous"));

        std::vector<std::unique_ptr<Object>> objects;
        objects.reserve(kCount);
        const size_t before = heapBytes();
        for (size_t i = 0; i < kCount; ++i)
            objects.push_back(open(pDb, "first"));
        std::printf("object_bytes %zu\n", (heapBytes() - before) / kCount);
        objects.clear();

        // What is left when the objects and SQLite's tables are gone.
        const size_t beforeTables = heapBytes();
        for (size_t i = 0; i < kCount; ++i)
        {
            const std::string strTable = "table" + std::to_string(i);
            use(*open(pDb, strTable));
            require(sqlite3_exec(pDb, ("DROP TABLE " + strTable).c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
                    "drop");
        }
        sqlite3_db_release_memory(pDb);
        const size_t afterTables = heapBytes();
        std::printf("left_bytes %zu\n", afterTables > beforeTables ? (afterTables - beforeTables) / kCount : 0);
    }
    require(sqlite3_close(pDb) == SQLITE_OK, "sqlite3_close");
}

#endif  // VORN_PROBE_H
