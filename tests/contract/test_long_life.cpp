// SPDX-License-Identifier: MIT
//
// A long life in one process: mixed operations, good and bad ones, on tables in memory, in a file with a rollback
// journal and in one with a write-ahead log. Every result is compared with a plain model, and what the process holds
// must not grow. VORN_TEST_OPERATIONS sets how many operations; VORN_TEST_SEED repeats a run.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iomanip>
#include <map>
#include <random>

#include "holdings.h"
#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

// A machine of 32 bits is slow, or emulated.
constexpr long usualOperations = sizeof(void*) == 4 ? 20000 : 200000;
constexpr long samples = 10;
constexpr long operationsOfAnObject = 1000;
constexpr long objectsAtFirst = 4;  // of each table, until it has held as many records as it ever will
constexpr long sqliteSwing = 64L * 1024;
constexpr size_t mostRecords = 300;

constexpr const char* members = R"({
    "count": {"cpptype": "long long", "cppDefaultValue": 0},
    "data":  {"cpptype": "Json::objectValue"},
    "flag":  {"cpptype": "bool", "cppDefaultValue": true},
    "id":    {"cpptype": "int"},
    "list":  {"cpptype": "Json::arrayValue", "cppDefaultValue": []},
    "name":  {"cpptype": "string"}})";
constexpr const char* columns =
    " (id INTEGER PRIMARY KEY, name TEXT UNIQUE, count INTEGER, data TEXT, flag INTEGER, list TEXT)";

long numberFrom(const char* name, long otherwise)
{
    const char* const given = std::getenv(name);
    return given != nullptr ? std::strtol(given, nullptr, 10) : otherwise;
}

// What the process holds after so many operations.
struct Sample
{
    long operations;
    Holdings held;
};

// One table with its connection, and the model of it: the name and count of each record by its identity.
class Life
{
public:
    Life(std::string name, std::string journalMode, std::mt19937& random)
        : m_name(std::move(name)), m_journalMode(std::move(journalMode)), m_random(random)
    {
        open();
    }

    void open()
    {
        m_api.reset();
        if (m_journalMode != "memory" || m_database == nullptr)
        {
            m_database = nullptr;
            m_database = std::make_unique<Database>(m_journalMode == "memory" ? ":memory:" : m_file.path());
            EXPECT_EQ(SQLITE_OK, m_database->run("pragma synchronous = off; pragma journal_mode = " + m_journalMode));
        }
        m_api = std::make_unique<VornJsonDbApi>(m_database->handle(), m_name, m_definition, m_create);
    }

    void operate()
    {
        switch (const auto kind = m_random() % 100; kind / 5)
        {
            case 0:
            case 1:
            case 2:
            case 3:
            case 4:
            case 5:
                return create();
            case 6:
                return replace();
            case 7:
            case 8:
                return createWithATakenKey();
            case 9:
            case 10:
                return getOne();
            case 11:
                return list();
            case 12:
            case 13:
            case 14:
                return update();
            case 15:
                return updateToATakenName();
            case 16:
                return deleteByName();
            case 17:
                return fail();
            case 18:
                return buildTexts();
            default:
                return m_records.size() > mostRecords ? deleteMany() : helpers();
        }
    }

    void empty()
    {
        EXPECT_EQ(static_cast<int>(m_records.size()), m_api->recDeleteAll());
        m_records.clear();
        EXPECT_TRUE(m_database->rows("select * from " + m_name).empty());
    }

private:
    struct Known
    {
        std::string name;
        Json::Int64 count;
    };

    static std::string nameOf(int id) { return "the record's name " + std::to_string(id); }

    Json::Value record(int id)
    {
        Json::Value result;
        result["id"] = id;
        result["name"] = nameOf(id);
        result["count"] = static_cast<Json::Int64>(m_random()) * 4;
        result["data"]["text"] = std::string(m_random() % 300, 'x');
        result["data"]["numbers"].append(static_cast<Json::Int>(m_random() % 1000));
        result["data"]["numbers"].append(0.25);
        return result;
    }

