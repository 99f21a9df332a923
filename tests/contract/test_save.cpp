// SPDX-License-Identifier: MIT
//
// Saving a record as it is given: insert or replace, the row that is read back, and the lines of every failure.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const members = R"({"id": {"cpptype": "int"}, "name": {"cpptype": "string", "cppDefaultValue": "none"}})";
const char* const columns = "id INTEGER PRIMARY KEY, name";
const char* const types = R"({"id":{"cpptype":"int"},"name":{"cppDefaultValue":"none","cpptype":"string"}})";

const char* const valuesFail = "0 > SqlExpandMemberSymbol(strSql, jRecInOut)";

int save(Store& store, Json::Value& record, bool create, const ExpectedLines& lines = {})
{
    return logged(lines, [&] { return store->recSave(record, create); });
}

}  // namespace

LOGGED_TEST(Save, InsertWritesANewRowAndHandsItBack)
{
    Store store(members, columns);
    Json::Value record = json(R"({"id": 7, "name": "x", "extra": true})");
    EXPECT_EQ(0, save(store, record, true));
    EXPECT_EQ(json(R"({"id": 7, "name": "x"})"), record);
    EXPECT_EQ(std::vector<std::string>{"7|x"}, store.rows());
}

LOGGED_TEST(Save, ReplaceWritesOverTheRowOfTheSameKey)
{
    Store store(R"({"a": {"cpptype": "int"}, "key": {"cpptype": "string"}})", "a, key PRIMARY KEY");
    Json::Value record = json(R"({"a": 1, "key": "k"})");
    EXPECT_EQ(0, save(store, record, false));
    const std::string firstRow = store.db().rows("select rowid from " + store.name())[0];

    record = json(R"({"a": 2, "key": "k"})");
    const StatementLog statements(store.db());
    EXPECT_EQ(0, save(store, record, false));
    EXPECT_EQ((std::vector<std::string>{"REPLACE INTO " + store.name() + " (a,key) VALUES (2,'k') ;",
                                        "select * from " + store.name() + " where rowid == last_insert_rowid();"}),
              statements.statements());
    EXPECT_EQ(json(R"({"a": 2, "key": "k"})"), record);
    EXPECT_EQ(std::vector<std::string>{"2|k"}, store.rows());
    EXPECT_NE(firstRow, store.db().rows("select rowid from " + store.name())[0]);
}

TEST(Save, ReplaceKeepsNothingOfTheOldRow)
{
    Store store(R"({"a": {"cpptype": "int"}, "key": {"cpptype": "string"}})", "a, key PRIMARY KEY");
    Json::Value record = json(R"({"a": 1, "key": "k"})");
    EXPECT_EQ(0, save(store, record, true));
    record = json(R"({"key": "k"})");
    EXPECT_EQ(0, save(store, record, false));
    EXPECT_EQ(json(R"({"key": "k"})"), record);
    EXPECT_EQ(std::vector<std::string>{"NULL|k"}, store.rows());
}

TEST(Save, NeitherDefaultsNorTypesAreLookedAt)
{
    Store store(R"({"a": {"cpptype": "int", "cppDefaultValue": 5}, "b": {"cpptype": "string"}})");
    Json::Value record = json(R"({"b": 12})");
    EXPECT_EQ(0, save(store, record, true));
    EXPECT_EQ(json(R"({"b": "12"})"), record);
    record = json(R"({"a": true, "b": null})");
    EXPECT_EQ(0, save(store, record, true));
    EXPECT_EQ(json(R"({"a": 1, "b": ""})"), record);
}

TEST(Save, UnsignedTypesCanBeSavedAndComeBackSigned)
{
    Store store(R"({"m": {"cpptype": "unsigned int"}, "n": {"cpptype": "unsigned long long"}})");
    Json::Value record;
    record["m"] = 5U;
    record["n"] = Json::UInt64{6};
    EXPECT_EQ(0, save(store, record, true));
    EXPECT_EQ(json(R"({"m": 5, "n": 6})"), record);
}

