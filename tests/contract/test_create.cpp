// SPDX-License-Identifier: MIT
//
// Creating a record: defaults, the type check, the stored row that comes back, and every way to fail.

#include <gtest/gtest.h>

#include <limits>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const tasks = R"({
    "done": {"cpptype": "bool", "cppDefaultValue": false},
    "id": {"cpptype": "int"},
    "name": {"cpptype": "string", "cppDefaultValue": "unnamed"}
})";
const char* const taskColumns = "done,id INTEGER PRIMARY KEY,name";

int create(Store& store, const Json::Value& record, Json::Value& stored, const ExpectedLines& lines = {})
{
    Json::Value in = record;
    const int status = logged(lines, [&] { return store->recCreate(in, stored); });
    EXPECT_EQ(record, in) << "the caller's record was changed";
    return status;
}

// The stored record, which must have been created without any line.
Json::Value created(Store& store, const Json::Value& record)
{
    Json::Value stored;
    EXPECT_EQ(0, create(store, record, stored));
    return stored;
}

// What recCreate() adds to the lines of a save that fails.
ExpectedLines notCreated(const ExpectedLines& saveLines, const std::string& record)
{
    return linesOf(saveLines, failed("0 > recSave(jParam, true)"), trace("call create rec, rec=" + record));
}

ExpectedLines duplicateLines(Store& store, const std::string& columnsAndValues, const std::string& record)
{
    return notCreated(saveRefused(saveSql("INSERT", store.name(), columnsAndValues + " "),
                                  "UNIQUE constraint failed: " + store.name() + ".id", true, record,
                                  R"({"done":{"cppDefaultValue":false,"cpptype":"bool"},"id":{"cpptype":"int"},)"
                                  R"("name":{"cppDefaultValue":"unnamed","cpptype":"string"}})"),
                      record);
}

}  // namespace

LOGGED_TEST(Create, TheStoredRowComesBackWithDefaults)
{
    Store store(tasks, taskColumns);
    EXPECT_EQ(json(R"({"done": false, "id": 7, "name": "unnamed"})"), created(store, json(R"({"id": 7})")));
    EXPECT_EQ(json(R"({"done": true, "id": 8, "name": "x"})"),
              created(store, json(R"({"name": "x", "id": 8, "done": true})")));
    EXPECT_EQ((std::vector<std::string>{"0|7|unnamed", "1|8|x"}), store.rows());
}

TEST(Create, MembersLeftOutHoldWhatSqlitePutThere)
{
    Store store(tasks, "done DEFAULT 1, id INTEGER PRIMARY KEY, name");
    EXPECT_EQ(json(R"({"done": false, "id": 1, "name": "a"})"), created(store, json(R"({"name": "a"})")));
    EXPECT_EQ(json(R"({"done": false, "id": 2, "name": "b"})"), created(store, json(R"({"name": "b"})")));

    Store other(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}, "c": {"cpptype": "int"}})",
                "a DEFAULT 5, b, c");
    EXPECT_EQ(json(R"({"a": 5, "c": 1})"), created(other, json(R"({"c": 1})")));
}

LOGGED_TEST(Create, UndeclaredMembersAreNotWritten)
{
    Store store(tasks, taskColumns);
    EXPECT_EQ(json(R"({"done": false, "id": 7, "name": "unnamed"})"),
              created(store, json(R"({"id": 7, "extra": [1, {"x": null}], "ID": "7"})")));
}

TEST(Create, TheOutputIsReplacedWhole)
{
    Store store(tasks, taskColumns);
    for (const char* const before : {"null", R"({"id": 1, "old": true})", "[1,2]", "5", "\"x\""})
    {
        Json::Value stored = json(before);
        EXPECT_EQ(0, create(store, json(R"({"name": "n"})"), stored));
        EXPECT_FALSE(stored.isMember("old"));
        EXPECT_EQ("n", stored["name"].asString());
    }
    Json::Value both = json(R"({"id": 100})");
    EXPECT_SILENT(0, store->recCreate(both, both));
    EXPECT_EQ(json(R"({"done": false, "id": 100, "name": "unnamed"})"), both);
}

TEST(Create, OneTextInsertsAndReadsBack)
{
    Store store(R"({"id": {"cpptype": "int"}, "name": {"cpptype": "string"}})", "id INTEGER PRIMARY KEY, name");
    const StatementLog statements(store.db());
    created(store, json(R"({"id": 7, "name": "x"})"));
    EXPECT_EQ((std::vector<std::string>{"INSERT INTO " + store.name() + " (id,name) VALUES (7,'x') ;",
                                        "select * from " + store.name() + " where rowid == last_insert_rowid();"}),
              statements.statements());
}

