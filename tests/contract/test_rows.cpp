// SPDX-License-Identifier: MIT
//
// Result rows as JSON records: what each declared type makes of a text, and how a row or a column fails.

#include <gtest/gtest.h>

#include <climits>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

constexpr bool longHas64Bits = sizeof(long) == 8;

const char* const fieldCall = "0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))";
const char* const recCall = "0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)";

// A row as sqlite3_exec() hands it over: arrays of pointers, null for SQL NULL.
class Row
{
public:
    Row(std::initializer_list<std::pair<const char*, const char*>> columns)
    {
        for (const auto& [name, value] : columns)
        {
            m_names.push_back(const_cast<char*>(name));
            m_values.push_back(const_cast<char*>(value));
        }
    }

    char** names() { return m_names.data(); }
    char** values() { return m_values.data(); }
    int count() const { return static_cast<int>(m_names.size()); }

private:
    std::vector<char*> m_names;
    std::vector<char*> m_values;
};

// Makes the store's table the current one, with its types known.
void makeCurrent(Store& store)
{
    store.types();
    ASSERT_EQ(0, logged({}, [&] { return store->runSqlEx("SELECT 1 WHERE 0"); }));
}

int fillList(Json::Value& rows, Row row)
{
    return VornJsonDbApi::DbCallBackFillList(&rows, row.count(), row.values(), row.names());
}

struct Conversion
{
    const char* type;
    const char* text;
    Json::Value expected;
};

Json::Value boolean(bool value)
{
    return Json::Value(value);
}

Json::Value integer(Json::Int64 value)
{
    return Json::Value(value);
}

// Both platforms' values where long has different sizes: 64 bits wrap to 32, 32 bits stop at the limit.
Json::Value perLong(int with64, int with32)
{
    return Json::Value(longHas64Bits ? with64 : with32);
}

std::vector<Conversion> conversions()
{
    std::vector<Conversion> list = {
        {"string", "abc", "abc"},
        {"string", "", ""},
        {"string", "O'Neil \xc3\xa9 100% \n", "O'Neil \xc3\xa9 100% \n"},
        {"string", "not UTF-8: \xff\xc3", "not UTF-8: \xff\xc3"},
        {"string", "12", "12"},
        {"bool", "1", boolean(true)},
        {"bool", "01", boolean(true)},
        {"bool", " 1", boolean(true)},
        {"bool", "1.9", boolean(true)},
        {"bool", "0", boolean(false)},
        {"bool", "2", boolean(false)},
        {"bool", "-1", boolean(false)},
        {"bool", "true", boolean(false)},
        {"bool", "", boolean(false)},
        {"bool", "4294967297", boolean(false)},
    };
    for (const char* const type : {"int", "unsigned int"})
    {
        const std::vector<Conversion> more = {
            {type, "0", integer(0)},
            {type, "42", integer(42)},
            {type, "-5", integer(-5)},
            {type, "+7", integer(7)},
            {type, " 8", integer(8)},
            {type, "12abc", integer(12)},
            {type, "1.9", integer(1)},
            {type, "0x10", integer(0)},
            {type, "010", integer(10)},
            {type, "abc", integer(0)},
            {type, "", integer(0)},
            {type, "2147483647", integer(2147483647)},
            {type, "-2147483648", integer(INT_MIN)},
            {type, "2147483648", perLong(INT_MIN, INT_MAX)},
            {type, "4294967295", perLong(-1, INT_MAX)},
            {type, "4294967296", perLong(0, INT_MAX)},
            {type, "-2147483649", perLong(INT_MAX, INT_MIN)},
            {type, "9223372036854775807", perLong(-1, INT_MAX)},
            {type, "99999999999999999999", perLong(-1, INT_MAX)},
            {type, "-99999999999999999999", perLong(0, INT_MIN)},
        };
        list.insert(list.end(), more.begin(), more.end());
    }
    for (const char* const type : {"long long", "unsigned long long"})
    {
        const std::vector<Conversion> more = {
            {type, "0", integer(0)},
            {type, "-5", integer(-5)},
            {type, "4294967296", integer(4294967296LL)},
            {type, "9223372036854775807", integer(LLONG_MAX)},
            {type, "-9223372036854775808", integer(LLONG_MIN)},
            {type, "9223372036854775808", integer(LLONG_MAX)},
            {type, "18446744073709551615", integer(LLONG_MAX)},
            {type, "-99999999999999999999", integer(LLONG_MIN)},
            {type, "1.84467440737096e+19", integer(1)},
            {type, "abc", integer(0)},
        };
        list.insert(list.end(), more.begin(), more.end());
    }
    for (const char* const type : {"Json::Value", "Json::objectValue", "Json::arrayValue"})
    {
        const std::vector<Conversion> more = {
            {type, R"({"a":1,"b":[true,null,"x"]})", json(R"({"a": 1, "b": [true, null, "x"]})")},
            {type, R"([1,-2,2.5,"\u00e9"])", json(R"([1, -2, 2.5, "é"])")},
            {type, "5", integer(5)},
            {type, "true", boolean(true)},
            {type, "\"text\"", "text"},
            {type, "null", Json::Value()},
            {type, "", Json::Value()},
            {type, "{", Json::Value()},
            {type, R"({"a":1)", Json::Value()},
            {type, "not json", Json::Value()},
            {type, "\xff\xfe", Json::Value()},
        };
        list.insert(list.end(), more.begin(), more.end());
    }
    return list;
}

}  // namespace

