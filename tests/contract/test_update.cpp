// SPDX-License-Identifier: MIT
//
// Updating by filter and by condition text.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

using Rows = std::vector<std::string>;

const char* const listFails = "0 > SqlExpandMemberList(jColumnList, strSql2, VORN_SQL_WHERE_TYPE_COMMA)";
const char* const runFails = "0 > runSqlEx(strSql, NULL, NULL)";
const char* const whereFails = "0 > recUpdateByWhere(jParamIn, strSql)";

ExpectedLine byFilterFailed(const std::string& values)
{
    return trace("recUpdateByFilter failed, jParamIn=" + values);
}

class Update : public testing::Test
{
protected:
    Store store{R"({"id": {"cpptype": "int"}, "name": {"cpptype": "string"}, "owner": {"cpptype": "string"},
                    "flag": {"cpptype": "bool"}, "size": {"cpptype": "double"}})",
                "id integer unique, name, owner, flag, size"};

    void SetUp() override
    {
        store.db().run("insert into " + store.name() +
                       " (id, name, owner) values (1, 'a', 'x'), (2, 'a', 'y'), (3, 'b', 'z')");
    }

    int byFilter(const std::string& filter, const std::string& values)
    {
        Json::Value filterValue = json(filter);
        Json::Value newValues = json(values);
        const int result = store->recUpdateByFilter(filterValue, newValues);
        EXPECT_EQ(json(filter), filterValue);
        EXPECT_EQ(json(values), newValues);
        return result;
    }

    int byWhere(const std::string& values, std::string condition)
    {
        Json::Value newValues = json(values);
        const std::string copy = condition;
        const int result = store->recUpdateByWhere(newValues, condition);
        EXPECT_EQ(json(values), newValues);
        EXPECT_EQ(copy, condition);
        return result;
    }

    Rows owners() { return store.db().rows("select id, owner from " + store.name() + " order by id"); }

    // Leaves the text of a violated key in the object, and no message.
    std::string leaveUniqueError()
    {
        const LogCapture quiet;
        EXPECT_EQ(-1, byWhere(R"({"id": 1})", "id = 2"));
        EXPECT_EQ("", store->getErrMsg());
        return "UNIQUE constraint failed: " + store.name() + ".id";
    }
};

}  // namespace

TEST_F(Update, StatementAssignsDeclaredMembersInTheOrderOfTheirNames)
{
    struct Row
    {
        const char* filter;
        const char* values;
        const char* statement;  // after the table's name
    };
    const Row rows[] = {
        {R"({"name": "a"})", R"({"owner": "b"})", " SET owner='b' WHERE  (name='a' );"},
        {R"({"name": "a", "id": 1})", R"({"owner": "O'N", "name": "a", "flag": true})",
         " SET flag=1 , name='a' , owner='O''N' WHERE  (id=1 and name='a' );"},
        {R"({"vornSqlWhereFilter": "id > 1"})", R"({"owner": "b", "undeclared": 1})",
         " SET owner='b' WHERE  ( id > 1  );"},
        {R"({"name": ["a"], "limit": 1})", R"({"vornSqlWhereFilter": "1", "owner": "b"})",
         " SET owner='b' WHERE  (name in ('a' ) );"},
        {R"({"name": "a"})", R"({"vornSqlWhereFilter": 5, "owner": "b"})", " SET owner='b' WHERE  (name='a' );"},
    };
    for (const Row& row : rows)
    {
        const StatementLog log(store.db());
        EXPECT_SILENT(0, byFilter(row.filter, row.values));
        EXPECT_EQ((Rows{"UPDATE " + store.name() + row.statement}), log.statements());
    }
}

TEST_F(Update, ByWhereRunsTheConditionAsItStands)
{
    const StatementLog log(store.db());
    EXPECT_SILENT(0, byWhere(R"({"owner": "q", "vornSqlWhereFilter": "id = 3"})", "id=1 or id=2"));
    EXPECT_EQ((Rows{"UPDATE " + store.name() + " SET owner='q' WHERE id=1 or id=2;"}), log.statements());
    EXPECT_EQ((Rows{"1|q", "2|q", "3|z"}), owners());
}

