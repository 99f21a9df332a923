// SPDX-License-Identifier: MIT
//
// Parameter objects as conditions (joined by and, or) and as assignments (joined by commas).

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

constexpr int joinOr = VORN_SQL_WHERE_TYPE_OR;
constexpr int joinAnd = VORN_SQL_WHERE_TYPE_AND;
constexpr int comma = VORN_SQL_WHERE_TYPE_COMMA;
static_assert(joinOr == 0 && joinAnd == 1 && comma == 2, "callers may pass plain numbers");

const char* const members = R"({
    "name": {"cpptype": "string"},
    "owner": {"cpptype": "string"},
    "age": {"cpptype": "int"},
    "flag": {"cpptype": "bool"},
    "meta": {"cpptype": "Json::objectValue"},
    "zip": {"cpptype": "string"}
})";

const char* const kindFailure = "jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue";
const char* const rawFailure = "!jRecParam[jmFieldName[i]].isString()";
const char* const listFailure = "0 > SqlMakeByListField(jmFieldName[i].c_str(), jTmp, strSqlWhereOut)";
const char* const matchFailure = "0 > SqlMakeByMatchField(jmFieldName[i], jTmp, strSqlWhereOut)";
const char* const noMemoryMatch = R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.asString().c_str())))";
const char* const noMemoryList = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].asString().c_str())))";

struct Written
{
    int joiner;
    std::string param;  // JSON
    std::string text;
};

class ConditionList : public testing::Test
{
protected:
    Store store{members};
    std::string out = "before";

    int write(const std::string& param, int joiner)
    {
        Json::Value value = json(param);
        const Json::Value copy = value;
        const int result = store->SqlExpandMemberList(value, out, joiner);
        EXPECT_EQ(copy, value) << "the parameter object was changed";
        return result;
    }
};

}  // namespace

TEST_F(ConditionList, MembersAreJoinedInTheOrderOfTheirNames)
{
    const Written cases[] = {
        {joinAnd, R"({"name": "x"})", " (name='x' )"},
        {joinOr, R"({"name": "x"})", " (name='x' )"},
        {comma, R"({"name": "x"})", "name='x'"},
        {joinAnd, R"({"owner": "y", "name": "x", "limit": 10})", " (name='x' and owner='y' )"},
        {joinOr, R"({"owner": "y", "name": "x", "limit": 10})", " (name='x' or owner='y' )"},
        {comma, R"({"owner": "y", "name": "x", "limit": 10})", "name='x' , owner='y'"},
        {joinAnd, R"({"zip": "1", "age": 3, "flag": true, "name": "O'N"})",
         " (age=3 and flag=1 and name='O''N' and zip='1' )"},
        {comma, R"({"zip": "1", "age": 3, "flag": true})", "age=3 , flag=1 , zip='1'"},
        {joinAnd, R"({"meta": {"a": [1]}})", R"( (meta='{"a":[1]}' ))"},
        {joinAnd, R"({"name": null, "age": "1 or 1"})", " (age=1 or 1 and name='' )"},
    };
    for (const Written& example : cases)
    {
        out = "before";
        EXPECT_SILENT(0, write(example.param, example.joiner));
        EXPECT_EQ("before" + example.text, out) << example.param;
    }
}

TEST_F(ConditionList, ArrayBecomesAListConditionUnderEveryJoiner)
{
    const Written cases[] = {
        {joinAnd, R"({"name": ["a"], "age": 1})", " (age=1 and name in ('a' ) )"},
        {joinOr, R"({"name": ["a", "b"]})", " (name in ('a''b' ) )"},
        {comma, R"({"name": ["a"], "age": 1})", "age=1 , name in ('a' )"},
        {joinAnd, R"({"meta": [{}]})", " (meta in ('{}' ) )"},
        // An empty array writes nothing of its own, but counts as written.
        {joinAnd, R"({"name": []})", " ( )"},
        {joinAnd, R"({"age": 1, "name": [], "zip": "z"})", " (age=1 and  and zip='z' )"},
        {comma, R"({"name": []})", ""},
    };
    for (const Written& example : cases)
    {
        out = "before";
        EXPECT_SILENT(0, write(example.param, example.joiner));
        EXPECT_EQ("before" + example.text, out) << example.param;
    }
}