LOGGED_TEST(Save, TypesThatRowsCannotHoldAreWrittenButNotHandedBack)
{
    for (const std::string type : {"long", "unsigned long", "unsigned", "float", "double"})
    {
        Store store(R"({"m": {"cpptype": ")" + type + R"("}})");
        Json::Value record = json(R"({"m": 2})");
        const std::string value = type == "float" || type == "double" ? "2.000000" : "2";
        const std::string sql = saveSql("INSERT", store.name(), "(m) VALUES (" + value + ") ");
        EXPECT_EQ(-1, save(store, record, true,
                           ExpectedLines{error("type error, strType=" + type),
                                         failed("0 > (iTmp = DbCallBackFillField(*pjRec, column_name, "
                                                "column_value, i))"),
                                         failed("0 > DbCallBackFillRec(&jTmp, n_column, column_value, "
                                                "column_name)")} +
                               saveRefused(sql, "query aborted", true, R"({"m":2})",
                                           R"({"m":{"cpptype":")" + type + R"("}})")));
        EXPECT_EQ(json(R"({"m": 2})"), record);
        EXPECT_EQ(1U, store.rows().size());
    }
}

LOGGED_TEST(Save, ADuplicateKeyFailsWithoutAMessage)
{
    Store store(members, columns);
    Json::Value record = json(R"({"id": 7, "name": "x"})");
    EXPECT_EQ(0, save(store, record, true));
    const std::string sql = saveSql("INSERT", store.name(), "(id,name) VALUES (7,'x') ");
    EXPECT_EQ(-1, save(store, record, true,
                       saveRefused(sql, "UNIQUE constraint failed: " + store.name() + ".id", true,
                                   R"({"id":7,"name":"x"})", types)));
    EXPECT_EQ(json(R"({"id": 7, "name": "x"})"), record);
    EXPECT_EQ("", store->getErrMsg());
}

LOGGED_TEST(Save, WithoutTheDefinitionsLastMemberSqliteRejectsTheText)
{
    Store store(members, columns);
    for (const bool create : {true, false})
    {
        Json::Value record = json(R"({"id": 7, "other": "é"})");
        const std::string sql = saveSql(create ? "INSERT" : "REPLACE", store.name(), "(id,) VALUES (7,");
        EXPECT_EQ(-1, save(store, record, create,
                           saveRefused(sql, "near \")\": syntax error", create, R"({"id":7,"other":"é"})", types)));
        EXPECT_EQ(json(R"({"id": 7, "other": "é"})"), record);
    }
    EXPECT_TRUE(store.rows().empty());
}

LOGGED_TEST(Save, AnEmptyRecordIsRejectedBySqlite)
{
    Store store(members, columns);
    for (const char* const text : {"{}", "null"})
    {
        Json::Value record = json(text);
        const std::string sql = saveSql("INSERT", store.name(), "() VALUES (");
        EXPECT_EQ(-1, save(store, record, true, saveRefused(sql, "near \")\": syntax error", true, text, types)));
        EXPECT_EQ(json(text), record);
    }
}

LOGGED_TEST(Save, ARefusedValueFailsBeforeAnyStatement)
{
    Store store(R"({"m": {"cpptype": "Json::Value"}, "n": {"cpptype": "int"}})");
    const StatementLog statements(store.db());
    for (const bool create : {true, false})
    {
        Json::Value record = json(R"({"m": {"a": 1}, "n": 2})");
        EXPECT_EQ(-1, save(store, record, create,
                           linesOf(error("cannot support this type=Json::Value"),
                                   saveFailed(valuesFail, create, R"({"m":{"a":1},"n":2})",
                                              R"({"m":{"cpptype":"Json::Value"},"n":{"cpptype":"int"}})"))));
        EXPECT_EQ(json(R"({"m": {"a": 1}, "n": 2})"), record);
    }
    EXPECT_TRUE(statements.statements().empty());
}

LOGGED_TEST(Save, AMemberWithoutAKnownTypeFailsBeforeAnyStatement)
{
    Store store(R"({"alpha": {"cpptype": "int"}, "beta": {}, "gamma": {"cpptype": "int"}})");
    LogCapture ignored;
    store.types();
    ignored.stop();
    const StatementLog statements(store.db());
    Json::Value record = json(R"({"alpha": 1, "gamma": 3})");
    EXPECT_EQ(
        -1, save(store, record, true,
                 linesOf(failed("!jType.isMember(strKey)"),
                         saveFailed(valuesFail, true, R"({"alpha":1,"gamma":3})", R"({"alpha":{"cpptype":"int"}})"))));
    EXPECT_TRUE(statements.statements().empty());
}