TEST(Rows, EveryTypeConvertsTheTextOfItsColumn)
{
    for (const char* const type : {"string", "int", "unsigned int", "long long", "unsigned long long", "Json::Value",
                                   "Json::objectValue", "Json::arrayValue", "bool"})
    {
        Store store(std::string(R"({"m": {"cpptype": ")") + type + R"("}})");
        makeCurrent(store);
        int tried = 0;
        for (const Conversion& conversion : conversions())
        {
            if (conversion.type != std::string(type))
                continue;
            SCOPED_TRACE(std::string(type) + " from \"" + conversion.text + "\"");
            ++tried;
            Row row{{"m", conversion.text}};
            Json::Value record;
            EXPECT_SILENT(0, VornJsonDbApi::DbCallBackFillField(record, row.names(), row.values(), 0));
            ASSERT_TRUE(record.isMember("m"));
            EXPECT_EQ(conversion.expected.type(), record["m"].type());
            EXPECT_EQ(conversion.expected, record["m"]);
        }
        EXPECT_GT(tried, 4) << type;
    }
}

TEST(Rows, TextNestedTooDeepForTheReaderIsNull)
{
    Store store(R"({"m": {"cpptype": "Json::arrayValue"}})");
    makeCurrent(store);
    const std::string text = std::string(5000, '[') + std::string(5000, ']');
    Json::Value rows;
    EXPECT_SILENT(0, fillList(rows, Row{{"m", text.c_str()}}));
    EXPECT_EQ(json(R"([{"m": null}])"), rows);
}

LOGGED_TEST(Rows, OtherTypesFailTheQueryThatReturnsThem)
{
    for (const std::string type : {"long", "unsigned long", "unsigned", "float", "double", "uid_t", "time_t", "", "INT",
                                   "integer", "Json::nullValue", "100%s", "bool "})
    {
        Store store(R"({"m": {"cpptype": ")" + type + R"("}})");
        makeCurrent(store);
        Row row{{"m", "1"}};
        Json::Value record;
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillField(record, row.names(), row.values(), 0),
                    error("type error, strType=" + type));
        EXPECT_FALSE(record.isMember("m"));
    }
}

LOGGED_TEST(Rows, ASqlNullLeavesTheMemberOutWhateverItsType)
{
    for (const std::string type : {"string", "int", "unsigned int", "long long", "unsigned long long", "Json::Value",
                                   "Json::objectValue", "Json::arrayValue", "bool", "double", "time_t", "unknown"})
    {
        Store store(R"({"m": {"cpptype": ")" + type + R"("}})");
        makeCurrent(store);
        Json::Value rows;
        EXPECT_SILENT(0, fillList(rows, Row{{"m", nullptr}}));
        EXPECT_EQ(json("[{}]"), rows);
    }
}

LOGGED_TEST(Rows, AFieldNeedsAnObjectOrNull)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    Row row{{"m", "1"}};
    for (const char* const text : {"[]", "[1]", "5", "1.5", "true", "\"x\""})
    {
        Json::Value record = json(text);
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillField(record, row.names(), row.values(), 0),
                    failed("jRec.type() != Json::objectValue && jRec.type() != Json::nullValue"));
        EXPECT_EQ(json(text), record);
    }
    Json::Value record = json(R"({"other": 2, "m": 0})");
    EXPECT_SILENT(0, VornJsonDbApi::DbCallBackFillField(record, row.names(), row.values(), 0));
    EXPECT_EQ(json(R"({"other": 2, "m": 1})"), record);
}

