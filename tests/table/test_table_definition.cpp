// SPDX-License-Identifier: MIT
//
// What a definition may be, the table that is made from it, and how a table is checked and brought up to it.

#include <algorithm>
#include <functional>

#include "table_fixture.h"

using namespace table_tests;

namespace
{

const std::vector<std::string> kTypeNames = {"string",
                                             "bool",
                                             "int",
                                             "unsigned int",
                                             "unsigned",
                                             "uid_t",
                                             "long long",
                                             "long",
                                             "time_t",
                                             "unsigned long long",
                                             "unsigned long",
                                             "float",
                                             "double",
                                             "Json::objectValue",
                                             "Json::arrayValue",
                                             "Json::Value"};

std::vector<std::string> sorted(const Json::Value& jTexts)
{
    std::vector<std::string> texts;
    for (const Json::Value& jText : jTexts)
        texts.push_back(jText.asString());
    return texts;
}

using Texts = std::vector<std::string>;

// Every operation with arguments that are right for a member "id".
std::vector<std::pair<std::string, std::function<long long(vorn::Table&)>>> everyOperation()
{
    static const Json::Value jFilter = json(R"({"id": 1})");
    static const auto visit = [](Json::Value&) { return true; };
    return {
        {"recCreate", [](vorn::Table& t) { return t.recCreate(json(R"({"id": 4})")); }},
        {"recCreate out",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recCreate(json(R"({"id": 6})"), jOut);
         }},
        {"recCreateAll", [](vorn::Table& t) { return t.recCreateAll(json(R"([{"id": 5}])")); }},
        {"recSave create",
         [](vorn::Table& t)
         {
             Json::Value j = json(R"({"id": 7})");
             return t.recSave(j, true);
         }},
        {"recSave",
         [](vorn::Table& t)
         {
             Json::Value j = jFilter;
             return t.recSave(j, false);
         }},
        {"recList",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recList(jFilter, jOut);
         }},
        {"recForEach", [](vorn::Table& t) { return t.recForEach(jFilter, visit); }},
        {"recGetOne",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.recGetOne(jFilter, jOut);
         }},
        {"recCount", [](vorn::Table& t) { return t.recCount(jFilter); }},
        {"recUpdateByFilter", [](vorn::Table& t) { return t.recUpdateByFilter(jFilter, json(R"({"id": 2})")); }},
        {"recDelete", [](vorn::Table& t) { return t.recDelete(jFilter); }},
        {"recDeleteAll", [](vorn::Table& t) { return t.recDeleteAll(); }},
        {"recDeleteByArray", [](vorn::Table& t) { return t.recDeleteByArray({"1"}, "id"); }},
        {"recDeleteByName", [](vorn::Table& t) { return t.recDeleteByName("1", "id"); }},
        {"explain",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.explain(jFilter, jOut);
         }},
        {"runSql",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.runSql("SELECT 1", Json::Value(), jOut);
         }},
        {"checkJsonType", [](vorn::Table& t) { return t.checkJsonType(jFilter); }},
        {"fillDefaultValue",
         [](vorn::Table& t)
         {
             Json::Value j = jFilter;
             return t.fillDefaultValue(j, false);
         }},
        {"tableCreate", [](vorn::Table& t) { return t.tableCreate(); }},
        {"tableCheck",
         [](vorn::Table& t)
         {
             Json::Value jOut;
             return t.tableCheck(jOut);
         }},
        {"tableUpgrade", [](vorn::Table& t) { return t.tableUpgrade(); }},
    };
}

constexpr int kRecOperationsAndExplain = 15;  // the first ones

}  // namespace

