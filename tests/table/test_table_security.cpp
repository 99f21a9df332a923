// SPDX-License-Identifier: MIT
//
// One test for each numbered sentence of docs/table_security.md. What must not come from outside is proved by SQL that
// works, what may by the same kind of text coming to nothing.

#include <fstream>
#include <set>

#include "condition_cases.h"
#include "filter_case.h"
#include "table_fixture.h"

using namespace table_tests;

namespace
{

int s_nLogLines = 0;

}  // namespace

// In the place of the C library's.
extern "C"
{
    __attribute__((visibility("default"))) void syslog(int, const char*, ...)
    {
        ++s_nLogLines;
    }
    __attribute__((visibility("default"))) void __syslog_chk(int, int, const char*, ...)
    {
        ++s_nLogLines;
    }
}

namespace
{

using Texts = std::vector<std::string>;
using Touched = std::set<std::string>;

// Texts that would do harm if one of them ever left its place.
const Texts kHostile = {"' OR '1'='1",
                        "'); DELETE FROM @; --",
                        "x' OR 1=1 --",
                        "\"; --",
                        "\" OR 1=1 --",
                        "1 OR 1=1",
                        "1; DROP TABLE other",
                        "%",
                        "%s%n",
                        ":a",
                        "?1",
                        "(SELECT secret FROM other)",
                        std::string("nul\0' OR 1", 10)};

// Two records, ids 1 and 2, and a table of somebody else's.
class TableSecurity : public testing::Test
{
protected:
    TableSecurity()
    {
        t.run("CREATE TABLE other (secret TEXT); INSERT INTO other VALUES ('zq7x')");
        t.create(R"({"id": 1, "name": "Ann", "info": {"a": 1}, "note": "", "flag": true, "list": [1]})");
        t.create(R"({"id": 2, "name": "Bob", "info": {"a": 2}, "note": ""})");
    }

    long long count(const Json::Value& jFilter)
    {
        const long long nCount = t->recCount(jFilter);
        EXPECT_LE(0, nCount) << jFilter << t->status().text;
        return nCount;
    }

    // Nothing that the hostile texts ask for has happened.
    void expectUnharmed(long long nRecords = 2)
    {
        EXPECT_EQ(nRecords, count(Json::Value()));
        EXPECT_EQ(Texts{"zq7x"}, t.rows("SELECT secret FROM other"));
    }

    std::string hostile(const std::string& strText) const { return replaced(strText, "@", t.name()); }

    TestTable t{R"({"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string", "unique": true},
                    "info": {"cpptype": "Json::Value"}, "note": {"cpptype": "string"}, "flag": {"cpptype": "bool"},
                    "list": {"cpptype": "Json::arrayValue"}})"};
};

Json::Value with(const std::string& strMember, const Json::Value& jValue)
{
    Json::Value jObject(Json::objectValue);
    jObject[strMember] = jValue;
    return jObject;
}

Json::Value wrapped(const char* szName, int iLevels, Json::Value jInner)
{
    for (int i = 0; i < iLevels; ++i)
    {
        Json::Value jOuter;
        jOuter[szName].swap(jInner);  // a copy for each level would take long
        jInner.swap(jOuter);
    }
    return jInner;
}

// Notes what SQLite is asked to do, and allows it.
int note(void* pTouched, int iAction, const char* szFirst, const char* szSecond, const char*, const char*)
{
    const auto add = [pTouched](const std::string& strKind, const char* szName)
    { static_cast<Touched*>(pTouched)->insert(strKind + (szName != nullptr ? szName : "")); };
    switch (iAction)
    {
        case SQLITE_SELECT:
            break;
        case SQLITE_READ:
            add("read ", szFirst);
            break;
        case SQLITE_UPDATE:
            add("update ", szFirst);
            break;
        case SQLITE_DELETE:
            add("delete ", szFirst);
            break;
        case SQLITE_FUNCTION:
            add("function ", szSecond);
            break;
        case SQLITE_PRAGMA:
            add(szSecond == nullptr ? "ask pragma " : "set pragma ", szFirst);
            break;
        default:
            add("action " + std::to_string(iAction), "");
    }
    return SQLITE_OK;
}

