// SPDX-License-Identifier: MIT
//
// Records that are created, saved, updated and deleted: what is stored, what comes back, what is refused.

#include "table_fixture.h"

using namespace table_tests;

namespace
{

using Texts = std::vector<std::string>;

constexpr const char* kMembers =
    R"({"id": {"cpptype": "int", "key": true}, "n": {"cpptype": "int", "cppDefaultValue": 7},
    "name": {"cpptype": "string", "required": true}, "u": {"cpptype": "string", "unique": true}})";

}  // namespace

TEST(TableCreateRecord, FillsInDefaultsAndReplacesTheOutParameter)
{
    TestTable t(kMembers);
    Json::Value jRecord = json(R"({"name": "a"})");
    Json::Value jOut = json(R"({"stale": 1})");
    EXPECT_TRUE(done(*t, t->recCreate(jRecord, jOut)));
    EXPECT_EQ(json(R"({"id": 1, "n": 7, "name": "a"})"), jOut);
    EXPECT_EQ(json(R"({"name": "a"})"), jRecord);
    jRecord["id"] = 9;
    EXPECT_TRUE(done(*t, t->recCreate(jRecord, jRecord))) << "one object for both";
    EXPECT_EQ(json(R"({"id": 9, "n": 7, "name": "a"})"), jRecord);
    EXPECT_EQ((Texts{"1|7|a|NULL", "9|7|a|NULL"}), t.rows());
    EXPECT_TRUE(done(*t, t->recCreate(json(R"({"id": 0, "n": null, "name": ""})"), jOut)));
    EXPECT_EQ(json(R"({"id": 0, "name": ""})"), jOut);
}

TEST(TableCreateRecord, TakesAnEmptyRecordAsOneOfDefaultsAlone)
{
    for (const char* szMembers : {R"({"a": {"cpptype": "int"}})", R"({"a": {"cpptype": "int", "cppDefaultValue": 1}})"})
    {
        TestTable t(szMembers);
        Json::Value jOut;
        EXPECT_TRUE(done(*t, t->recCreate(json("{}"), jOut)));
        EXPECT_EQ(1, t->recCount(Json::Value()));
        EXPECT_EQ(jOut, t.list()[0]);
        EXPECT_TRUE(done(*t, t->recCreateAll(json("[{}, {}]")), 2));
        jOut = json("{}");
        EXPECT_TRUE(done(*t, t->recSave(jOut, true)));
    }
}

TEST(TableCreateRecord, ReadsBackWhatTriggersAndTheTableMadeOfIt)
{
    struct Made
    {
        const char* szCreate;
        const char* szRecord;
        const char* szBack;
    };
    const Made made[] = {
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, name TEXT, u TEXT)", R"({"n": 1, "name": "x"})",
         R"({"id": 1, "n": 1, "name": "x"})"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, name TEXT, u TEXT); CREATE TABLE @l (x); INSERT INTO @l "
         "VALUES (1), (2);"
         "CREATE TRIGGER @t AFTER INSERT ON @ BEGIN INSERT INTO @l VALUES (new.name); UPDATE @ SET u = 'u' WHERE id = "
         "new.id; END",
         R"({"n": 1, "name": "x"})", R"({"id": 1, "n": 1, "name": "x", "u": "u"})"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, name TEXT, u TEXT); CREATE TABLE @l (x);"
         "CREATE TRIGGER @o AFTER INSERT ON @l BEGIN SELECT 1; END;"
         "CREATE TEMP TRIGGER @t AFTER INSERT ON @ BEGIN UPDATE @ SET u = 'u' WHERE id = new.id; END",
         R"({"n": 1, "name": "x"})", R"({"id": 1, "n": 1, "name": "x", "u": "u"})"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, name TEXT COLLATE NOCASE, u TEXT);"
         "CREATE TRIGGER @t BEFORE INSERT ON @ WHEN new.name <> 'extra' BEGIN INSERT INTO @ (name) VALUES ('extra'); "
         "END",
         R"({"id": 7, "name": "x", "n": 1})", R"({"id": 7, "n": 1, "name": "x"})"},
        {"CREATE TABLE @ (name TEXT PRIMARY KEY, n INT, id INT, u TEXT) WITHOUT ROWID;"
         "CREATE TRIGGER @t AFTER INSERT ON @ BEGIN UPDATE @ SET u = 'u' WHERE name = new.name; END",
         R"({"n": 1, "name": "x"})", R"({"n": 1, "name": "x", "u": "u"})"},
        {"CREATE TABLE @ (u TEXT, id INT, n INT, name TEXT, z DEFAULT 5, PRIMARY KEY (name, n)) WITHOUT ROWID",
         R"({"id": 4, "n": 1, "name": "x"})", R"({"id": 4, "n": 1, "name": "x"})"},
        {"CREATE TABLE @ (id INT, n INT, name TEXT, u TEXT, rowid TEXT DEFAULT 'r', _rowid_ INT, z NOT NULL DEFAULT 1)",
         R"({"n": 1, "name": "x"})", R"({"n": 1, "name": "x"})"},
        {"CREATE TABLE @ (rowid TEXT, _rowid_ TEXT, oid TEXT, id INT PRIMARY KEY, n INT, name TEXT, u TEXT)",
         R"({"id": 3, "n": 1, "name": "x"})", R"({"id": 3, "n": 1, "name": "x"})"},
    };
    for (const Made& one : made)
    {
        SCOPED_TRACE(one.szCreate);
        TestTable t(
            R"({"id": {"cpptype": "int"}, "n": {"cpptype": "int"}, "name": {"cpptype": "string"}, "u": {"cpptype": "string"}})",
            one.szCreate);
        Json::Value jOut;
        EXPECT_TRUE(done(*t, t->recCreate(json(one.szRecord), jOut)));
        EXPECT_EQ(json(one.szBack), jOut);
        Json::Value jInOut = json(one.szRecord);
        t->recDeleteAll();
        EXPECT_TRUE(done(*t, t->recSave(jInOut, true)));
        EXPECT_EQ(json(one.szBack), jInOut);
        t->recDeleteAll();
        EXPECT_TRUE(done(*t, t->recCreateAll(json("[" + std::string(one.szRecord) + "]")), 1));
        EXPECT_EQ(json(one.szBack), t.list(R"({"name": "x"})")[0]);
    }
}

