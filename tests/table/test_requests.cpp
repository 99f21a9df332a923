// SPDX-License-Identifier: MIT
//
// Requests: order, pages and fields; which mistakes are reported and how; which indexes serve; what is kept.

#include <sqlite3.h>

#include <set>

#include "filter_table.h"

namespace table_tests
{
namespace
{

struct Case
{
    const char* szRequest;
    const char* szExpected;
};

void expectAll(FilterTable& table, const std::vector<Case>& cases)
{
    for (const Case& c : cases)
        EXPECT_EQ(c.szExpected, table.ids(json(c.szRequest))) << c.szRequest << ": " << table->status().text;
}

TEST(Requests, SortAndPage)
{
    FilterTable table("s:string n:int j:Json::Value");
    table.add(json(R"({"id":1,"s":"b","n":2,"j":{"k":2}})"));
    table.add(json(R"({"id":2,"s":"a","n":2,"j":{"k":"x"}})"));
    table.add(json(R"({"id":3,"s":"b","n":1,"j":{"k":10}})"));
    table.add(json(R"({"id":4})"));
    expectAll(table, {
                         {R"({"sort_by":"id"})", "1 2 3 4"},
                         {R"({"sort_by":"-id"})", "4 3 2 1"},
                         {R"({"sort_by":["s","n"]})", "4 2 3 1"},
                         {R"({"$sort_by":["-s","-n"]})", "1 3 2 4"},
                         {R"({"sort_by":["n","-id"]})", "4 3 2 1"},
                         {R"({"sort_by":"id","sort_direction":"desc"})", "4 3 2 1"},
                         {R"({"sort_by":["id"],"$sort_direction":"asc"})", "1 2 3 4"},
                         {R"({"sort_by":"j.k"})", "4 1 3 2"},
                         {R"({"sort_by":"-j.k"})", "2 3 1 4"},
                         {R"({"sort_by":"id","limit":2})", "1 2"},
                         {R"({"sort_by":"id","offset":3})", "4"},
                         {R"({"sort_by":"id","$limit":2.0,"$offset":1})", "2 3"},
                         {R"({"sort_by":"id","limit":0})", ""},
                         {R"({"sort_by":"id","limit":9223372036854775807})", "1 2 3 4"},
                         {R"({"n":2,"sort_by":"id","limit":1})", "1"},
                     });
}

// Sorted without an index, or with one that the definition knows of or not, in tables with rowids and without.
TEST(Requests, PagesShowEveryRowOnceHoweverManyAreAlike)
{
    constexpr int kRows = 40;
    for (const char* szMembers : {"n:int g:int", "n:int+ g:int"})
        for (const char* szOptions :
             {"", " WITHOUT ROWID", "; CREATE INDEX tn ON t (n)", "; CREATE INDEX tg ON t (g, n)"})
            for (const char* szRequest : {R"({"sort_by":"n"})", R"({"sort_by":"-n","g":{"$gte":1}})",
                                          R"({"sort_by":["-n","g"]})", R"({"sort_by":["g","n"],"id":{"$ne":0}})"})
            {
                SCOPED_TRACE(std::string(szMembers) + szOptions + szRequest);
                FilterTable table(szMembers, "t",
                                  std::string("CREATE TABLE t (id INTEGER PRIMARY KEY, n INT, g INT)") + szOptions);
                for (int i = 0; i < kRows; ++i)
                    table.add(json("{\"id\":" + std::to_string(i * 7 % kRows) + ",\"n\":" + std::to_string(i % 3) +
                                   ",\"g\":" + std::to_string(i % 4) + "}"));
                Json::Value jRequest = json(szRequest), jAll, jPaged;
                ASSERT_EQ(0, table->recList(jRequest, jAll));
                jRequest["limit"] = 7;
                for (jRequest["offset"] = 0; jRequest["offset"].asInt() < kRows;
                     jRequest["offset"] = jRequest["offset"].asInt() + 7)
                    ASSERT_EQ(0, table->recList(jRequest, jPaged));
                ASSERT_EQ(jAll.size(), jPaged.size());
                std::set<int> ids;
                for (Json::ArrayIndex i = 0; i < jAll.size(); ++i)
                {
                    EXPECT_TRUE(ids.insert(jPaged[i]["id"].asInt()).second);
                    EXPECT_EQ(jAll[i]["n"], jPaged[i]["n"]);
                }
            }
}

TEST(Requests, AMemberWithTheNameOfAKeyIsTheMemberAndTheKeyHasADollar)
{
    FilterTable table("limit:int fields:string sort_by:string");
    for (int i = 1; i <= 3; ++i)
        table.add(json("{\"id\":" + std::to_string(i) + ",\"limit\":" + std::to_string(i) + "}"));
    Json::Value jRows;
    EXPECT_EQ(0, table->recList(json(R"({"limit":2})"), jRows));
    EXPECT_EQ(1U, jRows.size());
    jRows.clear();
    EXPECT_EQ(0, table->recList(json(R"({"limit":{"$gt":0},"$limit":2})"), jRows));
    EXPECT_EQ(2U, jRows.size());
    EXPECT_EQ(1, table->recCount(json(R"({"limit":2})")));
}

TEST(Requests, MistakesNameWhatIsWrong)
{
    FilterTable table("name:string b:bool n:int d:double f:float o:Json::objectValue a:Json::arrayValue j:Json::Value");
    table.add(json(R"({"id":1})"));
    const std::vector<Case> filters = {
        {R"({"nmae":1})", "UnknownMember nmae"},
        {R"({"$or":[{"nmae":1}]})", "UnknownMember nmae"},
        {R"({"name.x":1})", "UnknownMember name.x"},
        {R"({"n.x.y":1})", "UnknownMember n.x.y"},
        {R"({"a.x":1})", "BadType a.x"},
        {R"({"x.y":1})", "UnknownMember x.y"},
        {R"({".x":1})", "UnknownMember .x"},
        {R"({"":1})", "UnknownMember "},
        {R"({"name":{"$equal":1}})", "BadRequest $equal"},
        {R"({"name":{"$eq":"x","plain":1}})", "BadRequest plain"},
        {R"({"name":{"$or":[]}})", "BadRequest $or"},
        {R"({"$gt":1})", "BadRequest $gt"},
        {R"({"$xor":[]})", "BadRequest $xor"},
        {R"({"$and":[]})", "BadRequest $and"},
        {R"({"$or":{}})", "BadRequest $or"},
        {R"({"$nor":[1]})", "BadRequest $nor"},
        {R"({"$or":[null]})", "BadRequest $or"},
        {R"({"$not":[]})", "BadRequest $not"},
        {R"({"$not":null})", "BadRequest $not"},
        {R"({"n":{"$not":1}})", "BadRequest $not"},
        {R"({"n":{"$not":{}}})", "BadRequest $not"},
        {R"({"n":{"$not":{"x":1}}})", "BadRequest x"},
        {R"({"$and":[{"limit":1}]})", "BadRequest limit"},
        {R"({"$not":{"$sort_by":"n"}})", "BadRequest $sort_by"},
        {R"({"a":{"$all":[]}})", "BadRequest $all"},
        {R"({"name":{"$like":"a\u0000"}})", "BadRequest $like"},
        {R"({"j.x":{"$glob":"\u0000"}})", "BadRequest $glob"},
        {R"({"n":{"$in":5}})", "BadType n"},
        {R"({"j.x":{"$nin":{}}})", "BadType j.x"},
        {R"({"n":{"$exists":1}})", "BadType n"},
        {R"({"j.x":{"$exists":null}})", "BadType j.x"},
        {R"({"n":{"$gt":null}})", "BadType n"},
        {R"({"n":{"$gt":"5"}})", "BadType n"},
        {R"({"n":{"$gt":true}})", "BadType n"},
        {R"({"j.x":{"$lt":null}})", "BadType j.x"},
        {R"({"j.x":{"$lt":[]}})", "BadType j.x"},
        {R"({"j.x":{"$lt":true}})", "BadType j.x"},
        {R"({"b":{"$gt":true}})", "BadType b"},
        {R"({"o":{"$gte":{}}})", "BadType o"},
        {R"({"j":{"$lte":1}})", "BadType j"},
        {R"({"a":{"$gt":[]}})", "BadType a"},
        {R"({"name":5})", "BadType name"},
        {R"({"name":["x",5]})", "BadType name"},
        {R"({"name":{"$eq":5}})", "BadType name"},
        {R"({"name":{}})", "BadType name"},
        {R"({"n":5.5})", "BadType n"},
        {R"({"b":1})", "BadType b"},
        {R"({"a":[1]})", "BadType a"},
        {R"({"n":{"$like":"5"}})", "BadType n"},
        {R"({"j":{"$beginsWith":"5"}})", "BadType j"},
        {R"({"name":{"$beginsWith":5}})", "BadType name"},
        {R"({"j.x":{"$glob":null}})", "BadType j.x"},
        {R"({"j.x":{"$beginsWith":5}})", "BadType j.x"},
        {R"({"name":{"$size":1}})", "BadType name"},
        {R"({"o":{"$all":[1]}})", "BadType o"},
        {R"({"a":{"$all":1}})", "BadType a"},
        {R"({"a":{"$size":1.5}})", "BadType a"},
        {R"({"a":{"$size":null}})", "BadType a"},
        {R"({"a":{"$size":-1}})", "OutOfRange a"},
        {R"({"j.x":{"$size":-1}})", "OutOfRange j.x"},
        {R"({"n":3000000000})", "OutOfRange n"},
        {R"({"n":[1,3000000000]})", "OutOfRange n"},
        {R"({"f":1e300})", "OutOfRange f"},
        {R"({"d":NaN})", "OutOfRange d"},
        {R"({"n":{"$lt":Infinity}})", "OutOfRange n"},
        {R"({"j.x":Infinity})", "OutOfRange j.x"},
        {R"({"j.x":{"$lte":Infinity}})", "OutOfRange j.x"},
        {R"({"j.x":{"$nin":[1,[NaN]]}})", "OutOfRange j.x"},
        {R"({"a":{"$all":[1,NaN]}})", "OutOfRange a"},
        {R"({"vornSqlWhereFilter":""})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":" \t\n"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"-- 1"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":5})", "BadRequest vornSqlWhereFilter"},
        {R"~({"vornSqlWhereFilter":"1) OR (1"})~", "BadRequest vornSqlWhereFilter"},
        {R"~({"vornSqlWhereFilter":"(1"})~", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"name = 'x"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"\"name = 1"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"[n = 1"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"1 /* x"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"1; DELETE FROM t"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"1\u0000"})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=?1","vornSqlWhereParams":[1]})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=@x","vornSqlWhereParams":{"x":1}})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=$x","vornSqlWhereParams":{"x":1}})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=#x","vornSqlWhereParams":{"x":1}})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=:","vornSqlWhereParams":{"":1}})", "BadRequest vornSqlWhereFilter"},
        {R"~({"vornSqlWhereFilter":"n=:x(1)","vornSqlWhereParams":{"x":1}})~", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=:x::y","vornSqlWhereParams":{"x":1}})", "BadRequest vornSqlWhereFilter"},
        {R"({"vornSqlWhereFilter":"n=?"})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=?","vornSqlWhereParams":[]})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=?","vornSqlWhereParams":[1,2]})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=:x","vornSqlWhereParams":{"y":1}})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=:x","vornSqlWhereParams":{"x":1,"y":1}})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=1","vornSqlWhereParams":5})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereParams":[]})", "BadRequest vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"n=?","vornSqlWhereParams":[NaN]})", "OutOfRange vornSqlWhereParams"},
        {R"({"vornSqlWhereFilter":"nonsense = 1"})", "Sqlite "},
    };
    const std::vector<Case> requests = {
        {R"([])", "BadRequest "},
        {R"("text")", "BadRequest "},
        {R"({"limit":1,"$limit":1})", "BadRequest limit"},
        {R"({"limit":null})", "BadRequest limit"},
        {R"({"$limit":-1})", "BadRequest $limit"},
        {R"({"offset":1.5})", "BadRequest offset"},
        {R"({"offset":"1"})", "BadRequest offset"},
        {R"({"limit":1e19})", "BadRequest limit"},
        {R"({"sort_by":null})", "BadRequest sort_by"},
        {R"({"sort_by":[]})", "BadRequest sort_by"},
        {R"({"sort_by":[5]})", "BadRequest sort_by"},
        {R"({"sort_by":"-nmae"})", "UnknownMember nmae"},
        {R"({"sort_by":"a.x"})", "BadType a.x"},
        {R"({"sort_direction":"asc"})", "BadRequest sort_direction"},
        {R"({"sort_by":"n","sort_direction":"up"})", "BadRequest sort_direction"},
        {R"({"sort_by":"-n","sort_direction":"asc"})", "BadRequest sort_direction"},
        {R"({"sort_by":["n","d"],"sort_direction":"asc"})", "BadRequest sort_direction"},
    };
    const auto expectMistake = [&table](const Json::Value& jRequest, const Case& c)
    {
        Json::Value jOut = "untouched";
        EXPECT_EQ(-1, table->explain(jRequest, jOut)) << c.szRequest;
        EXPECT_EQ(c.szExpected, table.failure()) << c.szRequest << ": " << table->status().text;
        EXPECT_NE("", table->status().text);
        EXPECT_EQ(Json::Value("untouched"), jOut);
        EXPECT_EQ(1, table->recCount(Json::Value()));
    };
    for (const Case& c : requests)
        expectMistake(json(c.szRequest), c);
    for (const Case& c : filters)
    {
        expectMistake(json(c.szRequest), c);
        for (const char* szOperator : {"$and", "$nor"})  // in a list that is long
        {
            Json::Value jFilter;
            for (int i = 0; i < 20; ++i)
                jFilter[szOperator].append(json(c.szRequest));
            expectMistake(jFilter, c);
        }
    }
    for (const Case& c : std::vector<Case>{{"5", "BadRequest $or"},
                                           {R"({"limit":1})", "BadRequest limit"},
                                           {R"({"$offset":1})", "BadRequest $offset"},
                                           {R"({"vornSqlWhereParams":1})", "BadRequest vornSqlWhereParams"}})
        for (const char* szFirst : {R"({"n":1})", c.szRequest})
        {
            Json::Value jFilter;
            for (int i = 0; i < 20; ++i)
                jFilter["$or"].append(json(i < 18 ? szFirst : c.szRequest));
            expectMistake(jFilter, c);
        }
    Json::Value jRows;
    for (const char* szFields : {"null", "[]", "\"n\"", "[5]"})
    {
        EXPECT_EQ(-1, table->recList(json(std::string("{\"fields\":") + szFields + "}"), jRows));
        EXPECT_EQ("BadRequest fields", table.failure());
    }
    EXPECT_EQ(-1, table->recList(json(R"({"fields":["nmae"]})"), jRows));
    EXPECT_EQ("UnknownMember nmae", table.failure());
}

