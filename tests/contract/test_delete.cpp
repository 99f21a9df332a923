// SPDX-License-Identifier: MIT
//
// Deleting: by condition, everything, by a list of values, by one value.

#include <gtest/gtest.h>

#include "failures.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

using Rows = std::vector<std::string>;
using Texts = std::vector<std::string>;

const char* const builderFails = "0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)";
const char* const runFails = "0 > (err = runSqlEx(strSqlRun))";
const char* const noKey = "!szKey || !szKey[0]";
const char* const unknownKey = "!jType.isMember(szKey)";
const char* const noStringKey = "jType[szKey][\"cpptype\"].asString() != \"string\"";
const char* const byArrayFails = "0 > (err = recDeleteByArray(strVector, szKey))";

ExpectedLine arrayFailed(const std::string& name, const std::string& values)
{
    return trace("recDeleteByArray failed, name=" + name + ", strVector=" + values);
}

ExpectedLine nameFailed(const std::string& name, const std::string& value)
{
    return trace("recDeleteByName failed, name=" + name + ", strValue=" + value);
}

class Delete : public testing::Test
{
protected:
    Store store{R"({"id": {"cpptype": "int"}, "name": {"cpptype": "string"}})"};
    const std::string prefix = "DELETE FROM " + store.name() + " ";

    void SetUp() override
    {
        store.db().run("insert into " + store.name() + " values (1, 'a'), (2, 'b'), (3, 'a'), (4, 'a,b'), (5, 'a''b')");
    }

    int remove(const std::string& param, bool allowAll = false)
    {
        Json::Value value = json(param);
        const int result = store->recDelete(value, allowAll);
        EXPECT_EQ(json(param), value);
        return result;
    }

    int byArray(Texts values, const char* key)
    {
        const Texts copy = values;
        const int result = store->recDeleteByArray(values, key);
        EXPECT_EQ(copy, values);
        return result;
    }

    int byName(std::string value, const char* key)
    {
        const std::string copy = value;
        const int result = store->recDeleteByName(value, key);
        EXPECT_EQ(copy, value);
        return result;
    }

    Rows ids() { return store.db().rows("select id from " + store.name() + " order by id"); }

    std::string leaveSqlError()
    {
        const LogCapture quiet;
        EXPECT_EQ(-1, store->runSqlEx("nonsense"));
        return "near \"nonsense\": syntax error";
    }
};

}  // namespace

TEST_F(Delete, MatchingRowsGoAndAreCounted)
{
    const StatementLog log(store.db());
    EXPECT_EQ(2, remove(R"({"name": "a"})"));
    EXPECT_EQ((Rows{prefix + " WHERE  (name='a' );"}), log.statements());
    EXPECT_EQ((Rows{"2", "4", "5"}), ids());
}

TEST_F(Delete, ConditionMayHoldSeveralMembersAndRawText)
{
    const StatementLog log(store.db());
    EXPECT_EQ(1, remove(R"({"vornSqlWhereFilter": "id > 1", "name": ["a"], "limit": 7})"));
    EXPECT_EQ((Rows{prefix + " WHERE  (name in ('a' ) and  id > 1  );"}), log.statements());
    EXPECT_EQ((Rows{"1", "2", "4", "5"}), ids());
}

TEST_F(Delete, NoMatchIsZeroAndNoFailure)
{
    EXPECT_LOGS(0, remove(R"({"name": "none"})"), debug("delete rec number=0"));
    EXPECT_EQ(5u, ids().size());
}

LOGGED_TEST_F(Delete, CountIsLoggedForDebugging)
{
    store.db().run("insert into " + store.name() + " values (7, 'x'), (7, 'y')");
    EXPECT_LOGS(2, remove(R"({"id": 7})"), debug("delete rec number=2"));
}

TEST_F(Delete, WithoutAConditionNothingGoesUnlessAllowed)
{
    forEachLogMode(
        [&]
        {
            for (const char* const param : {"{}", R"({"limit": 1, "Name": "a"})"})
            {
                const StatementLog log(store.db());
                EXPECT_LOGS(-1, remove(param), failed("strSql.empty()"));
                Json::Value value = json(param);
                EXPECT_LOGS(-1, store->recDelete(value), failed("strSql.empty()"));
                EXPECT_TRUE(log.statements().empty());
            }
        });
    EXPECT_EQ(5u, ids().size());

    const StatementLog log(store.db());
    EXPECT_LOGS(5, remove("{}", true), debug("delete rec number=5"));
    EXPECT_EQ((Rows{prefix + ";"}), log.statements());
    EXPECT_TRUE(ids().empty());
    EXPECT_EQ(0, remove(R"({"undeclared": 1})", true));
}