TEST(TableCreateRecord, IsNotDoneWhereTheTableIgnoresOrTakesItAway)
{
    struct Case
    {
        const char* szCreate;
        const char* szRecord;
        Code code;
        bool blOnlyReadBack;
    };
    const Case cases[] = {
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, u TEXT UNIQUE ON CONFLICT IGNORE, n INT)", R"({"u": "zq7x"})",
         Code::Duplicate, false},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY ON CONFLICT IGNORE, u TEXT, n INT)", R"({"id": 1})", Code::Duplicate,
         false},
        {"CREATE TABLE @ (id INT, u TEXT PRIMARY KEY ON CONFLICT IGNORE, n INT) WITHOUT ROWID", R"({"u": "zq7x"})",
         Code::Duplicate, false},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, u TEXT NOT NULL ON CONFLICT IGNORE, n INT)", R"({"n": 5})",
         Code::Constraint, false},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, u TEXT, n INT); CREATE TRIGGER @t BEFORE INSERT ON @ WHEN new.n = 5 "
         "BEGIN SELECT RAISE(IGNORE); END",
         R"({"n": 5, "u": "zq7x"})", Code::Constraint, false},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, u TEXT, n INT); CREATE TRIGGER @t AFTER INSERT ON @ WHEN new.n = 5 "
         "BEGIN DELETE FROM @ WHERE id = new.id; END",
         R"({"n": 5, "u": "zq7x"})", Code::Constraint, true},
        {"CREATE TABLE @ (id INT, u TEXT PRIMARY KEY, n INT) WITHOUT ROWID; CREATE TRIGGER @t AFTER INSERT ON @ WHEN "
         "new.n = 5 BEGIN DELETE FROM @ WHERE u = new.u; END",
         R"({"n": 5, "u": "other"})", Code::Constraint, true},
    };
    for (const Case& one : cases)
        for (const char* szOuter : {"", "BEGIN", "SAVEPOINT s"})
        {
            SCOPED_TRACE(std::string(one.szCreate) + " / " + szOuter);
            TestTable t(R"({"id": {"cpptype": "int"}, "n": {"cpptype": "int"}, "u": {"cpptype": "string"}})",
                        one.szCreate);
            t.create(R"({"id": 1, "u": "zq7x", "n": 1})");
            if (*szOuter != '\0')
                t.run(szOuter);
            const Json::Value jRecord = json(one.szRecord);
            const Texts rows = t.rows();
            Json::Value jOut("before");
            Json::Value jInOut = jRecord;
            const auto refused = [&](long long nResult)
            {
                EXPECT_EQ(-1, nResult);
                EXPECT_EQ(one.code, t->status().code) << describe(t->status());
                EXPECT_EQ(std::string::npos, t->status().text.find(kSecret));
                EXPECT_EQ(rows, t.rows());
            };
            refused(t->recCreate(jRecord, jOut));
            refused(t->recSave(jInOut, true));
            EXPECT_EQ(Json::Value("before"), jOut);
            EXPECT_EQ(jRecord, jInOut);
            if (!one.blOnlyReadBack)
            {
                refused(t->recCreate(jRecord));
                Json::Value jAll = json(R"([{"id": 50, "u": "new"}])");
                jAll.append(jRecord);
                refused(t->recCreateAll(jAll));
                EXPECT_EQ(1, t->status().index);
            }
            EXPECT_EQ(*szOuter == '\0', sqlite3_get_autocommit(t.handle()) != 0);
        }
}

