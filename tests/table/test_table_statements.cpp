// SPDX-License-Identifier: MIT
//
// Statements are prepared once, kept, and never in the way: of a schema that changes, of nested use, of the end of a
// connection.

#include <functional>

#include "table_fixture.h"

using namespace table_tests;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kMembers =
    R"({"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}, "n": {"cpptype": "int", "cppDefaultValue": 0}})";

// Counts the statements that are prepared: an authorizer is asked about each SELECT, INSERT, UPDATE or DELETE once.
class Prepares
{
public:
    explicit Prepares(sqlite3* pDb) : m_pDb(pDb) { sqlite3_set_authorizer(pDb, count, this); }
    ~Prepares() { sqlite3_set_authorizer(m_pDb, nullptr, nullptr); }
    Prepares(const Prepares&) = delete;
    Prepares& operator=(const Prepares&) = delete;

    int taken()
    {
        const int iCount = m_iCount;
        m_iCount = 0;
        return iCount;
    }

private:
    static int count(void* pThis, int iAction, const char*, const char*, const char*, const char*)
    {
        static_cast<Prepares*>(pThis)->m_iCount += iAction == SQLITE_READ ? 0 : 1;
        return SQLITE_OK;
    }

    sqlite3* m_pDb;
    int m_iCount = 0;
};

constexpr int kUndoing = 2;  // beside those of operations: what undoes a savepoint or a transaction

Json::Value firstNumbers(int iCount)
{
    Json::Value jFilter;
    jFilter["n"] = Json::Value(Json::arrayValue);
    for (int i = 0; i < iCount; ++i)
        jFilter["n"].append(i);
    return jFilter;
}

}  // namespace

TEST(TableStatements, ArePreparedOnceForAThousandRecords)
{
    TestTable t(kMembers);
    Prepares prepares(t.handle());
    const std::pair<const char*, std::function<void(int)>> operations[] = {
        {"create",
         [&](int i)
         {
             Json::Value j, jOut;
             j["name"] = std::to_string(i);
             EXPECT_EQ(0, t->recCreate(j, jOut));
         }},
        {"create alone",
         [&](int i)
         {
             Json::Value j;
             j["name"] = std::to_string(i);
             EXPECT_EQ(0, t->recCreate(j));
         }},
        {"create all",
         [&](int i)
         {
             Json::Value j;
             for (int k = 0; k < 4; ++k)
                 j[k][k % 2 == 0 ? "name" : "n"] = k % 2 == 0 ? Json::Value(std::to_string(i)) : Json::Value(i);
             EXPECT_EQ(4, t->recCreateAll(j));
         }},
        {"save",
         [&](int i)
         {
             Json::Value j;
             j["id"] = i + 1;
             j["name"] = "x";
             EXPECT_EQ(0, t->recSave(j, false));
         }},
        {"get",
         [&](int i)
         {
             Json::Value j, jOut;
             j["id"] = i + 1;
             EXPECT_EQ(1, t->recGetOne(j, jOut));
         }},
        {"list",
         [&](int i)
         {
             Json::Value j, jOut;
             j["id"]["$lte"] = i % 5;
             j["n"]["$gt"] = -1;
             j["sort_by"] = "name";
             j["limit"] = 1 + i % 7;
             EXPECT_EQ(0, t->recList(j, jOut));
         }},
        {"count",
         [&](int i)
         {
             Json::Value j;
             j["$or"][0]["id"] = i;
             j["$or"][1]["name"]["$beginsWith"] = std::to_string(i);
             EXPECT_LE(0, t->recCount(j));
         }},
        {"update",
         [&](int i)
         {
             Json::Value j, jValues;
             j["id"] = i + 1;
             jValues["n"] = i;
             EXPECT_EQ(1, t->recUpdateByFilter(j, jValues));
         }},
        {"delete",
         [&](int i)
         {
             Json::Value j;
             j["id"] = i + 1;
             EXPECT_EQ(1, t->recDelete(j));
         }},
        {"run",
         [&](int i)
         {
             Json::Value j, jOut;
             j.append(i);
             EXPECT_EQ(1, t->runSql("SELECT ? AS n", j, jOut));
         }},
    };
    for (const auto& [szName, operation] : operations)
    {
        SCOPED_TRACE(szName);
        operation(0);
        operation(1);  // a new authorizer is as good as a new schema: all is prepared anew
        prepares.taken();
        for (int i = 2; i < 1000; ++i)
        {
            operation(i);
            ASSERT_EQ(0, busyStatements(t.handle()));
        }
        EXPECT_EQ(0, prepares.taken());
    }
}