bool hasRawSql(const Json::Value& jFilter)
{
    bool blHas = jFilter.isObject() && jFilter.isMember("vornSqlWhereFilter");
    if (jFilter.isObject() || jFilter.isArray())
        for (const Json::Value& jInner : jFilter)
            blHas = blHas || hasRawSql(jInner);
    return blHas;
}

// Notes what filters touch, from counting to deleting. The table and what SQLite itself must know first are known.
class Touches
{
public:
    Touches(vorn::Table& table, sqlite3* pDb) : m_table(table), m_pDb(pDb)
    {
        sqlite3_set_authorizer(pDb, note, &m_touched);
        sqlite3_exec(pDb, "SELECT * FROM json_each('[]')", nullptr, nullptr, nullptr);
        EXPECT_LE(0, table.recCount(Json::Value()));
    }
    ~Touches() { sqlite3_set_authorizer(m_pDb, nullptr, nullptr); }
    Touches(const Touches&) = delete;
    Touches& operator=(const Touches&) = delete;

    void read(const Json::Value& jRequest)
    {
        Json::Value jOut;
        m_touched.clear();
        EXPECT_LE(0, m_table.recList(jRequest, jOut)) << jRequest << m_table.status().text;
        expectHarmless(jRequest);
    }

    void use(const Json::Value& jFilter, const Json::Value& jValues)
    {
        read(jFilter);
        EXPECT_LE(0, m_table.recCount(jFilter)) << jFilter << m_table.status().text;
        expectHarmless(jFilter);
        sqlite3_exec(m_pDb, "SAVEPOINT host", nullptr, nullptr, nullptr);
        m_touched.clear();
        EXPECT_LE(0, m_table.recUpdateByFilter(jFilter, jValues, true)) << jFilter << m_table.status().text;
        EXPECT_LE(0, m_table.recDelete(jFilter, true)) << jFilter << m_table.status().text;
        m_touched.erase("update t");
        m_touched.erase("delete t");
        expectHarmless(jFilter);
        sqlite3_exec(m_pDb, "ROLLBACK TO host; RELEASE host", nullptr, nullptr, nullptr);
    }

    const Touched& touched() const { return m_touched; }

private:
    // The table itself, a list of values given as JSON, and functions that compute and nothing else.
    void expectHarmless(const Json::Value& jFilter) const
    {
        static const Touched kHarmless = {"read t",
                                          "read json_each",
                                          "ask pragma schema_version",
                                          "function char",
                                          "function count",
                                          "function glob",
                                          "function instr",
                                          "function json_array_length",
                                          "function json_extract",
                                          "function json_type",
                                          "function json_valid",
                                          "function length",
                                          "function like",
                                          "function replace",
                                          "function substr",
                                          "function typeof"};
        for (const std::string& strTouched : m_touched)
            EXPECT_EQ(1U, kHarmless.count(strTouched)) << strTouched << " " << jFilter;
    }

    vorn::Table& m_table;
    sqlite3* m_pDb;
    Touched m_touched;
};

}  // namespace

// ---- What must come from the program

TEST_F(TableSecurity, S01_TextsOfStatements)
{
    const vorn::Table made(t.handle(), "made", definitionOf("made", json(R"({"a": {"cpptype": "int"}})")),
                           "CREATE TABLE made (a); DELETE FROM other");
    EXPECT_EQ(Texts{}, t.rows("SELECT * FROM other"));
    Json::Value jRows;
    EXPECT_EQ(2, t->runSql(t.sql("DELETE FROM @"), Json::Value(), jRows));
    EXPECT_TRUE(failed(*t, t->runSql("SELECT 1; DROP TABLE other", Json::Value(), jRows), Code::BadRequest));
}

