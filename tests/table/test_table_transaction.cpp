// SPDX-License-Identifier: MIT
//
// vorn::Transaction at its limits: nesting, exceptions, ends that fail and are repeated, and both classes in one.

#include <functional>
#include <stdexcept>

#include "store.h"
#include "table_fixture.h"

using namespace table_tests;
using support::TempFile;
using vorn::Transaction;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kMembers =
    R"({"id": {"cpptype": "int", "key": true}, "n": {"cpptype": "int"}, "name": {"cpptype": "string"}})";

enum class End
{
    Commit,
    Rollback,
    Scope,
    Throw
};

struct Own : std::runtime_error
{
    Own() : std::runtime_error("own") {}
};

// Creates a record named after its level in a transaction on each of the levels, the next one inside; the first digits
// of nEnds say how they end.
void nest(TestTable& t, int iLevel, int nEnds)
{
    if (iLevel == 3)
        return;
    const auto end = static_cast<End>(nEnds % 4);
    Transaction transaction(t.handle());
    ASSERT_TRUE(transaction.isOpen());
    t.create(R"({"name": ")" + std::to_string(iLevel) + "\"}");
    try
    {
        nest(t, iLevel + 1, nEnds / 4);
    }
    catch (const Own&)
    {
    }
    if (end == End::Throw)
        throw Own();
    if (end != End::Scope)
    {
        EXPECT_EQ(0, end == End::Commit ? transaction.commit() : transaction.rollback());
        EXPECT_FALSE(transaction.isOpen());
    }
}

}  // namespace

TEST(TableTransaction, OfThreeLevelsKeepsWhatAllAroundItKeep)
{
    for (const char* szOutside : {"", "BEGIN", "SAVEPOINT outside"})
        for (int nEnds = 0; nEnds < 4 * 4 * 4; ++nEnds)
        {
            SCOPED_TRACE(szOutside + (" " + std::to_string(nEnds)));
            TestTable t(kMembers);
            t.run(szOutside);
            try
            {
                nest(t, 0, nEnds);
            }
            catch (const Own&)
            {
            }
            Texts expected;
            for (int i = 0, nRest = nEnds; i < 3 && static_cast<End>(nRest % 4) == End::Commit; ++i, nRest /= 4)
                expected.push_back(std::to_string(i));
            EXPECT_EQ(*szOutside == '\0', sqlite3_get_autocommit(t.handle()) != 0) << "the host's own goes on";
            if (*szOutside != '\0')
                t.run("COMMIT");
            EXPECT_EQ(expected, t.rows("SELECT name FROM @ ORDER BY id"));
            EXPECT_TRUE(done(*t, t->recCreate(json("{}"))));
        }
}

TEST(TableTransaction, InsideAVisitorMayEndAnyWayAndTheRestIsVisited)
{
    for (const End end : {End::Commit, End::Rollback, End::Scope})
        for (const bool blOutside : {false, true})
        {
            TestTable t(kMembers);
            EXPECT_EQ(3, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}, {"n": 3}])")));
            const Transaction outside(blOutside ? t.handle() : nullptr);
            const auto visit = [&](Json::Value& jRecord)
            {
                Transaction transaction(t.handle());
                EXPECT_TRUE(transaction.isOpen()) << describe(transaction.status());
                Json::Value jFilter;
                jFilter["id"] = jRecord["id"];
                EXPECT_EQ(1, t->recUpdateByFilter(jFilter, json(R"({"name": "seen"})")));
                if (end != End::Scope)
                {
                    EXPECT_EQ(0, end == End::Commit ? transaction.commit() : transaction.rollback())
                        << describe(transaction.status());
                }
                return true;
            };
            EXPECT_TRUE(done(*t, t->recForEach(json("{}"), visit), 3));
            EXPECT_EQ(end == End::Commit ? 3 : 0, t->recCount(json(R"({"name": "seen"})")));
        }
}

TEST(TableTransaction, AroundAVisitorThatThrowsIsUndone)
{
    TestTable t(kMembers);
    EXPECT_EQ(2, t->recCreateAll(json(R"([{"n": 1}, {"n": 2}])")));
    const auto visitAll = [&]
    {
        const Transaction transaction(t.handle());
        t->recForEach(json("{}"),
                      [&](Json::Value& jRecord)
                      {
                          jRecord["name"] = "seen";
                          EXPECT_EQ(0, t->recSave(jRecord, false));
                          throw Own();
                          return true;
                      });
    };
    EXPECT_THROW(visitAll(), Own);
    EXPECT_EQ(0, busyStatements(t.handle()));
    EXPECT_NE(0, sqlite3_get_autocommit(t.handle()));
    EXPECT_EQ(2, t->recCount(json(R"({"name": null})")));
}

TEST(TableTransaction, WhoseCommitIsLockedGoesOnUntilOneSucceedsOrItIsRolledBack)
{
    for (const bool blCommit : {true, false})
    {
        const TempFile file;
        TestTable t(kMembers, "", std::make_shared<Database>(file.path()), "T");
        const Database reader(file.path());
        Transaction transaction(t.handle(), 10);
        t.create(R"({"n": 1})");
        ASSERT_EQ(SQLITE_OK, reader.run("BEGIN; SELECT * FROM T"));
        for (int i = 2; i < 5; ++i)
        {
            EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Locked));
            EXPECT_TRUE(transaction.isOpen());
            t.create(R"({"n": )" + std::to_string(i) + "}");
        }
        EXPECT_EQ(Texts{"0"}, reader.rows("SELECT count(*) FROM T"));
        reader.run("COMMIT");
        EXPECT_EQ(0, blCommit ? transaction.commit() : transaction.rollback());
        EXPECT_FALSE(transaction.isOpen());
        EXPECT_EQ(Texts{blCommit ? "4" : "0"}, reader.rows("SELECT count(*) FROM T"));
    }
}

