// SPDX-License-Identifier: MIT
//
// Statements that the host wrote: their parameters, their rows, what they count, and what is left when they fail.

#include "table_fixture.h"

using namespace table_tests;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kMembers =
    R"({"data": {"cpptype": "Json::objectValue"}, "flag": {"cpptype": "bool"}, "id": {"cpptype": "int", "key": true},
        "name": {"cpptype": "string"}, "u": {"cpptype": "unsigned long"}})";

void fill(TestTable& t)
{
    EXPECT_EQ(2, t->recCreateAll(json(R"([{"id": 1, "name": "a"}, {"id": 2, "name": "zq7x"}])")));
}

}  // namespace

TEST(TableRunSql, ReadsDeclaredColumnsByTheirTypeAndOthersByWhatTheyHoldAndCounts)
{
    struct Case
    {
        const char* szSql;
        const char* szParams;
        long long nResult;
        const char* szRows;  // null: there are no columns
    };
    const Case cases[] = {
        {"SELECT 1 AS n, 0.5 AS r, 'x' AS t, x'610062' AS b, NULL AS absent", "null", 1,
         R"([{"n": 1, "r": 0.5, "t": "x", "b": "a\u0000b"}])"},
        {"SELECT 1 AS flag, '7' AS u, '{\"a\":1}' AS data, NULL AS name", "null", 1,
         R"([{"flag": true, "u": 7, "data": {"a": 1}}])"},
        {"SELECT ? AS a, ? AS b, ? AS c, ? AS d, ? AS e, ? AS f", R"([null, 0.5, -3, [1, "x"], {"k": null}, false])", 1,
         R"([{"b": 0.5, "c": -3, "d": "[1,\"x\"]", "e": "{\"k\":null}", "f": 0}])"},
        {"SELECT :a AS a, :B_2 AS b, :a AS c", R"({"a": "it's", "B_2": true})", 1,
         R"([{"a": "it's", "b": 1, "c": "it's"}])"},
        {"SELECT id FROM @ ORDER BY id DESC", "null", 2, R"([{"id": 2}, {"id": 1}])"},
        {"SELECT id FROM @ WHERE id > 5", "[]", 0, "[]"},
        {"WITH x AS (SELECT 1 AS n UNION SELECT 2) SELECT n FROM x", "{}", 2, R"([{"n": 1}, {"n": 2}])"},
        {"VALUES (1), (2)", "null", 2, R"([{"column1": 1}, {"column1": 2}])"},
        {"PRAGMA user_version", "null", 1, R"([{"user_version": 0}])"},
        {"INSERT INTO @ (id) VALUES (?), (?) RETURNING id, name", "[7, 8]", 2, R"([{"id": 7}, {"id": 8}])"},
        {"-- a comment; and\n /* another; */ INSERT INTO @ (id) VALUES (5), (6)", "null", 2, nullptr},
        {"insert into @ (name) SELECT name FROM @", "null", 2, nullptr},
        {"UPDATE @ SET name = :n WHERE id = 1;", R"({"n": "b"})", 1, nullptr},
        {"REPLACE INTO @ (id, name) VALUES (1, 'r')", "null", 1, nullptr},
        {"WITH x AS (SELECT 1 AS n) DELETE FROM @ WHERE id IN (SELECT n FROM x)", "null", 1, nullptr},
        {"DELETE FROM @ WHERE id = 99", "null", 0, nullptr},
        {"CREATE TABLE @c (a); -- the end", "null", 0, nullptr},
        {"DROP TABLE @", "null", 0, nullptr},
        {"PRAGMA user_version = 5", "null", 0, nullptr},
        {"VACUUM", "null", 0, nullptr},
        {"BEGIN IMMEDIATE", "null", 0, nullptr},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(one.szSql);
        TestTable t(kMembers);
        fill(t);
        Json::Value jExpected = json(R"(["before"])");
        Json::Value jRows = jExpected;
        if (one.szRows != nullptr)
            for (const Json::Value& jRow : json(one.szRows))
                jExpected.append(jRow);
        else
            jExpected = jRows = "rows of which there are none are appended to nothing";
        EXPECT_TRUE(done(*t, t->runSql(t.sql(one.szSql), json(one.szParams), jRows), one.nResult));
        EXPECT_EQ(compact(jExpected), compact(jRows));
        EXPECT_EQ(std::string(one.szSql) == "BEGIN IMMEDIATE", sqlite3_get_autocommit(t.handle()) == 0);
        EXPECT_EQ(0, busyStatements(t.handle()));
    }
    TestTable t(kMembers);
    Json::Value jRows;
    EXPECT_TRUE(done(*t, t->runSql("SELECT 7 AS u, 7 AS other", Json::Value(), jRows), 1));
    EXPECT_EQ(Json::uintValue, jRows[0]["u"].type());
    EXPECT_EQ(Json::intValue, jRows[0]["other"].type());
}