TEST(TableDefinition, OfAnotherShapeIsNotTaken)
{
    const char* const bad[] = {"null",
                               "[]",
                               "5",
                               R"("text")",
                               "{}",
                               R"({"other": {"member": {"a": {"cpptype": "int"}}}})",
                               R"({"T": null})",
                               R"({"T": []})",
                               R"({"T": {}})",
                               R"({"T": {"member": null}})",
                               R"({"T": {"member": []}})",
                               R"({"T": {"member": {}}})",
                               R"({"T": {"member": {"a": null}}})",
                               R"({"T": {"member": {"a": "int"}}})",
                               R"({"T": {"member": {"a": []}}})",
                               R"({"T": {"member": {"a": {}}}})",
                               R"({"T": {"member": {"a": {"cpptype": null}}}})",
                               R"({"T": {"member": {"a": {"cpptype": 5}}}})",
                               R"({"T": {"member": {"a": {"cpptype": ""}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "Int"}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int "}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "std::string"}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int\u0000"}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int", "key": 1}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int", "unique": "yes"}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int", "required": null}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int", "index": {}}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "int", "unique": true, "cppDefaultValue": 1}}}})",
                               R"({"T": {"member": {"a": {"cpptype": "bool", "key": true}}}})",
                               R"({"T": {"member": {"$a": {"cpptype": "int"}}}})",
                               R"({"T": {"member": {"-a": {"cpptype": "int"}}}})",
                               R"({"T": {"member": {"": {"cpptype": "int"}}}})",
                               R"({"T": {"member": {"a\u0000b": {"cpptype": "int"}}}})",
                               R"({"T": {"member": {"id": {"cpptype": "int"}, "Id": {"cpptype": "int"}}}})",
                               R"({"T": {"member": {"aÄ": {"cpptype": "int"}, "AÄ": {"cpptype": "int"}}}})"};
    for (const char* szDefinition : bad)
    {
        SCOPED_TRACE(szDefinition);
        Database db;
        vorn::Table table(db.handle(), "T", json(szDefinition));
        EXPECT_EQ(Code::BadDefinition, table.status().code) << describe(table.status());
        EXPECT_FALSE(table.status().text.empty());
        for (const auto& [strName, call] : everyOperation())
        {
            SCOPED_TRACE(strName);
            const long long nResult = call(table);
            EXPECT_TRUE(failed(table, nResult, Code::BadDefinition, table.status().member));
        }
        EXPECT_EQ(Texts(), db.rows("SELECT name FROM sqlite_master"));
    }
    for (const std::string& strName : {std::string(), std::string("T\0x", 3)})
    {
        Database db;
        vorn::Table table(db.handle(), strName, definitionOf(strName, json(R"({"id": {"cpptype": "int"}})")));
        EXPECT_EQ(Code::BadDefinition, table.status().code);
    }
}

TEST(TableDefinition, MayHoldOtherNamesOtherTablesNullDefaultsAndFlagsThatAreFalse)
{
    Database db;
    const Json::Value jDefinition = json(R"({"T": {"comment": 5, "member": {
        "id": {"cpptype": "int", "key": false, "unique": false, "required": false, "index": false, "$x": [], "label": "no"},
        "u": {"cpptype": "int", "unique": true, "cppDefaultValue": null}, "ä": {"cpptype": "bool", "key": true},
        "Ä": {"cpptype": "int", "key": true}}}, "U": null})");
    vorn::Table table(db.handle(), "T", jDefinition);
    EXPECT_TRUE(done(table, 0));
    EXPECT_TRUE(done(table, table.recCreate(json(R"({"id": 1, "ä": true, "Ä": 2})"))));
    EXPECT_EQ(Texts{"1|NULL|2|1"}, db.rows("SELECT * FROM T"));
}

TEST(TableDefinition, BelongsToItsObject)
{
    TestTable t(R"({"id": {"cpptype": "int"}, "x": {"cpptype": "string"}})");
    vorn::Table other(t.handle(), t.name(), definitionOf(t.name(), json(R"({"id": {"cpptype": "unsigned"}})")));
    t.create(R"({"id": 1, "x": "a"})");
    Json::Value jOut;
    EXPECT_TRUE(done(other, other.recGetOne(json("{}"), jOut), 1));
    EXPECT_EQ(Json::Value(1u), jOut["id"]);
    EXPECT_FALSE(jOut.isMember("x"));
    EXPECT_EQ(json(R"([{"id": 1, "x": "a"}])"), t.list());
}

