// SPDX-License-Identifier: MIT
//
// Every operation with everything that it could be given, on objects that work and on those that cannot; every code
// that can be reached; and what a failure leaves of the caller's transaction.

#include <cmath>
#include <fstream>
#include <functional>
#include <limits>

#include "table_fixture.h"

using namespace table_tests;

namespace
{

using Texts = std::vector<std::string>;
using Visit = std::function<bool(Json::Value&)>;

// An operation with its JSON arguments: jFirst, jSecond where it takes two, jOut where it hands one back.
struct Operation
{
    const char* szName;
    bool blSecond;
    bool blOut;
    bool blConnection;
    std::function<long long(vorn::Table&, const Json::Value&, const Json::Value&, Json::Value&)> call;
};

#define TABLE_CALL(expression)                                                                                \
    [](vorn::Table& t, const Json::Value& jFirst, const Json::Value& jSecond, Json::Value& jOut) -> long long \
    {                                                                                                         \
        static_cast<void>(jFirst), static_cast<void>(jSecond), static_cast<void>(jOut);                       \
        return expression;                                                                                    \
    }

const std::vector<Operation>& operations()
{
    static const std::vector<Operation> kOperations = {
        {"recCreate", false, false, true, TABLE_CALL(t.recCreate(jFirst))},
        {"recCreate out", false, true, true, TABLE_CALL(t.recCreate(jFirst, jOut))},
        {"recCreateAll", false, false, true, TABLE_CALL(t.recCreateAll(jFirst))},
        {"recSave create", false, true, true, TABLE_CALL(t.recSave(jOut = jFirst, true))},
        {"recSave", false, true, true, TABLE_CALL(t.recSave(jOut = jFirst, false))},
        {"recList", false, true, true, TABLE_CALL(t.recList(jFirst, jOut))},
        {"recForEach", false, false, true, TABLE_CALL(t.recForEach(jFirst, [](Json::Value&) { return true; }))},
        {"recGetOne", false, true, true, TABLE_CALL(t.recGetOne(jFirst, jOut))},
        {"recCount", false, false, true, TABLE_CALL(t.recCount(jFirst))},
        {"recUpdateByFilter", true, false, true, TABLE_CALL(t.recUpdateByFilter(jFirst, jSecond))},
        {"recUpdateByFilter all", true, false, true, TABLE_CALL(t.recUpdateByFilter(jFirst, jSecond, true))},
        {"recDelete", false, false, true, TABLE_CALL(t.recDelete(jFirst))},
        {"recDelete all", false, false, true, TABLE_CALL(t.recDelete(jFirst, true))},
        {"runSql ?", false, true, true, TABLE_CALL(t.runSql("SELECT ? AS n", jFirst, jOut))},
        {"runSql :a", false, true, true, TABLE_CALL(t.runSql("SELECT :a AS name", jFirst, jOut))},
        {"explain", false, true, true, TABLE_CALL(t.explain(jFirst, jOut))},
        {"checkJsonType", false, false, false, TABLE_CALL(t.checkJsonType(jFirst))},
        {"fillDefaultValue", false, true, false, TABLE_CALL(t.fillDefaultValue(jOut = jFirst, false))},
        {"fillDefaultValue all", false, true, false, TABLE_CALL(t.fillDefaultValue(jOut = jFirst, true))},
        {"recDeleteAll", false, false, true, TABLE_CALL(t.recDeleteAll())},
        {"recDeleteByArray", false, false, true, TABLE_CALL(t.recDeleteByArray({"a", "zq7x"}, "name"))},
        {"recDeleteByName", false, false, true, TABLE_CALL(t.recDeleteByName("zq7x", "name"))},
        {"tableCreate", false, false, true, TABLE_CALL(t.tableCreate())},
        {"tableCheck", false, false, true,
         TABLE_CALL(
             [&]
             {
                 Json::Value jReport;
                 return t.tableCheck(jReport, true);
             }())},
        {"tableUpgrade", false, false, true, TABLE_CALL(t.tableUpgrade())},
    };
    return kOperations;
}

Json::Value wrapped(const char* szName, int iLevels, const Json::Value& jInner)
{
    Json::Value jValue = jInner;
    for (int i = 0; i < iLevels; ++i)
    {
        Json::Value jOuter;
        jOuter[szName] = std::move(jValue);
        jValue = std::move(jOuter);
    }
    return jValue;
}

std::vector<Json::Value> everyKind()
{
    std::vector<Json::Value> kinds = {Json::Value(),
                                      true,
                                      false,
                                      0,
                                      -1,
                                      48271,
                                      Json::Value::maxUInt64,
                                      Json::Value::minInt64,
                                      1.5,
                                      std::nan(""),
                                      std::numeric_limits<double>::infinity(),
                                      -0.0,
                                      1e300,
                                      Json::Value(std::string("zq7x\0b", 6)),
                                      "\xff"};
    for (const Json::Value& jKind : json(R"json([
        "", "zq7x", [], [null], [[]], [{}], [48271], ["zq7x"], [{"name": "zq7x"}], [{"name": 48271}], [{}, 5], {}, {"": null},
        {"": "zq7x"}, {"id": null}, {"id": "zq7x"}, {"id": 1}, {"id": 48271}, {"id": 1.5}, {"id": []}, {"id": ["zq7x"]},
        {"id": [1, null, [2]]}, {"id": {}}, {"id": {"$gt": null}}, {"id": {"$gt": "zq7x"}}, {"id": {"$in": 48271}},
        {"id": {"$in": {}}}, {"id": {"$what": 1}}, {"id": {"$gt": 1, "x": 2}}, {"id": {"$not": 5}},
        {"id": {"$not": {"$gt": 5}}}, {"id": {"$exists": "zq7x"}}, {"id": {"$size": 5}}, {"name": "zq7x"},
        {"name": ["zq7x", null]}, {"name": {"$beginsWith": 5}}, {"name": {"$like": "%zq7x\u0000"}},
        {"name": {"$glob": "[zq7x\u0000"}}, {"name": {"$glob": "[[[["}}, {"data": {"a": "zq7x"}}, {"data": {"$eq": {"$eq": 1}}},
        {"data": 5}, {"data.a": "zq7x"}, {"data.": 1}, {"data..b": null}, {"data.a.b": {"$gt": "zq7x"}},
        {"data.a": {"$size": -1}}, {"data.a": [1, "1", true, null, {}, []]}, {"data.a": {"$all": []}}, {"id.a": 1},
        {"list": {"$all": [1, "zq7x", null]}}, {"list": {"$size": 1.5}}, {"$and": 5}, {"$and": []}, {"$and": [5]},
        {"$or": [{"id": 1}, {"$nor": [{"id": 2}]}]}, {"$nor": {}}, {"$not": []}, {"$not": {"id": 1}}, {"$what": 1},
        {"vornSqlWhereFilter": 5}, {"vornSqlWhereFilter": ""}, {"vornSqlWhereFilter": ")"}, {"vornSqlWhereFilter": "1; 2"},
        {"vornSqlWhereFilter": "name = 'zq7x"}, {"vornSqlWhereFilter": "nothing = ?", "vornSqlWhereParams": ["zq7x"]},
        {"vornSqlWhereFilter": "id = ?"}, {"vornSqlWhereFilter": "id = :a", "vornSqlWhereParams": {"a": {}}},
        {"vornSqlWhereFilter": "id = ?", "vornSqlWhereParams": "zq7x"}, {"vornSqlWhereParams": []}, {"limit": 1},
        {"limit": -1}, {"limit": "zq7x"}, {"limit": 1.5}, {"limit": null}, {"$limit": {}}, {"limit": 1, "$limit": 1},
        {"offset": 99999999999999999999}, {"offset": []}, {"sort_by": 5}, {"sort_by": "nome"}, {"sort_by": []},
        {"sort_by": ["-id", "data.a", 5]}, {"sort_by": ""}, {"sort_by": "-"}, {"sort_direction": "asc"},
        {"sort_by": "id", "sort_direction": "zq7x"}, {"fields": []}, {"fields": [5]}, {"fields": ["nome"]}, {"fields": "id"},
        {"fields": ["id", "id"]}, {"a": "zq7x"}, {"a": 48271, "b": 1}, {"a": null}])json"))
        kinds.push_back(jKind);
    kinds.push_back(wrapped("$not", 40, json(R"({"id": 1})")));
    kinds.push_back(wrapped("$not", 3000, json(R"({"id": 1})")));
    kinds.push_back(wrapped("data", 3000, json("{}")));
    kinds.push_back(wrapped("name", 3000, json("{}")));
    kinds.push_back(json(R"({"data": null})"));
    kinds.back()["data"] = wrapped("x", 3000, json("{}"));
    kinds.push_back(Json::Value());
    kinds.back()[std::string("id\0x", 4)] = 1;
    kinds.push_back(Json::Value());
    kinds.back()["\xff'\"%s;--"] = 1;
    kinds.push_back(Json::Value());
    kinds.back()["data.a"]["$in"].append(std::nan(""));
    kinds.push_back(Json::Value());
    for (int i = 0; i < 300; ++i)
        kinds.back()["id"].append(i);
    return kinds;
}

constexpr const char* kMembers =
    R"({"data": {"cpptype": "Json::objectValue"}, "id": {"cpptype": "int", "key": true}, "list": {"cpptype": "Json::arrayValue"},
        "name": {"cpptype": "string", "unique": true}})";

