// SPDX-License-Identifier: MIT
//
// Random definitions, records and requests: the table must find, count, update and delete what the plain model of
// filters says. VORN_TEST_CASES sets their number and VORN_TEST_SEED the seed, which is printed.

#include <algorithm>
#include <cstdlib>
#include <random>

#include "filter_case.h"
#include "table_fixture.h"

using namespace table_tests;

namespace
{

std::uint64_t numberFrom(const char* szVariable, std::uint64_t nDefault)
{
    const char* const szValue = std::getenv(szVariable);
    return szValue == nullptr ? nDefault : std::strtoull(szValue, nullptr, 10);
}

class CaseRun
{
public:
    explicit CaseRun(const Case& example)
        : m_case(example), m_table(m_db.handle(), "T", definitionOf("T", example.jMembers))
    {
        Json::Value jRecords(Json::arrayValue);
        for (const Json::Value& jRecord : example.records)
            jRecords.append(jRecord);
        expect(m_table.recCreateAll(jRecords), static_cast<long long>(example.records.size()), jRecords, "records");
    }

    bool failed() const { return m_blFailed; }

    void run()
    {
        for (const Json::Value& jRequest : m_case.requests)
            request(jRequest);
        for (const Json::Value& jFilter : m_case.filters)
            count(jFilter);
        update(m_case.filters[0]);
        remove(m_case.filters[1]);
        if (busyStatements(m_db.handle()) != 0)
            fail(Json::Value(), "a statement is busy");
    }

private:
    void fail(const Json::Value& jRequest, const std::string& strWhat)
    {
        m_blFailed = true;
        ADD_FAILURE() << strWhat << "; " << describe(m_table.status()) << asTest(m_case, jRequest);
    }

    void expect(long long nResult, long long nExpected, const Json::Value& jRequest, const char* szWhat)
    {
        if (!done(m_table, nResult, nExpected))
            fail(jRequest, szWhat + (": wanted " + std::to_string(nExpected)) + ", result " + std::to_string(nResult));
    }

    void expectRows(const Json::Value& jRows, const std::vector<Json::Value>& expected, const Json::Value& jRequest,
                    const char* szWhat)
    {
        Json::Value jExpected(Json::arrayValue);
        for (const Json::Value& jRecord : expected)
            jExpected.append(jRecord);
        if (jRows != jExpected)
            fail(jRequest, szWhat + (": wanted " + compact(jExpected)) + "\nseen " + compact(jRows));
    }

    void request(const Json::Value& jRequest)
    {
        const std::vector<Json::Value> expected = found(m_case.types, jRequest, m_case.records);
        Json::Value jRows(Json::arrayValue);
        expect(m_table.recList(jRequest, jRows), 0, jRequest, "list");
        expectRows(jRows, expected, jRequest, "list");
        jRows = Json::Value(Json::arrayValue);
        const auto visit = [&](Json::Value& jRecord)
        {
            jRows.append(jRecord);
            return true;
        };
        expect(m_table.recForEach(jRequest, visit), static_cast<long long>(expected.size()), jRequest, "visit");
        expectRows(jRows, expected, jRequest, "visit");
        jRows = Json::Value();
        expect(m_table.recGetOne(jRequest, jRows[0]), expected.empty() ? 0 : 1, jRequest, "get");
        if (!expected.empty() && jRows[0] != expected[0])
            fail(jRequest, "get: wanted " + compact(expected[0]) + "\nseen " + compact(jRows[0]));
        Json::Value jPlan;
        expect(m_table.explain(jRequest, jPlan), 0, jRequest, "explain");
    }

    // A filter and its complements share the records among them, none left and none twice.
    void count(const Json::Value& jFilter)
    {
        const auto nFound = static_cast<long long>(found(m_case.types, jFilter, m_case.records).size());
        const auto nAll = static_cast<long long>(m_case.records.size());
        expect(m_table.recCount(jFilter), nFound, jFilter, "count");
        Json::Value jComplement;
        jComplement["$not"] = jFilter;
        expect(m_table.recCount(jComplement), nAll - nFound, jComplement, "complement");
        jComplement = Json::Value();
        jComplement["$nor"].append(jFilter);
        expect(m_table.recCount(jComplement), nAll - nFound, jComplement, "complement");
    }