TEST(TableDefinition, WithAnyNameWorksInEveryOperation)
{
    const std::string strLong(300, 'x');
    const char* const names[] = {"order",   "select",    "a b",  " ",   "it's", "\"",   "a\"\"b", "`",
                                 "[x]",     "Grüße",     "漢字", "a.b", ".",    "%s%n", "a;b--c", "rowid",
                                 "_rowid_", "limitless", "1",    "?1",  ":x",   "@y",   "main",   "NULL",
                                 "true",    "a\tb",      "/*",   "a:b", "x$y",  "abs",  "(",      strLong.c_str(),
                                 "sqlite",  "old",       "new",  "\xff"};
    for (const char* szName : names)
        for (const char* szTable : {"plain", szName})
        {
            SCOPED_TRACE(std::string(szTable) + " / " + szName);
            Database db;
            Json::Value jMembers;
            jMembers[szName] = json(R"({"cpptype": "string", "unique": true, "required": true})");
            jMembers["sqlite indexed"] = json(R"({"cpptype": "int", "index": true})");
            vorn::Table table(db.handle(), szTable, definitionOf(szTable, jMembers));
            ASSERT_TRUE(done(table, 0));
            Json::Value jRecord, jOut, jRequest, jValues;
            jRecord[szName] = "a";
            jRecord["sqlite indexed"] = 1;
            EXPECT_TRUE(done(table, table.recCreate(jRecord, jOut)));
            EXPECT_EQ(jRecord, jOut);
            EXPECT_TRUE(failed(table, table.recCreate(jRecord), Code::Duplicate, szName));
            jRequest[szName] = "a";
            jRequest["$sort_by"] = szName;
            jRequest["$fields"].append(szName);
            jOut = Json::Value();
            EXPECT_TRUE(done(table, table.recGetOne(jRequest, jOut), 1));
            EXPECT_EQ(1u, jOut.size());
            jValues[szName] = "b";
            jRequest = Json::Value();
            jRequest[szName]["$gte"] = "a";
            EXPECT_TRUE(done(table, table.recUpdateByFilter(jRequest, jValues), 1));
            EXPECT_TRUE(done(table, table.recCount(jValues), 1));
            jValues[szName] = Json::Value();
            EXPECT_TRUE(failed(table, table.recUpdateByFilter(jRequest, jValues), Code::Constraint, szName));
            Json::Value jReport;
            EXPECT_TRUE(done(table, table.tableCheck(jReport, true)));
            EXPECT_EQ(json(R"({"missing": [], "undeclared": [], "types": [], "keys": [], "cells": []})"), jReport);
            EXPECT_TRUE(done(table, table.tableUpgrade()));
            EXPECT_TRUE(done(table, table.recDeleteByName("b", szName), 1));
        }
}

TEST(TableCreate, MakesColumnsKeysAndIndexesAsDefined)
{
    for (const std::string& strType : kTypeNames)
    {
        SCOPED_TRACE(strType);
        TestTable t(R"({"m": {"cpptype": ")" + strType + R"(", "required": true}})");
        const bool blReal = strType == "float" || strType == "double";
        const bool blText = strType == "string" || strType.rfind("Json", 0) == 0;
        EXPECT_EQ(
            Texts{std::string("m|") +
                  (blReal   ? "REAL"
                   : blText ? "TEXT"
                            : "INTEGER") +
                  "|1|NULL|0"},
            t.db().rows("SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info('" + t.name() + "')"));
    }
    TestTable t(R"({"b": {"cpptype": "string", "key": true}, "a": {"cpptype": "int", "key": true},
                    "i": {"cpptype": "int", "index": true, "cppDefaultValue": 7}, "u": {"cpptype": "int", "unique": true}})");
    EXPECT_EQ((Texts{"a|1|1", "b|1|2", "i|0|0", "u|0|0"}),
              t.db().rows("SELECT name, \"notnull\", pk FROM pragma_table_info('" + t.name() + "')"));
    EXPECT_EQ((Texts{t.name() + ":i:index|0", t.name() + ":u:unique|1"}),
              t.db().rows("SELECT name, \"unique\" FROM pragma_index_list('" + t.name() +
                          "') WHERE origin = 'c' ORDER BY 1"));
    EXPECT_EQ(Texts{"7"}, t.db().rows("SELECT dflt_value FROM pragma_table_info('" + t.name() + "') WHERE name = 'i'"));
}