TEST_F(Update, EveryMatchingRowIsChangedByOneStatement)
{
    store.db().run("update " + store.name() + " set name = 'a'");
    const StatementLog log(store.db());
    EXPECT_EQ(0, byFilter(R"({"name": "a"})", R"({"owner": "new"})"));
    EXPECT_EQ(1u, log.statements().size());
    EXPECT_EQ((Rows{"1|new", "2|new", "3|new"}), owners());
}

TEST_F(Update, NoMatchIsASuccess)
{
    EXPECT_SILENT(0, byFilter(R"({"name": "none"})", R"({"owner": "new"})"));
    EXPECT_SILENT(0, byWhere(R"({"owner": "new"})", "1 = 0"));
    EXPECT_EQ((Rows{"1|x", "2|y", "3|z"}), owners());
}

TEST_F(Update, KeyMayBeChanged)
{
    EXPECT_EQ(0, byFilter(R"({"id": 3})", R"({"id": 30})"));
    EXPECT_EQ((Rows{"1|x", "2|y", "30|z"}), owners());
}

LOGGED_TEST_F(Update, ByWhereRefusesAnEmptyConditionBeforeAnEmptyRecord)
{
    const StatementLog log(store.db());
    EXPECT_LOGS(-1, byWhere("{}", ""), failed("strSqlWhere.empty()"), trace("jRecIn={}"));
    EXPECT_LOGS(-1, byWhere(R"({"owner": "b"})", ""), failed("strSqlWhere.empty()"), trace(R"(jRecIn={"owner":"b"})"));
    for (const char* const empty : {"{}", "null", "[]"})
        EXPECT_LOGS(-1, byWhere(empty, "1"), failed("jRecIn.empty()"), trace(std::string("jRecIn=") + empty));
    EXPECT_TRUE(log.statements().empty());
}

LOGGED_TEST_F(Update, ByWhereReportsAnAssignmentThatFails)
{
    {
        const NoSqliteMemory noMemory;
        EXPECT_LOGS(-1, byWhere(R"({"owner": "b"})", "1"),
                    failed(R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.asString().c_str())))"),
                    failed("0 > SqlMakeByMatchField(jmFieldName[i], jTmp, strSqlWhereOut)"), failed(listFails),
                    trace(R"(jRecIn={"owner":"b"})"));
    }
    EXPECT_EQ((Rows{"1|x", "2|y", "3|z"}), owners());
}

LOGGED_TEST_F(Update, FailureBeforeTheStatementShowsTheLastSqlErrorAndTheTextSoFar)
{
    const std::string stale = leaveUniqueError();
    EXPECT_LOGS(-1, byWhere("{}", ""), failed("strSqlWhere.empty()"), trace("jRecIn={}"), sqlError(stale, ""));
    EXPECT_LOGS(-1, byWhere("{}", "1"), failed("jRecIn.empty()"), trace("jRecIn={}"), sqlError(stale, ""));
    const NoSqliteMemory noMemory;
    const ExpectedLines lines = {failed(R"(NULL == (szSql = sqlite3_mprintf("%d", jParam.asInt())))"),
                                 failed("0 > SqlMakeByMatchField(jmFieldName[i], jTmp, strSqlWhereOut)"),
                                 failed(listFails), trace(R"(jRecIn={"flag":true})"),
                                 sqlError(stale, "UPDATE " + store.name() + " SET ")};
    EXPECT_LOGS(-1, byWhere(R"({"flag": true})", "1"), lines);

    EXPECT_EQ("", store->getErrMsg());
}