TEST(TableCreateRecord, NamesTheConstraintAndTheMemberThatRefused)
{
    struct Case
    {
        const char* szCreate;
        const char* szRecord;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT)", R"({"id": 1})", Code::Duplicate, "id"},
        {"CREATE TABLE @ (id INT PRIMARY KEY, n INT, u TEXT)", R"({"id": 1})", Code::Duplicate, "id"},
        {"CREATE TABLE @ (id INT PRIMARY KEY, n INT, u TEXT) WITHOUT ROWID", R"({"id": 1})", Code::Duplicate, "id"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT UNIQUE)", R"({"u": "zq7x"})", Code::Duplicate, "u"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT, UNIQUE (u, n))", R"({"u": "zq7x", "n": 48271})",
         Code::Duplicate, "u"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT NOT NULL, u TEXT)", R"({"id": 2})", Code::Constraint, "n"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT, un AS (CASE id WHEN 2 THEN NULL ELSE 1 END) NOT NULL)",
         R"({"id": 2})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TABLE @o (x INT) STRICT;"
         "CREATE TRIGGER @t AFTER INSERT ON @ WHEN new.n = 5 BEGIN INSERT INTO @o VALUES ('zq7x'); END",
         R"({"n": 5})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT CHECK (n <> 5), u TEXT)", R"({"n": 5})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT REFERENCES @p (u)); CREATE TABLE @p (u TEXT UNIQUE); "
         "INSERT INTO @p VALUES ('zq7x')",
         R"({"u": "zq7x-none"})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TRIGGER @t BEFORE INSERT ON @ WHEN new.id = 2 "
         "BEGIN SELECT RAISE(ABORT, 'no'); END",
         R"({"id": 2})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TRIGGER @t AFTER INSERT ON @ WHEN new.id = 2 "
         "BEGIN SELECT RAISE(FAIL, 'no'); END",
         R"({"id": 2})", Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TABLE @o (x UNIQUE); INSERT INTO @o VALUES "
         "(5);"
         "CREATE TRIGGER @t AFTER INSERT ON @ WHEN new.n = 5 BEGIN INSERT INTO @o VALUES (new.n); END",
         R"({"n": 5})", Code::Duplicate, ""},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(one.szCreate);
        TestTable t(R"({"id": {"cpptype": "int"}, "n": {"cpptype": "int"}, "u": {"cpptype": "string"}})", one.szCreate);
        t.run("INSERT INTO @ VALUES (1, 48271, 'zq7x'); PRAGMA foreign_keys = ON");
        Json::Value jInOut = json(one.szRecord);
        Json::Value jOut("before");
        EXPECT_TRUE(failed(*t, t->recCreate(jInOut), one.code, one.szMember));
        EXPECT_TRUE(failed(*t, t->recCreate(jInOut, jOut), one.code, one.szMember));
        EXPECT_TRUE(failed(*t, t->recSave(jInOut, true), one.code, one.szMember));
        EXPECT_EQ(SQLITE_CONSTRAINT, t->status().sqlite & 0xff);
        EXPECT_NE(SQLITE_CONSTRAINT, t->status().sqlite) << "the extended code";
        Json::Value jAll = json(R"([{"id": 100, "n": 100}])");
        jAll.append(jInOut);
        EXPECT_TRUE(failed(*t, t->recCreateAll(jAll), one.code, one.szMember));
        EXPECT_EQ(1, t->status().index);
        EXPECT_EQ(Json::Value("before"), jOut);
        EXPECT_EQ(Texts{"1|48271|zq7x"}, t.rows("SELECT id, n, u FROM @"));
        EXPECT_TRUE(done(*t, t->recCount(Json::Value()), 1)) << "and the message does not stick";
    }
}

TEST(TableSave, WithoutCreateSetsTheGivenMembersOfARecordThatExistsAndInsertsAnother)
{
    struct Case
    {
        const char* szRecord;
        const char* szBack;
        Texts rows;
    };
    const Case cases[] = {
        {R"({"id": 1, "n": 5})", R"({"id": 1, "n": 5, "name": "a", "u": "x"})", {"1|5|a|x", "2|2|b|y"}},
        {R"({"id": 1})", R"({"id": 1, "n": 1, "name": "a", "u": "x"})", {"1|1|a|x", "2|2|b|y"}},
        {R"({"id": 2, "u": null})", R"({"id": 2, "n": 2, "name": "b"})", {"1|1|a|x", "2|2|b|NULL"}},
        {R"({"id": 2, "u": "y"})", R"({"id": 2, "n": 2, "name": "b", "u": "y"})", {"1|1|a|x", "2|2|b|y"}},
        {R"({"id": 3, "name": "c"})", R"({"id": 3, "n": 7, "name": "c"})", {"1|1|a|x", "2|2|b|y", "3|7|c|NULL"}},
        {R"({"name": "c", "n": 1})", R"({"id": 3, "n": 1, "name": "c"})", {"1|1|a|x", "2|2|b|y", "3|1|c|NULL"}},
        {R"({"id": null, "name": "c", "n": 1})",
         R"({"id": 3, "n": 1, "name": "c"})",
         {"1|1|a|x", "2|2|b|y", "3|1|c|NULL"}},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(one.szRecord);
        TestTable t(kMembers);
        EXPECT_EQ(2, t->recCreateAll(json(
                         R"([{"id": 1, "n": 1, "name": "a", "u": "x"}, {"id": 2, "n": 2, "name": "b", "u": "y"}])")));
        Json::Value jInOut = json(one.szRecord);
        EXPECT_TRUE(done(*t, t->recSave(jInOut, false)));
        EXPECT_EQ(json(one.szBack), jInOut);
        EXPECT_EQ(one.rows, t.rows());
    }
}