TEST(TableStatements, ServeListsOfManyLengths)
{
    TestTable t(kMembers);
    for (int i = 0; i < 120; ++i)
        t.create(R"({"n": )" + std::to_string(i) + "}");
    EXPECT_EQ(119, t->recCount(firstNumbers(119)));
    const int iNone = keptStatements(t.handle());
    EXPECT_EQ(101, t->recCount(firstNumbers(101)));
    EXPECT_EQ(iNone, keptStatements(t.handle())) << "more than 100 values: not kept";
    EXPECT_EQ(100, t->recCount(firstNumbers(100)));
    EXPECT_EQ(iNone + 1, keptStatements(t.handle()));
    for (int iLength = 1; iLength <= 100; ++iLength)
        EXPECT_EQ(iLength, t->recCount(firstNumbers(iLength)));
    EXPECT_LE(1, keptStatements(t.handle()) - iNone);
    EXPECT_GE(10, keptStatements(t.handle()) - iNone);
}

TEST(TableStatements, AreKeptUpToThirtyTwo)
{
    TestTable t(kMembers);
    for (int i = 1; i < 128; ++i)
    {
        Json::Value jFilter;
        for (int j = 0; j < 7; ++j)
            if ((i >> j & 1) != 0)
                jFilter["$and"].append(json(j % 2 == 0 ? R"({"n": 1})" : R"({"name": {"$like": "x"}})"));
        jFilter["sort_by"].append((i & 1) != 0 ? "n" : "name");
        Json::Value jOut;
        EXPECT_EQ(0, t->recList(jFilter, jOut));
        Json::Value jOnly;
        for (const char* szName : {"id", "n", "name"})
            if (i % 7 != 0)
                jOnly["fields"].append(szName);
        EXPECT_EQ(0, t->recList(jOnly, jOut));
        ASSERT_GE(32 + kUndoing, keptStatements(t.handle()));
    }
    EXPECT_LT(20, keptStatements(t.handle()));
}

TEST(TableStatements, ThatWereUsedLongestAgoGoFirst)
{
    TestTable t(kMembers);
    Prepares prepares(t.handle());
    const auto useShape = [&](int i)
    {
        Json::Value jFilter;
        for (int k = 0; k < 6; ++k)
            jFilter["$and"].append(json((i >> k & 1) != 0 ? R"({"n": {"$gt": 1}})" : R"({"n": {"$lt": 1}})"));
        EXPECT_EQ(0, t->recCount(jFilter));
        return prepares.taken();
    };
    useShape(0);
    for (int i = 0; i < 32; ++i)
        useShape(i);
    EXPECT_EQ(0, useShape(0)) << "32 are kept";
    EXPECT_LT(0, useShape(32));
    EXPECT_EQ(0, useShape(0)) << "it was used after the others";
    EXPECT_LT(0, useShape(1));
}

TEST(TableStatements, OfOneShapeMayBeUsedWhileTheyAreInUse)
{
    TestTable t(kMembers);
    EXPECT_EQ(3, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}, {"n": 3}])")));
    const Json::Value jFilter = json(R"({"n": {"$gt": 0}, "sort_by": "n"})");
    std::string strSeen;
    const auto outer = [&](Json::Value& jRecord)
    {
        strSeen += jRecord["n"].asString() + ":";
        EXPECT_EQ(3, t->recForEach(jFilter,
                                   [&](Json::Value& jInner)
                                   {
                                       strSeen += jInner["n"].asString();
                                       return true;
                                   }));
        Json::Value jOut;
        EXPECT_EQ(1, t->recGetOne(jFilter, jOut));
        EXPECT_EQ(3, t->recCount(json(R"({"n": {"$gt": 0}})")));
        EXPECT_EQ(
            1, t->recUpdateByFilter(json(R"({"id": )" + jRecord["id"].asString() + "}"), json(R"({"name": "seen"})")));
        EXPECT_EQ(0, t->recCreate(json(R"({"n": -1})"), jOut));
        EXPECT_EQ(2, t->recCreateAll(json(R"([{"n": -2}, {"n": -3}])")));
        return true;
    };
    EXPECT_TRUE(done(*t, t->recForEach(jFilter, outer), 3)) << "the status is that of the outer one";
    EXPECT_EQ("1:1232:1233:123", strSeen);
    EXPECT_EQ(3, t->recCount(json(R"({"name": "seen"})")));
    EXPECT_EQ(9, t->recCount(json(R"({"n": {"$lt": 0}})")));
    EXPECT_EQ(0, busyStatements(t.handle()));
}

