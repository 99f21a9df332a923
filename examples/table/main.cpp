// SPDX-License-Identifier: MIT
//
// Keeps the countries of ISO 3166-1 in an SQLite file, as examples/countries does, and with them what that class cannot
// keep. Every result is checked, every count is computed.
//
//   countries_table DATABASE ISO_3166_1_JSON

#include <sqlite3.h>
#include <vorn/table.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

// The table is made from this where there is none. A member that a record does not give is absent when it comes back.
const char* const kDefinition = R"({ "country": { "member": {
    "alpha_2":       { "cpptype": "string", "key": true },
    "area":          { "cpptype": "double" },
    "common_name":   { "cpptype": "string" },
    "flag":          { "cpptype": "string" },
    "island":        { "cpptype": "bool", "cppDefaultValue": false },
    "name":          { "cpptype": "string", "required": true },
    "numeric":       { "cpptype": "unsigned int" },
    "official_name": { "cpptype": "string" },
    "people":        { "cpptype": "unsigned int" },
    "source":        { "cpptype": "Json::objectValue" } } } })";

Json::Value json(const char* szText)
{
    Json::Value jValue;
    std::istringstream(szText) >> jValue;
    return jValue;
}

// A result below 0 is a failure, and the status says in a sentence why.
long long must(const vorn::Table& countries, long long result)
{
    if (result < 0)
        throw std::runtime_error(countries.status().text);
    return result;
}

void require(bool blTrue, const char* szWhat)
{
    if (!blTrue)
        throw std::runtime_error(std::string(szWhat) + ": not as it should be");
}

long long count(vorn::Table& countries, const char* szFilter)
{
    return must(countries, countries.recCount(json(szFilter)));
}

Json::Value recordsOf(const Json::Value& jEntries)
{
    Json::Value jRecords(Json::arrayValue);
    for (const Json::Value& jEntry : jEntries)
    {
        Json::Value jRec = jEntry;
        jRec.removeMember("alpha_3");  // not declared, and nothing is dropped silently
        jRec["numeric"] = std::stoi(jEntry["numeric"].asString());
        jRec["source"] = jEntry;
        jRecords.append(std::move(jRec));
    }
    return jRecords;
}

void run(const std::string& strDatabase, const std::string& strInput)
{
    Json::Value jIso;
    std::ifstream(strInput) >> jIso;

    sqlite3* pOpened = nullptr;
    const int iStatus = sqlite3_open(strDatabase.c_str(), &pOpened);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(pOpened, &sqlite3_close);
    require(iStatus == SQLITE_OK, "opening the database");

    vorn::Table countries(connection.get(), "country", json(kDefinition));
    must(countries, countries.recDeleteAll());

    const long long created = must(countries, countries.recCreateAll(recordsOf(jIso["3166-1"])));  // all or none
    std::printf("created    %lld of %u countries; %lld have no official name, %lld no common one\n", created,
                jIso["3166-1"].size(), count(countries, R"({"official_name": null})"),
                count(countries, R"({"common_name": null})"));

    require(countries.recCreate(json(R"({"alpha_2": "IS", "name": "Iceland"})")) < 0, "a second IS");
    require(countries.status().code == vorn::Code::Duplicate, "the reason");
    std::printf("duplicate  a second IS: %s of %s", vorn::codeName(countries.status().code),
                countries.status().member.c_str());
    std::printf(", still %lld\n", count(countries, "{}"));

    Json::Value jPage;
    must(countries, countries.recList(json(R"({"sort_by": "name", "limit": 4, "offset": 48})"), jPage));
    std::printf("listed     %u by name, after the first 48:", jPage.size());
    for (const Json::Value& jCountry : jPage)
        std::printf(" %s %03u %s%s", jCountry["alpha_2"].asCString(), jCountry["numeric"].asUInt(),
                    jCountry["name"].asCString(), &jCountry == &jPage[jPage.size() - 1] ? "\n" : ",");

    Json::Value jFound;
    require(must(countries, countries.recGetOne(json(R"({"alpha_2": "IS"})"), jFound)) == 1, "fetching IS");
    std::printf("fetched    IS: %s, also %s\n", jFound["name"].asCString(), jFound["source"]["alpha_3"].asCString());

    // What the text of an SQL statement would not survive, an unsigned number and a real one.
    Json::Value jOdd;
    jOdd["alpha_2"] = "XX";
    jOdd["name"] = std::string("100%s\0sure", 10);
    jOdd["people"] = 3000000000U;
    jOdd["area"] = 0.1;
    Json::Value jStored;
    must(countries, countries.recCreate(jOdd, jStored));
    jOdd["island"] = false;  // the default
    require(jStored == jOdd && jStored["people"].isUInt(), "what was stored");
    std::printf("kept       XX: a name of %zu characters with '%%' and NUL, %u people, %g km2\n",
                jStored["name"].asString().size(), jStored["people"].asUInt(), jStored["area"].asDouble());

    const long long islands = must(countries, countries.recUpdateByFilter(json(R"({"name": {"$like": "%island%"}})"),
                                                                          json(R"({"island": true})")));
    std::printf("updated    island is true for the %lld that are named so\n", islands);

    const long long deleted = must(countries, countries.recDeleteByArray({"AQ", "XX"}, "alpha_2"));
    std::printf("deleted    AQ and XX in one call: %lld, %lld left\n", deleted, count(countries, "{}"));
    require(must(countries, countries.recDelete(json(R"({"island": true})"))) == islands, "deleting the islands");
    std::printf("deleted    islands by condition: %lld, %lld left\n", islands, count(countries, "{}"));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "usage: %s DATABASE ISO_3166_1_JSON\n", argv[0]);
        return 2;
    }
    try
    {
        run(argv[1], argv[2]);
        return 0;
    }
    catch (const std::exception& error)  // JsonCpp's own, must()'s and require()'s
    {
        std::fprintf(stderr, "countries_table: %s\n", error.what());
        return 1;
    }
}
