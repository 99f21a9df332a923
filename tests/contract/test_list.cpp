// SPDX-License-Identifier: MIT
//
// Listing records and fetching one.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const paramKind = "jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue";
const char* const outKind = "jRecArrayOut.type() != Json::nullValue && jRecArrayOut.type() != Json::arrayValue";
const char* const conditionFails = "0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)";
const char* const clauseFails = "0 > SqlFilterConditionFromJson(jRecParam, strSqlLimit)";
const char* const runFails = "0 > runSqlEx(strSqlRun, DbCallBackFillList, &jRecArrayOut)";
const char* const listFails = "0 > recList(jRecParam, jRecArray)";

class List : public testing::Test
{
protected:
    Store store{R"({"age": {"cpptype": "int"}, "name": {"cpptype": "string"}, "seen": {"cpptype": "bool"}})"};
    Json::Value out;

    void SetUp() override
    {
        store.db().run("insert into " + store.name() + " values (1, 'Ann', 1), (2, 'Bob', NULL), (3, 'Ann', 0)");
    }

    int list(const std::string& param)
    {
        Json::Value value = json(param);
        return store->recList(value, out);
    }

    int getOne(const std::string& param, Json::Value& record)
    {
        Json::Value value = json(param);
        return store->recGetOne(value, record);
    }

    // Leaves SQLite's text of a failed statement in the object.
    std::string leaveSqlError()
    {
        const LogCapture quiet;
        EXPECT_EQ(-1, store->runSqlEx("nonsense"));
        return "near \"nonsense\": syntax error";
    }
};

}  // namespace

TEST_F(List, StatementHoldsEveryColumnTheConditionAndTheClause)
{
    struct Row
    {
        const char* param;
        const char* afterTable;
    };
    const Row rows[] = {
        {"null", " ;"},
        {"{}", " ;"},
        {R"({"limit": 2, "offset": 1})", "  LIMIT 2 OFFSET 1;"},
        {R"({"name": "Ann"})", "  WHERE  (name='Ann' );"},
        {R"({"name": "Ann", "age": 3})", "  WHERE  (age=3 and name='Ann' );"},
        {R"({"name": "Ann", "limit": 1, "sort_by": "age", "sort_direction": "desc", "undeclared": 1})",
         "  WHERE  (name='Ann' ) order by 'age' DESC LIMIT 1;"},
        {R"({"vornSqlWhereFilter": "age > 1", "name": ["Ann"]})", "  WHERE  (name in ('Ann' ) and  age > 1  );"},
    };
    for (const Row& row : rows)
    {
        const StatementLog log(store.db());
        EXPECT_SILENT(0, list(row.param));
        EXPECT_EQ((std::vector<std::string>{"SELECT age,name,seen FROM " + store.name() + row.afterTable}),
                  log.statements());
    }
}

TEST_F(List, RecordsComeBackTypedAndWithoutTheirNulls)
{
    EXPECT_EQ(0, list("null"));
    EXPECT_EQ(json(R"([{"age": 1, "name": "Ann", "seen": true}, {"age": 2, "name": "Bob"},
                       {"age": 3, "name": "Ann", "seen": false}])"),
              out);
}

TEST_F(List, PagingLimitsTheRows)
{
    EXPECT_EQ(0, list(R"({"limit": 1, "offset": 1})"));
    EXPECT_EQ(json(R"([{"age": 2, "name": "Bob"}])"), out);
}

TEST_F(List, RecordsAreAppendedToThoseOfTheCaller)
{
    out = json(R"([{"old": 1}, 2])");
    EXPECT_EQ(0, list("null"));
    EXPECT_EQ(5u, out.size());
    EXPECT_EQ(json(R"({"old": 1})"), out[0]);
    EXPECT_EQ(2, out[1].asInt());
    EXPECT_EQ("Ann", out[2]["name"].asString());
    EXPECT_EQ("Ann", out[4]["name"].asString());
}

TEST_F(List, NoMatchIsASuccessThatAppendsNothing)
{
    EXPECT_SILENT(0, list(R"({"name": "Eve"})"));
    EXPECT_TRUE(out.isNull());
    out = Json::Value(Json::arrayValue);
    EXPECT_EQ(0, list(R"({"name": "Eve"})"));
    EXPECT_EQ(0u, out.size());
}

TEST_F(List, ParameterIsNotChanged)
{
    Json::Value param = json(R"({"name": "Ann", "limit": 1, "undeclared": 2})");
    const Json::Value copy = param;
    EXPECT_EQ(0, store->recList(param, out));
    EXPECT_EQ(copy, param);
}

LOGGED_TEST_F(List, ParameterThatIsNoObjectIsRefusedBeforeTheOutput)
{
    for (const char* const param : {"[1]", "1", R"("name")", "true"})
    {
        out = json("{}");
        const StatementLog log(store.db());
        const ExpectedLines lines = {failed(paramKind), trace(std::string("jRecParam=") + param)};
        EXPECT_LOGS(-1, list(param), lines);
        EXPECT_EQ(json("{}"), out);
        EXPECT_TRUE(log.statements().empty());
    }
}

