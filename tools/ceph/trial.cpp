// SPDX-License-Identifier: MIT
//
// What ./dev ceph runs on a store, once on Ceph and once on a local file:
//   trial latency DATABASE JOURNAL_MODE LOCKING_MODE   mean milliseconds of one record of each work, for both classes
//   trial write DATABASE JOURNAL_MODE FIRST            creates records from the id FIRST on until SIGTERM, and writes
//   each
//                                                      id to standard output once its creation was acknowledged
//   trial verify DATABASE FILE...                      checks the database and that it holds every id of the files

#include <VornJsonDbApi.h>
#include <unistd.h>
#include <vorn/table.h>
#include <vorn/transaction.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

bool blLogToStdout = false;
bool blDebugOutput = false;

namespace
{

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

void require(bool blHolds, const std::string& strWhat)
{
    if (!blHolds)
        throw std::runtime_error(strWhat);
}

Connection open(const std::string& strDatabase, const std::string& strJournal, const std::string& strLocking)
{
    sqlite3* pDb = nullptr;
    const int status = sqlite3_open(strDatabase.c_str(), &pDb);
    Connection connection(pDb, &sqlite3_close);
    require(status == SQLITE_OK, "opening " + strDatabase);
    const std::string strSql = "PRAGMA locking_mode = " + strLocking + "; PRAGMA journal_mode = " + strJournal;
    require(sqlite3_exec(pDb, strSql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, sqlite3_errmsg(pDb));
    return connection;
}

Json::Value definitionOf(const std::string& strName)
{
    Json::Value jTableDef;
    Json::Value& jMember = jTableDef[strName]["member"];
    jMember["id"]["cpptype"] = "long long";
    jMember["id"]["key"] = true;
    jMember["text"]["cpptype"] = "string";
    return jTableDef;
}

Json::Value record(Json::Int64 id)
{
    Json::Value jRec;
    jRec["id"] = id;
    jRec["text"] = "record " + std::to_string(id);
    return jRec;
}

// Either class, as far as the latencies need it: each call is one record.
struct Works
{
    std::function<void(Json::Int64)> create;
    std::function<void(Json::Int64)> fetch;
    std::function<void(Json::Int64)> update;
};

double milliseconds(int count, const std::function<void(Json::Int64)>& work, Json::Int64 first)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i)
        work(first + i);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / count;
}

void printLatencies(const char* szClass, sqlite3* pDb, const Works& works)
{
    constexpr int kFew = 30;
    constexpr int kMany = 249;

    const double create = milliseconds(kFew, works.create, 0);
    vorn::Transaction transaction(pDb);
    require(transaction.isOpen(), transaction.status().text);
    const auto start = std::chrono::steady_clock::now();
    milliseconds(kMany, works.create, kFew);
    require(transaction.commit() == 0, transaction.status().text);
    const std::chrono::duration<double, std::milli> together = std::chrono::steady_clock::now() - start;
    std::printf("%s %.3f %.3f %.3f %.3f\n", szClass, create, together.count() / kMany,
                milliseconds(kFew, works.fetch, 0), milliseconds(kFew, works.update, 0));
}

void latency(const std::string& strDatabase, const std::string& strJournal, const std::string& strLocking)
{
    const Connection connection = open(strDatabase, strJournal, strLocking);
    {
        std::string strName = "contract";
        std::string strCreate = "CREATE TABLE contract (id INTEGER PRIMARY KEY, text TEXT)";
        Json::Value jTableDef = definitionOf(strName);
        VornJsonDbApi records(connection.get(), strName, jTableDef, strCreate);
        printLatencies("VornJsonDbApi", connection.get(),
                       {[&](Json::Int64 id)
                        {
                            Json::Value jRec = record(id);
                            Json::Value jStored;
                            require(records.recCreate(jRec, jStored) == 0, "creating");
                        },
                        [&](Json::Int64 id)
                        {
                            Json::Value jFilter;
                            Json::Value jFound;
                            jFilter["id"] = id;
                            require(records.recGetOne(jFilter, jFound) == 1, "fetching");
                        },
                        [&](Json::Int64 id)
                        {
                            Json::Value jFilter;
                            Json::Value jValues;
                            jFilter["id"] = id;
                            jValues["text"] = "changed";
                            require(records.recUpdateByFilter(jFilter, jValues) == 0, "updating");
                        }});
    }
    vorn::Table records(connection.get(), "records", definitionOf("records"));
    const auto done = [&](bool blHolds) { require(blHolds, records.status().text); };
    printLatencies("vorn::Table", connection.get(),
                   {[&](Json::Int64 id)
                    {
                        Json::Value jStored;
                        done(records.recCreate(record(id), jStored) == 0);
                    },
                    [&](Json::Int64 id)
                    {
                        Json::Value jFilter;
                        Json::Value jFound;
                        jFilter["id"] = id;
                        done(records.recGetOne(jFilter, jFound) == 1);
                    },
                    [&](Json::Int64 id)
                    {
                        Json::Value jFilter;
                        Json::Value jValues;
                        jFilter["id"] = id;
                        jValues["text"] = "changed";
                        done(records.recUpdateByFilter(jFilter, jValues) == 1);
                    }});
}

volatile std::sig_atomic_t g_stop = 0;

void write(const std::string& strDatabase, const std::string& strJournal, Json::Int64 first)
{
    static_cast<void>(std::signal(SIGTERM, [](int) { g_stop = 1; }));
    const Connection connection = open(strDatabase, strJournal, "NORMAL");
    vorn::Table records(connection.get(), "records", definitionOf("records"));
    for (Json::Int64 id = first; g_stop == 0; ++id)
    {
        require(records.recCreate(record(id)) == 0, records.status().text);
        std::printf("%lld\n", static_cast<long long>(id));
        require(std::fflush(stdout) == 0, "writing to standard output");
    }
}

void verify(const std::string& strDatabase, const std::vector<std::string>& files)
{
    const Connection connection = open(strDatabase, "PERSIST", "NORMAL");
    vorn::Table records(connection.get(), "records", definitionOf("records"));
    Json::Value jRows;
    require(records.runSql("PRAGMA integrity_check", Json::Value(), jRows) == 1 && jRows[0]["integrity_check"] == "ok",
            "the database is damaged");

    std::set<Json::Int64> stored;
    require(records.recForEach(Json::Value(),
                               [&](Json::Value& jRec)
                               {
                                   stored.insert(jRec["id"].asInt64());
                                   return true;
                               }) >= 0,
            records.status().text);
    std::size_t acknowledged = 0;
    for (const std::string& strFile : files)
    {
        std::ifstream file(strFile);
        for (std::istream_iterator<Json::Int64> it(file); it != std::istream_iterator<Json::Int64>(); ++it)
        {
            require(stored.count(*it) == 1, "an acknowledged record is lost: " + std::to_string(*it));
            ++acknowledged;
        }
    }
    std::printf("integrity ok, %zu acknowledged, none lost, %zu stored\n", acknowledged, stored.size());
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try
    {
        require(arguments.size() >= 2, "usage: trial latency|write|verify DATABASE ...");
        if (arguments[0] == "latency")
            latency(arguments[1], arguments.at(2), arguments.at(3));
        else if (arguments[0] == "write")
            write(arguments[1], arguments.at(2), std::stoll(arguments.at(3)));
        else
            verify(arguments[1], {arguments.begin() + 2, arguments.end()});
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "trial: %s\n", error.what());
        return 1;
    }
}