TEST_F(Delete, PermissionForAllMattersOnlyWithoutACondition)
{
    EXPECT_EQ(2, remove(R"({"name": "a"})", true));
    EXPECT_EQ((Rows{"2", "4", "5"}), ids());
}

TEST_F(Delete, AllRunsTheStatementWithoutACondition)
{
    const StatementLog log(store.db());
    EXPECT_LOGS(5, store->recDeleteAll(), debug("delete rec number=5"));
    EXPECT_EQ((Rows{prefix + ";"}), log.statements());
    EXPECT_EQ(0, store->recDeleteAll());
}

LOGGED_TEST_F(Delete, ParameterThatIsNoObjectIsRefusedEvenWhenAllMayGo)
{
    for (const char* const param : {"null", "[]", "1", R"("name")", "true"})
        for (const bool allowAll : {false, true})
            EXPECT_LOGS(-1, remove(param, allowAll), failed("jRecParam.type() != Json::objectValue"));

    EXPECT_EQ(5u, ids().size());
}

LOGGED_TEST_F(Delete, ConditionThatFailsIsReportedWithItsOwnLine)
{
    for (const bool allowAll : {false, true})
    {
        EXPECT_LOGS(-1, remove(R"({"vornSqlWhereFilter": 1})", allowAll),
                    failed("!jRecParam[jmFieldName[i]].isString()"), failed(builderFails));
    }

    EXPECT_EQ(5u, ids().size());
}

LOGGED_TEST_F(Delete, FailureBeforeTheStatementShowsTheLastSqlErrorWithoutText)
{
    const std::string stale = leaveSqlError();
    EXPECT_LOGS(-1, remove("null"), failed("jRecParam.type() != Json::objectValue"), sqlError(stale, ""));
    EXPECT_LOGS(-1, remove(R"({"vornSqlWhereFilter": 1})"), failed("!jRecParam[jmFieldName[i]].isString()"),
                failed(builderFails), sqlError(stale, ""));
    EXPECT_LOGS(-1, remove("{}"), failed("strSql.empty()"), sqlError(stale, ""));
}

TEST_F(Delete, TextThatSqliteRefusesDeletesNothingAndIsReportedAtEveryLevel)
{
    store.db().run("create trigger keep_" + store.name() + " before delete on " + store.name() +
                   " begin select raise(abort, 'kept'); end");
    const std::string sql = prefix + " WHERE  (name in ('a' ) );";
    const ExpectedLines one = refusedBySqlite("kept", sql) + ExpectedLines{failed(runFails), sqlError("kept", sql)};
    const ExpectedLines array = one + ExpectedLines{failed("0 > (err = recDelete(jParam))"), arrayFailed("name", "a")};
    const ExpectedLines name = array + ExpectedLines{failed(byArrayFails), nameFailed("name", "a")};
    const std::string allSql = prefix + ";";
    const ExpectedLines all =
        refusedBySqlite("kept", allSql) + ExpectedLines{failed(runFails), sqlError("kept", allSql)};
    forEachLogMode(
        [&]
        {
            EXPECT_LOGS(-1, remove(R"({"name": ["a"]})"), one);
            EXPECT_LOGS(-1, byArray({"a"}, "name"), array);
            EXPECT_LOGS(-1, byName("a", "name"), name);
            EXPECT_LOGS(-1, store->recDeleteAll(), all);
        });
    EXPECT_EQ(5u, ids().size());
}

LOGGED_TEST_F(Delete, WithoutSqliteMemoryForAValueNothingGoesAndEveryLevelReportsIt)
{
    const std::string stale = leaveSqlError();
    const ExpectedLines one = {failed(R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].asString().c_str())))"),
                               failed("0 > SqlMakeByListField(jmFieldName[i].c_str(), jTmp, strSqlWhereOut)"),
                               failed(builderFails), sqlError(stale, "")};
    const ExpectedLine deleteFails = failed("0 > (err = recDelete(jParam))");
    const ExpectedLines array = one + ExpectedLines{deleteFails, arrayFailed("name", "a,b")};
    const ExpectedLines name =
        one + ExpectedLines{deleteFails, arrayFailed("name", "a"), failed(byArrayFails), nameFailed("name", "a")};
    {
        const NoSqliteMemory noMemory;
        EXPECT_LOGS(-1, remove(R"({"name": ["a"]})"), one);
        EXPECT_LOGS(-1, byArray({"a", "b"}, "name"), array);
        EXPECT_LOGS(-1, byName("a", "name"), name);
    }
    EXPECT_EQ(5u, ids().size());
}