TEST(TableStatements, MayBeReleasedAndTheTableDestroyedByAVisitor)
{
    TestTable t(kMembers);
    EXPECT_EQ(2, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}])")));
    EXPECT_EQ(2, t->recForEach(json("{}"),
                               [&](Json::Value&)
                               {
                                   t->releaseStatements();
                                   return true;
                               }));
    EXPECT_EQ(0, busyStatements(t.handle()));
    EXPECT_EQ(2, t->recForEach(json("{}"),
                               [&](Json::Value&)
                               {
                                   t.run("CREATE TABLE IF NOT EXISTS @x (a)");
                                   return true;
                               }));
}

TEST(TableStatements, PickUpWhatOthersDoToTheSchema)
{
    TestTable t(kMembers);
    const auto use = [&](int iExpected)
    {
        Json::Value jOut;
        EXPECT_TRUE(done(*t, t->recCreate(json(R"({"n": 1})"), jOut)));
        EXPECT_EQ(1, jOut["n"].asInt());
        EXPECT_TRUE(done(*t, t->recCount(json(R"({"n": 1})")), iExpected));
        Json::Value jRows;
        EXPECT_TRUE(done(*t, t->recList(json(R"({"n": 1})"), jRows)));
        EXPECT_EQ(static_cast<unsigned>(iExpected), jRows.size());
        EXPECT_TRUE(jRows[0].isMember("id"));
        EXPECT_EQ(Json::Value(1), jRows[0]["n"]);
        EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"n": 1})"), json(R"({"name": "x"})")), iExpected));
    };
    use(1);
    t.run("ALTER TABLE @ ADD COLUMN added TEXT DEFAULT 'x'");
    use(2);
    t.run("DROP TABLE @; CREATE TABLE @ (n INT, z, name TEXT, id INTEGER PRIMARY KEY)");
    use(1);
    t.run("CREATE INDEX @i ON @ (n)");
    use(2);
    t.run("DROP TABLE @; CREATE TABLE @ (id INTEGER, name TEXT, n INT)");
    Json::Value jOut;
    EXPECT_TRUE(done(*t, t->recCreate(json(R"({"n": 1, "id": 7})"), jOut)));
    EXPECT_EQ(json(R"({"id": 7, "n": 1})"), jOut);
    Json::Value jSave = json(R"({"id": 7})");
    EXPECT_TRUE(failed(*t, t->recSave(jSave, false), Code::BadRequest, t->status().member)) << "it has no key any more";
    t.run("DROP TABLE @; CREATE TABLE @ (id TEXT PRIMARY KEY, name TEXT, n INT) WITHOUT ROWID");
    EXPECT_TRUE(done(*t, t->recCreate(json(R"({"n": 1, "id": 7})"), jOut)));
    EXPECT_EQ(json(R"({"id": 7, "n": 1})"), jOut);
    EXPECT_TRUE(done(*t, t->recSave(jSave, false)));
    EXPECT_EQ(json(R"({"id": 7, "n": 1})"), jSave);
}

TEST(TableStatements, GiveTheSameWhateverTheHostsPragmasAre)
{
    for (const char* szPragma : {"count_changes = 1", "short_column_names = 0", "full_column_names = 1",
                                 "empty_result_callbacks = 1", "recursive_triggers = 1", "case_sensitive_like = 1",
                                 "reverse_unordered_selects = 1", "automatic_index = 0", "cell_size_check = 1"})
        for (const char* szOptions : {"", " WITHOUT ROWID"})
        {
            SCOPED_TRACE(std::string(szPragma) + szOptions);
            TestTable t(kMembers, "CREATE TABLE @ (id INT PRIMARY KEY, name TEXT, n INT)" + std::string(szOptions));
            t.run("PRAGMA " + std::string(szPragma));
            Json::Value jOut, jRows;
            EXPECT_TRUE(done(*t, t->recCreate(json(R"({"id": 1, "name": "a"})"), jOut)));
            EXPECT_EQ(json(R"({"id": 1, "name": "a", "n": 0})"), jOut);
            EXPECT_TRUE(done(*t, t->recCreateAll(json(R"([{"id": 2}, {"id": 3}])")), 2));
            jOut = json(R"({"id": 2, "n": 5})");
            EXPECT_TRUE(done(*t, t->recSave(jOut, false)));
            EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"id": {"$gt": 1}})"), json(R"({"name": "b"})")), 2));
            EXPECT_TRUE(done(*t, t->runSql(t.sql("UPDATE @ SET n = 6 WHERE id = 3"), Json::Value(), jRows), 1));
            EXPECT_TRUE(done(*t, t->recDelete(json(R"({"n": 5})")), 1));
            EXPECT_EQ(json(R"([{"id": 1, "name": "a", "n": 0}, {"id": 3, "name": "b", "n": 6}])"),
                      t.list(R"({"sort_by": "id"})"));
            EXPECT_TRUE(done(*t, t->tableUpgrade()));
            EXPECT_TRUE(done(*t, t->tableCheck(jOut, true)));
        }
}