TEST(Requests, TextsSayWhatWasProbablyMeant)
{
    const std::string strLong(70, 'l');  // longer than what is compared
    FilterTable table("name:string address:Json::objectValue " + strLong + ":int");
    const std::string strLonger = "{\"" + strLong + "l\":1}";
    for (const Case& c : std::vector<Case>{
             {R"({"nmae":1})", "did you mean \"name\"?"},
             {R"({"adress.city":1})", "did you mean \"address.city\"?"},
             {R"({"name":{"$beginswith":"x"}})", "did you mean \"$beginsWith\"?"},
             {R"({"name":{"$nq":"x"}})", "did you mean \"$"},
             {R"({"$andd":[]})", "did you mean \"$and\"?"},
             {R"({"$limt":1})", "did you mean \"$limit\"?"},
             {R"({"$gt":1})", "belongs to a member"},
             {R"({"$not":{"limit":1}})", "belongs to the request itself"},
             {strLonger.c_str(), "The definition has no member"},
         })
    {
        EXPECT_NE("", table.ids(json(c.szRequest)));
        EXPECT_NE(std::string::npos, table->status().text.find(c.szExpected)) << table->status().text;
    }
    EXPECT_EQ(-1, table->recCount(json(R"({"limit":1})")));
    EXPECT_EQ("BadRequest limit", table.failure());
    EXPECT_NE(std::string::npos, table->status().text.find("recList()")) << table->status().text;
    EXPECT_EQ(-1, table->recDelete(json(R"({"name":"x","$offset":1})")));
    EXPECT_EQ("BadRequest $offset", table.failure());
}