    std::map<int, Known>::iterator anyRecord()
    {
        auto it = m_records.lower_bound(m_nextId - static_cast<int>(m_random() % (2 * mostRecords)));
        return it != m_records.end() ? it : m_records.begin();
    }

    void create()
    {
        Json::Value in = record(m_nextId);
        Json::Value out;
        ASSERT_EQ(0, m_api->recCreate(in, out));
        EXPECT_EQ(in["data"], out["data"]);
        EXPECT_EQ(Json::Value(true), out["flag"]);
        m_records[m_nextId++] = {in["name"].asString(), in["count"].asInt64()};
    }

    void replace()
    {
        if (m_records.empty())
            return create();
        const auto known = anyRecord();
        Json::Value inOut = record(known->first);
        const Json::Value in = inOut;
        ASSERT_EQ(0, m_api->recSave(inOut, false));
        EXPECT_EQ(in, inOut);
        known->second.count = in["count"].asInt64();
    }

    void createWithATakenKey()
    {
        if (m_records.empty())
            return create();
        Json::Value in = record(anyRecord()->first);
        Json::Value out;
        m_api->setErrMsg("");
        ASSERT_EQ(-1, m_api->recCreate(in, out));
        EXPECT_EQ("DUPLICATE_PRIMARY_KEY", m_api->getErrMsg());
    }

    void getOne()
    {
        Json::Value filter;
        filter["name"] = m_records.empty() ? "nobody" : anyRecord()->second.name;
        Json::Value out;
        ASSERT_EQ(m_records.empty() ? 0 : 1, m_api->recGetOne(filter, out));
        if (!m_records.empty())
        {
            EXPECT_EQ(m_records[out["id"].asInt()].count, out["count"].asInt64());
        }
    }

    void list()
    {
        Json::Value filter = json(R"({"sort_by": "id", "sort_direction": "desc", "limit": 20, "offset": 0})");
        Json::Value out;
        ASSERT_EQ(0, m_api->recList(filter, out));
        EXPECT_EQ(std::min<size_t>(20, m_records.size()), out.size());
    }

    void update()
    {
        if (m_records.empty())
            return create();
        const auto known = anyRecord();
        Json::Value filter;
        filter["name"] = known->second.name;
        Json::Value values;
        known->second.count = static_cast<Json::Int64>(m_random());
        values["count"] = known->second.count;
        ASSERT_EQ(0, m_api->recUpdateByFilter(filter, values));
    }

    void updateToATakenName()
    {
        if (m_records.size() < 2)
            return create();
        const auto known = anyRecord();
        const auto other = known == m_records.begin() ? std::next(known) : m_records.begin();
        Json::Value filter;
        filter["name"] = known->second.name;
        Json::Value values;
        values["name"] = other->second.name;
        ASSERT_EQ(-1, m_api->recUpdateByFilter(filter, values));
    }

    void deleteByName()
    {
        if (m_records.empty())
            return create();
        const auto known = anyRecord();
        std::string name = known->second.name;
        ASSERT_EQ(1, m_api->recDeleteByName(name, "name"));
        m_records.erase(known);
    }

    void deleteMany()
    {
        const auto end = std::next(m_records.begin(), mostRecords / 2);
        Json::Value filter;
        filter["vornSqlWhereFilter"] = "id < " + std::to_string(end->first);
        ASSERT_EQ(static_cast<int>(mostRecords / 2), m_api->recDelete(filter));
        m_records.erase(m_records.begin(), end);
    }

    void fail()
    {
        Json::Value in = record(m_nextId);
        Json::Value out;
        in["name"] = 5;
        EXPECT_EQ(-1, m_api->recCreate(in, out));
        EXPECT_EQ(-1, m_api->runSqlEx("select from nowhere"));
        EXPECT_EQ(-1, m_api->recDelete(out));
        EXPECT_EQ(-1, m_api->runSqlEx("select 1 as unknown", VornJsonDbApi::DbCallBackFillList, &out));
        Json::Value wrong = "not an object";
        EXPECT_THROW(static_cast<void>(m_api->fillDefaultValue(wrong, false)), Json::LogicError);
    }