LOGGED_TEST(Rows, AnUndeclaredColumnFails)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    for (const char* const name : {"M", "rowid", "count(*)", "m ", "", "100%s"})
    {
        Row row{{name, nullptr}};
        Json::Value record;
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillField(record, row.names(), row.values(), 0),
                    failed("!jType.isMember(strName)"));
        EXPECT_TRUE(record.isNull());
    }
}

LOGGED_TEST(Rows, ARecordNeedsBothColumnArrays)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    Row row{{"m", "1"}};
    Json::Value record(Json::objectValue);
    const ExpectedLines lines = {failed("NULL == column_name || NULL == column_value")};
    for (const int count : {0, 1})
    {
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillRec(&record, count, nullptr, row.names()), lines);
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillRec(&record, count, row.values(), nullptr), lines);
        EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillRec(&record, count, nullptr, nullptr), lines);
    }
    EXPECT_EQ(json("{}"), record);
}

LOGGED_TEST(Rows, ARowWithoutColumnsIsAnEmptyObject)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    Row row{{"m", "1"}};
    for (const int count : {0, -1})
    {
        Json::Value rows;
        EXPECT_SILENT(0, VornJsonDbApi::DbCallBackFillList(&rows, count, row.values(), row.names()));
        EXPECT_EQ(json("[{}]"), rows);
    }
}

// A failure at the first column shows no column lines; at a later one it does.
LOGGED_TEST(Rows, AFailingColumnIsShownUnlessItIsTheFirst)
{
    Store store(R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}, "c": {"cpptype": "double"}})");
    makeCurrent(store);
    struct Case
    {
        Row row;
        ExpectedLines lines;
    } cases[] = {
        {Row{{"x", "1"}, {"a", "2"}}, {failed("!jType.isMember(strName)"), failed(fieldCall), failed(recCall)}},
        {Row{{"c", "1.5"}, {"a", "2"}}, {error("type error, strType=double"), failed(fieldCall), failed(recCall)}},
        {Row{{nullptr, "1"}, {"a", "2"}}, {failed("NULL == column_name[i]"), failed(recCall)}},
        {Row{{"a", "1"}, {"x", "5 %s"}},
         {failed("!jType.isMember(strName)"), failed(fieldCall), trace("column_name[1]=x"),
          trace("column_value[1]=5 %s"), failed(recCall)}},
        {Row{{"a", "1"}, {"b", nullptr}, {"x", nullptr}, {"y", "1"}},
         {failed("!jType.isMember(strName)"), failed(fieldCall), trace("column_name[2]=x"),
          trace("column_value[2]=(null)"), failed(recCall)}},
        {Row{{"a", "1"}, {"b", "x"}, {"c", "2.5"}},
         {error("type error, strType=double"), failed(fieldCall), trace("column_name[2]=c"),
          trace("column_value[2]=2.5"), failed(recCall)}},
        {Row{{"a", "1"}, {"b", "x"}, {nullptr, "lost"}},
         {failed("NULL == column_name[i]"), trace("column_name[2]=(null)"), trace("column_value[2]=lost"),
          failed(recCall)}},
    };
    for (Case& each : cases)
    {
        Json::Value rows = json(R"([{"a": 9}])");
        EXPECT_LOGS(-1, fillList(rows, each.row), each.lines);
        EXPECT_EQ(json(R"([{"a": 9}])"), rows);
    }
}

LOGGED_TEST(Rows, AListNeedsAnArrayOrNull)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    Row row{{"m", "1"}};
    EXPECT_LOGS(-1, VornJsonDbApi::DbCallBackFillList(nullptr, 1, row.values(), row.names()), failed("!pjRecArray"));
    for (const char* const text : {"{}", R"({"m": 1})", "5", "true", "\"x\""})
    {
        Json::Value rows = json(text);
        EXPECT_LOGS(-1, fillList(rows, row),
                    failed("pjRecArray->type() != Json::arrayValue && pjRecArray->type() != "
                           "Json::nullValue"));
        EXPECT_EQ(json(text), rows);
    }
    Json::Value rows;
    EXPECT_SILENT(0, fillList(rows, row));
    EXPECT_SILENT(0, fillList(rows, row));
    EXPECT_EQ(json(R"([{"m": 1}, {"m": 1}])"), rows);
}