void fill(TestTable& t)
{
    EXPECT_EQ(2, t->recCreateAll(
                     json(R"([{"id": 1, "name": "zq7x", "data": {"a": "zq7x"}}, {"id": 48271, "list": [1, "zq7x"]}])")))
        << t->status().text;
}

std::string shown(const Json::Value& jValue)
{
    std::string strText;
    try
    {
        strText = compact(jValue);
    }
    catch (const std::exception& e)
    {
        strText = e.what();
    }
    return strText.substr(0, 100);
}

}  // namespace

TEST(TableSweep, NoOperationThrowsOrChangesAnythingWhereItFailsWhateverItIsGiven)
{
    TestTable t(kMembers);
    fill(t);
    const Texts before = t.rows();
    const std::vector<Json::Value> kinds = everyKind();
    std::vector<Json::Value> some;  // of the second argument, beside every first one
    for (std::size_t i = 0; i < kinds.size(); i += 7)
        some.push_back(kinds[i]);
    some.push_back(json(R"({"list": ["zq7x"]})"));
    const Json::Value outs[] = {Json::Value(), json(R"(["old"])"), json(R"({"old": 1})"), "old"};
    for (const Operation& operation : operations())
        for (const Json::Value& jFirst : kinds)
            for (const Json::Value& jSecond : operation.blSecond ? some : std::vector<Json::Value>(1))
                for (const Json::Value& jOutBefore : outs)
                {
                    Json::Value jOut = jOutBefore;
                    long long nResult = -2;
                    ASSERT_NO_THROW(nResult = operation.call(*t, jFirst, jSecond, jOut))
                        << operation.szName << shown(jFirst) << shown(jSecond);
                    const vorn::Status status = t->status();
                    const bool blInOut = std::string(operation.szName).find("recSave") == 0 ||
                                         std::string(operation.szName).find("fill") == 0;
                    const bool blRight = nResult == -1
                                             ? status.code != Code::Ok &&
                                                   failed(*t, nResult, status.code, status.member) && t.rows() == before
                                             : nResult >= 0 && status.code == Code::Ok;
                    // A NaN differs from itself: what was put in is compared by its text.
                    const std::string strOut = shown(jOut), strUntouched = shown(blInOut ? jFirst : jOutBefore);
                    ASSERT_TRUE(blRight && (nResult != -1 || strOut == strUntouched) &&
                                busyStatements(t.handle()) == 0 && sqlite3_get_autocommit(t.handle()) != 0)
                        << operation.szName << " " << shown(jFirst) << " " << shown(jSecond) << " -> " << nResult << " "
                        << describe(status) << " out " << strOut;
                    if (nResult > 0 || t.rows() != before)
                    {
                        t.run("DELETE FROM @");
                        fill(t);
                        ASSERT_EQ(before, t.rows());
                    }
                    if (!operation.blOut)
                        break;
                }
}