TEST(TableCreate, GivesAnIndexAnotherNameWhereItsNameIsTaken)
{
    auto pDatabase = std::make_shared<Database>();
    const std::string strName = freshName();
    pDatabase->run("CREATE TABLE \"" + strName +
                   ":i:index\" (x); CREATE TABLE other (x);"
                   "CREATE INDEX \"" +
                   strName + ":u:unique\" ON other (x)");
    TestTable t(R"({"i": {"cpptype": "int", "index": true}, "u": {"cpptype": "int", "unique": true}})", "", pDatabase,
                strName);
    EXPECT_TRUE(done(*t, 0));
    EXPECT_EQ(Texts{"2"}, pDatabase->rows("SELECT count(*) FROM pragma_index_list('" + strName + "')"));
    t.create(R"({"u": 1})");
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"u": 1})")), Code::Duplicate, "u"));
}

TEST(TableCreate, LetsASingleWholeNumberKeyNumberItself)
{
    for (const char* szType : {"int", "unsigned int", "unsigned", "uid_t", "long long", "long", "time_t",
                               "unsigned long long", "unsigned long"})
    {
        SCOPED_TRACE(szType);
        TestTable t(R"({"id": {"cpptype": ")" + std::string(szType) + R"(", "key": true}, "x": {"cpptype": "int"}})");
        Json::Value jOut;
        EXPECT_TRUE(done(*t, t->recCreate(json("{}"), jOut)));
        EXPECT_EQ(1, jOut["id"].asInt());
        EXPECT_TRUE(done(*t, t->recCreate(json(R"({"id": null, "x": 5})"), jOut)));
        EXPECT_EQ(2, jOut["id"].asInt());
        EXPECT_EQ(Texts{"1"}, t.rows("SELECT count(*) FROM @ WHERE rowid = id AND id = 2"));
    }
    TestTable t(R"({"id": {"cpptype": "string", "key": true}})");
    EXPECT_TRUE(failed(*t, t->recCreate(json("{}")), Code::Constraint, "id"));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"id": null})")), Code::Constraint, "id"));
}

TEST(TableCreate, RunsTheHostsTextAsItStands)
{
    TestTable t(R"({"a": {"cpptype": "int"}})",
                "CREATE TABLE @ (a, b DEFAULT '%s'); CREATE INDEX i ON @ (b); INSERT INTO @ VALUES (1, 2)");
    EXPECT_TRUE(done(*t, 0));
    EXPECT_EQ(json(R"([{"a": 1}])"), t.list());
    EXPECT_TRUE(failed(*t, t->tableCreate(), Code::Sqlite)) << "there is one now";

    for (const char* szBroken : {"CREATE TABL", "SELECT abs(column1) FROM (VALUES (1), (-9223372036854775807 - 1))"})
    {
        SCOPED_TRACE(szBroken);
        TestTable broken(R"({"id": {"cpptype": "int"}})", szBroken);
        EXPECT_TRUE(failed(*broken, -1, Code::Sqlite));
        EXPECT_EQ(SQLITE_ERROR, broken->status().sqlite & 0xff);
        EXPECT_TRUE(failed(*broken, broken->tableCreate(), Code::Sqlite));
        EXPECT_TRUE(failed(*broken, broken->recCreate(json("{}")), Code::Missing));
    }

    TestTable rows(R"({"a": {"cpptype": "int"}})",
                   "SELECT 1 UNION SELECT 2; CREATE TABLE @ (a); PRAGMA table_info(@); -- the end\n ");
    EXPECT_TRUE(done(*rows, 0)) << "rows are left aside, and so is what is no statement";
    rows.create(R"({"a": 1})");

    TestTable kept(R"({"a": {"cpptype": "int"}})", "CREATE TABLE IF NOT EXISTS @ (a)");
    EXPECT_TRUE(done(*kept, kept->tableCreate()));
    kept.run("DROP TABLE @");
    EXPECT_TRUE(done(*kept, kept->tableCreate()));
    kept.create(R"({"a": 1})");
}