TEST_F(TableSecurity, S02_RawFilter)
{
    const Json::Value jRaw = with("vornSqlWhereFilter", "EXISTS (SELECT 1 FROM other WHERE secret LIKE 'z%')");
    EXPECT_EQ(2, count(jRaw));
    EXPECT_EQ(2, count(wrapped("$not", 2, jRaw)));
    for (const char* szText : {"0) OR (1", "1; DROP TABLE other", "1 /*", "'"})
        EXPECT_TRUE(
            failed(*t, t->recCount(with("vornSqlWhereFilter", szText)), Code::BadRequest, "vornSqlWhereFilter"));
    EXPECT_EQ(0, count(json(R"({"name": "nobody", "vornSqlWhereFilter": "0 OR 1"})")));
    expectUnharmed();
}

TEST_F(TableSecurity, S03_NamesOfADefinition)
{
    for (const std::string& strText : kHostile)
    {
        const std::string strName = hostile(strText);
        vorn::Table odd(t.handle(), strName,
                        definitionOf(strName, with(strName, json(R"({"cpptype": "string", "index": true})"))));
        if (strName.find('\0') != std::string::npos)
        {
            EXPECT_EQ(Code::BadDefinition, odd.status().code);
            continue;
        }
        EXPECT_TRUE(done(odd, odd.recCreate(with(strName, "x")))) << strName;
        EXPECT_TRUE(done(odd, odd.recCount(with(strName, "x")), 1)) << strName;
    }
    expectUnharmed();
}

// ---- What may come from outside

TEST_F(TableSecurity, S04_ValuesOfRecords)
{
    int iId = 10;
    for (const std::string& strText : kHostile)
    {
        Json::Value jRecord = with("name", hostile(strText)), jOut;
        jRecord["info"] = with(hostile(strText), hostile(strText));
        jRecord["id"] = ++iId;
        EXPECT_TRUE(done(*t, t->recCreate(jRecord, jOut))) << strText;
        EXPECT_EQ(jRecord, jOut);
        jRecord["note"] = hostile(strText);
        EXPECT_TRUE(done(*t, t->recSave(jRecord, false))) << strText;
        EXPECT_EQ(hostile(strText), jRecord["note"].asString());
    }
    expectUnharmed(2 + static_cast<long long>(kHostile.size()));
}

TEST_F(TableSecurity, S05_ValuesOfConditions)
{
    for (const std::string& strText : kHostile)
        for (const char* szOperator :
             {"$eq", "$gt", "$gte", "$lt", "$lte", "$beginsWith", "$like", "$glob", "$in", "$all"})
            for (const char* szMember : {"name", "info", "info.a", "list"})
            {
                const bool blList = *(szOperator + 1) == 'i' || *(szOperator + 1) == 'a';
                Json::Value jOperand = hostile(strText), jOut;
                if (blList)
                {
                    jOperand = Json::Value(Json::arrayValue);
                    jOperand.append(hostile(strText));
                }
                const Json::Value jFilter = with(szMember, with(szOperator, jOperand));
                if (t->explain(jFilter, jOut) == 0)
                {
                    EXPECT_EQ(std::string::npos, jOut["sql"].asString().find(hostile(strText).substr(0, 12)));
                }
                else
                {
                    EXPECT_TRUE(failed(*t, -1, t->status().code, t->status().member)) << jFilter;
                }
                // Comparisons and "%" may find records, equality may not.
                if (szOperator == std::string("$eq") && szMember == std::string("name"))
                {
                    EXPECT_EQ(0, count(jFilter));
                }
            }
    expectUnharmed();
}