TEST(TableStatements, OfANewShapeSeeTheConnectionsOwnSchemaChangeInsideATransaction)
{
    for (const char* szBegin : {"BEGIN", "BEGIN IMMEDIATE", "BEGIN; SELECT * FROM sqlite_master"})
    {
        TestTable t(kMembers);
        t.create(R"({"n": 1})");
        t.run("ALTER TABLE @ RENAME COLUMN n TO m; " + std::string(szBegin));
        EXPECT_TRUE(failed(*t, t->recCount(json(R"({"id": {"$gt": 0}})")), Code::Missing, "n")) << szBegin;
        t.run("ALTER TABLE @ RENAME COLUMN m TO n");
        EXPECT_TRUE(done(*t, t->recCount(json(R"({"n": 1})")), 1)) << szBegin;
        t.run("ROLLBACK");
    }
}

TEST(TableStatements, OfAnotherConnectionsSchemaChangeAreMadeAnew)
{
    const support::TempFile file;
    TestTable t(kMembers, "", std::make_shared<Database>(file.path()));
    t.create(R"({"n": 1})");
    Json::Value jRows;
    EXPECT_TRUE(done(*t, t->recList(json("{}"), jRows)));
    const Database other(file.path());
    EXPECT_EQ(SQLITE_OK, other.run("ALTER TABLE " + t.name() + " ADD COLUMN a DEFAULT 1"));
    t.create(R"({"n": 2})");
    EXPECT_EQ(SQLITE_OK, other.run("ALTER TABLE " + t.name() + " RENAME COLUMN name TO nome"));
    EXPECT_TRUE(failed(*t, t->recList(json("{}"), jRows), Code::Missing, "name"));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"n": 2})")), Code::Missing, "name"));
}

TEST(TableStatements, HoldNoLockBetweenCalls)
{
    const support::TempFile file;
    TestTable t(kMembers, "", std::make_shared<Database>(file.path()));
    EXPECT_EQ(3, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}, {"n": 3}])")));
    const Database other(file.path());
    Json::Value jOut;
    EXPECT_EQ(1, t->recGetOne(json("{}"), jOut));
    EXPECT_EQ(1, t->recForEach(json("{}"), [](Json::Value&) { return false; }));
    EXPECT_EQ(-1, t->recList(json("{}"), jOut));
    EXPECT_EQ(-1, t->recCreate(json(R"({"id": 1})")));
    EXPECT_EQ(SQLITE_OK, other.run("BEGIN EXCLUSIVE; ROLLBACK"));
}

TEST(TableStatements, LetTheConnectionCloseOnceTheyAreReleased)
{
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &pDb));
    vorn::Table table(pDb, "T", definitionOf("T", json(kMembers)));
    EXPECT_EQ(0, table.recCreate(json(R"({"n": 1})")));
    EXPECT_EQ(SQLITE_BUSY, sqlite3_close(pDb));
    table.releaseStatements();
    EXPECT_TRUE(done(table, table.recCount(json("{}")), 1)) << "the next operation prepares anew";
    table.releaseStatements();
    EXPECT_EQ(SQLITE_OK, sqlite3_close(pDb));
}

TEST(TableStatements, OutliveAConnectionThatIsAZombie)
{
    sqlite3* pDb = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(":memory:", &pDb));
    {
        vorn::Table table(pDb, "T", definitionOf("T", json(kMembers)));
        EXPECT_EQ(0, table.recCreate(json(R"({"n": 1})")));
        Json::Value jOut;
        EXPECT_EQ(0, table.recCreate(json(R"({"n": 1})"), jOut));
        EXPECT_EQ(SQLITE_OK, sqlite3_close_v2(pDb));
    }
}

