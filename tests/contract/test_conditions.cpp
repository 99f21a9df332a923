// SPDX-License-Identifier: MIT
//
// Conditions on one column: NAME=VALUE and NAME in (VALUES ).

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const members = R"({
    "name": {"cpptype": "string"},
    "id": {"cpptype": "int"},
    "flag": {"cpptype": "bool"},
    "meta": {"cpptype": "Json::objectValue"},
    "tags": {"cpptype": "Json::arrayValue"},
    "any": {"cpptype": "Json::Value"},
    "size": {"cpptype": "unsigned int"},
    "big": {"cpptype": "long long"},
    "huge": {"cpptype": "unsigned long long"},
    "l": {"cpptype": "long"},
    "ul": {"cpptype": "unsigned long"},
    "u": {"cpptype": "unsigned"},
    "f": {"cpptype": "float"},
    "d": {"cpptype": "double"},
    "owner": {"cpptype": "uid_t"},
    "seen": {"cpptype": "time_t"},
    "odd": {"cpptype": "Bool"},
    "empty": {"cpptype": ""}
})";

struct Rendering
{
    std::string column;
    std::string value;  // JSON
    std::string text;
};

class Conditions : public testing::Test
{
protected:
    Store store{members};
    std::string out = "before ";

    int match(std::string column, const std::string& value)
    {
        Json::Value param = json(value);
        return store->SqlMakeByMatchField(column, param, out);
    }

    int list(const char* column, const std::string& value)
    {
        Json::Value items = json(value);
        return store->SqlMakeByListField(column, items, out);
    }
};

}  // namespace