TEST(TableRunSql, ThatFailsUndoesWhatItWroteAndLeavesTheRows)
{
    struct Case
    {
        const char* szSql;
        const char* szParams;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {"SELECT ? AS a", "null", Code::BadRequest, ""},
        {"SELECT ? AS a", R"(["zq7x", 48271])", Code::BadRequest, ""},
        {"SELECT ? AS a", R"({"a": 48271})", Code::BadRequest, ""},
        {"SELECT ? AS a", "48271", Code::BadRequest, ""},
        {"SELECT :a AS a", R"({"b": "zq7x"})", Code::BadRequest, ""},
        {"SELECT :a AS a", R"({"a": 1, "b": "zq7x"})", Code::BadRequest, ""},
        {"SELECT :a AS a", "[48271]", Code::BadRequest, ""},
        {"SELECT : AS a", R"({"": 1})", Code::BadRequest, ""},
        {"SELECT ? AS a", "[NaN]", Code::OutOfRange, ""},
        {"SELECT ? AS a", "[18446744073709551615]", Code::OutOfRange, ""},
        {"SELECT ? AS a", "[[Infinity]]", Code::OutOfRange, ""},
        {"SELECT 1)", "null", Code::Sqlite, ""},
        {"SELECT 'unended", "null", Code::BadRequest, ""},
        {"SELECT 'zq7x' AS flag", "null", Code::BadCell, "flag"},
        {"SELECT name AS data FROM @", "null", Code::BadCell, "data"},
        {"INSERT INTO @ (id) VALUES (48271) RETURNING 'zq7x' AS flag", "null", Code::BadCell, "flag"},
        {"INSERT INTO @ (id) VALUES (48271), (1)", "null", Code::Duplicate, "id"},
        {"INSERT OR FAIL INTO @ (id) VALUES (48271), (1)", "null", Code::Duplicate, "id"},
        {"UPDATE @ SET id = 1 WHERE id = 2", "null", Code::Duplicate, "id"},
        {"UPDATE @ SET id = 'zq7x'", "null", Code::BadType, ""},
        {"INSERT INTO @ (none) VALUES (1)", "null", Code::Sqlite, ""},
    };
    for (const Case& one : cases)
        for (const char* szOuter : {"", "BEGIN"})
        {
            SCOPED_TRACE(std::string(one.szSql) + " " + one.szParams);
            TestTable t(kMembers);
            fill(t);
            t.run(szOuter);
            const Texts before = t.rows();
            Json::Value jRows = json(R"(["before"])");
            EXPECT_TRUE(failed(*t, t->runSql(t.sql(one.szSql), json(one.szParams), jRows), one.code, one.szMember));
            EXPECT_EQ(json(R"(["before"])"), jRows);
            EXPECT_EQ(before, t.rows());
            EXPECT_EQ(*szOuter == '\0', sqlite3_get_autocommit(t.handle()) != 0);
            EXPECT_EQ(0, busyStatements(t.handle()));
        }
    TestTable t(kMembers);
    Json::Value jRows(Json::objectValue);
    EXPECT_TRUE(failed(*t, t->runSql("SELECT 1", Json::Value(), jRows), Code::BadRequest));
    EXPECT_EQ(Json::Value(Json::objectValue), jRows);

    TestTable noKey(R"({"n": {"cpptype": "int"}})");
    const std::string strInsert = noKey.sql("INSERT INTO @ (rowid) VALUES (7)");
    EXPECT_TRUE(done(*noKey, noKey->runSql(strInsert, Json::Value(), jRows), 1));
    EXPECT_TRUE(
        failed(*noKey, noKey->runSql(strInsert, Json::Value(), jRows), Code::Duplicate, noKey->status().member));
}

TEST(TableRunSql, OnATableThatIsBeingReadIsLockedAtOnceWhereSqliteForbidsIt)
{
    TestTable t(kMembers);
    fill(t);
    EXPECT_EQ(1, t->recForEach(json("{}"),
                               [&](Json::Value&)
                               {
                                   Json::Value jRows;
                                   EXPECT_TRUE(failed(*t, t->runSql(t.sql("DROP TABLE @"), Json::Value(), jRows),
                                                      Code::Locked));
                                   return false;
                               }));
    EXPECT_EQ(2, t->recCount(Json::Value()));
}