TEST_F(TableSecurity, S06_NewValuesAndKeysOfDeletes)
{
    for (const std::string& strText : kHostile)
    {
        Json::Value jValues = with("note", hostile(strText));
        jValues["info"] = hostile(strText);
        EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"id": 1})"), jValues), 1)) << strText;
        EXPECT_EQ(1, count(jValues)) << strText;
        EXPECT_TRUE(done(*t, t->recDeleteByName(hostile(strText), "name"), 0));
        EXPECT_TRUE(done(*t, t->recDeleteByArray({hostile(strText), "nobody"}, "name"), 0));
        Json::Value jParams(Json::arrayValue), jRows;
        jParams.append(hostile(strText));
        EXPECT_TRUE(done(*t, t->runSql(t.sql("SELECT id FROM @ WHERE note = ?"), jParams, jRows), 1)) << strText;
    }
    expectUnharmed();
}

TEST_F(TableSecurity, S07_UnknownNames)
{
    for (const std::string& strText : kHostile)
    {
        const std::string strName = hostile(strText);
        Json::Value jOut, jSaved = with(strName, 1);
        jSaved["id"] = 1;
        const Json::Value jNames = [&]
        {
            Json::Value j;
            j.append(strName);
            return j;
        }();
        const long long results[] = {t->recCreate(with(strName, 1)),
                                     t->recSave(jSaved, false),
                                     t->recCount(with(strName, 1)),
                                     t->recDelete(with(strName, 1)),
                                     t->recUpdateByFilter(json(R"({"id": 1})"), with(strName, 1)),
                                     t->recList(with("sort_by", strName), jOut),
                                     t->recList(with("fields", jNames), jOut),
                                     t->checkJsonType(with(strName, 1)),
                                     t->recDeleteByName("x", strName.c_str())};
        for (const long long nResult : results)
            EXPECT_EQ(-1, nResult) << strName;
        EXPECT_TRUE(failed(*t, t->recCount(with(strName, 1)), Code::UnknownMember, strName));
    }
    expectUnharmed();
}

TEST_F(TableSecurity, S08_NamesInPaths)
{
    for (const std::string& strText : kHostile)
    {
        std::string strName = replaced(hostile(strText), ".", "");
        EXPECT_TRUE(done(*t, t->recUpdateByFilter(json(R"({"id": 1})"), with("info", with(strName, 7))), 1));
        EXPECT_EQ(1, count(with("info." + strName, 7))) << strName;
        EXPECT_EQ(0, count(with("info." + strName, 8))) << strName;
        Json::Value jRequest = with("sort_by", "-info." + strName), jOut;
        EXPECT_TRUE(done(*t, t->recList(jRequest, jOut))) << strName;
        EXPECT_EQ(1, jOut[0]["id"].asInt()) << strName;
    }
    expectUnharmed();
}

TEST_F(TableSecurity, S09_RequestKeys)
{
    for (const char* szKey : {"limit", "offset", "sort_direction", "fields", "sort_by"})
        for (const Json::Value& jValue :
             json(R"(["1; DROP TABLE other", -1, 1.5, null, {}, {"a": 1}, true, ["x; --"]])"))
        {
            Json::Value jOut;
            EXPECT_EQ(-1, t->recList(with(szKey, jValue), jOut)) << szKey << jValue;
            EXPECT_TRUE(jOut.isNull());
        }
    expectUnharmed();
}

TEST(TableSecurityOfFilters, S10_NothingButTheTableIsTouched)
{
    {
        FilterTable table(kConditionMembers);
        fill(table);
        sqlite3_exec(table.db(), "CREATE TABLE other (secret)", nullptr, nullptr, nullptr);
        Touches touches(*table, table.db());
        for (const ConditionCase& c : kConditionCases)
            if (const Json::Value jFilter = json(c.szFilter); !hasRawSql(jFilter))
                touches.use(jFilter, json(R"({"s": "new", "j": {"a": 1}})"));

        // What is noted of a filter that reaches further.
        EXPECT_EQ(0, table->recCount(json(R"~({"vornSqlWhereFilter": "random() IN (SELECT secret FROM other)"})~")));
        EXPECT_EQ(1U, touches.touched().count("read other"));
        EXPECT_EQ(1U, touches.touched().count("function random"));
    }
    constexpr std::uint64_t kCases = 100;
    for (std::uint64_t n = 0; n < kCases; ++n)
    {
        const table_tests::Case example = randomCase(1, n);
        const support::Database db;
        vorn::Table table(db.handle(), "t", definitionOf("t", example.jMembers));
        for (const Json::Value& jRecord : example.records)
            EXPECT_EQ(0, table.recCreate(jRecord)) << table.status().text;
        Touches touches(table, db.handle());
        for (const Json::Value& jFilter : example.filters)
            touches.use(jFilter, example.jValues);
        for (const Json::Value& jRequest : example.requests)
            touches.read(jRequest);
    }
}