TEST(TableSweep, TheKeyOfADeleteMayBeAnything)
{
    TestTable t(kMembers);
    fill(t);
    for (const char* szKey : {static_cast<const char*>(nullptr), "", "nome", "$or", "limit", "vornSqlWhereFilter",
                              "data.a.b", "id", "list"})
        for (const std::string& strValue :
             {std::string(), std::string(kSecret), std::string("99"), std::string("\0'", 2)})
        {
            const long long nByName = t->recDeleteByName(strValue, szKey);
            EXPECT_TRUE(nByName == 0 || failed(*t, nByName, t->status().code, t->status().member)) << strValue;
            EXPECT_EQ(nByName, t->recDeleteByArray({strValue, strValue}, szKey));
            EXPECT_EQ(2, t->recCount(Json::Value()));
        }
}

TEST(TableSweep, StatementsOfTheHostMayBeAnything)
{
    TestTable t(kMembers);
    fill(t);
    const Texts before = t.rows();
    for (const std::string& strSql :
         {std::string(), std::string(" \n"), std::string("-- only"), std::string("/*"), std::string("'"),
          std::string("SELEC 1"), std::string("SELECT 1; SELECT 2"), std::string("SELECT 1; SELEC"),
          std::string("SELECT ?1"), std::string("SELECT @x"), std::string("SELECT $x"),
          std::string("SELECT 1\0, 2", 12), std::string("SELECT * FROM none"),
          std::string("INSERT INTO none VALUES (1)"), std::string("UPDATE"), std::string("WITH x AS (SELECT 1)"),
          std::string("\xff"), std::string("RELEASE none"), std::string("ROLLBACK")})
    {
        Json::Value jOut = json("[1]");
        const long long nResult = t->runSql(strSql, Json::Value(), jOut);
        EXPECT_TRUE(failed(*t, nResult, t->status().code, t->status().member)) << strSql;
        EXPECT_TRUE(t->status().code == Code::BadRequest || t->status().code == Code::Sqlite)
            << strSql << describe(t->status());
        EXPECT_EQ(json("[1]"), jOut);
        EXPECT_EQ(before, t.rows());
        EXPECT_EQ(0, busyStatements(t.handle()));
    }
}

