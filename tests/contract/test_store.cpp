// SPDX-License-Identifier: MIT
//
// The store object: construction with good and bad arguments, creating the table, the error message, the end.

#include <gtest/gtest.h>

#include <type_traits>

#include "log_capture.h"
#include "store.h"

using namespace support;

static_assert(!std::is_copy_constructible_v<VornJsonDbApi> && !std::is_copy_assignable_v<VornJsonDbApi>);
static_assert(!std::is_polymorphic_v<VornJsonDbApi>);

namespace
{

// What the executor and tableCreate() write about a create statement that fails with the given text; rawError is what
// SQLite itself gave.
ExpectedLines createFailure(const std::string& sql, const std::string& errorText, const std::string& rawError)
{
    return {trace("i=0,errno=<number>, run sql failed, error=" + errorText + ", sql=" + sql),
            debug("run sql fail, err=" + rawError), error("create table failed, sql=" + sql),
            trace("sql error, err=" + errorText + ", sql=" + sql)};
}

std::string createStatementOf(const std::string& name)
{
    return "CREATE TABLE IF NOT EXISTS " + name + " (age)";
}

Json::Value definitionOf(const std::string& name)
{
    return support::definitionOf(name, json(R"({"age": {"cpptype": "int"}})"));
}

// The arguments of a construction.
struct Arguments
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name);
    std::string create = createStatementOf(name);

    VornJsonDbApi make() { return VornJsonDbApi(database.handle(), name, definition, create); }
};

bool hasTable(const Database& database, const std::string& name)
{
    return !database.rows("select name from sqlite_master where name = '" + name + "'").empty();
}

}  // namespace

LOGGED_TEST(Store, ConstructionCreatesTheTableSilently)
{
    Arguments arguments;
    logged({}, [&] { arguments.make(); });
    EXPECT_TRUE(hasTable(arguments.database, arguments.name));
    logged({}, [&] { arguments.make(); });
}

// Every combination of bad arguments writes one trace line per bad argument, in this order, and construction goes on.
LOGGED_TEST(Store, EveryBadArgumentOfAConstructionIsLogged)
{
    for (int bad = 0; bad < 16; ++bad)
    {
        SCOPED_TRACE("combination " + std::to_string(bad));
        const Database database;
        const std::string table = freshTable();
        sqlite3* const pDb = (bad & 1) != 0 ? nullptr : database.handle();
        std::string name = (bad & 2) != 0 ? "" : table;
        Json::Value definition = (bad & 4) != 0 ? Json::Value() : definitionOf(table);
        std::string create = (bad & 8) != 0 ? "" : createStatementOf(table);

        ExpectedLines expected;
        if ((bad & 1) != 0)
            expected.push_back(trace("Failed [!pDb]"));
        if ((bad & 2) != 0)
            expected.push_back(trace("Failed [strName.empty()]"));
        if ((bad & 4) != 0)
            expected.push_back(trace("Failed [jTableDef.empty()]"));
        if ((bad & 8) != 0)
        {
            expected.push_back(trace("Failed [strSqlCreate.empty()]"));
            expected.push_back(failed("0 >= strSql.length()"));
        }
        if ((bad & 9) != 0)
            expected = expected + createFailure(create, "Unknow Error!!", "(null)") +
                       ExpectedLines{failed("0 > tableCreate()")};

        std::unique_ptr<VornJsonDbApi> api;
        logged(expected, [&] { api = std::make_unique<VornJsonDbApi>(pDb, name, definition, create); });
        EXPECT_EQ("", api->getErrMsg());
        EXPECT_EQ((bad & 9) == 0, hasTable(database, table));
    }
}

LOGGED_TEST(Store, ADefinitionWithoutMembersIsEmptyWhateverItsKind)
{
    for (const char* const text : {"null", "{}", "[]", "0", "\"\"", "false", "[1]"})
    {
        Arguments arguments;
        arguments.definition = json(text);
        const bool empty = arguments.definition.empty();
        logged(empty ? ExpectedLines{trace("Failed [jTableDef.empty()]")} : ExpectedLines{}, [&] { arguments.make(); });
        EXPECT_TRUE(hasTable(arguments.database, arguments.name));
    }
}

LOGGED_TEST(Store, AStatementThatNamesAnExistingTableIsLoggedAndTheRowsStayReadable)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name);
    std::string create = "CREATE TABLE " + name + " (age)";
    ASSERT_EQ(SQLITE_OK, database.run(create + "; INSERT INTO " + name + " VALUES (7)"));

    const std::string sqliteText = "table " + name + " already exists";
    std::unique_ptr<VornJsonDbApi> api;
    logged(createFailure(create, sqliteText, sqliteText) + ExpectedLines{failed("0 > tableCreate()")},
           [&] { api = std::make_unique<VornJsonDbApi>(database.handle(), name, definition, create); });

    VORN_JSON_DB::recType(definition, name);
    Json::Value rows;
    EXPECT_SILENT(0, api->runSqlEx("select * from " + name, VornJsonDbApi::DbCallBackFillList, &rows));
    EXPECT_EQ(json(R"([{"age": 7}])"), rows);
}