TEST(TableCreate, LeavesATableThatExistsAndWaitsForNoWriter)
{
    support::TempFile file;
    Database writer(file.path());
    ASSERT_EQ(SQLITE_OK,
              writer.run(
                  "CREATE TABLE T (id TEXT); INSERT INTO T VALUES ('a'); BEGIN IMMEDIATE; INSERT INTO T VALUES ('b')"));
    Database db(file.path());
    vorn::Table table(db.handle(), "T", definitionOf("T", json(R"({"id": {"cpptype": "string", "index": true}})")));
    EXPECT_TRUE(done(table, 0));
    EXPECT_TRUE(done(table, table.tableCreate()));
    EXPECT_TRUE(done(table, table.recCount(json("{}")), 1));
    writer.run("COMMIT");
    EXPECT_EQ(Texts(), db.rows("SELECT name FROM sqlite_master WHERE type = 'index'"));
}

TEST(TableCreate, IsAllOrNothing)
{
    // No index can be made: its name is fine, but the database is too full for it.
    auto pDatabase = std::make_shared<Database>();
    pDatabase->run("PRAGMA page_size = 512; CREATE TABLE other (x); PRAGMA max_page_count = 3");
    TestTable t(R"({"id": {"cpptype": "int", "index": true}, "x": {"cpptype": "int", "unique": true}})", "", pDatabase);
    EXPECT_TRUE(failed(*t, -1, Code::Full));
    EXPECT_EQ(Texts{"other"}, pDatabase->rows("SELECT name FROM sqlite_master"));
    EXPECT_NE(0, sqlite3_get_autocommit(t.handle()));
}

TEST(TableCheck, ReportsWhatDiffersAndFailsOnlyForWhatCannotWork)
{
    TestTable t(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}, "k": {"cpptype": "int", "key": true},
                    "lost": {"cpptype": "int"}, "u": {"cpptype": "int", "unique": true}})",
                "CREATE TABLE @ (a TEXT, b VARCHAR(5), k INTEGER, u INT, z, y)");
    Json::Value jReport("old");
    EXPECT_TRUE(failed(*t, t->tableCheck(jReport), Code::Missing, "lost"));
    EXPECT_NE(std::string::npos, t->status().text.find("tableUpgrade")) << t->status().text;
    EXPECT_EQ(json(R"(["lost"])"), jReport["missing"]);
    EXPECT_EQ((Texts{"y", "z"}),
              [&]
              {
                  Texts texts = sorted(jReport["undeclared"]);
                  std::sort(texts.begin(), texts.end());
                  return texts;
              }());
    EXPECT_EQ(json(R"([{"member": "a", "declared": "int", "column": "TEXT"}])"), jReport["types"]);
    EXPECT_EQ(json(R"(["k", "u"])"), jReport["keys"]);
    EXPECT_FALSE(jReport.isMember("cells"));

    t.run("ALTER TABLE @ ADD lost INTEGER; CREATE UNIQUE INDEX any_name ON @ (u); CREATE UNIQUE INDEX other ON @ (k)");
    EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
    EXPECT_EQ(json("[]"), jReport["missing"]);
    EXPECT_EQ(json("[]"), jReport["keys"]);
    EXPECT_EQ(1u, jReport["types"].size());
    EXPECT_EQ(2u, jReport["undeclared"].size());

    // A partial index holds nothing unique, nor does one of more columns.
    t.run("DROP INDEX any_name; CREATE UNIQUE INDEX part ON @ (u) WHERE u > 5; CREATE UNIQUE INDEX more ON @ (u, a)");
    EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
    EXPECT_EQ(json(R"(["u"])"), jReport["keys"]);
    t.run("CREATE UNIQUE INDEX lowered ON @ (lower(u))");
    EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
    EXPECT_EQ(json(R"(["u"])"), jReport["keys"]);
}

TEST(TableCheck, NamesEveryColumnOfAnotherAffinity)
{
    TestTable t(
        R"({"a": {"cpptype": "string"}, "b": {"cpptype": "string"}, "c": {"cpptype": "int"}, "d": {"cpptype": "double"},
            "e": {"cpptype": "float"}, "f": {"cpptype": "int"}, "g": {"cpptype": "int"}, "h": {"cpptype": "bool"}})",
        "CREATE TABLE @ (a CLOB, b BLOB, c DECIMAL(5), d DOUBLE PRECISION, e FLOAT, f, g POINT, h BOOLEAN)");
    Json::Value jReport;
    EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
    EXPECT_EQ(json(R"~([{"member": "b", "declared": "string", "column": "BLOB"},
                       {"member": "c", "declared": "int", "column": "DECIMAL(5)"
},
                       {"member": "f", "declared": "int", "column": ""},
                       {"member": "h", "declared": "bool", "column": "BOOLEAN"}])~"),
              jReport["types"])
        << "by SQLite's rules a point is a whole number";
}