TEST(TableMisuse, OfAMovedFromObjectIsToldByEveryOperation)
{
    TestTable t(kMembers);
    fill(t);
    vorn::Table moved(std::move(*t));
    EXPECT_EQ(2, moved.recCount(Json::Value()));
    for (const Operation& operation : operations())
    {
        SCOPED_TRACE(operation.szName);
        Json::Value jOut;
        EXPECT_TRUE(failed(*t, operation.call(*t, json(R"({"id": 1})"), json(R"({"id": 1})"), jOut), Code::Misuse));
    }
    t->setLockTimeout(5);
    t->releaseStatements();
    t->setErrMsg("x");
    static_cast<void>(t->getErrMsg());
    *t = std::move(moved);
    EXPECT_TRUE(done(*t, t->recCount(Json::Value()), 2));
    moved.releaseStatements();
    EXPECT_EQ(Code::Misuse, moved.status().code);
}

TEST(TableMisuse, OfANullConnectionIsToldWhereOneIsNeeded)
{
    const Json::Value jDefinition = definitionOf("T", json(kMembers));
    vorn::Table table(nullptr, "T", jDefinition);
    EXPECT_EQ(Code::Misuse, table.status().code);
    for (const Operation& operation : operations())
    {
        SCOPED_TRACE(operation.szName);
        Json::Value jOut;
        const bool blAll = std::string(operation.szName) == "fillDefaultValue all";
        const bool blRecords = std::string(operation.szName) == "recCreateAll";
        const bool blParams = std::string(operation.szName).find("runSql") == 0;
        const Json::Value jFirst = json(blRecords                                     ? R"([{"id": 1}])"
                                        : operation.szName == std::string("runSql ?") ? "[1]"
                                        : blParams                                    ? R"({"a": 1})"
                                                                                      : R"({"id": 1})");
        const long long nResult = operation.call(table, jFirst, json(R"({"id": 1})"), jOut);
        EXPECT_TRUE(operation.blConnection ? failed(table, nResult, Code::Misuse) : blAll || done(table, nResult));
    }
    vorn::Transaction transaction(nullptr);
    EXPECT_FALSE(transaction.isOpen());
    EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Misuse));
    EXPECT_TRUE(failed(transaction.status(), transaction.rollback(), Code::Misuse));
}