LOGGED_TEST(Rows, AQueryThatReturnsTheRowidFails)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    ASSERT_EQ(SQLITE_OK, store.db().run("INSERT INTO " + store.name() + " VALUES (5)"));
    const std::string sql = "SELECT m,rowid FROM " + store.name();
    Json::Value rows;
    EXPECT_LOGS(-1, store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &rows), failed("!jType.isMember(strName)"),
                failed(fieldCall), trace("column_name[1]=rowid"), trace("column_value[1]=1"), failed(recCall),
                trace("i=0,errno=<number>, run sql failed, error=query aborted, sql=" + sql),
                debug("run sql fail, err=query aborted"));
    EXPECT_TRUE(rows.isNull());
}

TEST(Rows, RowsBeforeAFailingRowStay)
{
    Store store(R"({"d": {"cpptype": "double"}, "m": {"cpptype": "int"}})");
    makeCurrent(store);
    const std::string sql = "SELECT 1 AS m, NULL AS d UNION ALL SELECT 2, 2.5 UNION ALL SELECT 3, NULL";
    Json::Value rows = json(R"([{"m": 0}])");
    EXPECT_LOGS(-1, store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &rows), error("type error, strType=double"),
                failed(fieldCall), trace("column_name[1]=d"), trace("column_value[1]=2.5"), failed(recCall),
                trace("i=0,errno=<number>, run sql failed, error=query aborted, sql=" + sql));
    EXPECT_EQ(json(R"([{"m": 0}, {"m": 1}])"), rows);
}

TEST(Rows, AWrongContextStopsTheQuery)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    makeCurrent(store);
    const std::string sql = "SELECT 1 AS m";
    const ExpectedLine aborted = trace("i=0,errno=<number>, run sql failed, error=query aborted, sql=" + sql);
    EXPECT_LOGS(-1, store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, nullptr), failed("!pjRecArray"), aborted);
    Json::Value object(Json::objectValue);
    EXPECT_LOGS(-1, store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &object),
                failed("pjRecArray->type() != Json::arrayValue && pjRecArray->type() != Json::nullValue"), aborted);
}

LOGGED_TEST(Rows, AQueryBeforeAnyOperationFindsNoTypes)
{
    Store store(R"({"m": {"cpptype": "int"}})");
    const std::string sql = "SELECT 1 AS m";
    const ExpectedLines end = {failed("!jType.isMember(strName)"), failed(fieldCall), failed(recCall),
                               trace("i=0,errno=<number>, run sql failed, error=query aborted, sql=" + sql),
                               debug("run sql fail, err=query aborted")};
    Json::Value rows;
    const auto query = [&] { return store->runSqlEx(sql, VornJsonDbApi::DbCallBackFillList, &rows); };
    const ExpectedLines details = {inUtil(trace("strJsonName=" + store.name())), inUtil(trace("jTableDef=null")),
                                   inUtil(trace("jType=<any>"))};
    EXPECT_EQ(-1, logged(ExpectedLines{inUtil(failed("jTableDef.empty()"))} + details + end, query));
    // From now on the name is known as one without types, also for the object's own definition.
    EXPECT_EQ(
        -1,
        logged(ExpectedLines{inUtil(failed("jType[strJsonName].type() != Json::objectValue"))} + details + end, query));
    EXPECT_TRUE(rows.isNull());
}

TEST(Rows, EveryQueryUsesTheTypesOfItsOwnObjectsTable)
{
    Store numbers(R"({"m": {"cpptype": "int"}})");
    Store texts(R"({"m": {"cpptype": "string"}})");
    makeCurrent(numbers);
    makeCurrent(texts);
    Json::Value rows;
    for (Store* const store : {&numbers, &texts, &numbers})
        EXPECT_SILENT(0, (*store)->runSqlEx("SELECT 7 AS m", VornJsonDbApi::DbCallBackFillList, &rows));
    EXPECT_EQ(json(R"([{"m": 7}, {"m": "7"}, {"m": 7}])"), rows);
}

TEST(Rows, AnUnsignedNumberBeyondTheSignedRangeIsNotWhatWasStored)
{
    Store store(R"({"m": {"cpptype": "unsigned long long"}})");
    Json::Value record(Json::objectValue);
    record["m"] = Json::Value(Json::UInt64{18446744073709551615ULL});
    // The literal is a real number to SQLite, whose text starts with "1.".
    EXPECT_SILENT(0, store->recSave(record, true));
    EXPECT_EQ(json(R"({"m": 1})"), record);
}