TEST_F(ConditionList, RawConditionStandsBetweenBlanks)
{
    const Written cases[] = {
        {joinAnd, R"({"vornSqlWhereFilter": "id > 3"})", " ( id > 3  )"},
        {joinAnd, R"({"vornSqlWhereFilter": "id > 3", "name": "x", "owner": "y"})",
         " (name='x' and owner='y' and  id > 3  )"},
        {joinOr, R"({"vornSqlWhereFilter": "id > 3", "zip": "z"})", " ( id > 3  or zip='z' )"},
        {comma, R"({"vornSqlWhereFilter": "id > 3", "zip": "z"})", " id > 3  , zip='z'"},
        {joinAnd, R"({"vornSqlWhereFilter": ""})", " (   )"},
        {comma, R"({"vornSqlWhereFilter": ""})", "  "},
        {joinAnd, R"({"vornSqlWhereFilter": "a = 'it''s' and b like '%d%%'"})", " ( a = 'it''s' and b like '%d%%'  )"},
    };
    for (const Written& example : cases)
    {
        out = "before";
        EXPECT_SILENT(0, write(example.param, example.joiner));
        EXPECT_EQ("before" + example.text, out) << example.param;
    }
}

TEST_F(ConditionList, EmptyRawConditionIsRejectedBySqlite)
{
    out.clear();
    ASSERT_EQ(0, write(R"({"vornSqlWhereFilter": ""})", joinAnd));
    EXPECT_EQ(SQLITE_ERROR, store.db().run("select * from " + store.name() + " where " + out));
}