LOGGED_TEST(Store, AMalformedStatementIsLoggedWithSqlitesText)
{
    Arguments arguments;
    arguments.create = "CREATE TABEL 'x%s%n";
    const std::string sqliteText = "near \"TABEL\": syntax error";
    logged(createFailure(arguments.create, sqliteText, sqliteText) + ExpectedLines{failed("0 > tableCreate()")},
           [&] { arguments.make(); });
}

LOGGED_TEST(Store, TableCreateRunsTheStatementAgain)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name);
    std::string create = "CREATE TABLE " + name + " (age)";
    VornJsonDbApi api(database.handle(), name, definition, create);

    const std::string sqliteText = "table " + name + " already exists";
    EXPECT_LOGS(-1, api.tableCreate(), createFailure(create, sqliteText, sqliteText));
    ASSERT_EQ(SQLITE_OK, database.run("DROP TABLE " + name));
    EXPECT_SILENT(0, api.tableCreate());
    EXPECT_TRUE(hasTable(database, name));
}

LOGGED_TEST(Store, TableCreateReturnsZeroAlsoWhenTheStatementChangesRows)
{
    const Database database;
    std::string name = freshTable();
    Json::Value definition = definitionOf(name);
    std::string create = createStatementOf(name) + "; INSERT INTO " + name + " VALUES (1), (2), (3)";
    VornJsonDbApi api(database.handle(), name, definition, create);
    EXPECT_SILENT(0, api.tableCreate());
    EXPECT_EQ(6U, database.rows("select * from " + name).size());
}

TEST(Store, TheObjectKeepsCopiesOfItsArguments)
{
    const Database database;
    std::string name = freshTable();
    const std::string nameBefore = name;
    Json::Value definition = definitionOf(name);
    std::string create = createStatementOf(name);
    VornJsonDbApi api(database.handle(), name, definition, create);

    name = "elsewhere";
    definition = json(R"({"elsewhere": {"member": {}}})");
    create = "nonsense";
    Json::Value record = json(R"({"age": 4})");
    Json::Value stored;
    EXPECT_SILENT(0, api.recCreate(record, stored));
    EXPECT_SILENT(0, api.tableCreate());
    EXPECT_EQ(std::vector<std::string>{"4"}, database.rows("select * from " + nameBefore));
}

TEST(Store, TheErrorMessageIsEmptyAtFirstAndThenWhatWasSet)
{
    Store store(R"({"age": {"cpptype": "int"}})");
    EXPECT_EQ("", store->getErrMsg());
    store->setErrMsg("O'Neil \xc3\xa9 100%");
    EXPECT_EQ("O'Neil \xc3\xa9 100%", store->getErrMsg());
    EXPECT_LOGS(-1, store->runSqlEx(""), failed("0 >= strSql.length()"), trace("<any>"));
    EXPECT_EQ("O'Neil \xc3\xa9 100%", store->getErrMsg());
    store->setErrMsg("");
    EXPECT_EQ("", store->getErrMsg());
}

TEST(Store, DestroyingTheObjectLeavesTheConnectionOpen)
{
    Arguments arguments;
    {
        const StatementLog statements(arguments.database);
        arguments.make();
        EXPECT_EQ(std::vector<std::string>{arguments.create}, statements.statements());
    }
    EXPECT_EQ(SQLITE_OK, arguments.database.run("INSERT INTO " + arguments.name + " VALUES (1)"));
    EXPECT_EQ(std::vector<std::string>{"1"}, arguments.database.rows("select * from " + arguments.name));
}

TEST(Store, TwoObjectsOnOneConnectionWorkOnTheirOwnTables)
{
    const auto database = std::make_shared<Database>();
    Store first(R"({"age": {"cpptype": "int"}})", "", database);
    Store second(R"({"age": {"cpptype": "string"}})", "", database);
    Json::Value record = json(R"({"age": 1})");
    Json::Value text = json(R"({"age": "1"})");
    Json::Value stored;
    EXPECT_SILENT(0, first->recCreate(record, stored));
    EXPECT_EQ(record, stored);
    EXPECT_SILENT(0, second->recCreate(text, stored));
    EXPECT_EQ(text, stored);
    EXPECT_SILENT(0, first->recCreate(record, stored));
    EXPECT_EQ(record, stored);
}