TEST(TableCheck, OfATableThatIsNotThereOrHasNoneOfTheColumnsFillsTheReport)
{
    for (const char* szChange : {"DROP TABLE @", "DROP TABLE @; CREATE TABLE @ (z)"})
    {
        TestTable t(R"({"a": {"cpptype": "int", "unique": true}, "b": {"cpptype": "int"}})");
        t.run(szChange);
        const bool blThere = t.db().rows("SELECT * FROM sqlite_master").size() == 1;
        Json::Value jReport;
        EXPECT_TRUE(failed(*t, t->tableCheck(jReport, true), Code::Missing, blThere ? "a" : ""));
        EXPECT_EQ(json(R"({"missing": ["a", "b"], "types": [], "keys": ["a"], "cells": []})"),
                  (jReport.removeMember("undeclared"), jReport));
        EXPECT_TRUE(done(*t, t->tableUpgrade()));
        EXPECT_TRUE(done(*t, t->tableCheck(jReport, true)));
        EXPECT_EQ(json(blThere ? R"(["z"])" : "[]"), jReport["undeclared"]);
    }
    TestTable t(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int"}})", "CREATE TABLE @ (b)");
    t.run("INSERT INTO @ VALUES ('zq7x')");
    Json::Value jReport;
    EXPECT_TRUE(failed(*t, t->tableCheck(jReport, true), Code::Missing, "a"));
    EXPECT_EQ(Json::Value("b"), jReport["cells"][0]["member"]) << "the columns that are there are read";
}

TEST(TableCheck, TakesEachTypesOwnAffinityAsRight)
{
    for (const std::string& strType : kTypeNames)
    {
        SCOPED_TRACE(strType);
        TestTable t(R"({"m": {"cpptype": ")" + strType + "\"}}");
        Json::Value jReport;
        EXPECT_TRUE(done(*t, t->tableCheck(jReport, true)));
        EXPECT_EQ(json(R"({"missing": [], "undeclared": [], "types": [], "keys": [], "cells": []})"), jReport);
    }
}

TEST(TableMissing, ColumnsOrTablesAreNamedByEveryOperationUntilTheUpgrade)
{
    const char* const szMembers = R"({"id": {"cpptype": "int", "key": true}, "late": {"cpptype": "int"}})";
    const auto operations = everyOperation();
    for (int i = 0; i < kRecOperationsAndExplain; ++i)
    {
        const auto& [strName, call] = operations[static_cast<std::size_t>(i)];
        SCOPED_TRACE(strName);
        TestTable t(szMembers, "CREATE TABLE @ (id INTEGER PRIMARY KEY)");
        t.run("INSERT INTO @ VALUES (1)");
        EXPECT_TRUE(failed(*t, call(*t), Code::Missing, "late"));
        EXPECT_NE(std::string::npos, t->status().text.find("tableUpgrade()")) << t->status().text;
        EXPECT_EQ(Texts{"1"}, t.rows());
        EXPECT_TRUE(done(*t, t->tableUpgrade()));
        EXPECT_LE(0, call(*t)) << describe(t->status());

        t.run("ALTER TABLE @ DROP COLUMN late");
        EXPECT_TRUE(failed(*t, call(*t), Code::Missing, "late")) << "after a schema change";
        t.run("DROP TABLE @");
        EXPECT_EQ(-1, call(*t));
        EXPECT_EQ(Code::Missing, t->status().code) << describe(t->status());
        EXPECT_NE(std::string::npos, t->status().text.find("tableUpgrade()")) << t->status().text;
        EXPECT_TRUE(done(*t, t->tableUpgrade())) << "makes a table that is not there";
        EXPECT_LE(0, call(*t)) << describe(t->status());
        EXPECT_EQ(0, busyStatements(t.handle()));
    }
}