TEST_F(Delete, ViolatedKeyNeverSetsTheErrorMessage)
{
    store.db().run("create trigger clash_" + store.name() + " before delete on " + store.name() +
                   " begin select raise(abort, 'UNIQUE constraint failed'); end");
    const LogCapture quiet;
    EXPECT_EQ(-1, remove(R"({"id": 1})"));
    EXPECT_EQ("", store->getErrMsg());
}

TEST_F(Delete, ByNameTakesTheWholeValue)
{
    const StatementLog log(store.db());
    EXPECT_LOGS(1, byName("a,b", "name"), debug("delete rec number=1"));
    EXPECT_EQ(1, byName("a'b", "name"));
    EXPECT_EQ(0, byName(" a", "name"));
    EXPECT_EQ(2, byName("a", "name"));
    EXPECT_EQ((Rows{prefix + " WHERE  (name in ('a,b' ) );", prefix + " WHERE  (name in ('a''b' ) );",
                    prefix + " WHERE  (name in (' a' ) );", prefix + " WHERE  (name in ('a' ) );"}),
              log.statements());
    EXPECT_EQ((Rows{"2"}), ids());
}

TEST_F(Delete, ByArrayOfOneValue)
{
    EXPECT_LOGS(2, byArray({"a"}, "name"), debug("delete rec number=2"));
    EXPECT_EQ((Rows{"2", "4", "5"}), ids());
    // The check is on the list, not on its values: an empty value is a value.
    EXPECT_EQ(0, byArray({""}, "name"));
}

TEST_F(Delete, ByArrayOfTwoValuesReadsThemAsOneLiteral)
{
    const StatementLog log(store.db());
    EXPECT_EQ(1, byArray({"a", "b"}, "name"));
    EXPECT_EQ(0, byArray({"a", "a"}, "name"));
    EXPECT_EQ((Rows{prefix + " WHERE  (name in ('a''b' ) );", prefix + " WHERE  (name in ('a''a' ) );"}),
              log.statements());
    EXPECT_EQ((Rows{"1", "2", "3", "4"}), ids());
}

TEST_F(Delete, ValuesAreTakenUpToTheirFirstNul)
{
    const StatementLog log(store.db());
    EXPECT_EQ(2, byName(std::string("a\0x", 3), "name"));
    EXPECT_EQ(0, byArray({std::string("a'\0x", 4), "b%s"}, "name"));
    EXPECT_EQ((Rows{prefix + " WHERE  (name in ('a' ) );", prefix + " WHERE  (name in ('a''''b%s' ) );"}),
              log.statements());
}

LOGGED_TEST_F(Delete, ByArrayChecksListNameMemberAndTypeInThisOrder)
{
    struct Row
    {
        Texts values;
        const char* key;
        ExpectedLines lines;
    };
    const Row rows[] = {
        {{}, "name", {failed("0 >= strVector.size()"), arrayFailed("name", "")}},
        {{}, nullptr, {failed("0 >= strVector.size()"), arrayFailed("(null)", "")}},
        {{}, "missing", {failed("0 >= strVector.size()"), arrayFailed("missing", "")}},
        {{"a"}, nullptr, {failed(noKey), arrayFailed("(null)", "a")}},
        {{"a", "b"}, "", {failed(noKey), arrayFailed("", "a,b")}},
        {{"a", "", "c,d"}, "missing", {failed(unknownKey), arrayFailed("missing", "a,,c,d")}},
        {{"1"}, "id", {failed(noStringKey), arrayFailed("id", "1")}},
        {{"1", "2"}, "id", {failed(noStringKey), arrayFailed("id", "1,2")}},
    };
    for (const Row& row : rows)
    {
        const StatementLog log(store.db());
        EXPECT_LOGS(-1, byArray(row.values, row.key), row.lines);
        EXPECT_TRUE(log.statements().empty());
    }

    EXPECT_EQ(5u, ids().size());
}