TEST(TableMisuse, OfAnEmptyVisitorIsTold)
{
    TestTable t(kMembers);
    EXPECT_TRUE(failed(*t, t->recForEach(json("{}"), nullptr), Code::Misuse));
    EXPECT_TRUE(failed(*t, t->recForEach(json("{}"), Visit()), Code::Misuse));
}

TEST(TableVisitor, ThatThrowsIsPassedThroughWithEverythingReleased)
{
    TestTable t(kMembers);
    fill(t);
    struct Own
    {
    };
    EXPECT_THROW(t->recForEach(json("{}"), [](Json::Value&) -> bool { throw Own(); }), Own);
    EXPECT_EQ(0, busyStatements(t.handle()));
    EXPECT_TRUE(done(*t, t->recForEach(json("{}"), [](Json::Value&) { return false; }), 1));
    EXPECT_TRUE(done(*t, t->recForEach(json("{}"), [](Json::Value&) { return true; }), 2));
    EXPECT_EQ(0, busyStatements(t.handle()));
}

namespace
{

// Failures that SQLite reports, each with what brings it about.
struct Trouble
{
    const char* szName;
    std::function<void(TestTable&)> begin;
    std::function<long long(TestTable&)> call;
    Code code;
    int sqlite;
};

const std::vector<Trouble>& troubles()
{
    static const auto create = [](TestTable& t)
    { return static_cast<long long>(t->recCreate(json(R"({"name": "a"})"))); };
    static const auto createBig = [](TestTable& t)
    {
        Json::Value jRecord, jOut;
        jRecord["name"] = std::string(50000, 'x');
        return static_cast<long long>(t->recCreate(jRecord, jOut));
    };
    static const auto list = [](TestTable& t)
    {
        Json::Value jOut;
        return static_cast<long long>(t->recList(json("{}"), jOut));
    };
    static const auto update = [](TestTable& t)
    { return t->recUpdateByFilter(json(R"({"id": {"$gte": 0}})"), json(R"({"list": []})")); };
    static const auto interrupt = [](TestTable& t)
    {
        sqlite3_progress_handler(
            t.handle(), 1, [](void*) { return 1; }, nullptr);
    };
    static const auto deny = [](TestTable& t)
    {
        sqlite3_set_authorizer(
            t.handle(), [](void*, int, const char*, const char*, const char*, const char*) { return SQLITE_DENY; },
            nullptr);
    };
    static const std::vector<Trouble> kTroubles = {
        {"full", [](TestTable& t) { t.run("PRAGMA max_page_count = 1"); }, createBig, Code::Full, SQLITE_FULL},
        {"query_only create", [](TestTable& t) { t.run("PRAGMA query_only = 1"); }, create, Code::ReadOnly,
         SQLITE_READONLY},
        {"query_only update", [](TestTable& t) { t.run("PRAGMA query_only = 1"); }, update, Code::ReadOnly,
         SQLITE_READONLY},
        {"interrupted create", interrupt, create, Code::Interrupted, SQLITE_INTERRUPT},
        {"interrupted list", interrupt, list, Code::Interrupted, SQLITE_INTERRUPT},
        {"interrupted update", interrupt, update, Code::Interrupted, SQLITE_INTERRUPT},
        {"too big", [](TestTable& t) { sqlite3_limit(t.handle(), SQLITE_LIMIT_LENGTH, 5000); }, createBig,
         Code::OutOfRange, SQLITE_TOOBIG},
        {"mismatch",
         [](TestTable& t)
         {
             t.run(
                 "CREATE TABLE @o (id INTEGER PRIMARY KEY); CREATE TRIGGER @t AFTER INSERT ON @ BEGIN INSERT INTO @o "
                 "VALUES ('zq7x'); END");
         },
         create, Code::BadType, SQLITE_MISMATCH},
        {"authorizer create", deny, create, Code::Sqlite, SQLITE_AUTH},
        {"authorizer list", deny, list, Code::Sqlite, SQLITE_AUTH},
        {"trigger aborts",
         [](TestTable& t) { t.run("CREATE TRIGGER @t BEFORE UPDATE ON @ BEGIN SELECT RAISE(ABORT, 'no'); END"); },
         update, Code::Constraint, SQLITE_CONSTRAINT},
        {"trigger rolls back",
         [](TestTable& t) { t.run("CREATE TRIGGER @t BEFORE INSERT ON @ BEGIN SELECT RAISE(ROLLBACK, 'no'); END"); },
         create, Code::Constraint, SQLITE_CONSTRAINT},
        {"trigger rolls back update",
         [](TestTable& t) { t.run("CREATE TRIGGER @t BEFORE UPDATE ON @ BEGIN SELECT RAISE(ROLLBACK, 'no'); END"); },
         update, Code::Constraint, SQLITE_CONSTRAINT},
        {"duplicate", [](TestTable&) {},
         [](TestTable& t) { return static_cast<long long>(t->recCreate(json(R"({"name": "zq7x"})"))); },
         Code::Duplicate, SQLITE_CONSTRAINT},
        {"duplicate save", [](TestTable&) {},
         [](TestTable& t)
         {
             Json::Value j = json(R"({"id": 48271, "name": "zq7x"})");
             return static_cast<long long>(t->recSave(j, false));
         },
         Code::Duplicate, SQLITE_CONSTRAINT},
        {"duplicate all", [](TestTable&) {},
         [](TestTable& t) { return t->recCreateAll(json(R"([{"name": "a"}, {"name": "a"}])")); }, Code::Duplicate,
         SQLITE_CONSTRAINT},
        {"missing", [](TestTable& t) { t.run("ALTER TABLE @ DROP COLUMN list"); }, create, Code::Missing, 0},
        {"missing table", [](TestTable& t) { t.run("DROP TABLE @"); }, update, Code::Missing, 0},
        {"bad request", [](TestTable&) {}, [](TestTable& t) { return t->recDelete(json("{}")); }, Code::BadRequest, 0},
        {"bad sql", [](TestTable&) {},
         [](TestTable& t)
         {
             Json::Value j;
             return t->runSql("INSERT INTO none VALUES (1)", j, j);
         },
         Code::Sqlite, SQLITE_ERROR},
        {"bad condition", [](TestTable&) {},
         [](TestTable& t) { return t->recCount(json(R"({"vornSqlWhereFilter": "none = 1"})")); }, Code::Sqlite,
         SQLITE_ERROR},
    };
    return kTroubles;
}

}  // namespace