TEST(TableUpgrade, AddsColumnsWithTheirDefaultsAndIndexesAndKeepsTheRest)
{
    TestTable t(R"({"a": {"cpptype": "int", "index": true}, "d": {"cpptype": "double", "cppDefaultValue": 0.1},
                    "j": {"cpptype": "Json::Value", "cppDefaultValue": {"x": "it's"}}, "n": {"cpptype": "string"},
                    "r": {"cpptype": "bool", "required": true, "cppDefaultValue": true},
                    "s": {"cpptype": "string", "cppDefaultValue": "it's \"%s\""}, "u": {"cpptype": "int", "unique": true}})",
                "CREATE TABLE @ (a TEXT, other)");
    t.run("INSERT INTO @ VALUES ('1', 'x')");
    EXPECT_TRUE(done(*t, t->tableUpgrade()));
    EXPECT_EQ(json(R"([{"a": 1, "d": 0.1, "j": {"x": "it's"}, "r": true, "s": "it's \"%s\""}])"), t.list());
    EXPECT_EQ(Texts{"1|x"}, t.rows("SELECT a, other FROM @"));
    EXPECT_EQ(Texts{"2"}, t.db().rows("SELECT count(*) FROM pragma_index_list('" + t.name() + "')"));
    EXPECT_EQ(Texts{"1"}, t.db().rows("SELECT count(*) FROM pragma_table_info('" + t.name() +
                                      "') WHERE name = 'r' AND \"notnull\""));
    const Texts schema = t.db().rows("SELECT sql FROM sqlite_master");
    EXPECT_TRUE(done(*t, t->tableUpgrade())) << "a second time changes nothing";
    EXPECT_EQ(schema, t.db().rows("SELECT sql FROM sqlite_master"));
}

TEST(TableUpgrade, RefusesAKeyOrARequiredColumnWithoutDefaultBeforeAnythingChanges)
{
    for (const char* szEntry :
         {R"("key": true)", R"("required": true)", R"("required": true, "cppDefaultValue": null)"})
    {
        SCOPED_TRACE(szEntry);
        TestTable t(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int"}, "c": {"cpptype": "int", )" +
                        std::string(szEntry) + "}}",
                    "CREATE TABLE @ (a)");
        const Texts schema = t.db().rows("SELECT sql FROM sqlite_master");
        EXPECT_TRUE(failed(*t, t->tableUpgrade(), Code::Constraint, "c"));
        EXPECT_EQ(schema, t.db().rows("SELECT sql FROM sqlite_master"));
    }
    // A unique index that the rows do not allow undoes the columns too.
    TestTable t(R"({"a": {"cpptype": "int", "unique": true}, "b": {"cpptype": "int"}})", "CREATE TABLE @ (a)");
    t.run("INSERT INTO @ VALUES (48271), (48271)");
    EXPECT_TRUE(failed(*t, t->tableUpgrade(), Code::Duplicate, "a"));
    EXPECT_EQ(Texts{"1"}, t.db().rows("SELECT count(*) FROM pragma_table_info('" + t.name() + "')"));
}