TEST_F(Conditions, MatchIsWrittenByTheDeclaredType)
{
    const Rendering renderings[] = {
        {"name", R"("Bob")", "name='Bob'"},
        {"name", R"("O'Neil")", "name='O''Neil'"},
        {"name", R"("''")", "name=''''''"},
        {"name", R"("")", "name=''"},
        {"name", R"("100% of %d %q %%")", "name='100% of %d %q %%'"},
        {"name", R"("a\\b\n\"c\"")", "name='a\\b\n\"c\"'"},
        {"name", R"("Größe 日本")", "name='Größe 日本'"},
        {"name", R"("cut\u0000off")", "name='cut'"},
        {"name", "5", "name='5'"},
        {"name", "-1.5", "name='-1.5'"},
        {"name", "true", "name='true'"},
        {"name", "null", "name=''"},
        {"meta", R"({"k": "it's", "a": [1, 2.5, null]})", R"(meta='{"a":[1,2.5,null],"k":"it''s"}')"},
        {"meta", "{}", "meta='{}'"},
        {"meta", "[]", "meta='[]'"},
        {"meta", R"("text")", R"(meta='"text"')"},
        {"meta", "null", "meta='null'"},
        {"tags", R"(["x", "%s"])", R"(tags='["x","%s"]')"},
        {"tags", "7", "tags='7'"},
        {"any", "true", "any='true'"},
        {"any", R"("Größe")", R"(any='"Größe"')"},
        {"any", R"("a\u0000b")", R"(any='"a\u0000b"')"},
        {"any", R"({"x": {}})", R"(any='{"x":{}}')"},
        {"flag", "true", "flag=1"},
        {"flag", "false", "flag=0"},
        {"flag", "5", "flag=5"},
        {"flag", "-1", "flag=-1"},
        {"flag", "1.9", "flag=1"},
        {"flag", "null", "flag=0"},
        {"flag", "2147483647", "flag=2147483647"},
        {"id", "30", "id=30"},
        {"id", "-30", "id=-30"},
        {"id", R"("30 or 1=1")", "id=30 or 1=1"},
        {"id", R"("O'Neil")", "id=O''Neil"},
        {"id", "true", "id=true"},
        {"id", "1.5", "id=1.5"},
        {"id", "3.0", "id=3.0"},
        {"id", "null", "id="},
        {"id", R"("")", "id="},
        {"id", R"("1%d\u00002")", "id=1%d"},
        {"size", "4294967295", "size=4294967295"},
        {"big", "-9223372036854775808", "big=-9223372036854775808"},
        {"huge", "18446744073709551615", "huge=18446744073709551615"},
        {"l", "1", "l=1"},
        {"ul", "2", "ul=2"},
        {"u", "3", "u=3"},
        {"f", "1.5", "f=1.5"},
        {"d", "0.1", "d=0.10000000000000001"},
        {"owner", "1000", "owner=1000"},
        {"seen", "1700000000", "seen=1700000000"},
        {"odd", "true", "odd=true"},
        {"empty", R"("x")", "empty=x"},
    };
    for (const Rendering& rendering : renderings)
    {
        out = "before ";
        EXPECT_SILENT(0, match(rendering.column, rendering.value));
        EXPECT_EQ("before " + rendering.text, out) << rendering.column << " " << rendering.value;
    }
}

TEST_F(Conditions, ListIsWrittenByTheDeclaredTypeWithoutASeparator)
{
    const Rendering renderings[] = {
        {"name", R"(["Bob"])", "name in ('Bob' )"},
        {"name", R"(["a", "b"])", "name in ('a''b' )"},
        {"name", R"(["O'Neil", "", "%d"])", "name in ('O''Neil''''%d' )"},
        {"name", R"([5, true, null, 1.5])", "name in ('5''true''''1.5' )"},
        {"name", R"(["cut\u0000off"])", "name in ('cut' )"},
        {"id", "[1]", "id in (1 )"},
        {"id", "[1, 2]", "id in (12 )"},
        {"id", R"(["1,", "2"])", "id in (1,2 )"},
        {"id", "[null]", "id in ( )"},
        {"id", R"(["it's"])", "id in (it''s )"},
        {"flag", "[true, false]", "flag in (truefalse )"},
        {"flag", "[1]", "flag in (1 )"},
        {"flag", R"(["no integer"])", "flag in (no integer )"},
        {"meta", R"([{"k": "it's"}])", R"(meta in ('{"k":"it''s"}' ))"},
        {"meta", R"([1, "a"])", R"(meta in ('1''"a"' ))"},
        {"tags", "[[1, 2], []]", "tags in ('[1,2]''[]' )"},
        {"any", R"(["a", null])", R"(any in ('"a"''null' ))"},
        {"huge", "[18446744073709551615]", "huge in (18446744073709551615 )"},
        {"d", "[2.25]", "d in (2.25 )"},
        {"owner", "[0]", "owner in (0 )"},
        {"odd", "[true]", "odd in (true )"},
    };
    for (const Rendering& rendering : renderings)
    {
        out = "before ";
        EXPECT_SILENT(0, list(rendering.column.c_str(), rendering.value));
        EXPECT_EQ("before " + rendering.text, out) << rendering.column << " " << rendering.value;
    }
}

TEST_F(Conditions, EmptyListAppendsNothing)
{
    for (const char* const column : {"name", "id", "flag", "meta"})
        EXPECT_SILENT(0, list(column, "[]"));
    EXPECT_EQ("before ", out);
}

TEST_F(Conditions, TwoStringsInAListAreOneLiteralToSqlite)
{
    store.db().run("insert into " + store.name() + " (name) values ('a'), ('b'), ('a''b')");
    out.clear();
    ASSERT_EQ(0, list("name", R"(["a", "b"])"));
    EXPECT_EQ((std::vector<std::string>{"a'b"}), store.db().rows("select name from " + store.name() + " where " + out));
}

TEST_F(Conditions, TextInANumericColumnIsRunAsSql)
{
    store.db().run("insert into " + store.name() + " (id) values (30), (31)");
    out.clear();
    ASSERT_EQ(0, match("id", R"("30 or 1=1")"));
    EXPECT_EQ((std::vector<std::string>{"30", "31"}),
              store.db().rows("select id from " + store.name() + " where " + out));
}

LOGGED_TEST_F(Conditions, ColumnThatIsNotDeclaredIsRefused)
{
    EXPECT_LOGS(-1, match("missing", "1"), failed("!jType.isMember(strField)"));
    EXPECT_LOGS(-1, match("", "1"), failed("!jType.isMember(strField)"));
    EXPECT_LOGS(-1, match("Name", "1"), failed("!jType.isMember(strField)"));
    EXPECT_LOGS(-1, list("missing", "[1]"), failed("!jType.isMember(szField)"));

    EXPECT_EQ("before ", out);
}

LOGGED_TEST_F(Conditions, ListChecksItsNameThenTheColumnThenTheKindOfList)
{
    for (const char* const nothing : {static_cast<const char*>(nullptr), ""})
    {
        EXPECT_LOGS(-1, list(nothing, "{}"), failed("!szField || !szField[0]"));
        EXPECT_LOGS(-1, list(nothing, "[1]"), failed("!szField || !szField[0]"));
    }
    EXPECT_LOGS(-1, list("missing", "{}"), failed("!jType.isMember(szField)"));
    for (const char* const noArray : {"{}", "null", "1", R"("x")", "true", "1.5"})
        EXPECT_LOGS(-1, list("name", noArray), failed("jList.type() != Json::arrayValue"));

    EXPECT_EQ("before ", out);
}

TEST_F(Conditions, TypesAreLookedUpBeforeAnyCheck)
{
    Database database;
    std::string name = freshTable();
    Json::Value definition = json("{\"" + name + "\": {}}");
    std::string create = "select 1";
    VornJsonDbApi api(database.handle(), name, definition, create);
    Json::Value items(Json::arrayValue);
    const ExpectedLines lookUp = {inUtil(failed("!jTableDef[strJsonName].isMember(\"member\")")),
                                  inUtil(trace("strJsonName=" + name)),
                                  inUtil(trace("jTableDef={\"" + name + "\":{}}")), inUtil(trace("jType=<any>"))};
    EXPECT_LOGS(-1, api.SqlMakeByListField(nullptr, items, out), lookUp, failed("!szField || !szField[0]"));
    EXPECT_EQ("before ", out);
}

TEST_F(Conditions, ValueThatCannotBeReadRaisesAndAppendsNothing)
{
    const Rendering refused[] = {
        {"flag", R"("x")", ""},      {"flag", "[]", ""},        {"flag", "{}", ""}, {"flag", "4294967296", ""},
        {"flag", "-2147483649", ""}, {"flag", "1e10", ""},      {"name", "[]", ""}, {"name", "{}", ""},
        {"id", "[1]", ""},           {"id", R"({"a": 1})", ""}, {"odd", "{}", ""},  {"owner", "[]", ""},
    };
    for (const Rendering& value : refused)
        EXPECT_THROW(match(value.column, value.value), Json::Exception) << value.column << " " << value.value;
    EXPECT_THROW(list("name", R"(["a", {}])"), Json::Exception);
    EXPECT_THROW(list("name", "[[]]"), Json::Exception);
    EXPECT_THROW(list("id", "[1, [2]]"), Json::Exception);
    EXPECT_THROW(list("flag", "[{}]"), Json::Exception);
    EXPECT_EQ("before ", out);
}

LOGGED_TEST_F(Conditions, WithoutMemoryAMatchFailsWithTheLineOfItsKind)
{
    struct Row
    {
        const char* column;
        const char* value;
        const char* condition;
    };
    const char* const asText = R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.asString().c_str())))";
    const char* const asJson = R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.toString().c_str())))";
    const Row rows[] = {
        {"name", R"("x")", asText},
        {"id", "1", asText},
        {"odd", "1", asText},
        {"meta", "{}", asJson},
        {"tags", "[]", asJson},
        {"any", "1", asJson},
        {"flag", "true", R"(NULL == (szSql = sqlite3_mprintf("%d", jParam.asInt())))"},
    };
    for (const Row& row : rows)
    {
        const NoSqliteMemory noMemory;
        EXPECT_LOGS(-1, match(row.column, row.value), failed(row.condition));
    }

    EXPECT_EQ("before ", out);
}

