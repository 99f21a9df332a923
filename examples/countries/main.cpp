// SPDX-License-Identifier: MIT
//
// Keeps the countries of ISO 3166-1 in an SQLite file and takes them through a record's whole life: create, read back,
// list, fetch, update, delete. Every result is checked, every count is computed.
//
//   countries DATABASE ISO_3166_1_JSON [--log]

#include <VornJsonDbApi.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

// Every program that uses the library defines these two flags; the library reads them at every line that it logs.
bool blLogToStdout = false;  // true: log lines go to standard output, false: to syslog
bool blDebugOutput = false;  // true: debug lines as well, such as one for each retry on a locked database

namespace
{

// A member without a default must be in every record that is created; for the last one by name the library insists.
const char* const kDefinition = R"({ "country": { "member": {
    "alpha_2":       { "cpptype": "string" },
    "common_name":   { "cpptype": "string", "cppDefaultValue": "" },
    "flag":          { "cpptype": "string" },
    "island":        { "cpptype": "bool", "cppDefaultValue": false },
    "name":          { "cpptype": "string" },
    "numeric":       { "cpptype": "int" },
    "official_name": { "cpptype": "string", "cppDefaultValue": "" },
    "source":        { "cpptype": "Json::objectValue" } } } })";

const char* const kCreate =
    "CREATE TABLE IF NOT EXISTS country (alpha_2 TEXT PRIMARY KEY, common_name TEXT, flag TEXT, island INTEGER,"
    " name TEXT, numeric INTEGER, official_name TEXT, source TEXT)";

void require(bool ok, const std::string& what)
{
    if (!ok)
        throw std::runtime_error(what + " failed; the log says why");
}

Json::Value json(const char* text)
{
    Json::Value value;
    std::istringstream(text) >> value;
    return value;
}

unsigned count(VornJsonDbApi& countries, const char* conditions)
{
    Json::Value filter = json(conditions);
    Json::Value found;
    require(countries.recList(filter, found) == 0, "counting");
    return found.size();
}

void createAll(VornJsonDbApi& countries, const Json::Value& entries)
{
    require(countries.runSqlEx("BEGIN") >= 0, "BEGIN");  // one transaction waits for the disk once, not for each record
    for (const Json::Value& entry : entries)
    {
        Json::Value record = entry;  // its alpha_3 is not declared, so it is not written
        record["numeric"] = std::stoi(entry["numeric"].asString());
        record["source"] = entry;
        Json::Value stored;
        require(countries.recCreate(record, stored) == 0, "creating " + entry["name"].asString());
        require(stored["name"] == entry["name"] && stored["source"] == entry, "reading back what was stored");
    }
    require(countries.runSqlEx("COMMIT") >= 0, "COMMIT");
}

// printf pads by bytes; a terminal shows characters, and every UTF-8 byte that does not continue one starts one.
std::string padded(const std::string& text, long columns)
{
    const long shown = std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; });
    return text + std::string(static_cast<std::size_t>(std::max(0L, columns - shown)), ' ');
}

void printPage(const Json::Value& page)
{
    std::printf("\n  code  number  %s  %s  flag\n", padded("name", 24).c_str(), padded("official name", 28).c_str());
    for (const Json::Value& country : page)
    {
        const std::string name = padded(country["name"].asString(), 24);
        const std::string official = padded(country["official_name"].asString(), 28);
        std::printf("  %s    %03d     %s  %s  %s\n", country["alpha_2"].asCString(), country["numeric"].asInt(),
                    name.c_str(), official.c_str(), country["flag"].asCString());
    }
    std::printf("\n");
}

void run(const std::string& database, const std::string& input)
{
    Json::Value iso;
    std::ifstream(input) >> iso;
    const Json::Value& entries = iso["3166-1"];

    sqlite3* opened = nullptr;
    const int status = sqlite3_open(database.c_str(), &opened);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(opened, &sqlite3_close);
    require(status == SQLITE_OK, "opening " + database);

    std::string name = "country";
    std::string create = kCreate;
    Json::Value definition = json(kDefinition);
    VornJsonDbApi countries(connection.get(), name, definition, create);
    require(countries.tableCreate() == 0, "creating the table");  // as the constructor cannot report it
    require(countries.recDeleteAll() >= 0, "emptying the table");

    createAll(countries, entries);
    std::printf("created    %u of %u countries; %u took the default for official_name, %u for common_name\n",
                count(countries, "{}"), entries.size(), count(countries, R"({"official_name": ""})"),
                count(countries, R"({"common_name": ""})"));

    countries.setErrMsg("");  // the library never clears its message
    Json::Value stored;
    Json::Value again = json(R"({"alpha_2": "IS", "name": "Iceland", "numeric": 352, "source": {}})");
    require(countries.recCreate(again, stored) < 0, "refusing a second IS");
    std::printf("duplicate  a second IS: %s, still %u\n", countries.getErrMsg().c_str(), count(countries, "{}"));

    Json::Value request = json(R"({"limit": 8, "offset": 48})");
    Json::Value page;
    require(countries.recList(request, page) == 0, "listing a page");
    std::printf("listed     %u, after the first %d:\n", page.size(), request["offset"].asInt());
    printPage(page);

    Json::Value filter = json(R"({"alpha_2": "IS"})");
    Json::Value found;
    require(countries.recGetOne(filter, found) == 1, "fetching IS");
    std::printf("fetched    IS: %s, also %s\n", found["name"].asCString(), found["source"]["alpha_3"].asCString());

    // A raw condition is SQL text: in parentheses, written here in the program, never taken from outside.
    filter = Json::Value();
    filter["vornSqlWhereFilter"] = "(name LIKE '%Island%')";
    Json::Value change = json(R"({"island": true})");
    require(countries.recUpdateByFilter(filter, change) == 0, "updating");
    const unsigned islands = count(countries, R"({"island": true})");
    std::printf("updated    island is true for the %u that are named so\n", islands);

    std::string code = "AQ";
    int deleted = countries.recDeleteByName(code, "alpha_2");
    std::printf("deleted    %s by name: %d, %u left\n", code.c_str(), deleted, count(countries, "{}"));
    filter = json(R"({"island": true})");
    deleted = countries.recDelete(filter);
    require(deleted == static_cast<int>(islands), "deleting the islands");
    std::printf("deleted    islands by condition: %d, %u left\n", deleted, count(countries, "{}"));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3)
    {
        std::fprintf(stderr, "usage: %s DATABASE ISO_3166_1_JSON [--log]\n", argv[0]);
        return 2;
    }
    blLogToStdout = argc > 3 && std::string(argv[3]) == "--log";
    try
    {
        run(argv[1], argv[2]);
        return 0;
    }
    catch (const std::exception& error)  // JsonCpp's own, and those of require()
    {
        std::fprintf(stderr, "countries: %s\n", error.what());
        return 1;
    }
}
