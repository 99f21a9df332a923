// SPDX-License-Identifier: MIT
//
// The sorting and paging clause of a listing.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

class SortAndPage : public testing::Test
{
protected:
    Store store{R"({"name": {"cpptype": "string"}, "id": {"cpptype": "int"}})"};
    std::string out = "before";

    int write(const std::string& filter)
    {
        Json::Value value = json(filter);
        const Json::Value copy = value;
        const int result = store->SqlFilterConditionFromJson(value, out);
        EXPECT_EQ(copy, value) << "the parameter object was changed";
        return result;
    }
};

struct Clause
{
    const char* filter;  // JSON
    const char* text;
};

}  // namespace

TEST_F(SortAndPage, ClausesComeInAFixedOrder)
{
    const Clause clauses[] = {
        {"null", ""},
        {"{}", ""},
        {R"({"name": "x", "Sort_by": "name", "LIMIT": 1})", ""},
        {R"({"sort_by": "name"})", " order by 'name'"},
        {R"({"sort_by": ""})", " order by ''"},
        {R"({"sort_by": "o'k"})", " order by 'o''k'"},
        {R"({"sort_by": "100% %d %%"})", " order by '100% %d %%'"},
        {R"({"sort_by": "cut\u0000off"})", " order by 'cut'"},
        {R"({"sort_by": "name", "sort_direction": "desc"})", " order by 'name' DESC"},
        {R"({"sort_by": "name", "sort_direction": "DESC"})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": "down"})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": "desc "})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": "asc"})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": ""})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": null})", " order by 'name' ASC"},
        {R"({"sort_by": "name", "sort_direction": 1})", " order by 'name' ASC"},
        {R"({"sort_direction": "desc"})", ""},
        {R"({"sort_direction": {}})", ""},
        {R"({"limit": 10})", " LIMIT 10"},
        {R"({"limit": 10, "offset": 20})", " LIMIT 10 OFFSET 20"},
        {R"({"offset": 20})", ""},
        {R"({"offset": 20, "sort_by": "name"})", " order by 'name'"},
        {R"({"limit": 5, "sort_direction": "desc"})", " LIMIT 5"},
        {R"({"offset": 2, "limit": 1, "sort_direction": "desc", "sort_by": "id"})",
         " order by 'id' DESC LIMIT 1 OFFSET 2"},
    };
    for (const Clause& clause : clauses)
    {
        out = "before";
        EXPECT_SILENT(0, write(clause.filter));
        EXPECT_EQ(std::string("before") + clause.text, out) << clause.filter;
    }
}

TEST_F(SortAndPage, LimitAndOffsetAreWrittenUncheckedAsJson)
{
    const Clause clauses[] = {
        {R"({"limit": "10"})", R"( LIMIT "10")"},
        {R"({"limit": "it's"})", R"( LIMIT "it's")"},
        {R"({"limit": -1, "offset": -2})", " LIMIT -1 OFFSET -2"},
        {R"({"limit": 2.5})", " LIMIT 2.5"},
        {R"({"limit": 2.0, "offset": 0.0})", " LIMIT 2.0 OFFSET 0.0"},
        {R"({"limit": null})", " LIMIT null"},
        {R"({"limit": true, "offset": false})", " LIMIT true OFFSET false"},
        {R"({"limit": [1, 2], "offset": {"a": "x"}})", R"( LIMIT [1,2] OFFSET {"a":"x"})"},
        {R"({"limit": 18446744073709551615, "offset": 9223372036854775807})",
         " LIMIT 18446744073709551615 OFFSET 9223372036854775807"},
    };
    for (const Clause& clause : clauses)
    {
        out = "before";
        EXPECT_SILENT(0, write(clause.filter));
        EXPECT_EQ(std::string("before") + clause.text, out) << clause.filter;
    }
}

LOGGED_TEST_F(SortAndPage, FilterThatIsNoObjectIsRefused)
{
    for (const char* const filter : {"[]", R"(["sort_by"])", "1", "2.5", "true", R"("sort_by")"})
    {
        EXPECT_LOGS(-1, write(filter),
                    failed("jFilter.type() != Json::objectValue && jFilter.type() != Json::nullValue"));
    }

    EXPECT_EQ("before", out);
}

LOGGED_TEST_F(SortAndPage, WithoutMemoryTheOrderFailsAndNothingIsAppended)
{
    const NoSqliteMemory noMemory;
    EXPECT_LOGS(-1, write(R"({"sort_by": "name", "sort_direction": "desc", "limit": 1})"), failed("!szSql"));

    EXPECT_EQ("before", out);
}

TEST_F(SortAndPage, PagingNeedsNoFormatterMemory)
{
    const NoSqliteMemory noMemory;
    EXPECT_SILENT(0, write(R"({"limit": 1, "offset": 2})"));
    EXPECT_EQ("before LIMIT 1 OFFSET 2", out);
}

TEST_F(SortAndPage, SortColumnThatIsNoStringRaises)
{
    for (const char* const filter : {R"({"sort_by": 1})", R"({"sort_by": null})", R"({"sort_by": ["name"]})",
                                     R"({"sort_by": {}})", R"({"sort_by": true})"})
        EXPECT_THROW(write(filter), Json::Exception) << filter;
    EXPECT_EQ("before", out);
}

TEST_F(SortAndPage, DirectionThatHasNoTextRaisesAndTheOrderIsReleased)
{
    const sqlite3_int64 before = sqlite3_memory_used();
    EXPECT_THROW(write(R"({"sort_by": "name", "sort_direction": {}})"), Json::Exception);
    EXPECT_THROW(write(R"({"sort_by": "name", "sort_direction": []})"), Json::Exception);
    EXPECT_EQ(before, sqlite3_memory_used());
}

TEST_F(SortAndPage, OrderByAQuotedNameDoesNotSort)
{
    store.db().run("insert into " + store.name() + " (name) values ('b'), ('a'), ('c')");
    Json::Value list;
    Json::Value param = json(R"({"sort_by": "name"})");
    ASSERT_EQ(0, store->recList(param, list));
    EXPECT_EQ(json(R"([{"name": "b"}, {"name": "a"}, {"name": "c"}])"), list);
}