TEST(TableSave, OfARecordThatExistsIsNotDoneWhereTheTableIgnoresIt)
{
    struct Case
    {
        const char* szCreate;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT UNIQUE ON CONFLICT IGNORE)", Code::Duplicate, "u"},
        {"CREATE TABLE @ (id INT PRIMARY KEY, n INT, u TEXT UNIQUE ON CONFLICT IGNORE) WITHOUT ROWID", Code::Duplicate,
         "u"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT NOT NULL ON CONFLICT IGNORE, u TEXT)", Code::Constraint, "n"},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TRIGGER @t BEFORE UPDATE ON @ BEGIN SELECT "
         "RAISE(IGNORE); END",
         Code::Constraint, ""},
        {"CREATE TABLE @ (id INTEGER PRIMARY KEY, n INT, u TEXT); CREATE TRIGGER @t AFTER UPDATE ON @ BEGIN DELETE "
         "FROM @ WHERE id = new.id; END",
         Code::Constraint, ""},
    };
    for (const Case& one : cases)
        for (const char* szOuter : {"", "BEGIN"})
        {
            SCOPED_TRACE(one.szCreate);
            TestTable t(R"({"id": {"cpptype": "int"}, "n": {"cpptype": "int"}, "u": {"cpptype": "string"}})",
                        one.szCreate);
            EXPECT_EQ(2, t->recCreateAll(json(R"([{"id": 1, "n": 1, "u": "zq7x"}, {"id": 2, "n": 2, "u": "y"}])")));
            t.run(szOuter);
            const Json::Value jRecord = json(R"({"id": 2, "n": null, "u": "zq7x"})");
            Json::Value jInOut = jRecord;
            EXPECT_TRUE(failed(*t, t->recSave(jInOut, false), one.code, one.szMember));
            EXPECT_EQ(jRecord, jInOut);
            EXPECT_EQ((Texts{"1|1|zq7x", "2|2|y"}), t.rows());
            EXPECT_EQ(*szOuter == '\0', sqlite3_get_autocommit(t.handle()) != 0);
        }
}

TEST(TableSave, KnowsTheTablesOwnKey)
{
    const char* const szMembers = R"({"a": {"cpptype": "int"}, "b": {"cpptype": "string"}, "n": {"cpptype": "int"}})";
    for (const char* szCreate : {"CREATE TABLE @ (n INT NOT NULL, b TEXT, a INT, PRIMARY KEY (b, a))",
                                 "CREATE TABLE @ (n INT NOT NULL, b TEXT, a INT, PRIMARY KEY (b, a)) WITHOUT ROWID"})
    {
        SCOPED_TRACE(szCreate);
        TestTable t(szMembers, szCreate);
        Json::Value jRecord = json(R"({"a": 1, "b": "x", "n": 5})");
        EXPECT_TRUE(done(*t, t->recSave(jRecord, false)));
        jRecord = json(R"({"a": 1, "b": "x"})");
        EXPECT_TRUE(done(*t, t->recSave(jRecord, false))) << "never fails for a required member that is not given";
        EXPECT_EQ(json(R"({"a": 1, "b": "x", "n": 5})"), jRecord);
        jRecord = json(R"({"a": 2, "b": "zq7x"})");
        EXPECT_TRUE(failed(*t, t->recSave(jRecord, false), Code::Constraint, "n")) << "this one is new";
        for (const char* szNoKey :
             {R"({"a": 1, "n": 2})", R"({"b": "zq7x", "n": 2})", R"({"a": null, "b": "x", "n": 2})", "{}"})
        {
            jRecord = json(szNoKey);
            EXPECT_EQ(-1, t->recSave(jRecord, false)) << szNoKey;
            EXPECT_EQ(Code::BadRequest, t->status().code) << describe(t->status());
            EXPECT_EQ(json(szNoKey), jRecord);
        }
        EXPECT_EQ(1, t->recCount(Json::Value()));
    }
    const std::pair<const char*, const char*> others[] = {
        {"CREATE TABLE @ (a INT UNIQUE, b TEXT, n INT)", ""},
        {"CREATE TABLE @ (id TEXT PRIMARY KEY, a INT, b TEXT, n INT)", ""},
        {"CREATE TABLE @ (a INT, b TEXT UNIQUE, n INTEGER PRIMARY KEY DESC, z UNIQUE)", "n"},  // is not the rowid
        {"CREATE TABLE @ (a INT, b TEXT, n INTEGER PRIMARY KEY) WITHOUT ROWID", "n"},
    };
    for (const auto& [szCreate, szMember] : others)
    {
        SCOPED_TRACE(szCreate);
        TestTable t(szMembers, szCreate);
        Json::Value jRecord = json(R"({"a": 1})");
        EXPECT_TRUE(failed(*t, t->recSave(jRecord, false), Code::BadRequest, szMember));
    }
    TestTable undeclared(szMembers, "CREATE TABLE @ (id INTEGER PRIMARY KEY, a INT, b TEXT, n INT)");
    Json::Value jRecord = json(R"({"a": 1})");
    EXPECT_TRUE(done(*undeclared, undeclared->recSave(jRecord, false))) << "the key is the rowid";
    EXPECT_EQ(Texts{"1|1|NULL|NULL"}, undeclared.rows());
}