LOGGED_TEST_F(List, OutputThatIsNoArrayIsRefusedBeforeTheCondition)
{
    for (const char* const kept : {"{}", "1", R"("x")", "false"})
    {
        out = json(kept);
        const StatementLog log(store.db());
        const ExpectedLines lines = {failed(outKind), trace(R"(jRecParam={"vornSqlWhereFilter":1})")};
        EXPECT_LOGS(-1, list(R"({"vornSqlWhereFilter": 1})"), lines);
        EXPECT_EQ(json(kept), out);
        EXPECT_TRUE(log.statements().empty());
    }
}

LOGGED_TEST_F(List, ConditionThatFailsIsReportedWithItsOwnLine)
{
    const ExpectedLines lines = {failed("!jRecParam[jmFieldName[i]].isString()"), failed(conditionFails),
                                 trace(R"(jRecParam={"sort_by":1,"vornSqlWhereFilter":5})")};
    EXPECT_LOGS(-1, list(R"({"vornSqlWhereFilter": 5, "sort_by": 1})"), lines);

    EXPECT_TRUE(out.isNull());
}

LOGGED_TEST_F(List, ClauseThatFailsIsReportedWithItsOwnLine)
{
    const NoSqliteMemory noMemory;
    const ExpectedLines lines = {failed("!szSql"), failed(clauseFails), trace(R"(jRecParam={"sort_by":"age"})")};
    EXPECT_LOGS(-1, list(R"({"sort_by": "age"})"), lines);

    EXPECT_TRUE(out.isNull());
}

LOGGED_TEST_F(List, FailureBeforeTheStatementShowsTheLastSqlErrorWithoutText)
{
    const std::string stale = leaveSqlError();
    EXPECT_LOGS(-1, list("[]"), failed(paramKind), trace("jRecParam=[]"), sqlError(stale, ""));
    const ExpectedLines condition = {failed("!jRecParam[jmFieldName[i]].isString()"), failed(conditionFails),
                                     trace(R"(jRecParam={"vornSqlWhereFilter":5})"), sqlError(stale, "")};
    EXPECT_LOGS(-1, list(R"({"vornSqlWhereFilter": 5})"), condition);

    EXPECT_EQ(0, list("null"));
    EXPECT_LOGS(-1, list("[]"), failed(paramKind), trace("jRecParam=[]"));
}

LOGGED_TEST_F(List, TextThatSqliteRefusesIsReportedWithTheStatement)
{
    const std::string sql = "SELECT age,name,seen FROM " + store.name() + "  WHERE  (age=Bob );";
    const std::string sqliteText = "no such column: Bob";
    const ExpectedLines lines =
        refusedBySqlite(sqliteText, sql) +
        ExpectedLines{failed(runFails), trace(R"(jRecParam={"age":"Bob"})"), sqlError(sqliteText, sql)};
    EXPECT_LOGS(-1, list(R"({"age": "Bob"})"), lines);

    Json::Value record = json(R"({"kept": 1})");
    EXPECT_LOGS(-1, getOne(R"({"age": "Bob"})", record), lines, failed(listFails));
    EXPECT_EQ(json(R"({"kept": 1})"), record);

    EXPECT_TRUE(out.isNull());
}

TEST_F(List, MemberWithoutAColumnFailsTheStatement)
{
    Store narrow(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "int"}})", "a");
    const std::string sql = "SELECT a,b FROM " + narrow.name() + " ;";
    Json::Value param;
    const ExpectedLines lines =
        refusedBySqlite("no such column: b", sql) +
        ExpectedLines{failed(runFails), trace("jRecParam=null"), sqlError("no such column: b", sql)};
    EXPECT_LOGS(-1, narrow->recList(param, out), lines);
}

TEST_F(List, RowsBeforeARowThatCannotBeReadStay)
{
    Store real(R"({"a": {"cpptype": "string"}, "d": {"cpptype": "double"}})");
    real.db().run("insert into " + real.name() + " values ('first', NULL), ('second', 2.5), ('third', NULL)");
    const std::string sql = "SELECT a,d FROM " + real.name() + " ;";
    const ExpectedLines row = {
        error("type error, strType=double"),
        failed("0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))"),
        trace("column_name[1]=d"),
        trace("column_value[1]=2.5"),
        failed("0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)"),
    };
    const ExpectedLines lines = row + refusedBySqlite("query aborted", sql) +
                                ExpectedLines{failed(runFails), trace("jRecParam={}"), sqlError("query aborted", sql)};
    forEachLogMode(
        [&]
        {
            Json::Value param(Json::objectValue);
            out = json(R"(["old"])");
            EXPECT_LOGS(-1, real->recList(param, out), lines);
            EXPECT_EQ(json(R"(["old", {"a": "first"}])"), out);

            Json::Value record = json(R"({"kept": 1})");
            EXPECT_LOGS(-1, real->recGetOne(param, record), lines, failed(listFails));
            EXPECT_EQ(json(R"({"kept": 1})"), record);
        });
}

