// SPDX-License-Identifier: MIT
//
// Damaged files: one byte of a database is changed, at one position after the other, and every operation has to do with
// it: a status, never a crash, and the connection goes on. VORN_TEST_SEED repeats a run; see whole.h for its size.

#include <fstream>
#include <functional>
#include <iterator>
#include <map>

#include "random.h"
#include "table_fixture.h"
#include "whole.h"

using namespace table_tests;

namespace
{

constexpr const char* kMembers =
    R"({"data": {"cpptype": "Json::objectValue"}, "flag": {"cpptype": "bool"}, "id": {"cpptype": "int", "key": true},
        "list": {"cpptype": "Json::arrayValue"}, "n": {"cpptype": "double", "index": true},
        "name": {"cpptype": "string", "unique": true}, "new": {"cpptype": "int", "index": true}})";

using Bytes = std::vector<char>;

Bytes bytesOf(const std::string& strPath)
{
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write(const std::string& strPath, const Bytes& bytes)
{
    std::ofstream(strPath, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// Inner pages, indexes, free pages, and texts over several pages; the definition's member "new" has no column yet.
Bytes soundFile(const std::string& strPath)
{
    constexpr int kRecords = 120;
    constexpr int kLong = 1500;
    Json::Value jMembers = json(kMembers);
    jMembers.removeMember("new");
    const Database db(strPath);
    EXPECT_EQ(SQLITE_OK, db.run("PRAGMA page_size = 512; PRAGMA synchronous = OFF"));
    vorn::Table table(db.handle(), "T", definitionOf("T", jMembers));
    Json::Value jRecords;
    for (int i = 1; i <= kRecords; ++i)
    {
        Json::Value jRecord = json(R"({"data": {"a": {"b": 1}}, "flag": true, "list": [1, "x"]})");
        jRecord["id"] = i;
        jRecord["n"] = i / 8.0;
        jRecord["name"] = "name " + std::to_string(i) + (i % 20 == 0 ? std::string(kLong, 'x') : "");
        jRecords.append(jRecord);
    }
    EXPECT_TRUE(done(table, table.recCreateAll(jRecords), kRecords));
    EXPECT_TRUE(done(table, table.recDelete(json(R"({"id": {"$gt": 100}})")), kRecords - 100));
    table.releaseStatements();
    return bytesOf(strPath);
}

using Operation = std::function<long long(vorn::Table&)>;

const std::vector<Operation>& operations()
{
    static const Json::Value jSome = json(R"({"n": {"$gt": 3, "$lt": 9}, "name": {"$ne": "x"}})");
    static const Json::Value jRecord = json(R"({"name": "new one", "n": 0.5, "data": {}, "list": []})");
    static Json::Value jOut;
    static const std::vector<Operation> kOperations = {
        [](vorn::Table& t) { return t.tableCheck(jOut, true); },
        [](vorn::Table& t) { return t.tableUpgrade(); },
        [](vorn::Table& t) { return t.recList(Json::Value(), jOut = Json::Value()); },
        [](vorn::Table& t) { return t.recForEach(json(R"({"sort_by": "-name"})"), [](Json::Value&) { return true; }); },
        [](vorn::Table& t) { return t.recGetOne(json(R"({"name": "name 7"})"), jOut); },
        [](vorn::Table& t) { return t.recCount(json(R"({"data.a.b": 1, "list": {"$all": ["x"]}})")); },
        [](vorn::Table& t) { return t.explain(jSome, jOut); },
        [](vorn::Table& t) { return t.recCreate(jRecord, jOut); },
        [](vorn::Table& t) { return t.recCreateAll(json(R"([{"name": "a"}, {"id": 500, "name": "b"}])")); },
        [](vorn::Table& t)
        {
            Json::Value jSaved = json(R"({"id": 5, "name": "saved"})");
            return t.recSave(jSaved, false);
        },
        [](vorn::Table& t) { return t.recUpdateByFilter(jSome, json(R"({"flag": false, "n": 4})")); },
        [](vorn::Table& t) { return t.recDelete(json(R"({"n": [1, 2, 3.5]})")); },
        [](vorn::Table& t) {
            return t.recDeleteByArray({"name 8", "name 20"}, "name");
        },
        [](vorn::Table& t) { return t.runSql("SELECT * FROM T ORDER BY n", Json::Value(), jOut = Json::Value()); },
        [](vorn::Table& t) { return t.runSql("DELETE FROM T WHERE id < ?", json("[10]"), jOut); },
        [](vorn::Table& t) { return t.recDeleteAll(); },
    };
    return kOperations;
}

}  // namespace

TEST(TableCorrupt, FilesGiveAStatusWhicheverByteIsWrong)
{
    constexpr int kPositions = 2000;
    constexpr std::size_t kFirstPage = 512;
    const int iFlips = support::partOrWhole(kPositions / 10, kPositions);
    support::Random random;
    const support::TempFile file;
    const Bytes sound = soundFile(file.path());
    ASSERT_LT(20 * kFirstPage, sound.size());
    const Json::Value jTableDef = definitionOf("T", json(kMembers));
    std::map<std::string, int> seen;
    for (int i = 0; i < iFlips; ++i)
    {
        // One in four is in the first page, which holds the header and the schema, the others anywhere.
        const std::size_t end = i % 4 == 0 ? kFirstPage : sound.size();
        const std::size_t position = static_cast<std::size_t>(i) * end / static_cast<std::size_t>(iFlips);
        const auto change = static_cast<char>(1 + random.below(255));
        SCOPED_TRACE(testing::Message() << "VORN_TEST_SEED=" << random.seed() << ", position " << position);
        Bytes damaged = sound;
        damaged[position] = static_cast<char>(damaged[position] ^ change);
        write(file.path(), damaged);

        const Database db(file.path());
        static_cast<void>(db.run("PRAGMA synchronous = OFF"));
        vorn::Table table(db.handle(), "T", jTableDef);
        table.setLockTimeout(0);
        for (const Operation& operation : operations())
        {
            const long long nResult = operation(table);
            const vorn::Status& status = table.status();
            ++seen[vorn::codeName(status.code)];
            ASSERT_EQ(nResult < 0, status.code != Code::Ok) << nResult << ", " << describe(status);
            ASSERT_EQ(nResult < 0, !status.text.empty()) << nResult << ", " << describe(status);
            ASSERT_EQ(0, busyStatements(db.handle())) << describe(status);
            ASSERT_NE(0, sqlite3_get_autocommit(db.handle())) << describe(status);
        }
    }
    EXPECT_LT(0, seen["Corrupt"]);
    EXPECT_LT(iFlips, seen["Ok"]);
    std::cout << iFlips << " positions:";
    for (const auto& [strCode, iCount] : seen)
        std::cout << ' ' << iCount << ' ' << strCode;
    std::cout << '\n';
}