TEST(TableSave, KeepsUniqueMembersOfOthers)
{
    TestTable t(kMembers);
    EXPECT_EQ(2, t->recCreateAll(json(R"([{"name": "a", "u": "zq7x"}, {"name": "b", "u": "y"}])")));
    for (const char* szRecord :
         {R"({"id": 2, "u": "zq7x"})", R"({"id": 3, "name": "c", "u": "zq7x"})", R"({"name": "c", "u": "zq7x"})"})
    {
        Json::Value jRecord = json(szRecord);
        EXPECT_TRUE(failed(*t, t->recSave(jRecord, false), Code::Duplicate, "u"));
        EXPECT_EQ(json(szRecord), jRecord);
    }
    Json::Value jRecord = json(R"({"id": 2, "name": null})");
    EXPECT_TRUE(failed(*t, t->recSave(jRecord, false), Code::Constraint, "name"));
    EXPECT_EQ((Texts{"1|7|a|zq7x", "2|7|b|y"}), t.rows());
}

TEST(TableCreateRecord, NeedsARequiredMemberUnlessADefaultOrTheColumnGivesIt)
{
    struct Case
    {
        const char* szColumn;
        const char* szEntry;  // of the definition
        bool blCreate;
        bool blSave;  // without the definition's defaults
    };
    const Case cases[] = {
        {"r INT", "", false, false},
        {"r INT DEFAULT NULL", "", false, false},
        {"r INT NOT NULL DEFAULT 5", "", true, true},
        {"r INT AS (5)", "", true, true},
        {"r INT AS (5) STORED", "", true, true},
        {"r INT", R"(, "cppDefaultValue": 5)", true, false},
        {"r INT DEFAULT 5", R"(, "cppDefaultValue": null)", false, true},
    };
    for (const Case& one : cases)
        for (const char* szFlag : {"required", "key"})
        {
            SCOPED_TRACE(std::string(one.szColumn) + one.szEntry + szFlag);
            TestTable t(R"({"a": {"cpptype": "int"}, "r": {"cpptype": "int", ")" + std::string(szFlag) + "\": true" +
                            one.szEntry + "}}",
                        std::string("CREATE TABLE @ (a INT, ") + one.szColumn + ")");
            const auto expect = [&](long long nResult, bool blDone)
            { EXPECT_TRUE(blDone ? done(*t, nResult) : failed(*t, nResult, Code::Constraint, "r")); };
            Json::Value jRecord = json(R"({"a": 1})"), jOut;
            expect(t->recCreate(jRecord), one.blCreate);
            expect(t->recCreate(jRecord, jOut), one.blCreate);
            expect(t->recSave(jRecord, true), one.blSave);
            for (const std::string& strRow : t.rows())
                EXPECT_EQ("1|5", strRow);
            jRecord = json(R"({"a": 1, "r": null})");
            expect(t->recCreate(jRecord), false);
        }
}