    void update(const Json::Value& jFilter)
    {
        long long nExpected = 0;
        for (Json::Value& jRecord : m_case.records)
            if (matches(m_case.types, jFilter, jRecord))
            {
                ++nExpected;
                for (auto it = m_case.jValues.begin(); it != m_case.jValues.end(); ++it)
                {
                    jRecord[it.name()] = asStored(m_case.types.at(it.name()), *it);
                    if (it->isNull())
                        jRecord.removeMember(it.name());
                }
            }
        expect(m_table.recUpdateByFilter(jFilter, m_case.jValues, true), nExpected, jFilter, "update");
        expectAll(jFilter, "after the update");
    }

    void remove(const Json::Value& jFilter)
    {
        const auto end =
            std::remove_if(m_case.records.begin(), m_case.records.end(),
                           [&](const Json::Value& jRecord) { return matches(m_case.types, jFilter, jRecord); });
        const long long nExpected = m_case.records.end() - end;
        m_case.records.erase(end, m_case.records.end());
        expect(m_table.recDelete(jFilter, true), nExpected, jFilter, "delete");
        expectAll(jFilter, "after the delete");
    }

    void expectAll(const Json::Value& jFilter, const char* szWhat)
    {
        Json::Value jRows(Json::arrayValue);
        expect(m_table.recList(json(R"({"$sort_by": "id"})"), jRows), 0, jFilter, szWhat);
        expectRows(jRows, m_case.records, jFilter, szWhat);
    }

    Case m_case;
    Database m_db;
    vorn::Table m_table;
    bool m_blFailed = false;
};

}  // namespace

TEST(TableModel, FindsCountsUpdatesAndDeletesWhatAPlainWalkOverTheRecordsFinds)
{
    constexpr int kMostFailures = 3;
    const std::uint64_t nSeed = numberFrom("VORN_TEST_SEED", std::random_device()());
    const std::uint64_t nCases = numberFrom("VORN_TEST_CASES", 2000);
    const std::uint64_t nFirst = numberFrom("VORN_TEST_FIRST", 0);
    std::printf("VORN_TEST_SEED=%llu VORN_TEST_CASES=%llu\n", static_cast<unsigned long long>(nSeed),
                static_cast<unsigned long long>(nCases));
    std::fflush(stdout);  // a crash must not swallow it
    int iFailures = 0;
    for (std::uint64_t nCase = nFirst; nCase < nFirst + nCases && iFailures < kMostFailures; ++nCase)
    {
        SCOPED_TRACE("VORN_TEST_SEED=" + std::to_string(nSeed) + " VORN_TEST_FIRST=" + std::to_string(nCase) +
                     " VORN_TEST_CASES=1");
        CaseRun run(randomCase(nSeed, nCase));
        if (!run.failed())
            run.run();
        iFailures += run.failed() ? 1 : 0;
    }
}

// The model itself, where what is expected is easily said by hand.
TEST(TableModel, KnowsWhatIsWrittenDown)
{
    const Types types = {{"a", "Json::arrayValue"}, {"id", "int"}, {"name", "string"}, {"o", "Json::Value"}};
    const std::vector<Json::Value> records = {
        json(R"({"id": 1, "name": "Abc", "a": [1, "1"], "o": {"x": 1, "y": null}})"),
        json(R"({"id": 2, "name": "b", "o": {"x": "1"}})"), json(R"({"id": 3, "a": [], "o": 5})")};
    const auto ids = [&](const char* szRequest)
    {
        std::string strIds;
        for (const Json::Value& jRow : found(types, json(szRequest), records))
            strIds += jRow["id"].asString();
        return strIds;
    };
    EXPECT_EQ("123", ids("{}"));
    EXPECT_EQ("1", ids(R"({"name": {"$like": "aB%"}})"));
    EXPECT_EQ("", ids(R"({"name": {"$glob": "a*"}})"));
    EXPECT_EQ("23", ids(R"({"name": {"$ne": "Abc"}})"));
    EXPECT_EQ("13", ids(R"({"name": ["Abc", null]})"));
    EXPECT_EQ("1", ids(R"({"o.x": 1.0})"));
    EXPECT_EQ("123", ids(R"({"o.y": null})"));
    EXPECT_EQ("1", ids(R"({"a": {"$all": ["1", 1.0]}})"));
    EXPECT_EQ("3", ids(R"({"a": {"$size": 0}})"));
    EXPECT_EQ("23", ids(R"({"a": {"$not": {"$size": 2}}})"));
    EXPECT_EQ("3", ids(R"({"$nor": [{"id": {"$lt": 1.5}}, {"id": 2}]})"));
    EXPECT_EQ("213", ids(R"({"sort_by": ["-name", "id"]})"));
    EXPECT_EQ("2", ids(R"({"sort_by": "id", "sort_direction": "desc", "offset": 1, "limit": 1})"));
}