LOGGED_TEST_F(Update, ValuesWithoutAnyAssignmentAreRefusedBySqliteAndReportedAtBothLevels)
{
    // Without an assignment nothing stands between SET and WHERE.
    const std::string sql = "UPDATE " + store.name() + " SET  WHERE  (name='a' );";
    const std::string sqliteText = "near \"WHERE\": syntax error";
    for (const std::string values : {R"({"undeclared":1})", R"({"vornSqlWhereFilter":"1"})"})
    {
        const ExpectedLines lines =
            refusedBySqlite(sqliteText, sql) +
            ExpectedLines{failed(runFails), trace("jRecIn=" + values), sqlError(sqliteText, sql)};
        EXPECT_LOGS(-1, byWhere(values, " (name='a' )"), lines);
        EXPECT_LOGS(-1, byFilter(R"({"name": "a"})", values), lines, failed(whereFails), byFilterFailed(values));
    }

    EXPECT_EQ("", store->getErrMsg());
}

TEST_F(Update, ArrayAmongTheValuesIsAListConditionThatSqliteRefuses)
{
    const std::string sql = "UPDATE " + store.name() + " SET owner in ('b' ) WHERE 1;";
    const std::string sqliteText = "near \"in\": syntax error";
    const ExpectedLines lines =
        refusedBySqlite(sqliteText, sql) +
        ExpectedLines{failed(runFails), trace(R"(jRecIn={"owner":["b"]})"), sqlError(sqliteText, sql)};
    EXPECT_LOGS(-1, byWhere(R"({"owner": ["b"]})", "1"), lines);
}

LOGGED_TEST_F(Update, ClashingKeyIsToldByTheMessageOfByFilterOnly)
{
    const std::string sql = "UPDATE " + store.name() + " SET id=1 WHERE  (id=2 );";
    const std::string sqliteText = "UNIQUE constraint failed: " + store.name() + ".id";
    const ExpectedLines lines = refusedBySqlite(sqliteText, sql) +
                                ExpectedLines{failed(runFails), trace(R"(jRecIn={"id":1})"), sqlError(sqliteText, sql)};
    store->setErrMsg("");
    EXPECT_LOGS(-1, byWhere(R"({"id": 1})", " (id=2 )"), lines);
    EXPECT_EQ("", store->getErrMsg());
    EXPECT_LOGS(-1, byFilter(R"({"id": 2})", R"({"id": 1})"), lines, failed(whereFails), byFilterFailed(R"({"id":1})"));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());

    EXPECT_EQ((Rows{"1|x", "2|y", "3|z"}), owners());
}

TEST_F(Update, SeveralRowsAreChangedAllOrNone)
{
    const LogCapture quiet;
    EXPECT_EQ(-1, byFilter(R"({"name": "a"})", R"({"id": 9, "owner": "new"})"));
    EXPECT_EQ((Rows{"1|x", "2|y", "3|z"}), owners());
}

TEST_F(Update, MessageOfADuplicateStaysAfterASuccessAndOtherFailures)
{
    {
        const LogCapture quiet;
        EXPECT_EQ(-1, byFilter(R"({"id": 2})", R"({"id": 1})"));
        EXPECT_EQ(0, byFilter(R"({"id": 2})", R"({"owner": "b"})"));
        EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
        EXPECT_EQ(-1, byFilter(R"({"id": "nothing"})", R"({"owner": "b"})"));
    }
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
    // A success has emptied the text of the violated key, so a failure no longer finds it.
    store->setErrMsg("mine");
    const LogCapture quiet;
    EXPECT_EQ(0, byFilter(R"({"id": 2})", R"({"owner": "b"})"));
    EXPECT_EQ(-1, byFilter("{}", "{}"));
    EXPECT_EQ("mine", store->getErrMsg());
}

TEST_F(Update, FailureBeforeAnyStatementStillFindsTheLastViolatedKey)
{
    leaveUniqueError();
    EXPECT_LOGS(-1, byFilter("{}", "{}"), failed("jFilterIn.empty()"), byFilterFailed("{}"));
    EXPECT_EQ("DUPLICATE_PRIMARY_KEY", store->getErrMsg());
}