TEST(TableCreateAll, StoresAllOrNoneAndNamesTheRecordThatIsToBlame)
{
    struct Case
    {
        const char* szRecords;
        Code code;
        const char* szMember;
        long long nIndex;
    };
    const Case cases[] = {
        {"5", Code::BadRequest, "", -1},
        {"{}", Code::BadRequest, "", -1},
        {R"("zq7x")", Code::BadRequest, "", -1},
        {R"([{"name": "a"}, 48271])", Code::BadRequest, "", 1},
        {R"([{"name": "a"}, null])", Code::BadRequest, "", 1},
        {R"([{"name": "a"}, {"name": "b"}, {"name": 48271}])", Code::BadType, "name", 2},
        {R"([{"name": "a"}, {"nome": "zq7x"}, {"name": "b"}])", Code::UnknownMember, "nome", 1},
        {R"([{"name": "a"}, {"n": 1}, {"name": "b"}])", Code::Constraint, "name", 1},
        {R"([{"name": "a"}, {"name": "b", "n": 482710000000}])", Code::OutOfRange, "n", 1},
        {R"([{"name": "a", "u": "zq7x"}, {"name": "b"}, {"name": "c", "u": "zq7x"}])", Code::Duplicate, "u", 2},
        {R"([{"name": "a", "id": 1}, {"name": "zq7x", "id": 1}])", Code::Duplicate, "id", 1},
        // All records are checked before the first is stored: the type comes before what is required, and that before
        // the duplicate.
        {R"([{"n": 1}, {"name": 48271}])", Code::BadType, "name", 1},
        {R"([{"name": "a", "id": 1}, {"name": "b", "id": 1}, {"n": 1}])", Code::Constraint, "name", 2},
        {R"([{"name": "a", "id": 1}, {"name": "b", "id": 1}, {"name": 48271}])", Code::BadType, "name", 2},
    };
    for (const Case& one : cases)
        for (const char* szOuter : {"", "BEGIN"})
        {
            SCOPED_TRACE(one.szRecords);
            TestTable t(kMembers);
            t.create(R"({"id": 40, "name": "before"})");
            if (*szOuter != '\0')
                t.run(szOuter);
            EXPECT_TRUE(failed(*t, t->recCreateAll(json(one.szRecords)), one.code, one.szMember));
            EXPECT_EQ(one.nIndex, t->status().index);
            EXPECT_EQ(Texts{"40|7|before|NULL"}, t.rows());
            EXPECT_EQ(*szOuter == '\0', sqlite3_get_autocommit(t.handle()) != 0);
        }
    TestTable t(kMembers);
    EXPECT_TRUE(done(*t, t->recCreateAll(Json::Value()), 0));
    EXPECT_TRUE(done(*t, t->recCreateAll(json("[]")), 0));
    EXPECT_TRUE(
        done(*t,
             t->recCreateAll(
                 json(R"([{"name": "a"}, {"n": 1, "name": "b"}, {"u": "x", "name": "c"}, {"n": null, "name": "d"}])")),
             4));
    EXPECT_EQ((Texts{"1|7|a|NULL", "2|1|b|NULL", "3|7|c|x", "4|NULL|d|NULL"}), t.rows());
}

TEST(TableUpdate, SetsGivenMembersAndCountsTheRows)
{
    struct Case
    {
        const char* szFilter;
        const char* szValues;
        bool blAllowAll;
        long long nResult;
        Code code;
        const char* szMember;
    };
    const Case cases[] = {
        {R"({"id": 1})", R"({"n": 5, "name": "it's"})", false, 1, Code::Ok, ""},
        {R"({"id": [1, 2]})", R"({"n": null})", false, 2, Code::Ok, ""},
        {R"({"id": 99})", R"({"n": 5})", false, 0, Code::Ok, ""},
        {R"({"id": {"$gt": 0}})", R"({"n": 5})", false, 3, Code::Ok, ""},
        {"{}", R"({"n": 5})", true, 3, Code::Ok, ""},
        {"null", R"({"n": 5})", true, 3, Code::Ok, ""},
        {"{}", R"({"n": 5})", false, -1, Code::BadRequest, ""},
        {"null", R"({"n": 5})", false, -1, Code::BadRequest, ""},
        {R"({"$and": [{}]})", R"({"n": 5})", false, -1, Code::BadRequest, ""},
        {R"({"$or": [{"$and": [{}, {}]}, {}]})", R"({"n": 5})", false, -1, Code::BadRequest, ""},
        {R"({"$not": {}})", R"({"n": 5})", false, -1, Code::BadRequest, ""},
        {R"({"id": []})", R"({"n": 5})", false, 0, Code::Ok, ""},
        {R"({"id": 1})", "{}", false, -1, Code::BadRequest, ""},
        {R"({"id": 1})", "null", false, -1, Code::BadRequest, ""},
        {R"({"id": 1})", R"(["zq7x"])", false, -1, Code::BadRequest, ""},
        {R"({"id": 1})", "48271", false, -1, Code::BadRequest, ""},
        {R"({"id": 1})", R"({"nn": "zq7x"})", false, -1, Code::UnknownMember, "nn"},
        {R"({"id": 1})", R"({"n": "zq7x"})", false, -1, Code::BadType, "n"},
        {R"({"id": 1})", R"({"name": null})", false, -1, Code::Constraint, "name"},
        {R"({"id": 99})", R"({"name": null})", false, -1, Code::Constraint, "name"},
        {R"({"id": [2, 3]})", R"({"u": "zq7x"})", false, -1, Code::Duplicate, "u"},
        {R"({"id": 2})", R"({"id": 1})", false, -1, Code::Duplicate, "id"},
        {R"({"id": 2})", R"({"id": null})", false, -1, Code::Constraint, "id"},
        {R"({"idd": 2})", R"({"n": 1})", false, -1, Code::UnknownMember, "idd"},
        {R"({"id": "zq7x"})", R"({"n": 1})", false, -1, Code::BadType, "id"},
    };
    for (const Case& one : cases)
    {
        SCOPED_TRACE(std::string(one.szFilter) + " " + one.szValues);
        TestTable t(kMembers);
        EXPECT_EQ(3, t->recCreateAll(json(R"([{"name": "a", "u": "x"}, {"name": "b"}, {"name": "c"}])")));
        const Texts rows = t.rows();
        const long long nResult = t->recUpdateByFilter(json(one.szFilter), json(one.szValues), one.blAllowAll);
        if (one.code == Code::Ok)
        {
            EXPECT_TRUE(done(*t, nResult, one.nResult));
            EXPECT_EQ(one.nResult > 0, rows != t.rows());
        }
        else
        {
            EXPECT_TRUE(failed(*t, nResult, one.code, one.szMember));
            EXPECT_EQ(rows, t.rows());
        }
    }
}

TEST(TableDelete, TakesTheRowsThatAreMeantAndNoOthers)
{
    TestTable t(R"({"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}})");
    const auto refill = [&]
    {
        t->recDeleteAll();
        const std::string strNul("a\0b", 3);
        Json::Value jAll =
            json(R"([{"id": 1, "name": ""}, {"id": 2}, {"id": 3, "name": "a"}, {"id": 4, "name": "it's"}])");
        Json::Value jRecord;
        jRecord["id"] = 5;
        jRecord["name"] = strNul;
        jAll.append(jRecord);
        EXPECT_EQ(5, t->recCreateAll(jAll));
    };
    const auto left = [&] { return t.rows("SELECT id FROM @ ORDER BY id"); };
    refill();
    EXPECT_TRUE(done(*t, t->recDeleteByName("", "name"), 1));
    EXPECT_EQ((Texts{"2", "3", "4", "5"}), left());
    EXPECT_TRUE(done(*t, t->recDeleteByArray({}, "name"), 0));
    EXPECT_TRUE(done(*t, t->recDeleteByArray({"a", "it's", "none", "a"}, "name"), 2));
    EXPECT_EQ((Texts{"2", "5"}), left());
    EXPECT_TRUE(done(*t, t->recDeleteByName(std::string("a\0b", 3), "name"), 1));
    EXPECT_TRUE(done(*t, t->recDelete(json(R"({"name": null})")), 1));
    refill();
    for (const char* szEmpty : {"{}", "null", R"({"$and": [{}, {"$nor": [{}]}]})"})
        EXPECT_TRUE(failed(*t, t->recDelete(json(szEmpty)), Code::BadRequest));
    EXPECT_TRUE(done(*t, t->recDelete(json(R"({"$or": [{"id": 1}, {"id": 2}]})")), 2));
    EXPECT_TRUE(failed(*t, t->recDeleteByName("zq7x", "nome"), Code::UnknownMember, "nome"));
    EXPECT_TRUE(failed(*t, t->recDeleteByArray({"zq7x"}, "nome"), Code::UnknownMember, "nome"));
    EXPECT_TRUE(failed(*t, t->recDeleteByName("zq7x", nullptr), t->status().code, t->status().member));
    EXPECT_EQ((Texts{"3", "4", "5"}), left());
    EXPECT_TRUE(done(*t, t->recDelete(Json::Value(), true), 3));
    refill();
    EXPECT_TRUE(done(*t, t->recDeleteAll(), 5));
    EXPECT_TRUE(done(*t, t->recDeleteAll(), 0));
}