TEST(Requests, IndexesServe)
{
    FilterTable table("s:string+ i:int+ d:double+ b:bool+ folded:string");
    const std::string strBy = "SEARCH t USING INDEX t:";
    for (const Case& c : std::vector<Case>{
             {R"({"s":"x"})", "s:index (s=?)"},
             {R"({"s":null})", "s:index (s=?)"},
             {R"({"s":["x","y","z"]})", "s:index (s=?)"},
             {R"({"s":{"$gt":"x"}})", "s:index (s>?)"},
             {R"({"s":{"$gte":"x","$lt":"y"}})", "s:index (s>? AND s<?)"},
             {R"({"s":{"$beginsWith":"x"}})", "s:index (s>? AND s<?)"},
             {R"({"s":{"$beginsWith":""}})", "s:index (s>? AND s<?)"},
             {R"({"i":5})", "i:index (i=?)"},
             {R"({"i":[5,6]})", "i:index (i=?)"},
             {R"({"i":{"$gt":5.5}})", "i:index (i>?)"},
             {R"({"d":{"$lte":5}})", "d:index (d<?)"},
             {R"({"d":[0.1,0.2]})", "d:index (d=?)"},
             {R"({"b":true})", "b:index (b=?)"},
             {R"({"s":"x","i":{"$ne":3}})", "s:index (s=?)"},
             {R"({"$and":[{"s":"x"},{"i":{"$ne":3}}]})", "s:index (s=?)"},
             {R"({"$or":[{"s":"x"},{"s":"y"}]})", "s:index (s=?)"},
         })
        EXPECT_EQ(strBy + c.szExpected, table.plan(json(c.szRequest))) << c.szRequest;
    EXPECT_EQ("SCAN t USING INDEX t:s:index", table.plan(json(R"({"sort_by":"s"})")));
    EXPECT_EQ("SCAN t USING INDEX t:s:index", table.plan(json(R"({"sort_by":"-s","limit":5})")));
    EXPECT_EQ("SCAN t", table.plan(json(R"({"sort_by":"id","limit":5})")));
    EXPECT_EQ("SEARCH t USING INTEGER PRIMARY KEY (rowid=?)", table.plan(json(R"({"id":5})")));
    sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, 3);
    for (const char* szRequest : {R"({"s":["1","2","3","4","\u0000"]})", R"({"i":[1,2,3,4]})", R"({"d":[1,2,3,4]})"})
        EXPECT_EQ(0U, table.plan(json(szRequest)).find(strBy)) << table.plan(json(szRequest));
}

