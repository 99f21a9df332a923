// SPDX-License-Identifier: MIT
//
// What is promised about threads, to be run under the thread sanitizer too: objects of their own in threads of their
// own, on connections of their own, need nobody's lock; records outlive the table and the thread.

#include <functional>
#include <thread>

#include "table_fixture.h"

using namespace table_tests;

namespace
{

constexpr int kThreads = 4;
constexpr int kRounds = 100;

void inThreads(const std::function<void(int iThread)>& body)
{
    std::atomic<int> iReady{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back(
            [&, i]
            {
                ++iReady;
                while (iReady < kThreads)
                    std::this_thread::yield();
                body(i);
            });
    for (std::thread& thread : threads)
        thread.join();
}

// A record's whole life, from the definition on.
void useTable(sqlite3* pDb, const std::string& strName, int iRound)
{
    Json::Value jMembers = json(R"({"data": {"cpptype": "Json::objectValue", "cppDefaultValue": {"a": [1, 2]}},
                                    "id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}})");
    // Names that every thread sees for the first time, at once.
    jMembers["round " + std::to_string(iRound)]["cpptype"] = "double";
    vorn::Table table(pDb, strName, definitionOf(strName, jMembers));
    EXPECT_TRUE(done(table, table.recCreate(json(R"({"name": "a"})"))));
    Json::Value jOut;
    EXPECT_TRUE(done(table, table.recCreate(json(R"({"name": "b"})"), jOut)));
    EXPECT_EQ(json(R"({"a": [1, 2]})"), jOut["data"]);
    EXPECT_TRUE(done(table, table.recCount(json(R"({"data.a": {"$size": 2}, "name": ["a", "b"]})")), 2));
    EXPECT_TRUE(done(table, table.recUpdateByFilter(json(R"({"name": "a"})"), json(R"({"data": {}})")), 1));
    EXPECT_TRUE(failed(table, table.recCount(json(R"({"nome": 1})")), Code::UnknownMember, "nome"));
    Json::Value jRows;
    EXPECT_EQ(2, table.runSql("SELECT *, 1 AS other FROM \"" + strName + "\"", Json::Value(), jRows));
    EXPECT_TRUE(done(table, table.recDeleteAll(), 2));
    vorn::Transaction transaction(pDb);
    EXPECT_EQ(0, transaction.commit());
}

}  // namespace

TEST(TableThreads, WithConnectionsOfTheirOwnWorkAtOnce)
{
    inThreads(
        [](int iThread)
        {
            const Database db;
            for (int i = 0; i < kRounds; ++i)
                useTable(db.handle(), "t" + std::to_string(iThread) + "_" + std::to_string(i), i);
        });
}

TEST(TableThreads, WriteIntoOneFileAtOnce)
{
    const support::TempFile file;
    const Json::Value jDefinition = definitionOf("T", json(R"({"n": {"cpptype": "int"}})"));
    {
        const Database db(file.path());
        EXPECT_EQ(SQLITE_OK, db.run("PRAGMA journal_mode = WAL; CREATE TABLE T (n INTEGER)"));
    }
    inThreads(
        [&](int iThread)
        {
            const Database db(file.path());
            vorn::Table table(db.handle(), "T", jDefinition);
            table.setLockTimeout(60000);
            for (int i = 0; i < kRounds / 4; ++i)
            {
                Json::Value jRecord, jOut;
                jRecord["n"] = iThread * kRounds + i;
                EXPECT_TRUE(done(table, table.recCreate(jRecord, jOut)));
                EXPECT_EQ(jRecord, jOut);
            }
        });
    const Database db(file.path());
    EXPECT_EQ(std::vector<std::string>{std::to_string(kThreads * kRounds / 4)},
              db.rows("SELECT count(DISTINCT n) FROM T"));
}

TEST(TableThreads, HandATableOverWithItsConnection)
{
    const Database db;
    std::unique_ptr<vorn::Table> pTable;
    const auto inThread = [](const std::function<void()>& body) { std::thread(body).join(); };
    inThread(
        [&] {
            pTable = std::make_unique<vorn::Table>(db.handle(), "T",
                                                   definitionOf("T", json(R"({"n": {"cpptype": "int"}})")));
        });
    for (int i = 0; i < 10; ++i)
        inThread([&] { EXPECT_TRUE(done(*pTable, pTable->recCreate(json(R"({"n": 1})")))); });
    inThread([&] { EXPECT_TRUE(failed(*pTable, pTable->recDelete(json("{}")), Code::BadRequest)); });
    EXPECT_EQ(Code::BadRequest, pTable->status().code);
    inThread([&] { pTable.reset(); });
}

TEST(TableThreads, LeaveRecordsThatOutliveTheTableTheConnectionAndTheThread)
{
    Json::Value jRecord, jRows, jRaw;
    std::thread(
        [&]
        {
            const Database db;
            const std::string strMember = "a name that only this test has";
            Json::Value jMembers;
            jMembers[strMember]["cpptype"] = "Json::Value";
            vorn::Table table(db.handle(), "T", definitionOf("T", jMembers));
            Json::Value jIn;
            jIn[strMember] = json(R"({"inner name": ["text"]})");
            EXPECT_EQ(0, table.recCreate(jIn, jRecord));
            EXPECT_EQ(0, table.recList(json("{}"), jRows));
            EXPECT_EQ(1, table.runSql("SELECT *, 5 AS \"a column of another name\" FROM T", Json::Value(), jRaw));
        })
        .join();
    const std::string strExpected = R"({"a name that only this test has":{"inner name":["text"]}})";
    EXPECT_EQ(strExpected, compact(jRecord));
    EXPECT_EQ("[" + strExpected + "]", compact(jRows));
    EXPECT_EQ(5, jRaw[0]["a column of another name"].asInt());
    jRecord["added"] = jRows[0];
    EXPECT_EQ(strExpected, compact(jRecord["added"]));
}