TEST_F(TableSecurity, S11_NoFilterIsWiderThanItReads)
{
    for (const char* szFilter : {"{}", "null", R"({"$and": [{}]})", R"({"$or": [{}, {}]})"})
    {
        EXPECT_TRUE(failed(*t, t->recDelete(json(szFilter)), Code::BadRequest)) << szFilter;
        EXPECT_EQ(-1, t->recUpdateByFilter(json(szFilter), with("note", "x"))) << szFilter;
    }
    for (const char* szFilter :
         {R"({"nome": "Ann"})", R"({"name": {"$equal": "Ann"}})", R"({"id": "1"})", R"({"limit": 1})",
          R"({"name": {"$in": "Ann"}})", R"({"id": 99999999999})", R"([{"id": 1}])"})
        EXPECT_EQ(-1, t->recDelete(json(szFilter), true)) << szFilter;
    EXPECT_TRUE(done(*t, t->recDelete(json(R"({"id": []})")), 0));
    expectUnharmed();
}

// ---- Limits

TEST_F(TableSecurity, S12_DepthOfFilters)
{
    constexpr int kLevels = 32;
    EXPECT_LE(0, count(wrapped("$not", kLevels - 1, json(R"({"id": 1})"))));
    for (const int iLevels : {kLevels, 1000, 5000})
        EXPECT_TRUE(failed(*t, t->recCount(wrapped("$not", iLevels, json(R"({"id": 1})"))), Code::BadRequest, "$not"));
}

TEST_F(TableSecurity, S13_DepthOfValues)
{
    constexpr int kLevels = 1000;
    EXPECT_TRUE(done(*t, t->recCreate(with("info", wrapped("a", kLevels, 1)))));
    EXPECT_EQ(1, count(with("info", with("$eq", wrapped("a", kLevels, 1)))));
    for (const int iLevels : {kLevels + 1, 5000})
    {
        const Json::Value jDeep = wrapped("a", iLevels, 1);
        EXPECT_TRUE(failed(*t, t->recCreate(with("info", jDeep)), Code::BadType, "info"));
        EXPECT_TRUE(failed(*t, t->recCount(with("info", with("$eq", jDeep))), Code::BadType, "info"));
    }
}

TEST_F(TableSecurity, S14_LengthOfTexts)
{
    constexpr int kMost = 100000;
    sqlite3_limit(t.handle(), SQLITE_LIMIT_LENGTH, kMost);
    const std::string strLong(kMost + 1, 'x');
    EXPECT_TRUE(failed(*t, t->recCreate(with("name", strLong)), Code::OutOfRange));
    EXPECT_TRUE(failed(*t, t->recUpdateByFilter(json(R"({"id": 1})"), with("note", strLong)), Code::OutOfRange));
    EXPECT_TRUE(failed(*t, t->recCount(with("name", strLong)), Code::OutOfRange));
    expectUnharmed();
}

TEST_F(TableSecurity, S15_LengthOfLists)
{
    Json::Value jList(Json::arrayValue);
    for (int i = 1; i <= 100000; ++i)
        jList.append(i);
    EXPECT_EQ(2, count(with("id", jList)));
    // With fewer parameters the list becomes one text, which is longer than SQLite may take here.
    sqlite3_limit(t.handle(), SQLITE_LIMIT_VARIABLE_NUMBER, 999);
    EXPECT_EQ(2, count(with("id", jList)));
    sqlite3_limit(t.handle(), SQLITE_LIMIT_LENGTH, 100000);
    EXPECT_TRUE(failed(*t, t->recCount(with("id", jList)), Code::OutOfRange));
}