LOGGED_TEST_F(Delete, ByNameChecksValueNameAndMemberInThisOrder)
{
    struct Row
    {
        const char* value;
        const char* key;
        ExpectedLines lines;
    };
    const Row rows[] = {
        {"", "name", {failed("strValue.empty()"), nameFailed("name", "")}},
        {"", nullptr, {failed("strValue.empty()"), nameFailed("(null)", "")}},
        {"a", nullptr, {failed(noKey), nameFailed("(null)", "a")}},
        {"a", "", {failed(noKey), nameFailed("", "a")}},
        {"a,b", "missing", {failed(unknownKey), nameFailed("missing", "a,b")}},
        // The type is left to the deletion by list, whose lines come first.
        {"1", "id", {failed(noStringKey), arrayFailed("id", "1"), failed(byArrayFails), nameFailed("id", "1")}},
    };
    for (const Row& row : rows)
    {
        const StatementLog log(store.db());
        EXPECT_LOGS(-1, byName(row.value, row.key), row.lines);
        EXPECT_TRUE(log.statements().empty());
    }

    EXPECT_EQ(5u, ids().size());
}

TEST_F(Delete, OtherTypeNamesThanStringAreRefusedByArray)
{
    Store types(R"({"a": {"cpptype": "Json::Value"}, "b": {"cpptype": "String"}, "c": {"cpptype": "string "},
                    "d": {"cpptype": ""}})");
    for (const char* const key : {"a", "b", "c", "d"})
    {
        Texts values = {"1"};
        EXPECT_LOGS(-1, types->recDeleteByArray(values, key), failed(noStringKey), arrayFailed(key, "1"));
    }
}

TEST_F(Delete, MemberNamedLikeTheRawConditionCannotBeDeletedByValue)
{
    Store odd(R"({"vornSqlWhereFilter": {"cpptype": "string"}})");
    Texts values = {"x"};
    EXPECT_LOGS(-1, odd->recDeleteByArray(values, "vornSqlWhereFilter"),
                failed("!jRecParam[jmFieldName[i]].isString()"), failed(builderFails),
                failed("0 > (err = recDelete(jParam))"), arrayFailed("vornSqlWhereFilter", "x"));
}

TEST_F(Delete, VectorBecomesAnArrayMember)
{
    struct Row
    {
        Texts values;
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {{"a", "b,c", ""}, "null", R"({"k": ["a", "b,c", ""]})"},
        {{"a"}, "{}", R"({"k": ["a"]})"},
        {{}, "null", R"({"k": []})"},
        {{"1", "1"}, R"({"k": {"old": 1}, "other": [2]})", R"({"k": ["1", "1"], "other": [2]})"},
        {{}, R"({"k": "old"})", R"({"k": []})"},
    };
    for (const Row& row : rows)
    {
        Texts values = row.values;
        Json::Value param = json(row.before);
        EXPECT_SILENT(0, store->VectorParamToJson(values, "k", param));
        EXPECT_EQ(json(row.after), param);
        EXPECT_EQ(row.values, values);
    }
}

TEST_F(Delete, VectorChecksItsOutputThenTheName)
{
    const char* const outputKind = "jParamOut.type() != Json::objectValue && jParamOut.type() != Json::nullValue";
    Texts values = {"a"};
    forEachLogMode(
        [&]
        {
            for (const char* const key : {static_cast<const char*>(nullptr), "", "k"})
            {
                for (const char* const kept : {"[]", "1", R"("x")", "true"})
                {
                    Json::Value param = json(kept);
                    EXPECT_LOGS(-1, store->VectorParamToJson(values, key, param), failed(outputKind));
                    EXPECT_EQ(json(kept), param);
                }
            }
            for (const char* const key : {static_cast<const char*>(nullptr), ""})
            {
                for (const char* const kept : {"null", R"({"k": 1})"})
                {
                    Json::Value param = json(kept);
                    EXPECT_LOGS(-1, store->VectorParamToJson(values, key, param), failed(noKey));
                    EXPECT_EQ(json(kept), param);
                }
            }
        });
}

TEST_F(Delete, ValueThatCannotBeReadRaisesBeforeAnyStatement)
{
    const StatementLog log(store.db());
    EXPECT_THROW(remove(R"({"name": {}})"), Json::Exception);
    EXPECT_THROW(remove(R"({"name": [[]]})", true), Json::Exception);
    EXPECT_TRUE(log.statements().empty());
}