TEST(TableStatements, MoveWithTheTable)
{
    TestTable t(kMembers);
    t.create(R"({"n": 1})");
    vorn::Table moved(std::move(*t));
    EXPECT_EQ(0, moved.recCreate(json(R"({"n": 2})")));
    TestTable other(kMembers);
    other.create(R"({"n": 5})");
    *other = std::move(moved);
    EXPECT_EQ(2, other->recCount(Json::Value()));
    other.drop();
    EXPECT_EQ(0, keptStatements(other.handle()));
    EXPECT_EQ(0, keptStatements(t.handle()));
}

namespace
{

// A function of SQL that calls the table of a test.
struct Called
{
    TestTable* pTable;
    std::function<long long(vorn::Table&)> call;
    long long nResult = -2;
    vorn::Status status;
};

void callTable(sqlite3_context* pContext, int, sqlite3_value**)
{
    auto* const pCalled = static_cast<Called*>(sqlite3_user_data(pContext));
    vorn::Transaction transaction(sqlite3_context_db_handle(pContext));
    EXPECT_TRUE(failed(transaction.status(), transaction.isOpen() ? 0 : -1, Code::Misuse));
    pCalled->nResult = pCalled->call(**pCalled->pTable);
    pCalled->status = (*pCalled->pTable)->status();
    sqlite3_result_int(pContext, 1);
}

}  // namespace

TEST(TableStatements, InATriggersFunctionReadAndWriteByOneStatementOrAreMisuse)
{
    struct Inner
    {
        const char* szName;
        std::function<long long(vorn::Table&)> call;
        bool blWorks;
    };
    const Inner inners[] = {
        {"list",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recList(json("{}"), jOut);
         },
         true},
        {"get",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recGetOne(json(R"({"n": 50})"), jOut);
         },
         true},
        {"count", [](vorn::Table& t) { return t.recCount(json("{}")); }, true},
        {"each", [](vorn::Table& t) { return t.recForEach(json("{}"), [](Json::Value&) { return true; }); }, true},
        {"update", [](vorn::Table& t) { return t.recUpdateByFilter(json(R"({"n": 50})"), json(R"({"name": "x"})")); },
         true},
        {"delete", [](vorn::Table& t) { return t.recDelete(json(R"({"n": 50})")); }, true},
        {"create and read back",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recCreate(json(R"({"n": 60})"), jOut);
         },
         false},
        {"create all", [](vorn::Table& t) { return t.recCreateAll(json(R"([{"n": 60}, {"n": 61}])")); }, false},
        {"save",
         [](vorn::Table& t)
         {
             Json::Value j = json(R"({"id": 60})");
             return t.recSave(j, false);
         },
         false},
        {"create alone", [](vorn::Table& t) { return t.recCreate(json(R"({"n": 60})")); }, true},
        {"run a query",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.runSql("SELECT 1", Json::Value(), jOut);
         },
         true},
        {"run a change",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.runSql("INSERT INTO changed VALUES (1)", Json::Value(), jOut);
         },
         false},
    };
    for (const Inner& inner : inners)
        for (const char* szOuter : {"", "BEGIN"})
        {
            SCOPED_TRACE(std::string(inner.szName) + " " + szOuter);
            TestTable t(kMembers);
            t.create(R"({"n": 50})");
            Called called{&t, inner.call, -2, {}};
            sqlite3_create_function_v2(t.handle(), "call_table", 0, SQLITE_UTF8, &called, callTable, nullptr, nullptr,
                                       nullptr);
            t.run(
                "CREATE TABLE changed (x); CREATE TABLE @h (x); CREATE TRIGGER @t AFTER INSERT ON @h BEGIN SELECT "
                "call_table(); END");
            if (*szOuter != '\0')
                t.run(szOuter);
            t.run("INSERT INTO @h VALUES ('host')");
            if (inner.blWorks)
                EXPECT_LE(0, called.nResult) << describe(called.status);
            else
                EXPECT_TRUE(failed(called.status, called.nResult, Code::Misuse));
            EXPECT_EQ(Texts{"host"}, t.rows("SELECT * FROM @h UNION ALL SELECT * FROM changed"));
            EXPECT_EQ(*szOuter == '\0', sqlite3_get_autocommit(t.handle()) != 0);
            EXPECT_EQ(0, busyStatements(t.handle()));
        }
}