// What SQLite sorts is copied row by row; a page of a few rows needs no copies of the others.
TEST(Requests, APageThatMustBeSortedSortsRowNumbersAlone)
{
    FilterTable table("s:string j:Json::Value");
    const std::string strSort = "USE TEMP B-TREE FOR ORDER BY";
    const std::string strPage = "SEARCH t USING INTEGER PRIMARY KEY (rowid=?); LIST SUBQUERY ";
    EXPECT_EQ(strPage + "1; SCAN t; " + strSort + "; " + strSort,
              table.plan(json(R"({"sort_by":["-s","id"],"limit":5})")));
    EXPECT_EQ("SCAN t; " + strSort, table.plan(json(R"({"sort_by":["-s","id"]})"))) << "every row is wanted";
    EXPECT_EQ(0U, table.plan(json(R"({"sort_by":"j.k","limit":5})")).find(strPage)) << "a path";
}

// The steps of SQLite's machine are an exact count of what a fetch costs that does not depend on the machine.
TEST(Requests, AnIndexedFetchCostsTheSameHoweverManyRecordsThereAre)
{
    FilterTable table("s:string+");
    int next = 0;
    const auto addUpTo = [&table, &next](int count)
    {
        Json::Value jRecords;
        for (; next < count; ++next)
        {
            Json::Value& jRecord = jRecords.append(Json::Value());
            jRecord["id"] = next;
            jRecord["s"] = "name " + std::to_string(next);
        }
        ASSERT_LT(0, table->recCreateAll(jRecords));
    };
    const auto steps = [&table]
    {
        Json::Value jFound;
        EXPECT_EQ(1, table->recGetOne(json(R"({"s":"name 500"})"), jFound));
        EXPECT_EQ(500, jFound["id"].asInt());
        int iSteps = 0;
        for (sqlite3_stmt* p = sqlite3_next_stmt(table.db(), nullptr); p != nullptr;
             p = sqlite3_next_stmt(table.db(), p))
            iSteps += sqlite3_stmt_status(p, SQLITE_STMTSTATUS_VM_STEP, 1);
        return iSteps;
    };
    addUpTo(1000);
    steps();  // what came before
    const int iFew = steps();
    addUpTo(100000);
    steps();
    const int iMany = steps();
    EXPECT_LT(0, iFew);
    EXPECT_LE(iMany, iFew * 1.2) << iFew << " steps among 1,000 records";
}

