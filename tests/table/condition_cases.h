// SPDX-License-Identifier: MIT
//
// Records of every kind, and filters with the records that each must find.

#ifndef VORN_TESTS_CONDITION_CASES_H
#define VORN_TESTS_CONDITION_CASES_H

#include "filter_table.h"

namespace table_tests
{

constexpr int kConditionRecords = 7;

inline void fill(FilterTable& table)
{
    table.add(json(R"({"id":1,"s":"abc","b":true,"i":5,"u":10,"l":9007199254740993,"d":0.1,"f":0.1,
        "o":{"n":1,"t":"x","b":true,"z":null,"in":{"k":[1,2],"t":"deep"}},"a":[1,2,"x"],"j":5})"));
    table.add(json(R"({"id":2,"s":"ABC","b":false,"i":-3,"u":0,"l":-9223372036854775808,"d":-2.5,"f":2.5,
        "o":{"n":1.0,"t":"1","b":1},"a":[],"j":"5"})"));
    table.add(json(R"({"id":3,"s":"a%c","i":2147483647,"u":9223372036854775807,"l":9223372036854775807,"d":1e300,
        "f":3,"o":{},"a":[[1],{"k":1},null,true],"j":{"n":2.5,"t":"é\u0000x","a":[1,1.0],"o":{"k":"\\"}}})"));
    table.add(json(R"({"id":4,"s":"a\u0000c","b":true,"i":0,"u":1,"l":0,"d":0,"f":0,"o":{"n":"1","t":"","b":"true"},
        "a":["1",1.5],"j":[1,null]})"));
    table.add(json(R"({"id":5,"s":"","b":false,"i":5,"l":9007199254740992,"d":3,
        "o":{"q\"u'o":1,"":2,"a b":3,"é":4,"b\\s":5,"a":{".":6,"":{"x":7}},"$x":8,"n\u0000":9},"a":[1.0,true],"j":true})"));
    table.add(json(R"({"id":6,"s":"日本","j":{"t":"é","n":2,"o":{"k":"\u0001"}}})"));
    table.add(json(R"({"id":7})"));
}

constexpr const char* kConditionMembers =
    "s:string b:bool i:int u:unsigned_long l:long_long d:double f:float o:Json::objectValue a:Json::arrayValue "
    "j:Json::Value";

struct ConditionCase
{
    const char* szFilter;
    const char* szIds;
};

constexpr ConditionCase kConditionCases[] = {
    // Equality of texts, and null.
    {R"({})", "1 2 3 4 5 6 7"},
    {R"({"s":"abc"})", "1"},
    {R"({"s":"a\u0000c"})", "4"},
    {R"({"s":"a"})", ""},
    {R"({"s":""})", "5"},
    {R"({"s":"日本"})", "6"},
    {R"({"s":null})", "7"},
    {R"({"s":{"$eq":"a%c"}})", "3"},
    {R"({"s":{"$eq":null}})", "7"},
    {R"({"s":{"$ne":"abc"}})", "2 3 4 5 6 7"},
    {R"({"s":{"$ne":null}})", "1 2 3 4 5 6"},
    {R"({"s":["abc","日本","none"]})", "1 6"},
    {R"({"s":["abc",null]})", "1 7"},
    {R"({"s":[]})", ""},
    {R"({"s":[null]})", "7"},
    {R"({"s":{"$in":["a\u0000c","ABC","\u0001"]}})", "2 4"},
    {R"({"s":["\u0001","ABC"]})", "2"},
    {R"({"s":{"$nin":["abc","a\u0000c"]}})", "2 3 5 6 7"},
    {R"({"s":{"$nin":["abc",null]}})", "2 3 4 5 6"},
    {R"({"s":{"$nin":[]}})", "1 2 3 4 5 6 7"},
    {R"({"s":{"$nin":[null]}})", "1 2 3 4 5 6"},
    // Order of texts, presence, patterns.
    {R"({"s":{"$gt":"a%c"}})", "1 6"},
    {R"({"s":{"$gte":"a%c"}})", "1 3 6"},
    {R"({"s":{"$lt":"a%c"}})", "2 4 5"},
    {R"({"s":{"$lte":"a%c"}})", "2 3 4 5"},
    {R"({"s":{"$gt":"a","$lt":"b"}})", "1 3 4"},
    {R"({"s":{"$exists":true}})", "1 2 3 4 5 6"},
    {R"({"s":{"$exists":false}})", "7"},
    {R"({"s":{"$beginsWith":"a"}})", "1 3 4"},
    {R"({"s":{"$beginsWith":"a\u0000"}})", "4"},
    {R"({"s":{"$beginsWith":"a%"}})", "3"},
    {R"({"s":{"$beginsWith":""}})", "1 2 3 4 5 6"},
    {R"({"s":{"$beginsWith":"日"}})", "6"},
    {R"({"s":{"$like":"a_c"}})", "1 2 3"},
    {R"({"s":{"$like":"%本"}})", "6"},
    {R"({"s":{"$glob":"a?c"}})", "1 3"},
    {R"({"s":{"$glob":"[A-Z]*"}})", "2"},
    {R"({"s":{"$not":{"$like":"a%"}}})", "5 6 7"},
    {R"({"s":{"$not":{"$gt":"a%c"}}})", "2 3 4 5 7"},
    {R"({"s":{"$not":{"$gt":"a","$lt":"b"}}})", "2 5 6 7"},
    {R"({"s":{"$not":{"$not":{"$eq":"abc"}}}})", "1"},
    // Booleans.
    {R"({"b":true})", "1 4"},
    {R"({"b":false})", "2 5"},
    {R"({"b":null})", "3 6 7"},
    {R"({"b":[true,false]})", "1 2 4 5"},
    {R"({"b":{"$ne":true}})", "2 3 5 6 7"},
    {R"({"b":{"$nin":[true,null]}})", "2 5"},
    {R"({"b":{"$exists":true}})", "1 2 4 5"},
    // Whole numbers.
    {R"({"i":5})", "1 5"},
    {R"({"i":5.0})", "1 5"},
    {R"({"i":[5,-3,0]})", "1 2 4 5"},
    {R"({"i":{"$nin":[5,-3,0]}})", "3 6 7"},
    {R"({"i":{"$ne":5}})", "2 3 4 6 7"},
    {R"({"i":{"$gt":4.5}})", "1 3 5"},
    {R"({"i":{"$gt":-1e300,"$lt":1e300}})", "1 2 3 4 5"},
    {R"({"i":{"$lte":18446744073709551615}})", "1 2 3 4 5"},
    {R"({"i":{"$not":{"$lt":0}}})", "1 3 4 5 6 7"},
    {R"({"u":9223372036854775807})", "3"},
    {R"({"u":{"$gte":9223372036854775807}})", "3"},
    {R"({"u":{"$lt":9223372036854775808}})", "1 2 3 4"},
    {R"({"u":{"$gt":-1}})", "1 2 3 4"},
    {R"({"l":9007199254740993})", "1"},
    {R"({"l":{"$gt":9007199254740992}})", "1 3"},
    {R"({"l":{"$gt":9007199254740992.0}})", "1 3"},
    {R"({"l":-9223372036854775808})", "2"},
    {R"({"l":[9007199254740993,9223372036854775807,-9223372036854775808]})", "1 2 3"},
    {R"({"l":{"$exists":false}})", "6 7"},
    // Reals; those of the type float are rounded to it on both sides.
    {R"({"d":0.1})", "1"},
    {R"({"d":3})", "5"},
    {R"({"d":[0.1,1e300,-2.5,4.9e-324]})", "1 2 3"},
    {R"({"d":{"$nin":[0.1,1e300,0]}})", "2 5 6 7"},
    {R"({"d":{"$lt":0.1}})", "2 4"},
    {R"({"d":{"$lte":0.1}})", "1 2 4"},
    {R"({"d":{"$ne":0}})", "1 2 3 5 6 7"},
    {R"({"f":0.1})", "1"},
    {R"({"f":[0.1,3]})", "1 3"},
    {R"({"f":{"$gt":0.1}})", "2 3"},
    {R"({"f":{"$gte":0.1}})", "1 2 3"},
    // JSON members: their compact texts.
    {R"({"o":{}})", "3"},
    {R"({"o":{"$eq":{"b":"true","n":"1","t":""}}})", "4"},
    {R"({"o":{"$ne":{}}})", "1 2 4 5 6 7"},
    {R"({"o":[{},{"b":1,"n":1.0,"t":"1"}]})", "2 3"},
    {R"({"o":{"$exists":true}})", "1 2 3 4 5"},
    {R"({"a":{"$eq":[]}})", "2"},
    {R"({"a":[[],[1,2,"x"]]})", "1 2"},
    {R"({"a":null})", "6 7"},
    {R"({"j":5})", "1"},
    {R"({"j":"5"})", "2"},
    {R"({"j":true})", "5"},
    {R"({"j":[5,"5",[1,null]]})", "1 2 4"},
    {R"({"j":null})", "7"},
    // Paths: numbers equal numbers, kinds differ.
    {R"({"o.n":1})", "1 2"},
    {R"({"o.n":1.0})", "1 2"},
    {R"({"o.n":"1"})", "4"},
    {R"({"o.n":{"$ne":1}})", "3 4 5 6 7"},
    {R"({"o.n":null})", "3 5 6 7"},
    {R"({"o.n":{"$ne":null}})", "1 2 4"},
    {R"({"o.n":[1,"1"]})", "1 2 4"},
    {R"({"o.n":["1",null]})", "3 4 5 6 7"},
    {R"({"o.n":{"$nin":["1",null]}})", "1 2"},
    {R"({"o.n":{"$nin":["1"]}})", "1 2 3 5 6 7"},
    {R"({"o.n":[]})", ""},
    {R"({"o.n":{"$nin":[]}})", "1 2 3 4 5 6 7"},
    {R"({"o.b":true})", "1"},
    {R"({"o.b":1})", "2"},
    {R"({"o.b":"true"})", "4"},
    {R"({"o.b":[true,"true"]})", "1 4"},
    {R"({"o.z":null})", "1 2 3 4 5 6 7"},
    {R"({"o.z":{"$exists":true}})", ""},
    {R"({"o.t":{"$exists":true}})", "1 2 4"},
    {R"({"o.t":{"$exists":false}})", "3 5 6 7"},
    {R"({"o.n":{"$gt":0}})", "1 2"},
    {R"({"o.n":{"$gt":"0"}})", "4"},
    {R"({"o.n":{"$gte":""}})", "4"},
    {R"({"o.n":{"$lt":"2"}})", "4"},
    {R"({"o.n":{"$lt":1.5}})", "1 2"},
    {R"({"o.n":{"$not":{"$lte":1}}})", "3 4 5 6 7"},
    {R"({"o.in.t":"deep"})", "1"},
    {R"({"o.in":{"k":[1,2],"t":"deep"}})", "1"},
    {R"({"o.in.k":{"$eq":[1,2]}})", "1"},
    {R"({"o.in.k.0":1})", ""},
    {R"({"o.t":{"$beginsWith":""}})", "1 2 4"},
    {R"({"o.t":{"$beginsWith":"x"}})", "1"},
    {R"({"o.t":{"$like":"X"}})", "1"},
    {R"({"o.t":{"$glob":"[0-9]"}})", "2"},
    {R"({"o.n":{"$like":"1"}})", "4"},
    {R"({"j.n":{"$gte":2}})", "3 6"},
    {R"({"j.n":2.5})", "3"},
    {R"({"j.n":[2.5,2,7.25]})", "3 6"},
    {R"({"j.t":"é\u0000x"})", "3"},
    {R"({"j.t":"é"})", "6"},
    {R"({"j.t":{"$gt":"é"}})", "3"},
    {R"({"j.t":{"$beginsWith":"é\u0000"}})", "3"},
    {R"({"j.t":["é\u0000x","\u00010"]})", "3"},
    {R"({"j.o.k":"\\"})", "3"},
    {R"({"j.o.k":"\u0001"})", "6"},
    {R"({"j.o":{"k":"\\"}})", "3"},
    {R"({"j.o":[{"k":"\\"},{"k":"\u0001"}]})", "3 6"},
    {R"({"o.q\"u'o":1})", "5"},
    {R"({"o.":2})", "5"},
    {R"({"o.a b":3})", "5"},
    {R"({"o.é":4})", "5"},
    {R"({"o.b\\s":5})", "5"},
    {R"({"o.a..x":7})", "5"},
    {R"({"o.$x":8})", "5"},
    {R"({"o.n\u0000":9})", "5"},
    // Arrays.
    {R"({"a":{"$size":0}})", "2"},
    {R"({"a":{"$size":2.0}})", "4 5"},
    {R"({"a":{"$not":{"$size":2}}})", "1 2 3 6 7"},
    {R"({"a":{"$all":[1]}})", "1 5"},
    {R"({"a":{"$all":[1.0,2,1]}})", "1"},
    {R"({"a":{"$all":["1",1.5]}})", "4"},
    {R"({"a":{"$all":[true]}})", "3 5"},
    {R"({"a":{"$all":[null,[1]]}})", "3"},
    {R"({"a":{"$all":[{"k":1}]}})", "3"},
    {R"({"a":{"$not":{"$all":[1]}}})", "2 3 4 6 7"},
    {R"({"j":{"$size":2}})", "4"},
    {R"({"j":{"$all":[null]}})", "4"},
    {R"({"j.a":{"$size":2}})", "3"},
    {R"({"j.a":{"$all":[1.0]}})", "3"},
    {R"({"o.in.k":{"$all":[2,1]}})", "1"},
    // Filters of filters.
    {R"({"$and":[{"i":5},{"b":true}]})", "1"},
    {R"({"$or":[{"i":5},{"s":"ABC"}]})", "1 2 5"},
    {R"({"$nor":[{"i":5},{"s":"ABC"}]})", "3 4 6 7"},
    {R"({"$not":{"i":5,"b":true}})", "2 3 4 5 6 7"},
    {R"({"$not":{"$or":[{"i":5},{"b":true}]}})", "2 3 6 7"},
    {R"({"$or":[{},{"i":5}]})", "1 2 3 4 5 6 7"},
    {R"({"$not":{}})", ""},
    {R"({"$nor":[{"$and":[{"i":5},{"$not":{"b":true}}]},{"s":null}]})", "1 2 3 4 6"},
    {R"({"i":5,"$or":[{"b":true},{"b":false}],"s":{"$ne":"abc"}})", "5"},
    {R"({"$or":[{"i":{"$eq":5}},{"i":0}]})", "1 4 5"},
    {R"({"$and":[{"i":{"$ne":5}},{"s":{"$ne":null}}]})", "2 3 4 6"},
    {R"({"$nor":[{"s":null},{"o":{}}]})", "1 2 4 5 6"},
    {R"({"$or":[{"s":["abc"]},{"a":{"$eq":[]}},{"b":{"$eq":true,"$exists":true}},{"$not":{"i":{"$exists":true}}}]})",
     "1 2 4 6 7"},
    {R"({"$or":[{"o.n":1},{"$and":[{"i":0}]}]})", "1 2 4"},
    {R"({"$or":[{"i":-3,"b":false},{"vornSqlWhereFilter":"i = 0"}]})", "2 4"},
    // SQL of one's own.
    {R"({"vornSqlWhereFilter":"i > 4 OR s IS NULL"})", "1 3 5 7"},
    {R"~({"vornSqlWhereFilter":"i > 4 OR s IS NULL -- )","b":true})~", "1"},
    {R"({"vornSqlWhereFilter":"i = ? OR s = ?","vornSqlWhereParams":[0,"ABC"]})", "2 4"},
    {R"({"vornSqlWhereFilter":"i = :n OR u = :n","vornSqlWhereParams":{"n":0}})", "2 4"},
    {R"({"vornSqlWhereFilter":"b = :flag","vornSqlWhereParams":{"flag":true}})", "1 4"},
    {R"({"vornSqlWhereFilter":"a = ?","vornSqlWhereParams":[[]]})", "2"},
    {R"({"vornSqlWhereFilter":"s = 'a%c' /* ; ) */ AND \"i\" > 0"})", "3"},
    {R"({"vornSqlWhereFilter":"i = -3"})", "2"},
    {R"({"vornSqlWhereFilter":"i / 2 = 2"})", "1 5"},
    {R"({"vornSqlWhereFilter":"i|0 = 5 AND ~i = -6"})", "1 5"},
    {R"({"vornSqlWhereFilter":"?=i","vornSqlWhereParams":[5]})", "1 5"},
    {R"({"vornSqlWhereFilter":"(SELECT é$_1 FROM (SELECT i AS é$_1)) = :Zé_1","vornSqlWhereParams":{"Zé_1":5}})",
     "1 5"},
    {R"({"vornSqlWhereFilter":"d = ? AND s IS NOT ?","vornSqlWhereParams":[0.1,null]})", "1"},
    {R"({"vornSqlWhereFilter":"b = ?","vornSqlWhereParams":[false]})", "2 5"},
    {R"({"vornSqlWhereFilter":"o = :v","vornSqlWhereParams":{"v":{}}})", "3"},
    {R"~({"vornSqlWhereFilter":"[i] = 0 AND `i` = 0 AND s <> ')(;--' -- it's"})~", "4"},
    {R"({"$not":{"vornSqlWhereFilter":"i > 4"}})", "2 4 6 7"},
    {R"({"$not":{"vornSqlWhereFilter":"s"}})", "1 2 3 4 5 6 7"},
    {R"({"$or":[{"vornSqlWhereFilter":"i = :n","vornSqlWhereParams":{"n":0}},
                {"vornSqlWhereFilter":"i = :n","vornSqlWhereParams":{"n":-3}}]})",
     "2 4"},
};

}  // namespace table_tests

#endif  // VORN_TESTS_CONDITION_CASES_H