LOGGED_TEST(Create, ADuplicateKeyIsTold)
{
    Store store(tasks, taskColumns);
    Json::Value stored = created(store, json(R"({"id": 7, "name": "first"})"));
    EXPECT_EQ("", store->getErrMsg());

    const Json::Value before = stored;
    EXPECT_EQ(-1, create(store, json(R"({"id": 7, "name": "it's"})"), stored,
                         duplicateLines(store, "(done,id,name) VALUES (0,7,'it''s')",
                                        R"({"done":false,"id":7,"name":"it's"})")));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
    EXPECT_EQ(before, stored);
    EXPECT_EQ(std::vector<std::string>{"0|7|first"}, store.rows());

    // The message stays, after a success and after a failure of another kind.
    created(store, json(R"({"id": 8})"));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
    store->setErrMsg("mine");
    EXPECT_EQ(-1, create(store, json("{}"), stored, {failed("jRecIn.empty()"), trace("call create rec, rec={}")}));
    EXPECT_EQ("mine", store->getErrMsg());
}

TEST(Create, AnyUniqueConstraintCountsAsADuplicateAndOthersDoNot)
{
    Store store(tasks, "done, id INTEGER PRIMARY KEY, name UNIQUE CHECK (name <> 'forbidden')");
    Json::Value stored;
    created(store, json(R"({"id": 1, "name": "x"})"));
    const LogCapture ignored;
    Json::Value record = json(R"({"id": 2, "name": "forbidden"})");
    EXPECT_EQ(-1, store->recCreate(record, stored));
    EXPECT_EQ("", store->getErrMsg());
    record["name"] = "x";
    EXPECT_EQ(-1, store->recCreate(record, stored));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
}

// The search looks at the text of the object's last statement, also when this call ran none.
LOGGED_TEST(Create, AFailureBeforeAnyStatementReusesTheLastStatementsText)
{
    Store store(tasks, taskColumns);
    Json::Value stored;
    created(store, json(R"({"id": 7})"));
    EXPECT_EQ(-1, create(store, json(R"({"id": 7})"), stored,
                         duplicateLines(store, "(done,id,name) VALUES (0,7,'unnamed')",
                                        R"({"done":false,"id":7,"name":"unnamed"})")));
    const struct
    {
        const char* record;
        ExpectedLines lines;
    } failures[] = {
        {"{}", {failed("jRecIn.empty()"), trace("call create rec, rec={}")}},
        {R"({"id": "7"})",
         {error(R"(type failed, strKey=id, jRecParam={"done":false,"id":"7","name":"unnamed"})"),
          failed("0 > checkJsonType(jParam)"),
          trace(R"(call create rec, rec={"done":false,"id":"7","name":"unnamed"})")}},
    };
    for (const auto& each : failures)
    {
        store->setErrMsg("");
        EXPECT_EQ(-1, create(store, json(each.record), stored, each.lines));
        EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
    }
    created(store, json(R"({"id": 8})"));
    store->setErrMsg("");
    EXPECT_EQ(-1, create(store, json("{}"), stored, failures[0].lines));
    EXPECT_EQ("", store->getErrMsg());
    EXPECT_TRUE(stored.isNull());
}

LOGGED_TEST(Create, AnEmptyRecordIsRefusedWithoutAStatement)
{
    Store store(tasks, taskColumns);
    const StatementLog statements(store.db());
    for (const char* const text : {"null", "{}", "[]"})
    {
        Json::Value stored("before");
        EXPECT_EQ(-1, create(store, json(text), stored,
                             {failed("jRecIn.empty()"), trace(std::string("call create rec, rec=") + text)}));
        EXPECT_EQ("before", stored.asString());
    }
    EXPECT_TRUE(statements.statements().empty());
    EXPECT_EQ("", store->getErrMsg());
}

TEST(Create, ARecordOfAWrongKindThrowsAsTheJsonLibraryDoes)
{
    Store store(tasks, taskColumns);
    for (const char* const text : {"[1]", "5", "1.5", "true", "\"x\"", "\"\""})
    {
        Json::Value record = json(text);
        Json::Value stored("before");
        logged({}, [&] { EXPECT_THROW(store->recCreate(record, stored), Json::LogicError) << text; });
        EXPECT_EQ("before", stored.asString());
    }
    EXPECT_TRUE(store.rows().empty());
}

LOGGED_TEST(Create, AValueOfAWrongKindIsRefusedWithoutAStatement)
{
    Store store(tasks, taskColumns);
    const StatementLog statements(store.db());
    Json::Value stored("before");
    EXPECT_EQ(-1, create(store, json(R"({"id": 7, "name": 5, "x": "é"})"), stored,
                         {error(R"(type failed, strKey=name, jRecParam={"done":false,"id":7,"name":5,"x":"é"})"),
                          failed("0 > checkJsonType(jParam)"),
                          trace(R"(call create rec, rec={"done":false,"id":7,"name":5,"x":"é"})")}));
    EXPECT_EQ("before", stored.asString());
    EXPECT_TRUE(statements.statements().empty());
}

LOGGED_TEST(Create, ADefaultOfAWrongKindIsRefused)
{
    Store store(R"({"a": {"cpptype": "int", "cppDefaultValue": "5"}, "b": {"cpptype": "int"}})");
    Json::Value stored;
    EXPECT_EQ(-1, create(store, json(R"({"b": 1})"), stored,
                         {error(R"(type failed, strKey=a, jRecParam={"a":"5","b":1})"),
                          failed("0 > checkJsonType(jParam)"), trace(R"(call create rec, rec={"a":"5","b":1})")}));
    EXPECT_TRUE(store.rows().empty());
}

TEST(Create, MembersOfTypesThatTheCheckDoesNotKnowCannotBeCreated)
{
    for (const std::string type :
         {"unsigned int", "unsigned long long", "long", "unsigned long", "unsigned", "float", "double", "Json::Value"})
    {
        Store store(R"({"a": {"cpptype": ")" + type + R"("}, "b": {"cpptype": "int"}})");
        Json::Value stored;
        EXPECT_EQ(-1, create(store, json(R"({"a": 1, "b": 2})"), stored,
                             {error("type not found!!, key=a"), failed("0 > checkJsonType(jParam)"),
                              trace(R"(call create rec, rec={"a":1,"b":2})")}));
        EXPECT_EQ(json(R"({"b": 2})"), created(store, json(R"({"b": 2})")));
    }
}

// These two pass the check and are then refused by the value list.
LOGGED_TEST(Create, UserIdsAndTimesPassTheCheckButCannotBeWritten)
{
    for (const std::string type : {"uid_t", "time_t"})
    {
        Store store(R"({"a": {"cpptype": ")" + type + R"("}, "b": {"cpptype": "int"}})");
        Json::Value stored;
        EXPECT_EQ(
            -1, create(store, json(R"({"a": 1, "b": 2})"), stored,
                       notCreated(
                           linesOf(error("cannot support this type=" + type),
                                   saveFailed("0 > SqlExpandMemberSymbol(strSql, jRecInOut)", true, R"({"a":1,"b":2})",
                                              R"({"a":{"cpptype":")" + type + R"("},"b":{"cpptype":"int"}})")),
                           R"({"a":1,"b":2})")));
        EXPECT_TRUE(store.rows().empty());
    }
}

LOGGED_TEST(Create, WithoutTheDefinitionsLastMemberSqliteRejectsTheText)
{
    Store store(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int"}})");
    Json::Value stored;
    EXPECT_EQ(-1, create(store, json(R"({"a": 1})"), stored,
                         notCreated(
                             saveRefused(saveSql("INSERT", store.name(), "(a,) VALUES (1,"), "near \")\": syntax error",
                                         true, R"({"a":1})", R"({"a":{"cpptype":"int"},"b":{"cpptype":"int"}})"),
                             R"({"a":1})")));
    EXPECT_TRUE(store.rows().empty());
    EXPECT_EQ("", store->getErrMsg());

    Store withDefault(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int", "cppDefaultValue": 0}})");
    EXPECT_EQ(json(R"({"a": 1, "b": 0})"), created(withDefault, json(R"({"a": 1})")));
}

TEST(Create, HostileStringsComeBackAsTheyWere)
{
    Store store(R"({"id": {"cpptype": "int"}, "text": {"cpptype": "string"}})");
    for (const char* const text :
         {"", "'", "O'Neil", "''; DROP TABLE t1; --", "\"`[]\\", "Zürich €\xf0\x9f\x87\xa8\xf0\x9f\x87\xad",
          "\xff\xc3 not UTF-8 \x80", "100% %s%n%p %%", "a\nb\r\tc\x01\x7f", "x);--", "NULL"})
    {
        Json::Value record = json(R"({"id": 1})");
        record["text"] = text;
        EXPECT_EQ(record, created(store, record));
    }
    // SQLite's formatter and its row texts end at a NUL.
    Json::Value record = json(R"({"id": 1})");
    record["text"] = std::string("cut\0off", 7);
    EXPECT_EQ(json(R"({"id": 1, "text": "cut"})"), created(store, record));
}

TEST(Create, APercentSignSurvivesOnlyInTheLastMember)
{
    Store store(R"({"a": {"cpptype": "string"}, "b": {"cpptype": "string"}})");
    EXPECT_EQ(json(R"({"a": "100%", "b": "50% %s"})"), created(store, json(R"({"a": "100%%", "b": "50% %s"})")));
    EXPECT_EQ(json(R"({"a": "x0ff"})"), created(store, json(R"({"a": "x%dff", "b": "y"})")));
}

TEST(Create, JsonMembersComeBackAsTheyWere)
{
    Store store(R"({"a": {"cpptype": "Json::arrayValue"}, "o": {"cpptype": "Json::objectValue"}})");
    Json::Value record = json(R"({
        "a": [1, -2, 2.5, 1e300, 0.1, true, null, "O'Neil é", [], {}, 18446744073709551615, -9223372036854775808],
        "o": {"": 0, "k'": {"x": ["€"]}, "n": null}
    })");
    EXPECT_EQ(record, created(store, record));

    // A literal that is not in JSON itself, written and read symmetrically.
    record["a"] = Json::Value(Json::arrayValue);
    record["a"].append(std::numeric_limits<double>::infinity());
    record["a"].append(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(record, created(store, record));

    // A NUL is escaped inside JSON text and so does not end it.
    record["a"][0] = std::string("not\0cut", 7);
    EXPECT_EQ(record, created(store, record));
}

TEST(Create, IntegersOfEverySizeAreStoredWhole)
{
    Store store(R"({"b": {"cpptype": "bool"}, "i": {"cpptype": "int"}, "l": {"cpptype": "long long"}})");
    for (const char* const text : {R"({"b": true, "i": 2147483647, "l": 9223372036854775807})",
                                   R"({"b": false, "i": -2147483648, "l": -9223372036854775808})"})
        EXPECT_EQ(json(text), created(store, json(text)));
    // A real number without fraction passes the check and comes back as an integer.
    EXPECT_EQ(json(R"({"b": true, "i": 3, "l": -4})"), created(store, json(R"({"b": true, "i": 3.0, "l": -4.0})")));
    // Beyond 32 bits an "int" is stored whole but read back by strtol().
    const int readBack = sizeof(long) == 8 ? 0 : 2147483647;
    EXPECT_EQ(readBack, created(store, json(R"({"b": true, "i": 4294967296, "l": 1})"))["i"].asInt());
    EXPECT_EQ("1|4294967296|1", store.rows().back());
}

TEST(Create, AnUnsignedNumberThatDoesNotFitThrowsAndStoresNothing)
{
    Store store(R"({"l": {"cpptype": "long long"}})");
    for (const char* const text : {R"({"l": 9223372036854775808})", R"({"l": 1e19})"})
    {
        Json::Value record = json(text);
        Json::Value stored;
        logged({}, [&] { EXPECT_THROW(store->recCreate(record, stored), Json::LogicError) << text; });
    }
    EXPECT_TRUE(store.rows().empty());
}

LOGGED_TEST(Create, ANullConnectionFails)
{
    std::string name = freshTable();
    Json::Value definition = definitionOf(name, json(R"({"a": {"cpptype": "int"}})"));
    std::string statement = "CREATE TABLE " + name + " (a)";
    std::unique_ptr<VornJsonDbApi> api;
    LogCapture ignored;
    api = std::make_unique<VornJsonDbApi>(nullptr, name, definition, statement);
    ignored.stop();

    const std::string sql =
        "INSERT INTO " + name + " (a) VALUES (1) ;select * from " + name + " where rowid == last_insert_rowid();";
    Json::Value record = json(R"({"a": 1})");
    Json::Value stored("before");
    EXPECT_LOGS(-1, api->recCreate(record, stored),
                trace("i=0,errno=<number>, run sql failed, error=Unknow Error!!, sql=" + sql),
                debug("run sql fail, err=(null)"), failed("0 > runSqlEx(strSql, DbCallBackFillList, &jArrayTmp)"),
                trace(R"(blCreate=1, jRecInOut={"a":1})"), trace(R"(jType={"a":{"cpptype":"int"}})"),
                trace("sql error, err=Unknow Error!!, sql=" + sql), failed("0 > recSave(jParam, true)"),
                trace(R"(call create rec, rec={"a":1})"));
    EXPECT_EQ("before", stored.asString());
    EXPECT_EQ("", api->getErrMsg());
}

TEST(Create, WhatIsNoRecordAsksForTheTypesTwice)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = json(R"({"other": 1})");
    std::string create = "CREATE TABLE " + name + " (a)";
    VornJsonDbApi api(database.handle(), name, definition, create);
    const ExpectedLines rest{inUtil(trace("strJsonName=" + name)), inUtil(trace(R"(jTableDef={"other":1})")),
                             inUtil(trace("jType=<any>"))};
    Json::Value text = "text";
    Json::Value out;
    EXPECT_EQ(-1, logged(ExpectedLines{inUtil(failed("!jTableDef.isMember(strJsonName)"))} + rest +
                             ExpectedLines{inUtil(failed("jType[strJsonName].type() != Json::objectValue"))} + rest +
                             ExpectedLines{failed("!jRecParam.isObject()"), failed("0 > checkJsonType(jParam)"),
                                           trace(R"(call create rec, rec="text")")},
                         [&] { return api.recCreate(text, out); }));
}