TEST(Requests, WithoutSqlitesJsonFunctionsPathsAndVeryLongListsSayWhatIsMissing)
{
    FilterTable table("s:string j:Json::Value");
    table.add(json(R"({"id":1,"s":"x","j":{"a":1}})"));
    ASSERT_EQ(SQLITE_OK, sqlite3_drop_modules(table.db(), nullptr));  // json_each among them
    sqlite3_limit(table.db(), SQLITE_LIMIT_VARIABLE_NUMBER, 3);
    EXPECT_EQ("1", table.ids(json(R"({"s":["x","y"]})")));
    for (const char* szRequest : {R"({"j.a":1})", R"({"s":["x","1","2","3","4"]})"})
    {
        EXPECT_EQ("Sqlite ", table.ids(json(szRequest))) << szRequest;
        EXPECT_EQ("This SQLite was built without its JSON functions, which paths and very long lists need.",
                  table->status().text);
    }
}

TEST(Requests, APrefixIsExactWhateverTheColumnCollatesBy)
{
    FilterTable table("s:string n:int", "t", "CREATE TABLE t (id INTEGER PRIMARY KEY, s TEXT COLLATE NOCASE, n INT)");
    table.add(json(R"({"id":1,"s":"AZ1"})"));
    table.add(json(R"({"id":2,"s":"az2"})"));
    table.add(json(R"({"id":3,"s":"AZ"})"));
    table.add(json(R"({"id":4,"s":"A\u0010FFFF"})"));
    table.add(json(R"({"id":5,"s":"\udbff\udfff\udbff\udfff"})"));
    expectAll(table, {
                         {R"({"s":{"$beginsWith":"AZ"}})", "1 3"},
                         {R"({"s":{"$beginsWith":"a"}})", "2"},
                         {R"({"s":"az"})", "3"},
                         {R"({"s":["AZ1","AZ2"]})", "1 2"},
                         {R"({"s":{"$gte":"Az2"},"n":null})", "2 5"},
                         {R"({"s":{"$lte":"aZ2","$ne":"Az"},"sort_by":"s"})", "4 1 2"},
                         {R"({"s":{"$beginsWith":"\udbff\udfff"}})", "5"},
                     });
}