TEST(TableDelete, ByTextsReadsThemByTheMembersType)
{
    struct Case
    {
        const char* szType;
        const char* szStored;
        Texts same;  // texts that mean what is stored
        Texts bad;
        Texts beyond;
    };
    const Case cases[] = {
        {"int", "-5", {"-5"}, {"", "zq7x", "05", "5.0", " 5", "-", "4827100000000"}, {}},
        {"unsigned long", "5", {"5"}, {"-5"}, {}},
        {"bool", "true", {"1"}, {"true", "2", ""}, {}},
        {"double", "-0.5", {"-0.5", "-5e-1", "-0.50"}, {"", ".5", "zq7x", "1e999"}, {}},
        {"float", "0.5", {"0.5"}, {"NaN"}, {"4.8271e300"}},
        {"Json::objectValue", R"({"a":1})", {R"({"a":1})", R"( {"a" : 1})"}, {"[]", "{", "null", "zq7x"}, {}},
        {"Json::arrayValue", "[1]", {"[1]"}, {"{}", "1"}, {}},
        {"Json::Value", R"("x")", {R"("x")"}, {"x", "null", ""}, {}},
    };
    for (const Case& one : cases)
    {
        TestTable t(R"({"m": {"cpptype": ")" + std::string(one.szType) + "\"}}");
        const auto fill = [&] { t.create(R"({"m": )" + std::string(one.szStored) + "}"); };
        const auto refused = [&](const std::string& strText, Code code)
        {
            SCOPED_TRACE(std::string(one.szType) + " " + strText);
            EXPECT_TRUE(failed(*t, t->recDeleteByName(strText, "m"), code, "m"));
            EXPECT_TRUE(failed(*t, t->recDeleteByArray({one.same.front(), strText}, "m"), code, "m"));
            EXPECT_EQ(1, t->recCount(Json::Value()));
        };
        for (const std::string& strText : one.same)
        {
            SCOPED_TRACE(std::string(one.szType) + " " + strText);
            fill();
            EXPECT_TRUE(done(*t, t->recDeleteByName(strText, "m"), 1));
            fill();
            fill();
            EXPECT_TRUE(done(*t, t->recDeleteByArray({strText, strText, one.same.front()}, "m"), 2));
        }
        fill();
        for (const std::string& strText : one.bad)
            refused(strText, Code::BadType);
        for (const std::string& strText : one.beyond)
            refused(strText, Code::OutOfRange);
    }
}