TEST_F(List, FractionTooSmallForADoubleInAJsonColumnIsZero)
{
    Store texts(R"({"j": {"cpptype": "Json::Value"}})");
    texts.db().run("insert into " + texts.name() + " values ('[0." + std::string(400, '0') + "1, 0.5]')");
    Json::Value param;
    EXPECT_EQ(0, texts->recList(param, out));
    EXPECT_EQ(json(R"([{"j": [0.0, 0.5]}])"), out);
}

TEST_F(List, ValueThatCannotBeReadRaisesBeforeAnyStatement)
{
    const StatementLog log(store.db());
    EXPECT_THROW(list(R"({"name": {}})"), Json::Exception);
    EXPECT_THROW(list(R"({"sort_by": 1})"), Json::Exception);
    Json::Value record;
    EXPECT_THROW(getOne(R"({"seen": "x"})", record), Json::Exception);
    EXPECT_TRUE(log.statements().empty());
    EXPECT_TRUE(out.isNull());
    EXPECT_TRUE(record.isNull());
}

TEST_F(List, ReadingNeverSetsTheErrorMessage)
{
    store.db().run("create unique index one_name on " + store.name() + " (age)");
    {
        const LogCapture quiet;
        EXPECT_EQ(-1, store->runSqlEx("insert into " + store.name() + " values (1, 'Eve', 1)"));
        EXPECT_EQ(-1, list("[]"));
        Json::Value record;
        EXPECT_EQ(-1, getOne("[]", record));
    }
    EXPECT_EQ("", store->getErrMsg());
}

TEST_F(List, GetOneCopiesTheFirstMatch)
{
    Json::Value record;
    EXPECT_SILENT(1, getOne(R"({"name": "Ann"})", record));
    EXPECT_EQ(json(R"({"age": 1, "name": "Ann", "seen": true})"), record);
}

TEST_F(List, GetOneAsksForEveryMatch)
{
    const StatementLog log(store.db());
    Json::Value record;
    EXPECT_EQ(1, getOne("null", record));
    EXPECT_EQ((std::vector<std::string>{"SELECT age,name,seen FROM " + store.name() + " ;"}), log.statements());
}

TEST_F(List, GetOneWithoutAMatchReturnsZeroAndLeavesTheRecord)
{
    for (const char* const kept : {"null", R"({"age": 7})", "[1]", R"("x")"})
    {
        Json::Value record = json(kept);
        EXPECT_SILENT(0, getOne(R"({"name": "Eve"})", record));
        EXPECT_EQ(json(kept), record);
    }
}

TEST_F(List, GetOneKeepsMembersThatTheRowLacks)
{
    Json::Value record = json(R"({"seen": true, "age": "replaced", "other": {"a": 1}})");
    EXPECT_EQ(1, getOne(R"({"name": "Bob"})", record));
    EXPECT_EQ(json(R"({"age": 2, "name": "Bob", "seen": true, "other": {"a": 1}})"), record);
}

TEST_F(List, GetOneOfARowWithoutAnyValueFindsItAndCopiesNothing)
{
    store.db().run("insert into " + store.name() + " values (NULL, NULL, NULL)");
    for (const char* const kept : {"null", "{}", R"({"age": 7})"})
    {
        Json::Value record = json(kept);
        EXPECT_SILENT(1, getOne(R"({"vornSqlWhereFilter": "age is null"})", record));
        EXPECT_EQ(json(kept), record);
    }
}

LOGGED_TEST_F(List, GetOneIntoAnythingButAnObjectFailsAfterTheQuery)
{
    for (const char* const kept : {"[]", "1", R"("x")", "true"})
    {
        Json::Value record = json(kept);
        const StatementLog log(store.db());
        const ExpectedLines lines = {inUtil(failed("jIn.type() != Json::nullValue && jIn.type() != Json::objectValue")),
                                     failed("0 > jsonCopyMember(jRecOut, jRecArray[0], true)")};
        EXPECT_LOGS(-1, getOne("null", record), lines);
        EXPECT_EQ(json(kept), record);
        EXPECT_EQ(1u, log.statements().size());
    }
}

LOGGED_TEST_F(List, GetOneReportsItsParameterThroughTheListing)
{
    Json::Value record = json("1");
    EXPECT_LOGS(-1, getOne("[]", record), failed(paramKind), trace("jRecParam=[]"), failed(listFails));
    EXPECT_EQ(json("1"), record);
}

TEST_F(List, GetOneDropsTheCommentOfANullAndKeepsThatOfAnObject)
{
    for (const char* const start : {"null", "{}", R"({"name": "old", "other": 1})"})
    {
        SCOPED_TRACE(start);
        Json::Value found = json(start);
        const bool blObject = found.isObject();
        found.setComment(std::string("// mine"), Json::commentBefore);
        EXPECT_EQ(1, getOne("null", found));
        EXPECT_EQ("Ann", found["name"].asString());
        EXPECT_EQ(blObject, found.hasComment(Json::commentBefore));
    }
}