TEST(TableKinds, WithoutRowidOrWithUndeclaredColumnsWorkAndViewsAndVirtualTablesCanBeListed)
{
    const char* const szMembers = R"({"id": {"cpptype": "string"}, "n": {"cpptype": "int"}})";
    const char* const creates[] = {
        "CREATE TABLE @ (id TEXT PRIMARY KEY, n INT) WITHOUT ROWID",
        "CREATE TABLE @ (z DEFAULT 'z', n INT, y, id TEXT PRIMARY KEY)",
        "CREATE TABLE @ (id TEXT, n INT, z AS (n + 1), PRIMARY KEY (id, n)) WITHOUT ROWID",
        "CREATE TABLE @ (other INTEGER PRIMARY KEY, id TEXT, n INT)",
        "CREATE TABLE @ (rowid TEXT, _rowid_ TEXT, id TEXT, n INT)",
        "ATTACH ':memory:' AS other; CREATE TABLE other.@ (z); CREATE TABLE @ (n INT, id TEXT)",
        "CREATE TABLE @ (id INT); CREATE TEMP TABLE @ (id TEXT PRIMARY KEY, n INT)",
        "ATTACH ':memory:' AS other; CREATE TABLE other.@ (id TEXT PRIMARY KEY, n INT)"};
    for (const char* szCreate : creates)
    {
        SCOPED_TRACE(szCreate);
        TestTable t(szMembers, szCreate);
        Json::Value jOut;
        EXPECT_TRUE(done(*t, t->recCreate(json(R"({"id": "b", "n": 2})"), jOut)));
        EXPECT_EQ(json(R"({"id": "b", "n": 2})"), jOut);
        EXPECT_TRUE(done(*t, t->recCreate(json(R"({"id": "a", "n": 1})"), jOut)));
        EXPECT_EQ(json(R"([{"id": "a", "n": 1}, {"id": "b", "n": 2}])"), t.list(R"({"sort_by": "id"})"));
        EXPECT_EQ(json(R"([{"id": "a", "n": 1}])"), t.list(R"({"sort_by": "-id", "limit": 1, "offset": 1})"));
        EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"id": "a"})"), json(R"({"n": 5})")), 1));
        EXPECT_TRUE(done(*t, t->recDelete(json(R"({"n": {"$gt": 4}})")), 1));
    }
    const char* const readOnly[] = {
        "CREATE TABLE @b (id TEXT, n INT); INSERT INTO @b VALUES ('a', 1), ('b', 2); CREATE VIEW @ AS SELECT * FROM @b",
        "CREATE VIRTUAL TABLE @ USING fts5(id, n); INSERT INTO @ VALUES ('a', 1), ('b', 2)"};
    for (const char* szCreate : readOnly)
    {
        SCOPED_TRACE(szCreate);
        TestTable t(szMembers, szCreate);
        EXPECT_EQ(json(R"([{"id": "b", "n": 2}])"), t.list(R"({"id": "b"})"));
        EXPECT_EQ(json(R"([{"id": "b", "n": 2}])"), t.list(R"({"sort_by": "-n", "limit": 1})"));
        Json::Value jPlan;
        EXPECT_TRUE(done(*t, t->explain(json(R"({"sort_by": "-n", "limit": 1})"), jPlan)));
        EXPECT_EQ(std::string::npos, jPlan["sql"].asString().find(" IN ")) << "its rowids may be anything";
        EXPECT_TRUE(done(*t, t->recCount(json("{}")), 2));
        Json::Value jReport, jOut("before");
        EXPECT_TRUE(done(*t, t->tableCheck(jReport, true)));
        const Texts rows = t.rows();
        TestTable more(R"({"id": {"cpptype": "string"}, "more": {"cpptype": "int"}})", "", t.database(), t.name());
        EXPECT_TRUE(failed(*more, more->tableUpgrade(), Code::Sqlite)) << "SQLite adds no column to it";
        if (t->recCreate(json(R"({"id": "c"})"), jOut) != 0)  // listing is all that is promised
        {
            EXPECT_EQ(Json::Value("before"), jOut);
            EXPECT_EQ(rows, t.rows());
        }
    }
}

TEST(TableKinds, OfTempAndAttachedTablesAreUpgradedWhereTheyAre)
{
    for (const char* szSchema : {"temp", "other"})
    {
        SCOPED_TRACE(szSchema);
        TestTable t(R"({"a": {"cpptype": "int", "index": true}, "b": {"cpptype": "int", "unique": true}})",
                    "ATTACH ':memory:' AS other; CREATE TABLE " + std::string(szSchema) + ".@ (a)");
        EXPECT_TRUE(done(*t, t->tableUpgrade()));
        EXPECT_EQ(Texts{"2"},
                  t.db().rows("SELECT count(*) FROM pragma_index_list('" + t.name() + "', '" + szSchema + "')"));
        EXPECT_EQ(Texts(), t.db().rows("SELECT name FROM main.sqlite_master"));
        Json::Value jReport;
        EXPECT_TRUE(done(*t, t->tableCheck(jReport)));
        EXPECT_EQ(json("[]"), jReport["keys"]);
        t.create(R"({"a": 1, "b": 1})");
        EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"b": 1})")), Code::Duplicate, "b"));
    }
}