TEST(Requests, APrefixOfBytesThatAreNoTextEndsWhereItsLastByteDoes)
{
    FilterTable table("s:string+");
    const char* const texts[] = {"a", "a\xff", "a\xff\xff z", "b", "\xff", "\xff\xff", "\xfe"};
    for (int i = 0; i < 7; ++i)
    {
        Json::Value jRecord;
        jRecord["id"] = i;
        jRecord["s"] = texts[i];
        table.add(jRecord);
    }
    expectAll(table, {
                         {"{\"s\":{\"$beginsWith\":\"a\xff\"}}", "1 2"},
                         {"{\"s\":{\"$beginsWith\":\"\xff\"}}", "4 5"},
                         {"{\"s\":{\"$beginsWith\":\"\xff\xff\"}}", "5"},
                     });
}

TEST(Requests, BeyondSqlitesLimitsAreToldByTheirMember)
{
    FilterTable table("s:string j:Json::Value");
    table.add(json(R"({"id":1,"s":"12345","j":{"t":"12345"}})"));
    sqlite3_limit(table.db(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 5);
    expectAll(table, {
                         {R"({"s":{"$like":"12345"},"j.t":{"$glob":"12345"}})", "1"},
                         {R"({"s":{"$like":"123456"}})", "OutOfRange s"},
                         {R"({"j.t":{"$glob":"123456"}})", "OutOfRange j.t"},
                         {R"({"s":{"$beginsWith":"123456"}})", ""},
                     });
    sqlite3_limit(table.db(), SQLITE_LIMIT_COLUMN, 3);
    expectAll(table, {
                         {R"({"sort_by":["s","-id","id"]})", "1"},
                         {R"({"sort_by":["s","-id","id","s"]})", "BadRequest sort_by"},
                     });
}

TEST(Requests, ExplainShowsTheParametersAsTheyAreBound)
{
    FilterTable table("s:string j:Json::Value");
    Json::Value jOut;
    EXPECT_EQ(0, table->explain(json(R"({"vornSqlWhereFilter":"? OR ? OR ? OR ? OR ?",
                                         "vornSqlWhereParams":[null,0.5,true,"x",[1]]})"),
                                jOut))
        << table->status().text;
    EXPECT_EQ(json(R"([null,0.5,1,"x","[1]"])"), jOut["parameters"]);
    EXPECT_EQ(json(R"(["parameters","plan","sql"])").size(), jOut.size());
    EXPECT_TRUE(jOut["sql"].isString());
    EXPECT_FALSE(jOut["plan"].empty());
}