TEST(TableTroubles, OfSqliteHaveTheirCodesAndLeaveTheCallersTransactionOrSayThatItIsGone)
{
    for (const Trouble& trouble : troubles())
        for (const char* szOuter : {"", "BEGIN", "SAVEPOINT s", "BEGIN IMMEDIATE; SAVEPOINT s", "Transaction"})
        {
            SCOPED_TRACE(std::string(trouble.szName) + " / " + szOuter);
            TestTable t(kMembers);
            fill(t);
            t.run("CREATE TABLE @w (x)");
            std::unique_ptr<vorn::Transaction> pTransaction;
            const bool blOuter = *szOuter != '\0';
            if (std::string(szOuter) == "Transaction")
                pTransaction = std::make_unique<vorn::Transaction>(t.handle());
            else if (blOuter)
                t.run(szOuter);
            if (blOuter)
                t.run("INSERT INTO @w VALUES ('host')");
            trouble.begin(t);
            const long long nResult = trouble.call(t);
            const vorn::Status status = t->status();
            sqlite3_progress_handler(t.handle(), 0, nullptr, nullptr);
            sqlite3_set_authorizer(t.handle(), nullptr, nullptr);
            sqlite3_limit(t.handle(), SQLITE_LIMIT_LENGTH, 1000000000);
            t.run("PRAGMA query_only = 0; PRAGMA max_page_count = 1000000");

            EXPECT_TRUE(failed(*t, nResult, trouble.code, status.member));
            EXPECT_EQ(trouble.sqlite, status.sqlite & 0xff);
            EXPECT_EQ(0, busyStatements(t.handle()));
            const bool blOpen = sqlite3_get_autocommit(t.handle()) == 0;
            if (!blOuter)
            {
                EXPECT_FALSE(blOpen);
            }
            else if (blOpen)
            {
                EXPECT_EQ(Texts{"host"}, t.rows("SELECT * FROM @w"));
                if (pTransaction)
                    EXPECT_EQ(0, pTransaction->commit());
                else
                    t.run(std::string(szOuter).find("SAVEPOINT") != std::string::npos ? "RELEASE s" : "COMMIT");
                EXPECT_EQ(Texts{"host"}, t.rows("SELECT * FROM @w"));
            }
            else
            {
                EXPECT_NE(std::string::npos, status.text.find("transaction")) << status.text;
                EXPECT_EQ(Texts(), t.rows("SELECT * FROM @w"));
                if (pTransaction)
                {
                    EXPECT_FALSE(pTransaction->isOpen());
                    EXPECT_TRUE(failed(pTransaction->status(), pTransaction->commit(), Code::Misuse));
                }
            }
            EXPECT_TRUE(trouble.code == Code::Missing ||
                        t.rows("SELECT id, name FROM @ ORDER BY id") == (Texts{"1|zq7x", "48271|NULL"}));
        }
}