TEST_F(TableSecurity, S16_NumberOfConditions)
{
    Json::Value jFilter;
    for (int i = 0; i < 10000; ++i)
        jFilter["$or"].append(i % 2 != 0 ? with("id", with("$gt", i)) : with("name", with("$like", "B%")));
    EXPECT_EQ(1, count(jFilter));
    for (int i = 10000; i < 40000; ++i)
        jFilter["$or"].append(i % 2 != 0 ? with("id", with("$gt", i)) : with("name", with("$like", "B%")));
    sqlite3_limit(t.handle(), SQLITE_LIMIT_VARIABLE_NUMBER, 32766);
    EXPECT_TRUE(failed(*t, t->recCount(jFilter), Code::BadRequest));
}

TEST_F(TableSecurity, S17_LengthOfPatterns)
{
    const std::string strPattern(50001, '%');
    EXPECT_EQ(2, count(with("name", with("$like", strPattern.substr(1)))));
    for (const char* szOperator : {"$like", "$glob"})
        EXPECT_EQ(-1, t->recCount(with("name", with(szOperator, strPattern)))) << szOperator;
    EXPECT_TRUE(failed(*t, -1, t->status().code, t->status().member));
}

TEST_F(TableSecurity, S18_Time)
{
    Json::Value jRecords;
    for (int i = 10; i < 3010; ++i)
        jRecords.append(with("name", "aaaaaaaaaa" + std::to_string(i)));
    ASSERT_EQ(3000, t->recCreateAll(jRecords));
    int nLeft = 20;
    sqlite3_progress_handler(
        t.handle(), 1000, [](void* pLeft) { return --*static_cast<int*>(pLeft) < 0 ? 1 : 0; }, &nLeft);
    EXPECT_TRUE(
        failed(*t, t->recUpdateByFilter(with("name", with("$glob", "*a*a*a*")), with("note", "x")), Code::Interrupted));
    sqlite3_progress_handler(t.handle(), 0, nullptr, nullptr);
    EXPECT_EQ(0, count(with("note", "x")));
}

TEST_F(TableSecurity, S19_Rows)
{
    Json::Value jRequest = json(R"({"limit": 9223372036854775807})"), jOut;
    EXPECT_TRUE(done(*t, t->recList(jRequest, jOut)));
    EXPECT_EQ(2U, jOut.size());
    int nSeen = 0;
    EXPECT_EQ(1, t->recForEach(jRequest, [&nSeen](Json::Value&) { return ++nSeen < 1; }));
    jRequest["$limit"] = 1;
    EXPECT_TRUE(failed(*t, t->recList(jRequest, jOut), Code::BadRequest, "limit"));
}

TEST_F(TableSecurity, S20_KeptStatements)
{
    constexpr int kMost = 32 + 2;  // and what undoes a write
    for (int i = 0; i < 500; ++i)
    {
        Json::Value jFilter;
        for (int bit = 0; bit < 9; ++bit)
            jFilter["$or"].append(with((i >> bit) % 2 != 0 ? "id" : "info.a", with("$gt", i)));
        EXPECT_LE(0, count(jFilter));
    }
    EXPECT_GE(kMost, keptStatements(t.handle()));
}

// ---- What is told