TEST_F(ConditionList, RawConditionStaysRawWhenTheDefinitionDeclaresItsName)
{
    Store declaring(R"({"vornSqlWhereFilter": {"cpptype": "string"}, "name": {"cpptype": "string"}})");
    Json::Value param = json(R"({"vornSqlWhereFilter": "it's", "name": "x"})");
    EXPECT_EQ(0, declaring->SqlExpandMemberList(param, out, joinAnd));
    EXPECT_EQ("before (name='x' and  it's  )", out);

    param["vornSqlWhereFilter"] = json(R"(["it's"])");
    EXPECT_LOGS(-1, declaring->SqlExpandMemberList(param, out, joinAnd), failed(rawFailure));
}

TEST_F(ConditionList, NameOfTheRawConditionIsCaseSensitive)
{
    EXPECT_SILENT(1, write(R"({"vornsqlwherefilter": "id > 3", "VornSqlWhereFilter": 5})", joinAnd));
    EXPECT_EQ("before", out);
}

TEST_F(ConditionList, NothingToWriteGivesOneAndAppendsNothing)
{
    const char* const params[] = {
        "{}",
        "null",
        R"({"limit": 1, "offset": 2, "sort_by": "name", "sort_direction": "desc"})",
        R"({"Name": "x", "nmae": "x", "": 1})",
        // Values of members that are passed over are not looked at.
        R"({"undeclared": {"a": []}, "other": [[1]]})",
    };
    for (const char* const param : params)
        for (const int joiner : {joinOr, joinAnd, comma})
            EXPECT_SILENT(1, write(param, joiner)) << param;
    EXPECT_EQ("before", out);
}

LOGGED_TEST_F(ConditionList, ParameterThatIsNoObjectIsRefusedBeforeTheJoiner)
{
    for (const char* const param : {"[]", "[1]", R"("name")", "1", "1.5", "true"})
    {
        EXPECT_LOGS(-1, write(param, joinAnd), failed(kindFailure)) << param;
        EXPECT_LOGS(-1, write(param, 3), failed(kindFailure)) << param;
    }

    EXPECT_EQ("before", out);
}

LOGGED_TEST_F(ConditionList, UnknownJoinerIsRefusedEvenForAnEmptyObject)
{
    for (const char* const param : {"{}", "null", R"({"name": "x"})", R"({"vornSqlWhereFilter": 1})"})
    {
        EXPECT_LOGS(-1, write(param, 3), error("error andType=3"));
        EXPECT_LOGS(-1, write(param, -1), error("error andType=-1"));
        EXPECT_LOGS(-1, write(param, 2147483647), error("error andType=2147483647"));
    }

    EXPECT_EQ("before", out);
}

LOGGED_TEST_F(ConditionList, RawConditionThatIsNoStringStopsTheList)
{
    struct Row
    {
        int joiner;
        const char* param;
        const char* leftBehind;
    };
    const Row rows[] = {
        {joinAnd, R"({"vornSqlWhereFilter": 5})", "before ("},
        {joinOr, R"({"vornSqlWhereFilter": null})", "before ("},
        {comma, R"({"vornSqlWhereFilter": ["id > 3"]})", "before"},
        {comma, R"({"vornSqlWhereFilter": {}})", "before"},
        {joinAnd, R"({"name": "x", "vornSqlWhereFilter": true, "zip": "z"})", "before (name='x' and "},
        {joinOr, R"({"name": "x", "vornSqlWhereFilter": 1.5})", "before (name='x' or "},
        {comma, R"({"name": "x", "vornSqlWhereFilter": 5})", "beforename='x' , "},
    };
    for (const Row& row : rows)
    {
        out = "before";
        EXPECT_LOGS(-1, write(row.param, row.joiner), failed(rawFailure));
        EXPECT_EQ(row.leftBehind, out) << row.param;
    }
}

LOGGED_TEST_F(ConditionList, ConditionThatFailsStopsTheListAndLeavesItUnfinished)
{
    const std::string huge = "\"" + hugeText() + "\"";
    struct Row
    {
        int joiner;
        std::string param;
        ExpectedLines lines;
        const char* leftBehind;
    };
    const ExpectedLines match = {failed(noMemoryMatch), failed(matchFailure)};
    const ExpectedLines list = {failed(noMemoryList), failed(listFailure)};
    const Row rows[] = {
        {joinAnd, "{\"name\": " + huge + "}", match, "before ("},
        {joinAnd, "{\"age\": 1, \"name\": " + huge + ", \"zip\": \"z\"}", match, "before (age=1 and "},
        {joinOr, "{\"age\": 1, \"name\": [" + huge + "]}", list, "before (age=1 or "},
        {comma, "{\"age\": 1, \"name\": [\"a\", " + huge + "]}", list, "beforeage=1 , "},
        {comma, "{\"name\": " + huge + "}", match, "before"},
    };
    for (const Row& row : rows)
    {
        out = "before";
        const NoSqliteMemory littleMemory(smallAllowance);
        EXPECT_LOGS(-1, write(row.param, row.joiner), row.lines);
        EXPECT_EQ(row.leftBehind, out);
    }
}

TEST_F(ConditionList, ValueThatCannotBeReadRaises)
{
    EXPECT_THROW(write(R"({"name": {}})", joinAnd), Json::Exception);
    EXPECT_THROW(write(R"({"flag": "x"})", joinAnd), Json::Exception);
    EXPECT_THROW(write(R"({"name": [[]]})", joinAnd), Json::Exception);
}

TEST_F(ConditionList, ConditionSelectsTheRowsThatItDescribes)
{
    store.db().run("insert into " + store.name() + " (name, age) values ('a', 1), ('a', 2), ('b', 1), ('c', 3)");
    const auto agesWhere = [&](const std::string& param, int joiner)
    {
        out.clear();
        EXPECT_EQ(0, write(param, joiner));
        return store.db().rows("select rowid from " + store.name() + " where " + out);
    };
    using Rows = std::vector<std::string>;
    EXPECT_EQ((Rows{"1"}), agesWhere(R"({"name": "a", "age": 1})", joinAnd));
    EXPECT_EQ((Rows{"1", "2", "3"}), agesWhere(R"({"name": "a", "age": 1})", joinOr));
    EXPECT_EQ((Rows{"2"}), agesWhere(R"({"name": ["a"], "vornSqlWhereFilter": "age > 1"})", joinAnd));
}

TEST_F(ConditionList, ItemsThatWereNeverSetCountAsNull)
{
    const auto written = [&](const char* name, Json::ArrayIndex index, const Json::Value& item)
    {
        Json::Value param;
        param[name][index] = item;
        std::string text;
        EXPECT_EQ(0, store->SqlExpandMemberList(param, text, comma));
        return text;
    };
    EXPECT_EQ("name in ('''x' )", written("name", 1, "x"));
    EXPECT_EQ(R"(meta in ('null''null''{"a":1}' ))", written("meta", 2, json(R"({"a": 1})")));
    EXPECT_EQ("age in (7 )", written("age", 1, 7));

    // The row that the condition describes goes, no other.
    store.db().run("insert into " + store.name() + " (name) values ('x'), ('''x')");
    Json::Value param;
    param["name"][1] = "x";
    EXPECT_EQ(1, store->recDelete(param));
    EXPECT_EQ(std::vector<std::string>{"x"}, store.db().rows("select name from " + store.name()));
}

TEST_F(ConditionList, TextsBeyondTheFormattersLimitFailAsWithoutMemory)
{
    // Each quote is written twice, and SQLite's limit is 1,000,000,000. The values refer to the text without a copy.
    std::vector<char> quotes(500000002, '\'');
    quotes.back() = '\0';
    Json::Value value{Json::StaticString(quotes.data())};
    Json::Value list;
    list.append("x");
    list.append(value);
    Json::Value record;
    record["name"] = value;
    std::string name = "name";
    EXPECT_EQ(-1, logged({failed(noMemoryMatch)}, [&] { return store->SqlMakeByMatchField(name, value, out); }));
    EXPECT_EQ(-1, logged({failed(noMemoryList)}, [&] { return store->SqlMakeByListField("name", list, out); }));
    EXPECT_THROW(store->SqlExpandMemberSymbol(out, record), std::logic_error);
    EXPECT_EQ("before", out);
}