// The table is not in the definition: the lookup fails at entry and again in the value list.
LOGGED_TEST(Save, ADefinitionWithoutTheTableWritesAnEmptyList)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = json(R"({"other": 1})");
    std::string create = "CREATE TABLE " + name + " (a)";
    VornJsonDbApi api(database.handle(), name, definition, create);
    const ExpectedLine nameLine = inUtil(trace("strJsonName=" + name));
    const ExpectedLine cacheLine = inUtil(trace("jType=<any>"));
    const std::string sql = saveSql("INSERT", name, "() VALUES (");
    Json::Value record = json(R"({"a": 1})");
    EXPECT_LOGS(-1, api.recSave(record, true), inUtil(failed("!jTableDef.isMember(strJsonName)")), nameLine,
                inUtil(trace(R"(jTableDef={"other":1})")), cacheLine,
                inUtil(failed("jType[strJsonName].type() != Json::objectValue")), nameLine,
                inUtil(trace("jTableDef=<any>")), cacheLine,
                saveRefused(sql, "near \")\": syntax error", true, R"({"a":1})", "null"));
    EXPECT_EQ(json(R"({"a": 1})"), record);
}

TEST(Save, AValueThatTheJsonLibraryRefusesThrowsAndStoresNothing)
{
    Store store(members, columns);
    for (const char* const text : {R"({"id": "7", "name": "x"})", R"({"id": 7, "name": [1]})", "[1]", "5", "\"x\""})
    {
        Json::Value record = json(text);
        logged({}, [&] { EXPECT_THROW(store->recSave(record, true), Json::LogicError) << text; });
        EXPECT_EQ(json(text), record);
    }
    EXPECT_TRUE(store.rows().empty());
}

// The row is there, but nothing was read back: a trigger moved it away.
LOGGED_TEST(Save, ARowThatCannotBeReadBackFailsAlthoughItWasWritten)
{
    Store store(members, columns);
    const std::string& table = store.name();
    ASSERT_EQ(SQLITE_OK, store.db().run("CREATE TRIGGER moved AFTER INSERT ON " + table + " BEGIN UPDATE " + table +
                                        " SET id = id + 100; END"));
    Json::Value record = json(R"({"id": 7, "name": "x"})");
    EXPECT_EQ(-1,
              save(store, record, true, saveFailed("0 == jArrayTmp.size()", true, R"({"id":7,"name":"x"})", types)));
    EXPECT_EQ(json(R"({"id": 7, "name": "x"})"), record);
    EXPECT_EQ(std::vector<std::string>{"107|x"}, store.rows());
}

// An ignored conflict leaves SQLite's last rowid at an earlier row, which is then handed back.
TEST(Save, AnIgnoredConflictHandsBackTheRowInsertedBefore)
{
    Store store(members, "id INTEGER PRIMARY KEY ON CONFLICT IGNORE, name");
    Json::Value first = json(R"({"id": 1, "name": "one"})");
    Json::Value second = json(R"({"id": 2, "name": "two"})");
    EXPECT_EQ(0, save(store, first, true));
    EXPECT_EQ(0, save(store, second, true));
    Json::Value ignored = json(R"({"id": 1, "name": "new"})");
    EXPECT_EQ(0, save(store, ignored, true));
    EXPECT_EQ(json(R"({"id": 2, "name": "two"})"), ignored);
}

TEST(Save, ATableWithoutRowidCannotBeReadBack)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name, json(R"({"id": {"cpptype": "int"}})"));
    std::string create = "CREATE TABLE " + name + " (id INTEGER PRIMARY KEY) WITHOUT ROWID";
    VornJsonDbApi api(database.handle(), name, definition, create);
    const std::string sql = saveSql("INSERT", name, "(id) VALUES (7) ");
    Json::Value record = json(R"({"id": 7})");
    EXPECT_LOGS(-1, api.recSave(record, true),
                saveRefused(sql, "no such column: rowid", true, R"({"id":7})", R"({"id":{"cpptype":"int"}})"));
    EXPECT_EQ(1U, database.rows("select * from " + name).size());
}

TEST(Save, AColumnThatTheDefinitionLacksFailsTheReadBack)
{
    Store store(R"({"id": {"cpptype": "int"}})", "id, other");
    Json::Value record = json(R"({"id": 7})");
    const std::string sql = saveSql("INSERT", store.name(), "(id) VALUES (7) ");
    EXPECT_EQ(-1, save(store, record, true,
                       ExpectedLines{failed("!jType.isMember(strName)"),
                                     failed("0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))"),
                                     trace("column_name[1]=other"), trace("column_value[1]=(null)"),
                                     failed("0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)")} +
                           saveRefused(sql, "query aborted", true, R"({"id":7})", R"({"id":{"cpptype":"int"}})")));
    EXPECT_EQ(json(R"({"id": 7})"), record);
    EXPECT_EQ(std::vector<std::string>{"7|NULL"}, store.rows());
}