TEST(Requests, APathLeadsIntoTheTableWhateverItsName)
{
    for (const char* szName : {"j", "J1", "j1", "j2", "k", "K1", "k1", "value"})
    {
        FilterTable table("j:Json::Value k:Json::objectValue", szName);
        table.add(json(R"({"id":1,"j":{"a":{"b":[1]}},"k":{"a":1}})"));
        table.add(json(R"({"id":2,"j":{"a":{"b":[2]}}})"));
        expectAll(table, {
                             {R"({"j.a.b":{"$all":[1]},"k.a":1})", "1"},
                             {R"({"j.a.b":{"$size":1},"k":null,"sort_by":"-j.a.b"})", "2"},
                         });
    }
}

// 200 texts that leave their quotes, or try to.
std::vector<std::string> injections()
{
    std::vector<std::string> texts;
    for (const char* szCore : {"' OR 1=1 --",
                               "' OR '1'='1",
                               "'; DROP TABLE t; --",
                               "\" OR \"\"=\"",
                               "') OR ('1'='1",
                               "' UNION SELECT 1,2 --",
                               "1; DELETE FROM t",
                               "' AND sleep(5) --",
                               "?1",
                               ":name",
                               "@x",
                               "$x",
                               "%00",
                               "\\' OR 1=1 --",
                               "''",
                               "'",
                               "\"",
                               "`t`",
                               "[t]",
                               "/* */",
                               "--",
                               "x'41'",
                               "%' OR '%'='",
                               "\n; DROP TABLE t",
                               "0x27 OR 1=1",
                               "' || (SELECT 1) || '",
                               "NULL",
                               "1e309",
                               "' GROUP BY 1 --",
                               "' ORDER BY 9 --",
                               "*",
                               "t.id",
                               "'); ATTACH 'x' AS y; --",
                               "%s%n%q",
                               "' LIMIT 0 --",
                               "\"; PRAGMA writable_schema=1; --",
                               "' IS NOT NULL --",
                               "CASE WHEN 1 THEN 1 END",
                               "$.a[0]",
                               "')"})
        for (const char* szBefore : {"", "a", "b'", "\"", "1 "})
            texts.push_back(szBefore + std::string(szCore));
    return texts;
}