    void buildTexts()
    {
        Json::Value in = record(m_nextId);
        std::string text;
        EXPECT_EQ(0, m_api->SqlExpandMemberName(text));
        EXPECT_EQ(0, m_api->SqlExpandMemberSymbol(text, in));
        EXPECT_EQ(0, m_api->SqlExpandMemberList(in, text, VORN_SQL_WHERE_TYPE_OR));
        EXPECT_LT(100U, text.size());
    }

    void helpers()
    {
        Json::Value in = record(m_nextId);
        Json::Value out;
        EXPECT_EQ(0, VORN_JSON_DB::jsonCopyMember(out, in, true));
        EXPECT_EQ(in, out);
        std::string text;
        EXPECT_EQ(0, VORN_JSON_DB::getTimeAfterNow(60, text, 3));
        std::vector<std::string> strings = {"a", "b"};
        EXPECT_EQ(0, m_api->VectorParamToJson(strings, "name", out));
        EXPECT_EQ(2U, out["name"].size());
    }

    TempFile m_file;
    std::string m_name;
    std::string m_journalMode;
    std::mt19937& m_random;
    Json::Value m_definition = definitionOf(m_name, json(members));
    std::string m_create = "CREATE TABLE IF NOT EXISTS " + m_name + columns;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<VornJsonDbApi> m_api;
    std::map<int, Known> m_records;
    int m_nextId = 1;
};

void print(const std::vector<Sample>& all)
{
    std::cout << "| operations | " << holdingsTitle << " |\n|---:|---:|---:|---:|---:|---:|\n";
    for (const Sample& sample : all)
        std::cout << "| " << sample.operations << " | " << sample.held << " |\n";
}

}  // namespace

TEST(LongLife, HoldsNoMoreInTheEndThanAtTheStart)
{
    const long operations = numberFrom("VORN_TEST_OPERATIONS", usualOperations);
    const auto seed = static_cast<unsigned>(numberFrom("VORN_TEST_SEED", 1));
    std::cout << "VORN_TEST_OPERATIONS=" << operations << " VORN_TEST_SEED=" << seed << std::endl;
    std::mt19937 random(seed);
    Life lives[] = {{"in_memory", "memory", random}, {"in_rollback", "delete", random}, {"in_wal", "wal", random}};

    const auto start = std::chrono::steady_clock::now();
    long done = 0;
    const auto work = [&](Life& life)
    {
        LogCapture lines;
        life.open();
        for (long n = 0; n < operationsOfAnObject && !HasFailure(); ++n)
            life.operate();
        lines.stop();
        std::cout << lines.standardOutput();  // what GoogleTest has written in between
        done += operationsOfAnObject;
    };
    // What is held is looked at while all tables are empty.
    std::vector<Sample> all;
    all.reserve(samples + 2);
    const auto sample = [&]
    {
        for (Life& life : lives)
            life.empty();
        all.push_back({done, holdings()});
    };

    sample();
    for (long i = 0; i < objectsAtFirst; ++i)
        for (Life& life : lives)
            work(life);
    sample();
    const long atFirst = done;
    for (long i = 1; i <= samples && !HasFailure(); ++i)
    {
        const long until = atFirst + (operations - atFirst) * i / samples;
        while (done < until && !HasFailure())
            work(lives[static_cast<size_t>(random() % 3)]);
        sample();
    }
    ASSERT_FALSE(HasFailure());
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    print(all);
    std::cout << std::fixed << std::setprecision(1) << seconds << " s, " << static_cast<double>(done) / seconds
              << " operations/s\n";

    // A table in memory keeps the pages of the records that it once held, so SQLite's share swings by some pages of 4
    // kB.
    for (size_t i = 2; i < all.size(); ++i)
    {
        SCOPED_TRACE("after " + std::to_string(all[i].operations) + " operations");
        expectNoMore(all[1].held, all[i].held, sqliteSwing);
    }
}
