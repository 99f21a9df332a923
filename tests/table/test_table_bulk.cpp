// SPDX-License-Identifier: MIT
//
// Many records at once: stored all or not at all, visited one by one, and what the heap holds meanwhile. VORN_TEST_ROWS
// sets how many are visited.

#include <cstdlib>
#include <functional>

#include "failing_allocators.h"
#include "table_fixture.h"

using namespace table_tests;
using support::TempFile;

namespace
{

using Texts = std::vector<std::string>;

constexpr long kFew = 1000;
constexpr long kSlack = 16384;  // bytes: some pages and statements, whatever the number of records
constexpr const char* kMembers = R"({"data": {"cpptype": "Json::objectValue"}, "id": {"cpptype": "int", "key": true},
    "n": {"cpptype": "int"}, "name": {"cpptype": "string"}, "u": {"cpptype": "string", "unique": true}})";

// A machine of 32 bits is emulated more often than not, and a build with a sanitizer is slow.
bool isSlow()
{
    return sizeof(void*) == 4 || !faults::isReplaced(faults::Allocator::Malloc);
}

long manyRecords()
{
    return isSlow() ? 10000 : 100000;
}

long manyRows()
{
    const char* const szGiven = std::getenv("VORN_TEST_ROWS");
    return szGiven != nullptr ? std::strtol(szGiven, nullptr, 10) : isSlow() ? 5000 : 30000;
}

Json::Value records(long nCount)
{
    Json::Value jRecords(Json::arrayValue);
    for (long i = 0; i < nCount; ++i)
    {
        Json::Value& jRecord = jRecords.append(Json::Value());
        jRecord["data"]["list"].append(static_cast<Json::Int>(i));
        jRecord["n"] = static_cast<Json::Int>(i);
        jRecord["name"] = "a name that no short string holds " + std::to_string(i);
        jRecord["u"] = std::to_string(i);
    }
    return jRecords;
}

// A table in a file, with a page cache that is soon full.
class Bulk : public TestTable
{
public:
    explicit Bulk(const TempFile& file) : TestTable(kMembers, "", std::make_shared<Database>(file.path()))
    {
        run("PRAGMA synchronous = OFF; PRAGMA cache_size = 10");
    }
    // Rows as SQL makes them.
    void fill(long nRows)
    {
        run("WITH RECURSIVE i (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM i WHERE i < " + std::to_string(nRows) +
            ") INSERT INTO @ (data, n, name, u) SELECT '{\"a\":[' || i || ']}', i,"
            "'a name that no short string holds ' || i, i FROM i");
    }
};

// The body returns the most bytes that the heap holds while it works on so many records.
template <class Body>
void expectFlat(const std::string& strWhat, long nManyRecords, Body body)
{
    body(10);  // makes what is made once
    const long nFew = body(kFew), nMany = body(nManyRecords);
    std::cout << "| " << strWhat << " | " << nFew << " | " << nMany << " for " << nManyRecords << " |\n";
    EXPECT_LT(0, nFew) << strWhat;
    EXPECT_GE(nFew + kSlack, nMany) << strWhat;
}

}  // namespace

TEST(TableBulk, OfAHundredThousandRecordsIsStoredOrTheFirstBadOneIsNamedAndNone)
{
    struct Case
    {
        const char* szBad;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {R"({"name": 48271})", Code::BadType, "name"},     {R"({"nome": "zq7x"})", Code::UnknownMember, "nome"},
        {R"({"n": 482710000000})", Code::OutOfRange, "n"}, {R"({"u": "0"})", Code::Duplicate, "u"},
        {R"({"id": 1})", Code::Duplicate, "id"},
    };
    const TempFile file;
    Bulk t(file);
    Json::Value jRecords = records(manyRecords());
    const Json::ArrayIndex last = jRecords.size() - 1;
    for (const Case& one : cases)
    {
        SCOPED_TRACE(one.szBad);
        const Json::Value jGood = jRecords[last];
        jRecords[last] = json(one.szBad);
        EXPECT_TRUE(failed(*t, t->recCreateAll(jRecords), one.code, one.szMember));
        EXPECT_EQ(static_cast<long long>(last), t->status().index);
        EXPECT_EQ(Texts{"0"}, t.rows("SELECT count(*) FROM @"));
        jRecords[last] = jGood;
    }
    Json::Value jGap;
    jGap[1] = jRecords[0];  // an array that has no index 0
    EXPECT_TRUE(failed(*t, t->recCreateAll(jGap), Code::BadRequest));
    EXPECT_EQ(0, t->status().index);
    EXPECT_TRUE(done(*t, t->recCreateAll(jRecords), static_cast<long long>(last) + 1));
    const std::string strLast = std::to_string(last);
    EXPECT_EQ(Texts{std::to_string(last + 1) + "|" + strLast + "|{\"list\":[" + strLast + "]}"},
              t.rows("SELECT count(*), max(n), (SELECT data FROM @ WHERE n = (SELECT max(n) FROM @)) FROM @"));
}