TEST(TableTransaction, ThatAForeignKeyStillRefusesStaysOpenAndMayBeMended)
{
    TestTable t(kMembers,
                "PRAGMA foreign_keys = ON; CREATE TABLE @ (id INTEGER PRIMARY KEY, name TEXT,"
                "n INT REFERENCES @ (id) DEFERRABLE INITIALLY DEFERRED)");
    Transaction transaction(t.handle());
    t.create(R"({"id": 1, "n": 48271})");
    EXPECT_TRUE(failed(transaction.status(), transaction.commit(), Code::Constraint));
    EXPECT_TRUE(transaction.isOpen());
    EXPECT_EQ(1, t->recUpdateByFilter(json(R"({"id": 1})"), json(R"({"n": 1})")));
    EXPECT_EQ(0, transaction.commit());
    EXPECT_EQ(Texts{"1|NULL|1"}, t.rows());
}

TEST(TableTransaction, ThatSqliteHasEndedIsNotOpen)
{
    TestTable t(kMembers, "CREATE TABLE @ (id INTEGER PRIMARY KEY, name TEXT UNIQUE ON CONFLICT ROLLBACK, n INT)");
    for (const bool blNested : {false, true})
    {
        Transaction outer(t.handle());
        const std::unique_ptr<Transaction> pInner(blNested ? new Transaction(t.handle()) : nullptr);
        Transaction& transaction = blNested ? *pInner : outer;
        t.create(R"({"name": "a"})");
        EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"name": "a"})")), Code::Duplicate, "name"));
        for (Transaction* pTransaction : {&transaction, &outer})
        {
            EXPECT_FALSE(pTransaction->isOpen());
            EXPECT_TRUE(failed(pTransaction->status(), pTransaction->commit(), Code::Misuse));
            EXPECT_TRUE(failed(pTransaction->status(), pTransaction->rollback(), Code::Misuse));
        }
        EXPECT_EQ(0, t->recCount(Json::Value()));
    }
}

TEST(TableTransaction, InsideOneThatIsEndedFirstIsNotOpen)
{
    for (const char* szOutside : {"", "BEGIN"})
        for (const bool blCommit : {true, false})
        {
            SCOPED_TRACE(szOutside);
            TestTable t(kMembers);
            t.run(szOutside);
            Transaction outer(t.handle());
            {
                Transaction inner(t.handle());
                t.create("{}");
                EXPECT_EQ(0, blCommit ? outer.commit() : outer.rollback());
                EXPECT_TRUE(failed(inner.status(), inner.commit(), Code::Misuse));
                EXPECT_TRUE(failed(inner.status(), inner.rollback(), Code::Misuse));
                EXPECT_FALSE(inner.isOpen());
            }
            if (*szOutside != '\0')
                t.run("COMMIT");
            EXPECT_EQ(blCommit ? 1 : 0, t->recCount(Json::Value()));
        }
}

TEST(TableTransaction, AroundBothClassesKeepsOthersOutAndStoresAllOrNothing)
{
    for (const char* szJournal : {"delete", "wal"})
        for (const End end : {End::Commit, End::Rollback, End::Scope, End::Throw})
        {
            const TempFile file;
            const auto pDatabase = std::make_shared<Database>(file.path());
            ASSERT_EQ(SQLITE_OK, pDatabase->run("PRAGMA journal_mode = " + std::string(szJournal)));
            support::Store before(kMembers, "id INTEGER PRIMARY KEY, n INTEGER, name TEXT", pDatabase);
            TestTable t(kMembers, "", pDatabase, before.name());
            const Database other(file.path());
            const auto work = [&]
            {
                Transaction transaction(t.handle());
                Json::Value jRecord = json(R"({"id": 1, "n": 1, "name": "a"})"), jOut;
                EXPECT_EQ(0, before->recCreate(jRecord, jOut));
                EXPECT_EQ(1, t->recUpdateByFilter(json(R"({"name": "a"})"), json(R"({"n": 2})")));
                EXPECT_EQ(-1, before->recCreate(jRecord, jOut)) << "a failure of one of them ends nothing";
                t.create(R"({"id": 2, "n": 3, "name": "b"})");
                jOut = Json::Value();
                Json::Value jFilter = json(R"({"name": "b"})");
                EXPECT_EQ(1, before->recGetOne(jFilter, jOut));
                EXPECT_EQ(3, jOut["n"].asInt());
                EXPECT_EQ(SQLITE_BUSY, other.run("BEGIN IMMEDIATE"));
                EXPECT_EQ(Texts{"0"}, other.rows("SELECT count(*) FROM " + before.name()));
                if (end == End::Throw)
                    throw Own();
                if (end != End::Scope)
                {
                    EXPECT_EQ(0, end == End::Commit ? transaction.commit() : transaction.rollback());
                }
            };
            if (end == End::Throw)
                EXPECT_THROW(work(), Own);
            else
                work();
            EXPECT_EQ(end == End::Commit ? (Texts{"1|2|a", "2|3|b"}) : Texts(),
                      other.rows("SELECT * FROM " + before.name()));
        }
}