TEST(TableTroubles, OfADeferredForeignKeyUndoWhatWasWrittenAndLeaveNoTransactionOpen)
{
    const char* const szCreate =
        "CREATE TABLE @p (id INTEGER PRIMARY KEY); INSERT INTO @p VALUES (1);"
        "CREATE TABLE @ (id INTEGER PRIMARY KEY, name TEXT, data TEXT, list INT REFERENCES @p (id) DEFERRABLE "
        "INITIALLY DEFERRED)";
    TestTable t(R"({"id": {"cpptype": "int"}, "list": {"cpptype": "int"}})", szCreate);
    t.run("PRAGMA foreign_keys = ON");
    t.create(R"({"id": 1, "list": 1})");
    Json::Value jOut("before");
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"list": 48271})"), jOut), Code::Constraint));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"list": 48271})")), Code::Constraint));
    EXPECT_TRUE(failed(*t, t->recCreateAll(json(R"([{"list": 1}, {"list": 48271}])")), Code::Constraint));
    EXPECT_TRUE(failed(*t, t->recUpdateByFilter(json(R"({"id": 1})"), json(R"({"list": 48271})")), Code::Constraint));
    EXPECT_NE(0, sqlite3_get_autocommit(t.handle()));
    EXPECT_EQ(1, t->recCount(Json::Value()));
    EXPECT_EQ(Json::Value("before"), jOut);

    vorn::Transaction transaction(t.handle());
    EXPECT_TRUE(done(*t, t->recCreate(json(R"({"list": 48271})"), jOut))) << "in a transaction the end decides";
    EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Constraint));
    EXPECT_TRUE(transaction.isOpen());
    t.run("INSERT INTO @p VALUES (48271)");
    EXPECT_EQ(0, transaction.commit());
    EXPECT_EQ(2, t->recCount(Json::Value()));
}

TEST(TableTroubles, OfADamagedFileAreCorrupt)
{
    support::TempFile file;
    std::ofstream(file.path()) << std::string(4096, 'x');
    {
        TestTable t(kMembers, "", std::make_shared<Database>(file.path()));
        EXPECT_TRUE(failed(*t, -1, Code::Corrupt));
        EXPECT_EQ(SQLITE_NOTADB, t->status().sqlite);
    }
    support::TempFile other;
    std::string strName;
    {
        TestTable t(kMembers, "", std::make_shared<Database>(other.path()));
        fill(t);
        strName = t.name();
    }
    {
        std::fstream damage(other.path(), std::ios::in | std::ios::out | std::ios::binary);
        damage.seekp(4096) << std::string(4096, '\xee');
    }
    TestTable t(kMembers, "", std::make_shared<Database>(other.path()), strName);
    Json::Value jOut;
    EXPECT_TRUE(failed(*t, t->recList(json("{}"), jOut), Code::Corrupt));
    EXPECT_TRUE(failed(*t, t->recCreate(json("{}")), Code::Corrupt));
}