TEST(TableBulk, HoldsNoMoreOfManyRecordsThanOfFew)
{
    std::cout << "| most bytes of the heap | " << kFew << " records | many records |\n|---|---:|---:|\n";
    for (const bool blStored : {true, false})
    {
        const TempFile file;
        Bulk t(file);
        expectFlat(blStored ? "recCreateAll" : "recCreateAll in the caller's transaction, the last bad", manyRecords(),
                   [&](long nCount)
                   {
                       Json::Value jRecords = records(nCount);
                       if (!blStored)
                           jRecords[static_cast<Json::ArrayIndex>(nCount - 1)]["u"] = "0";
                       t.run(blStored ? "" : "BEGIN");
                       const faults::HeapPeak peak;
                       EXPECT_EQ(blStored ? nCount : -1, t->recCreateAll(jRecords)) << describe(t->status());
                       const long nBytes = peak.bytes();
                       t.run(blStored ? "DELETE FROM @" : "ROLLBACK");
                       return nBytes;
                   });
    }
    const char* const requests[] = {"{}", R"({"sort_by": "-id"})", R"({"sort_by": "u", "fields": ["n", "u"]})",
                                    R"({"n": {"$gt": 0}, "data.a": {"$exists": true}})"};
    for (const char* szRequest : requests)
        expectFlat(std::string("recForEach `") + szRequest + "`", manyRows(),
                   [&](long nCount)
                   {
                       const TempFile file;
                       Bulk t(file);
                       t.fill(nCount);
                       EXPECT_LE(0, t->recCount(json("{}")));
                       const faults::HeapPeak peak;
                       EXPECT_EQ(nCount, t->recForEach(json(szRequest), [](Json::Value&) { return true; }))
                           << describe(t->status());
                       return peak.bytes();
                   });
}

// Records that are scattered over the heap lie now before, now behind the one before them: two of three, if by chance.
TEST(TableBulk, RecordsOfALargeListLieInOrderHoweverOftenItIsListed)
{
    if (isSlow())
        GTEST_SKIP() << "another allocator, or an emulated machine";
    constexpr int kRows = 10000, kLists = 30;
    TestTable t(kMembers);
    t.run("WITH RECURSIVE i (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM i WHERE i < " + std::to_string(kRows) +
          ") INSERT INTO @ (data, n, name, u) SELECT iif(i % 3, '{\"a\":[1,2]}', '{\"a\":1}'), i,"
          "substr('a name that no short string holds', 1, i * 7 % 34), i FROM i");
    Json::Value jRows;
    int iTurns = 0;
    for (int i = 0; i < kLists; ++i)
    {
        jRows = Json::Value();
        ASSERT_EQ(0, t->recList(Json::Value(), jRows));
        bool blForward = true;
        const Json::Value* pLast = nullptr;
        for (const Json::Value& jRow : jRows)
        {
            const bool blNow = std::less<const void*>()(pLast, &jRow);
            iTurns += blNow != blForward ? 1 : 0;
            blForward = blNow;
            pLast = &jRow;
        }
    }
    EXPECT_GE(kLists * kRows / 3, iTurns);
}

TEST(TableBulk, AVisitorMayChangeOrDeleteTheRowItSitsOnCallTheTableAgainAndStop)
{
    struct Case
    {
        const char* szWhat;
        std::function<bool(vorn::Table&, Json::Value&)> visit;
        long nVisited;
        const char* szAfter;  // count, sum of n
    };
    const auto sits = [](const Json::Value& jRecord)
    {
        Json::Value jFilter;
        jFilter["id"] = jRecord["id"];
        return jFilter;
    };
    const Case cases[] = {
        {"updates it",
         [&](vorn::Table& t, Json::Value& j) { return t.recUpdateByFilter(sits(j), json(R"({"n": 1})")) == 1; }, 1000,
         "1000|1000"},
        {"saves it",
         [](vorn::Table& t, Json::Value& j)
         {
             j["n"] = 2;
             j["name"] = std::string(500, 'x');  // which moves it to another page
             return t.recSave(j, false) == 0;
         },
         1000, "1000|2000"},
        {"deletes it", [&](vorn::Table& t, Json::Value& j) { return t.recDelete(sits(j)) == 1; }, 1000, "0|NULL"},
        {"reads it again",
         [&](vorn::Table& t, Json::Value& j)
         {
             Json::Value jSame;
             return t.recGetOne(sits(j), jSame) == 1 && jSame == j;
         },
         1000, "1000|500500"},
        {"visits and lists others",
         [](vorn::Table& t, Json::Value&)
         {
             Json::Value jRows;
             return t.recList(json(R"({"limit": 2})"), jRows) == 0 && jRows.size() == 2 &&
                    t.recForEach(json("{}"), [](Json::Value& j) { return j["n"].asInt() < 3; }) == 3;
         },
         1000, "1000|500500"},
        {"stops at the tenth", [](vorn::Table&, Json::Value& j) { return j["n"].asInt() < 10; }, 10, "1000|500500"},
        {"deletes all and goes on where nothing is left",
         [](vorn::Table& t, Json::Value&) { return t.recDeleteAll() >= 0; }, 1, "0|NULL"},
        {"clears the record that it was given",
         [](vorn::Table&, Json::Value& j)
         {
             j = Json::Value();
             return true;
         },
         1000, "1000|500500"},
    };
    for (const Case& one : cases)
        for (const char* szOutside : {"", "BEGIN"})
            for (const char* szJournal : {"delete", "wal"})
            {
                SCOPED_TRACE(std::string(one.szWhat) + " " + szOutside + " " + szJournal);
                const TempFile file;
                Bulk t(file);
                t.run("PRAGMA journal_mode = " + std::string(szJournal));
                t.fill(1000);
                t.run(szOutside);
                EXPECT_TRUE(done(*t, t->recForEach(json("{}"), [&](Json::Value& j) { return one.visit(*t, j); }),
                                 one.nVisited));
                EXPECT_EQ(0, busyStatements(t.handle()));
                if (*szOutside != '\0')
                    t.run("COMMIT");
                EXPECT_EQ(Texts{one.szAfter}, t.rows("SELECT count(*), sum(n) FROM @"));
            }
}