TEST_F(TableSecurity, S21_NoValueInAnyText)
{
    t.run(
        "CREATE TRIGGER refuse BEFORE UPDATE ON @ WHEN new.note = 'zq7x refused' BEGIN SELECT RAISE(ABORT, 'zq7x'); "
        "END");
    t.create(R"({"id": 48271, "name": "zq7x", "note": "zq7x"})");
    t.run("UPDATE @ SET info = '{zq7x' WHERE id = 2");
    Json::Value jOut;
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"name": "zq7x"})")), Code::Duplicate, "name"));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"id": 48271})")), Code::Duplicate, "id"));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"id": "zq7x"})")), Code::BadType, "id"));
    EXPECT_TRUE(failed(*t, t->recCreate(json(R"({"id": 4827148271})")), Code::OutOfRange, "id"));
    EXPECT_TRUE(
        failed(*t, t->recUpdateByFilter(json(R"({"id": 1})"), json(R"({"note": "zq7x refused"})")), Code::Constraint));
    EXPECT_TRUE(failed(*t, t->recList(json(R"({"id": 2})"), jOut), Code::BadCell, "info"));
    EXPECT_TRUE(failed(*t, t->recList(json(R"({"limit": "zq7x"})"), jOut), Code::BadRequest, "limit"));
    EXPECT_TRUE(failed(*t, t->recCount(json(R"({"id": {"$gt": "zq7x"}})")), Code::BadType, "id"));
    EXPECT_TRUE(failed(*t, t->recCount(json(R"({"vornSqlWhereFilter": "nome = ?", "vornSqlWhereParams": ["zq7x"]})")),
                       Code::Sqlite));
    EXPECT_TRUE(failed(*t, t->tableCheck(jOut, true), Code::BadCell, "info"));
    EXPECT_EQ(std::string::npos, compact(jOut).find(kSecret));
}

TEST_F(TableSecurity, S22_NamesAsGiven)
{
    const std::string strName = "no\nsuch \"name\"";
    EXPECT_TRUE(failed(*t, t->recCount(with(strName, 1)), Code::UnknownMember, strName));
    EXPECT_NE(std::string::npos, t->status().text.find(R"("no\nsuch \"name\"")")) << t->status().text;
}

TEST_F(TableSecurity, S23_NothingIsLogged)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    s_nLogLines = 0;
    Json::Value jOut;
    EXPECT_EQ(-1, t->recCreate(json(R"({"id": 1})")));
    EXPECT_EQ(-1, t->recList(json(R"({"nome": 1})"), jOut));
    EXPECT_EQ(-1, t->runSql("SELECT nothing", Json::Value(), jOut));
    EXPECT_EQ(0, t->explain(json(R"({"name": "zq7x"})"), jOut));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(0, s_nLogLines);
    EXPECT_EQ("zq7x", jOut["parameters"][0].asString());
}

// ---- The file

TEST_F(TableSecurity, S24_CellsOfOthers)
{
    for (const char* szCell :
         {"x'ff00'", "'{\"a\":'", "9e999", "-5", "zeroblob(1000)", "char(0, 65)", "'[' || char(55296)"})
        for (const char* szMember : {"info", "flag", "list", "note"})
        {
            t.run("UPDATE @ SET " + std::string(szMember) + " = " + szCell + " WHERE id = 1");
            Json::Value jOut;
            if (t->recGetOne(json(R"({"id": 1})"), jOut) == -1)
            {
                EXPECT_TRUE(failed(*t, -1, Code::BadCell, szMember)) << szCell;
            }
            EXPECT_LE(0, t->recCount(json(R"({"info.a": 1, "list": {"$size": 1}, "note": {"$like": "x%"}})")));
            t.run("UPDATE @ SET " + std::string(szMember) + " = NULL");
        }
    expectUnharmed();
}

TEST(TableSecurityOfFiles, S25_DamagedFile)
{
    const support::TempFile file;
    std::ofstream(file.path()) << std::string(5000, 'x');
    const support::Database db(file.path());
    vorn::Table table(db.handle(), "T", definitionOf("T", json(R"({"a": {"cpptype": "int"}})")));
    EXPECT_EQ(Code::Corrupt, table.status().code);
    EXPECT_TRUE(failed(table, table.recCreate(json("{}")), Code::Corrupt));
}