LOGGED_TEST_F(Conditions, WithoutMemoryAListFailsWithTheLineOfItsKind)
{
    struct Row
    {
        const char* column;
        std::string item;
        const char* condition;
    };
    const char* const asText = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].asString().c_str())))";
    const char* const asJson = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].toString().c_str())))";
    const Row rows[] = {
        {"name", R"("x")", asText}, {"id", "1", asText},    {"flag", "true", asText}, {"odd", "1", asText},
        {"meta", "{}", asJson},     {"tags", "[]", asJson}, {"any", "1", asJson},
    };
    for (const Row& row : rows)
    {
        {
            const NoSqliteMemory noMemory;
            EXPECT_LOGS(-1, list(row.column, "[" + row.item + "]"), failed(row.condition));
        }
        // The first item is written, the second is too long: still nothing is appended.
        const NoSqliteMemory littleMemory(smallAllowance);
        EXPECT_LOGS(-1, list(row.column, "[" + row.item + ",\"" + hugeText() + "\"]"), failed(row.condition));
    }

    EXPECT_EQ("before ", out);
}

TEST_F(Conditions, ItemsThatWereNeverSetAreNull)
{
    Json::Value sparse;
    sparse[2] = 1;
    std::string name = "tags";
    EXPECT_EQ(0, store->SqlMakeByMatchField(name, sparse, out));
    EXPECT_EQ("before tags='[null,null,1]'", out);
}