LOGGED_TEST_F(Update, ByFilterChecksFilterValuesConditionAndTypesInThisOrder)
{
    struct Row
    {
        const char* filter;
        const char* values;
        ExpectedLines lines;
    };
    const ExpectedLine noFilter = failed("jFilterIn.empty()");
    const ExpectedLine filterKind = failed("jFilterIn.type() != Json::objectValue");
    const ExpectedLine valuesKind = failed("jParamIn.type() != Json::objectValue");
    const ExpectedLine noCondition = failed("strSql.empty()");
    const ExpectedLine types = failed("0 > checkJsonType(jParamIn)");
    const ExpectedLines badRaw = {failed("!jRecParam[jmFieldName[i]].isString()"),
                                  failed("0 > SqlExpandMemberList(jFilterIn, strSql, VORN_SQL_WHERE_TYPE_AND)")};
    const Row rows[] = {
        {"{}", "1", {noFilter}},
        {"null", "null", {noFilter}},
        {"[]", "{}", {noFilter}},
        {"[1]", "1", {filterKind}},
        {"1", "{}", {filterKind}},
        {R"("")", "{}", {filterKind}},
        {"true", "{}", {filterKind}},
        {R"({"name":"a"})", "null", {valuesKind}},
        {R"({"name":"a"})", "[1]", {valuesKind}},
        {R"({"vornSqlWhereFilter":1})", R"("x")", {valuesKind}},
        {R"({"vornSqlWhereFilter":1})", R"({"id":"bad"})", badRaw},
        {R"({"limit":1,"offset":2})", R"({"id":"bad"})", {noCondition}},
        {R"({"sort_by":"id","sort_direction":"desc","Name":"a"})", R"({"owner":"b"})", {noCondition}},
        {R"({"name":"a"})",
         R"({"id":"bad","owner":5})",
         {error(R"(type failed, strKey=id, jRecParam={"id":"bad","owner":5})"), types}},
        {R"({"name":"a"})", R"({"size":1.5})", {error("type not found!!, key=size"), types}},
        {R"({"name":"a"})",
         R"({"owner":["b"]})",
         {error(R"(type failed, strKey=owner, jRecParam={"owner":["b"]})"), types}},
        {R"({"name":"a"})", "{}", {failed("jRecIn.empty()"), trace("jRecIn={}"), failed(whereFails)}},
    };
    for (const Row& row : rows)
    {
        const StatementLog log(store.db());
        EXPECT_LOGS(-1, byFilter(row.filter, row.values), row.lines, byFilterFailed(row.values))
            << row.filter << " " << row.values;
        EXPECT_TRUE(log.statements().empty());
    }

    EXPECT_EQ("", store->getErrMsg());
}

TEST_F(Update, ByWhereDoesNotCheckTypes)
{
    EXPECT_EQ(0, byWhere(R"({"owner": 5, "size": 1.5})", "id = 1"));
    EXPECT_EQ((Rows{"5|text|1.5"}),
              store.db().rows("select owner, typeof(owner), size from " + store.name() + " where id = 1"));
}

TEST_F(Update, ValuesThatAreNoObjectRaiseInByWhere)
{
    const StatementLog log(store.db());
    for (const char* const values : {"[1]", R"("owner")", "5", "true"})
    {
        try
        {
            byWhere(values, "1");
            ADD_FAILURE() << values;
        }
        catch (const Json::LogicError& error)
        {
            EXPECT_STREQ("in Json::Value::removeMember(): requires objectValue", error.what()) << values;
        }
    }
    EXPECT_TRUE(log.statements().empty());
}

TEST_F(Update, ValueThatCannotBeReadRaisesBeforeAnyStatement)
{
    const StatementLog log(store.db());
    EXPECT_THROW(byWhere(R"({"owner": {}})", "1"), Json::Exception);
    EXPECT_THROW(byFilter(R"({"owner": {}})", R"({"owner": "b"})"), Json::Exception);
    EXPECT_TRUE(log.statements().empty());
}