TEST(Requests, NoTextOrNameBecomesSql)
{
    const std::vector<std::string> texts = injections();
    ASSERT_EQ(200U, texts.size());
    FilterTable table("s:string+ j:Json::Value");
    Json::Value jRecords;
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        Json::Value jRecord;
        jRecord["id"] = static_cast<Json::Int>(i);
        jRecord["s"] = texts[i];
        jRecord["j"][texts[i]] = texts[i];
        jRecords.append(jRecord);
    }
    ASSERT_EQ(200, table->recCreateAll(jRecords));
    for (std::size_t i = 0; i < texts.size(); ++i)
    {
        SCOPED_TRACE(texts[i]);
        const std::string strId = std::to_string(i);
        Json::Value jFilter;
        jFilter["s"] = texts[i];
        EXPECT_EQ(strId, table.ids(jFilter));
        jFilter["s"] = Json::Value();
        jFilter["s"]["$in"].append(texts[i]);
        jFilter["s"]["$beginsWith"] = texts[i];
        jFilter["s"]["$gte"] = texts[i];
        jFilter["vornSqlWhereFilter"] = "s = :v";
        jFilter["vornSqlWhereParams"]["v"] = texts[i];
        EXPECT_EQ(strId, table.ids(jFilter));
        Json::Value jPath;
        if (texts[i].find('.') == std::string::npos)  // a dot parts the names of a path
        {
            jPath["j." + texts[i]] = texts[i];
            EXPECT_EQ(strId, table.ids(jPath));
        }
        Json::Value jName;
        jName[texts[i]] = 1;
        EXPECT_EQ((texts[i][0] == '$' ? "BadRequest " : "UnknownMember ") + texts[i], table.ids(jName));
        Json::Value jSort;
        jSort["sort_by"] = texts[i];
        EXPECT_EQ("UnknownMember ", table.ids(jSort).substr(0, 14));

        FilterTable named("s:string", texts[i]);
        named.add(json(R"({"id":1,"s":"x"})"));
        EXPECT_EQ("1", named.ids(json(R"({"s":{"$in":["x","y"]},"$sort_by":["s"]})")));
    }
    EXPECT_EQ(200, table->recCount(Json::Value()));
}

TEST(Requests, OneShapeHasOneText)
{
    FilterTable table("s:string i:int j:Json::Value");
    const auto sqlOf = [&](const std::string& strRequest)
    {
        Json::Value jOut;
        EXPECT_EQ(0, table->explain(json(strRequest), jOut)) << table->status().text;
        EXPECT_EQ(std::string::npos, jOut["sql"].asString().find("secret"));
        return jOut["sql"].asString();
    };
    const std::vector<std::vector<const char*>> shapes = {
        {R"({"s":"secret"})", R"({"s":"'"})", R"({"s":""})"},
        {R"({"s":{"$beginsWith":"secret"},"i":{"$gt":1,"$lte":2.5}})",
         R"({"s":{"$beginsWith":"%"},"i":{"$gt":7,"$lte":9}})"},
        {R"({"j.k":"secret","limit":5,"offset":6})", R"({"j.k":true,"limit":7,"offset":0})",
         R"({"j.k":5,"limit":1,"offset":1})"},
        {R"({"i":[1,2,3]})", R"({"i":[1,2,3,4]})"},
        {R"({"i":[1,2,3,4,5]})", R"({"i":[1,2,3,4,5,6,7,8]})", R"({"i":[1,1,1,1,1,1]})"},
        {R"({"j":{"$all":[1]}})", R"({"j":{"$all":["secret"]}})"},
    };
    std::set<std::string> texts;
    for (const auto& shape : shapes)
    {
        for (const char* szRequest : shape)
            EXPECT_EQ(sqlOf(shape.front()), sqlOf(szRequest));
        texts.insert(sqlOf(shape.front()));
    }
    EXPECT_EQ(shapes.size(), texts.size());
    std::set<std::string> lengths;
    std::string strList = "0";
    for (int i = 1; i <= 100; ++i, strList += ",1")
        lengths.insert(sqlOf("{\"i\":[" + strList + "]}"));
    EXPECT_EQ(8U, lengths.size());
}

}  // namespace
}  // namespace table_tests