TEST_F(Conditions, StringWithoutATextIsEmpty)
{
    Json::Value none = Json::StaticString(nullptr);
    std::string name = "name";
    EXPECT_EQ(0, store->SqlMakeByMatchField(name, none, out));
    Json::Value items;
    items.append(none);
    EXPECT_EQ(0, store->SqlMakeByListField("name", items, out));
    EXPECT_EQ("before name=''name in ('' )", out);
}

TEST_F(Conditions, NameMayStandInTheOutputItself)
{
    std::string text = "a_column_whose_name_is_longer_than_a_short_string";
    const std::string name = text;
    Store longName("{\"" + name + "\": {\"cpptype\": \"string\"}}");
    Json::Value value = "x";
    EXPECT_EQ(0, longName->SqlMakeByMatchField(text, value, text));
    EXPECT_EQ(name + name + "='x'", text);

    text = name;
    text.shrink_to_fit();
    Json::Value items = json(R"(["x"])");
    EXPECT_EQ(0, longName->SqlMakeByListField(text.c_str(), items, text));
    EXPECT_EQ(name + name + " in ('x' )", text);
}

TEST_F(Conditions, FormattedTextsAreReleased)
{
    const sqlite3_int64 before = sqlite3_memory_used();
    ASSERT_EQ(0, match("name", R"("x")"));
    ASSERT_EQ(0, match("meta", "{}"));
    ASSERT_EQ(0, match("flag", "true"));
    ASSERT_EQ(0, match("id", "1"));
    ASSERT_EQ(0, list("name", R"(["a", "b", "c"])"));
    ASSERT_EQ(0, list("meta", "[{}, {}, {}]"));
    ASSERT_EQ(0, list("id", "[1, 2, 3]"));
    EXPECT_THROW(list("name", R"(["a", {}])"), Json::Exception);
    {
        const NoSqliteMemory littleMemory(smallAllowance);
        const LogCapture quiet;
        EXPECT_EQ(-1, list("name", R"(["a", ")" + hugeText() + R"("])"));
    }
    EXPECT_EQ(before, sqlite3_memory_used());
}
