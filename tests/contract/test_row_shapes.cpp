// SPDX-License-Identifier: MIT
//
// Rows of unusual shape: columns in any order, there twice, without a name, and records that are not empty.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const fieldFails = "0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))";
const char* const recordFails = "0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)";

class RowShapes : public testing::Test
{
protected:
    Store store{R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}, "c": {"cpptype": "Json::Value"}})", "c, a, b"};
    const std::string from = " from " + store.name();

    void SetUp() override
    {
        store.types();  // row callbacks know only types that were looked up before
        store.db().run("insert into " + store.name() + R"( values ('{"x": [1]}', 7, 'bee'))");
    }

    Json::Value query(const std::string& sql)
    {
        Json::Value out;
        EXPECT_SILENT(0, store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &out));
        return out;
    }
};

}  // namespace

TEST_F(RowShapes, ColumnsMayComeInAnyOrder)
{
    const Json::Value expected = json(R"([{"a": 7, "b": "bee", "c": {"x": [1]}}])");
    for (const char* const columns : {"a, b, c", "c, b, a", "b, c, a", "a, b, c", "*", "b, a, c", "b, a, c"})
        EXPECT_EQ(expected, query("select " + std::string(columns) + from)) << columns;
    // One text may hold several queries.
    EXPECT_EQ(json(R"([{"a": 7, "b": "bee", "c": 1}, {"a": 8, "b": "b", "c": 2}, {"b": "x"}])"),
              query("select 7 as a, 'bee' as b, '1' as c; select '2' as c, 'b' as b, 8 as a; select 'x' as b"));
}

TEST_F(RowShapes, SavedRecordComesBackFromColumnsInAnyOrder)
{
    Store plain(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}})", "b, a");
    Json::Value out;
    Json::Value in = json(R"({"a": 8, "b": "bird"})");
    EXPECT_EQ(0, plain->recCreate(in, out));
    EXPECT_EQ(in, out);
}

TEST_F(RowShapes, OfAColumnThatComesTwiceTheLastValueStays)
{
    EXPECT_EQ(json(R"([{"a": 2, "b": "x"}])"), query("select 1 as a, 2 as a, 'x' as b"));
    EXPECT_EQ(json(R"([{"a": 2, "b": "x"}])"), query("select 1 as a, 'x' as b, 2 as a"));
    // SQL NULL leaves what is there.
    EXPECT_EQ(json(R"([{"a": 1, "b": "x"}])"), query("select 1 as a, NULL as a, 'x' as b"));
    EXPECT_EQ(json(R"([{"a": 2}])"), query("select 1 as a, 2 as a, NULL as b"));
}

TEST_F(RowShapes, RowsWithAndWithoutNullsMayAlternate)
{
    EXPECT_EQ(json(R"([{"a": 1, "b": "x", "c": 1}, {"b": "y", "c": [2]}, {"a": 3, "b": "z", "c": {"k": 3}}, {}])"),
              query("select 1 as a, 'x' as b, '1' as c union all select NULL, 'y', '[2]' union all "
                    "select 3, 'z', '{\"k\": 3}' union all select NULL, NULL, NULL"));
}

TEST_F(RowShapes, ColumnThatIsNotDeclaredFailsInWhateverPlace)
{
    for (const char* const columns :
         {"rowid, a, b", "a, rowid, b", "a, b, rowid", "rowid, b, c, a", "1 as aa, b, a", "a, b, 1 as bb"})
    {
        const LogCapture quiet;
        Json::Value out;
        EXPECT_EQ(-1,
                  store->runSqlEx("select " + std::string(columns) + from, VornJsonDbApi::DbCallBackFillList, &out));
        EXPECT_TRUE(out.isNull());
    }
}

TEST_F(RowShapes, MemberWhoseNameHoldsANulIsNoColumn)
{
    std::string name = freshTable();
    Json::Value members;
    members[std::string("a\0b", 3)]["cpptype"] = "int";
    members["c"]["cpptype"] = "int";
    Json::Value definition = definitionOf(name, members);
    std::string create = "select 1";
    VornJsonDbApi api(store.db().handle(), name, definition, create);
    VORN_JSON_DB::recType(definition, name);
    const std::string sql = "select 1 as a, 2 as c";
    const ExpectedLines lines =
        ExpectedLines{failed("!jType.isMember(strName)"), failed(fieldFails), failed(recordFails)} +
        refusedBySqlite("query aborted", sql);
    Json::Value out;
    EXPECT_LOGS(-1, api.runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &out), lines);
}

TEST_F(RowShapes, RecordOfTheCallerKeepsItsOtherMembers)
{
    ASSERT_EQ(1, query("select 1 as a").size());
    char names[][2] = {"a", "b", "c"};
    char* columns[] = {names[0], names[1], names[2]};
    char one[] = "1";
    char* values[] = {one, one, one};
    char* valuesAndNull[] = {one, nullptr, one};
    struct Row
    {
        const char* before;
        const char* after;
        const char* afterNull;
    };
    const Row rows[] = {
        {"null", R"({"a": 1, "b": "1", "c": 1})", R"({"a": 1, "c": 1})"},
        {"{}", R"({"a": 1, "b": "1", "c": 1})", R"({"a": 1, "c": 1})"},
        {R"({"z": 5, "b": [2]})", R"({"a": 1, "b": "1", "c": 1, "z": 5})", R"({"a": 1, "b": [2], "c": 1, "z": 5})"},
    };
    for (const Row& row : rows)
    {
        Json::Value record = json(row.before);
        EXPECT_EQ(0, VornJsonDbApi::DbCallBackFillRec(&record, 3, values, columns));
        EXPECT_EQ(json(row.after), record);
        record = json(row.before);
        EXPECT_EQ(0, VornJsonDbApi::DbCallBackFillRec(&record, 3, valuesAndNull, columns));
        EXPECT_EQ(json(row.afterNull), record);
    }
    for (const char* const kept : {"[]", "1", R"("x")"})
    {
        Json::Value record = json(kept);
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillRec(&record, 3, values, columns),
                    failed("jRec.type() != Json::objectValue && jRec.type() != Json::nullValue"), failed(fieldFails));
        EXPECT_EQ(json(kept), record);
        // Without columns nothing is looked at.
        EXPECT_EQ(0, VornJsonDbApi::DbCallBackFillRec(&record, 0, values, columns));
    }
}