TEST(TableUpdate, AndDeletesCountFewerRowsWhereATriggerIgnoresSome)
{
    TestTable t(kMembers);
    EXPECT_EQ(3, t->recCreateAll(json(R"([{"name": "a"}, {"name": "b"}, {"name": "c"}])")));
    t.run(
        "CREATE TRIGGER @u BEFORE UPDATE ON @ WHEN old.id = 2 BEGIN SELECT RAISE(IGNORE); END;"
        "CREATE TRIGGER @d BEFORE DELETE ON @ WHEN old.id = 2 BEGIN SELECT RAISE(IGNORE); END;"
        "CREATE TABLE @l (x); CREATE TRIGGER @a AFTER DELETE ON @ BEGIN INSERT INTO @l VALUES (1), (2); END");
    EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"id": {"$gte": 1}})"), json(R"({"n": 1})")), 2));
    EXPECT_TRUE(done(*t, t->recDeleteAll(), 2));
    EXPECT_EQ(Texts{"2|7|b|NULL"}, t.rows());
    EXPECT_EQ(0, t->recDelete(json(R"({"id": 77})"))) << "not the count of the statement before";
}

TEST(TableRecords, ThatAreNoObjectsOrHoldUndeclaredMembersAreRefused)
{
    TestTable t(kMembers);
    for (const char* szRecord : {"null", "[]", R"([{"name": "a"}])", "48271", R"("zq7x")", "true", "1.5"})
    {
        SCOPED_TRACE(szRecord);
        Json::Value jInOut = json(szRecord);
        Json::Value jOut("before");
        EXPECT_TRUE(failed(*t, t->recCreate(jInOut), Code::BadRequest));
        EXPECT_TRUE(failed(*t, t->recCreate(jInOut, jOut), Code::BadRequest));
        EXPECT_TRUE(failed(*t, t->recSave(jInOut, true), Code::BadRequest));
        EXPECT_TRUE(failed(*t, t->recSave(jInOut, false), Code::BadRequest));
        EXPECT_TRUE(failed(*t, t->checkJsonType(jInOut), Code::BadRequest));
        EXPECT_EQ(json(szRecord), jInOut);
        EXPECT_EQ(Json::Value("before"), jOut);
    }
    for (const char* szName : {"", "nome", "Name", "id.x", "$id", "limit", "vornSqlWhereFilter"})
    {
        SCOPED_TRACE(szName);
        Json::Value jRecord = json(R"({"name": "zq7x"})");
        jRecord[szName] = kSecret;
        Json::Value jOut("before");
        EXPECT_TRUE(failed(*t, t->recCreate(jRecord, jOut), Code::UnknownMember, szName));
        EXPECT_TRUE(failed(*t, t->recSave(jRecord, true), Code::UnknownMember, szName));
        EXPECT_TRUE(failed(*t, t->recSave(jRecord, false), Code::UnknownMember, szName));
        EXPECT_TRUE(failed(*t, t->checkJsonType(jRecord), Code::UnknownMember, szName));
        EXPECT_TRUE(failed(*t, t->recUpdateByFilter(json(R"({"id": 1})"), jRecord), Code::UnknownMember, szName));
    }
    EXPECT_EQ(Texts(), t.rows());
}

TEST(TableDefaults, AreFilledInOrAllMembersAreRequired)
{
    TestTable t(kMembers);
    Json::Value jRecord = json(R"({"id": 1})");
    EXPECT_TRUE(done(*t, t->fillDefaultValue(jRecord, false)));
    EXPECT_EQ(json(R"({"id": 1, "n": 7})"), jRecord);
    EXPECT_EQ(-1, t->fillDefaultValue(jRecord, true));
    EXPECT_EQ(json(R"({"id": 1, "n": 7})"), jRecord);
    EXPECT_FALSE(t->status().member.empty());
    jRecord = json(R"({"id": 1, "n": null, "name": "a", "u": "x"})");
    EXPECT_TRUE(done(*t, t->fillDefaultValue(jRecord, true)));
    EXPECT_TRUE(done(*t, t->fillDefaultValue(jRecord, false)));
    EXPECT_EQ(json(R"({"id": 1, "n": null, "name": "a", "u": "x"})"), jRecord);
}

TEST(TableErrMsg, IsTheStatusAndNotSticky)
{
    TestTable t(kMembers);
    EXPECT_EQ("", t->getErrMsg());
    EXPECT_EQ(-1, t->recCreate(json(R"({"x": 1})")));
    EXPECT_EQ(t->status().text, t->getErrMsg());
    t->setErrMsg("mine");
    EXPECT_EQ("mine", t->getErrMsg());
    EXPECT_EQ(0, t->recCount(Json::Value()));
    EXPECT_EQ("", t->getErrMsg());
}
