// SPDX-License-Identifier: MIT
//
// Memory that runs out at every possible place: each operation runs with its first allocation failing, then with its
// second, and so on until it gets through, and again with all allocations failing from that one on. Whatever happens,
// nothing is lost, nothing is half done and everything works afterwards.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <new>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "child_process.h"
#include "failing_allocators.h"
#include "log_capture.h"
#include "store.h"

using namespace support;
using faults::Allocator;
using faults::Failure;
using faults::Shortage;

namespace
{

constexpr Allocator allAllocators[] = {Allocator::Sqlite, Allocator::OperatorNew, Allocator::Malloc};
constexpr Failure allFailures[] = {Failure::Once, Failure::FromThereOn};

// More allocations than any operation makes: a round that never gets through ends here.
constexpr long mostAllocations = 20000;

constexpr const char* members = R"({
    "any":   {"cpptype": "Json::Value"},
    "big":   {"cpptype": "long long"},
    "count": {"cpptype": "unsigned int"},
    "flag":  {"cpptype": "bool", "cppDefaultValue": true},
    "id":    {"cpptype": "int"},
    "list":  {"cpptype": "Json::arrayValue", "cppDefaultValue": ["a default that is longer than a short string"]},
    "map":   {"cpptype": "Json::objectValue"},
    "name":  {"cpptype": "string"},
    "note":  {"cpptype": "string", "cppDefaultValue": "a default that is longer than a short string"}})";

constexpr const char* columns =
    "(id INTEGER PRIMARY KEY, name TEXT UNIQUE, any TEXT, big INTEGER, count INTEGER, flag INTEGER, list TEXT, "
    "map TEXT, note TEXT)";

// A record that recCreate() takes, and one with a type that only recSave() takes.
Json::Value record(int id)
{
    Json::Value result =
        json(R"({"big": 5000000000, "map": {"deep": [1, 2.5, "a value that is longer than a short string"]}})");
    result["id"] = id;
    result["name"] = "the name of record number " + std::to_string(id);
    return result;
}

Json::Value fullRecord(int id)
{
    Json::Value result = record(id);
    result["count"] = 7;
    return result;
}

// Everything that one operation works on.
struct Stage
{
    explicit Stage(std::string tableName, const std::string& path = ":memory:", const std::string& pragma = "")
        : database(path),
          name(std::move(tableName)),
          definition(definitionOf(name, json(members))),
          create("CREATE TABLE IF NOT EXISTS " + name + columns)
    {
        EXPECT_EQ(SQLITE_OK, database.run(pragma + create));
        EXPECT_EQ(SQLITE_OK,
                  database.run("delete from " + name + ";insert into " + name +
                               " (id, name, map) values (1, 'one', null), (2, 'two', null), "
                               "(3, 'three', '{\"key\": [1, 2.5, \"a text of more than a few characters\"]}')"));
    }

    std::vector<std::string> content() const
    {
        std::vector<std::string> result = database.rows("select name from sqlite_master");
        if (!result.empty())
        {
            const std::vector<std::string> rows = database.rows("select * from " + name + " order by id");
            result.insert(result.end(), rows.begin(), rows.end());
        }
        return result;
    }

    // What an operation may write to.
    std::string outputs() const
    {
        std::string result = in.toStyledString() + in2.toStyledString() + out.toStyledString() + text + "\n" + text2;
        for (const std::string& item : list)
            result += "\n" + item;
        return result;
    }

    Database database;
    std::string name;
    Json::Value definition;
    std::string create;
    std::optional<VornJsonDbApi> api;
    Json::Value in;
    Json::Value in2;
    Json::Value out;
    std::string text;
    std::string text2;
    std::vector<std::string> list;
};

enum class OnFailure
{
    Untouched,
    MayBeUnfinished,  // the operation's description says that a failure may leave outputs half written
    Untold            // a constructor always completes; a failed statement shows in later operations
};

struct Operation
{
    const char* name;
    int result;  // with enough memory
    void (*prepare)(Stage&);
    int (*call)(Stage&);
    OnFailure outputs = OnFailure::Untouched;
};

void prepareNothing(Stage&) {}

char idName[] = "id";
char nameName[] = "name";
char anyName[] = "any";
char idText[] = "12";
char nameText[] = "a name that is longer than a short string";
char anyText[] = R"({"a": ["nested", {"text": "that is longer than a short string"}]})";
char* rowNames[] = {idName, nameName, anyName};
char* rowTexts[] = {idText, nameText, anyText};

const Operation operations[] = {
    {"constructor", 0, [](Stage& s) { s.api.reset(); },
     [](Stage& s)
     {
         s.api.emplace(s.database.handle(), s.name, s.definition, s.create);
         return 0;
     }},
    {"constructorThatCreatesTheTable", 0,
     [](Stage& s)
     {
         s.api.reset();
         EXPECT_EQ(SQLITE_OK, s.database.run("drop table " + s.name));
     },
     [](Stage& s)
     {
         s.api.emplace(s.database.handle(), s.name, s.definition, s.create);
         return 0;
     },
     OnFailure::Untold},
    {"tableCreate", 0, [](Stage& s) { EXPECT_EQ(SQLITE_OK, s.database.run("drop table " + s.name)); },
     [](Stage& s) { return s.api->tableCreate(); }},
    {"errMsg", 0, [](Stage& s) { s.text = "a message that is longer than a short string"; },
     [](Stage& s)
     {
         s.api->setErrMsg(s.text);
         s.text2 = s.api->getErrMsg();
         return 0;
     }},
    {"runSqlExOfAStatement", 3,
     [](Stage& s) { s.text = "update " + s.name + " set note = 'a text that is longer than a short string'"; },
     [](Stage& s) { return s.api->runSqlEx(s.text); }},
    {"runSqlExOfAQuery", 0, [](Stage& s) { s.text = "select id, name, note from " + s.name; },
     [](Stage& s) { return s.api->runSqlEx(s.text, VornJsonDbApi::DbCallBackFillList, &s.out); },
     OnFailure::MayBeUnfinished},
    {"runSqlExOfAnError", -1, [](Stage& s) { s.text = "select a syntax error that is longer than a short string"; },
     [](Stage& s) { return s.api->runSqlEx(s.text); }},
    {"recCreate", 0, [](Stage& s) { s.in = record(10); }, [](Stage& s) { return s.api->recCreate(s.in, s.out); }},
    {"recCreateOfADuplicate", -1,
     [](Stage& s)
     {
         s.in = record(10);
         s.in["name"] = "two";
     },
     [](Stage& s) { return s.api->recCreate(s.in, s.out); }},
    {"recCreateOfAWrongType", -1,
     [](Stage& s)
     {
         s.in = record(10);
         s.in["name"] = 5;
     },
     [](Stage& s) { return s.api->recCreate(s.in, s.out); }},
    {"recSaveOfANewRow", 0,
     [](Stage& s)
     {
         s.in = fullRecord(10);
         s.in["note"] = "5% off, in the last value";
     },
     [](Stage& s) { return s.api->recSave(s.in, true); }},
    {"recSaveWithAPercentSign", 0,
     [](Stage& s)
     {
         s.in = fullRecord(10);
         s.in["name"] = "100%% and %d, not in the last value";
         s.in["note"] = "the last";
     },
     [](Stage& s) { return s.api->recSave(s.in, true); }},
    {"recSaveOfATypeThatIsNotWritten", -1,
     [](Stage& s)
     {
         s.in = record(10);
         s.in["any"] = "a value that is longer than a short string";
     },
     [](Stage& s) { return s.api->recSave(s.in, true); }},
    {"recSaveOfAReplacingRow", 0,
     [](Stage& s)
     {
         s.in = fullRecord(2);
         s.in["note"] = "replaced";
     },
     [](Stage& s) { return s.api->recSave(s.in, false); }},
    {"recList", 0, [](Stage& s) { s.in = json(R"({"name": ["two"], "sort_by": "id", "limit": 5, "offset": 0})"); },
     [](Stage& s) { return s.api->recList(s.in, s.out); }, OnFailure::MayBeUnfinished},
    {"recListOfEverything", 0, prepareNothing, [](Stage& s) { return s.api->recList(s.in, s.out); },
     OnFailure::MayBeUnfinished},
    {"recGetOne", 1,
     [](Stage& s)
     {
         s.in["name"] = "two";
         s.out["note"] = "kept until something is found";
     },
     [](Stage& s) { return s.api->recGetOne(s.in, s.out); }},
    {"recUpdateByFilter", 0,
     [](Stage& s)
     {
         s.in["name"] = "two";
         s.in2 = json(R"({"note": "a new text that is longer than a short string", "map": {"a": 1}})");
     },
     [](Stage& s) { return s.api->recUpdateByFilter(s.in, s.in2); }},
    {"recUpdateByFilterToADuplicate", -1,
     [](Stage& s)
     {
         s.in["name"] = "two";
         s.in2["name"] = "three";
     },
     [](Stage& s) { return s.api->recUpdateByFilter(s.in, s.in2); }},
    {"recUpdateByWhere", 0,
     [](Stage& s)
     {
         s.in = json(R"({"note": "a new text", "vornSqlWhereFilter": "left out of the assignments"})");
         s.text = "id > 1";
     },
     [](Stage& s) { return s.api->recUpdateByWhere(s.in, s.text); }},
    {"recDelete", 1, [](Stage& s) { s.in = json(R"({"vornSqlWhereFilter": "id > 1", "name": "two"})"); },
     [](Stage& s) { return s.api->recDelete(s.in); }},
    {"recDeleteAll", 3, prepareNothing, [](Stage& s) { return s.api->recDeleteAll(); }},
    {"recDeleteByArray", 1, [](Stage& s) { s.list = {"three"}; },
     [](Stage& s) { return s.api->recDeleteByArray(s.list, "name"); }},
    {"recDeleteByName", 1, [](Stage& s) { s.text = "three"; },
     [](Stage& s) { return s.api->recDeleteByName(s.text, "name"); }},
    {"DbCallBackFillList", 0, prepareNothing,
     [](Stage& s) { return VornJsonDbApi::DbCallBackFillList(&s.out, 3, rowTexts, rowNames); }},
    {"DbCallBackFillRec", 0, prepareNothing,
     [](Stage& s) { return VornJsonDbApi::DbCallBackFillRec(&s.out, 3, rowTexts, rowNames); }},
    {"DbCallBackFillField", 0, prepareNothing,
     [](Stage& s) { return VornJsonDbApi::DbCallBackFillField(s.out, rowNames, rowTexts, 2); }},
    {"checkJsonType", 0, [](Stage& s) { s.in = record(10); }, [](Stage& s) { return s.api->checkJsonType(s.in); }},
    {"fillDefaultValue", 0, [](Stage& s) { s.in = record(10); },
     [](Stage& s) { return s.api->fillDefaultValue(s.in, false); }},
    {"SqlExpandMemberName", 0, [](Stage& s) { s.text = "insert into "; },
     [](Stage& s) { return s.api->SqlExpandMemberName(s.text); }},
    {"SqlExpandMemberSymbol", 0, [](Stage& s) { s.in = fullRecord(10); },
     [](Stage& s) { return s.api->SqlExpandMemberSymbol(s.text, s.in); }},
    {"SqlMakeByMatchField", 0,
     [](Stage& s)
     {
         s.in = json(R"({"key": "a value that is longer than a short string"})");
         s.text = "map";
     },
     [](Stage& s) { return s.api->SqlMakeByMatchField(s.text, s.in, s.text2); }},
    {"SqlMakeByListField", 0, [](Stage& s) { s.in = json(R"(["a value that is longer than a short string", "two"])"); },
     [](Stage& s) { return s.api->SqlMakeByListField("name", s.in, s.text); }},
    {"SqlExpandMemberList", 0, [](Stage& s) { s.in = fullRecord(10); },
     [](Stage& s) { return s.api->SqlExpandMemberList(s.in, s.text, VORN_SQL_WHERE_TYPE_OR); },
     OnFailure::MayBeUnfinished},
    {"SqlFilterConditionFromJson", 0,
     [](Stage& s)
     { s.in = json(R"({"sort_by": "a column with a rather long name", "sort_direction": "desc", "limit": 5})"); },
     [](Stage& s) { return s.api->SqlFilterConditionFromJson(s.in, s.text); }, OnFailure::MayBeUnfinished},
    {"VectorParamToJson", 0,
     [](Stage& s) {
         s.list = {"one", "a value that is longer than a short string"};
     },
     [](Stage& s) { return s.api->VectorParamToJson(s.list, "a key that is longer than a short string", s.out); }},
    {"recType", 0, prepareNothing,
     [](Stage& s) { return VORN_JSON_DB::recType(s.definition, s.name).isMember("note") ? 0 : -1; }},
    {"jsonCopyMember", 0,
     [](Stage& s)
     {
         s.in["note"] = "kept or replaced";
         s.in2 = record(10);
     },
     [](Stage& s) { return VORN_JSON_DB::jsonCopyMember(s.in, s.in2, true); }},
    {"convert2ReadableTime", 0, prepareNothing,
     [](Stage& s) { return VORN_JSON_DB::convert2ReadableTime(1000000000, s.text, 3); }},
    {"getTimeAfterNow", 0, prepareNothing,
     [](Stage&)
     {
         std::string text;
         long now = 0;
         const int status = VORN_JSON_DB::getTimeAfterNow(60, now);
         return VORN_JSON_DB::getTimeAfterNow(60, text, 3) + status;
     }},
};

std::ostream& operator<<(std::ostream& out, const Operation& operation)
{
    return out << operation.name;
}

// How a call ended: the result, or which exception.
struct Ending
{
    std::string exception;
    int result = 0;

    bool operator==(const Ending& other) const { return exception == other.exception && result == other.result; }
};

std::ostream& operator<<(std::ostream& out, const Ending& ending)
{
    return ending.exception.empty() ? out << "result " << ending.result : out << ending.exception;
}

// Standard output goes nowhere while it lives. Made with system calls only, and failure lines that the library writes
// to standard output cost no memory: nothing but the library itself allocates while memory is short.
class Silence
{
public:
    Silence() : m_saved(dup(STDOUT_FILENO))
    {
        static const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        std::fflush(stdout);
        dup2(nowhere, STDOUT_FILENO);
        blLogToStdout = true;
    }

    ~Silence()
    {
        blLogToStdout = false;
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
    }

    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    int m_saved;
};

Ending callQuietly(const Operation& operation, Stage& stage, Shortage* shortage = nullptr)
{
    const Silence silence;
    const char* exception = nullptr;
    Ending ending;
    try
    {
        ending.result = operation.call(stage);
    }
    catch (const std::bad_alloc&)
    {
        exception = "std::bad_alloc";
    }
    catch (const std::logic_error&)
    {
        exception = "std::logic_error";
    }
    catch (const Json::RuntimeError&)
    {
        exception = "Json::RuntimeError";
    }
    catch (...)
    {
        exception = "an exception that is not documented";
    }
    if (shortage != nullptr)
        shortage->end();
    if (exception != nullptr)
        ending.exception = exception;
    return ending;
}

// Which endings are documented when that allocator fails, besides the one with enough memory.
bool isDocumented(const Ending& ending, Allocator allocator)
{
    const bool failed = ending == Ending{"", -1};
    switch (allocator)
    {
        case Allocator::Sqlite:
            return failed || ending.exception == "std::logic_error";
        case Allocator::OperatorNew:
            return ending.exception == "std::bad_alloc";
        default:
            return failed || ending.exception == "std::bad_alloc" || ending.exception == "std::logic_error" ||
                   ending.exception == "Json::RuntimeError";
    }
}

// The store after a failure: its table can be created, and a record's whole life works.
void expectUsable(Stage& stage)
{
    if (!stage.api)
        stage.api.emplace(stage.database.handle(), stage.name, stage.definition, stage.create);
    ASSERT_EQ(0, stage.api->tableCreate());
    const std::vector<std::string> before = stage.content();
    Json::Value nothing;
    Json::Value listed;
    EXPECT_EQ(0, stage.api->recList(nothing, listed));
    EXPECT_EQ(before.size(), listed.size() + stage.database.rows("select name from sqlite_master").size());

    Json::Value probe = record(900);
    Json::Value stored;
    ASSERT_EQ(0, stage.api->recCreate(probe, stored));
    Json::Value expected = probe;
    for (const char* const member : {"flag", "list", "note"})
        expected[member] = stage.definition[stage.name]["member"][member]["cppDefaultValue"];
    EXPECT_EQ(expected.toStyledString(), stored.toStyledString());
    std::string name = probe["name"].asString();
    EXPECT_EQ(1, stage.api->recDeleteByName(name, "name"));
    EXPECT_EQ(before, stage.content());
    EXPECT_EQ(std::vector<std::string>{"ok"}, stage.database.rows("pragma integrity_check"));
}

// One operation on stages of one kind, with every allocation failing in turn.
class Rounds
{
public:
    Rounds(const Operation& operation, std::function<std::unique_ptr<Stage>()> makeStage)
        : m_operation(operation), m_makeStage(std::move(makeStage))
    {
        // The first pass fills what the process keeps for ever: the type map, the JSON reader and writer.
        for (int pass = 0; pass < 2; ++pass)
        {
            const std::unique_ptr<Stage> stage = prepared();
            m_outputsBefore = stage->outputs();
            m_contentBefore = stage->content();
            m_ending = callQuietly(m_operation, *stage);
            m_outputsAfter = stage->outputs();
            m_contentAfter = stage->content();
            expectUsable(*stage);
        }
        EXPECT_EQ((Ending{"", operation.result}), m_ending);
    }

    // Returns the number of allocations that the operation makes.
    long run(Allocator allocator, Failure failure) const
    {
        for (long nth = 1; nth <= mostAllocations; ++nth)
        {
            if (!round(allocator, failure, nth))
                return nth - 1;
            if (testing::Test::HasFailure())
            {
                ADD_FAILURE() << "in " << m_operation.name << ", " << allocator << ", " << failure << ", allocation "
                              << nth;
                return nth;
            }
        }
        ADD_FAILURE() << m_operation.name << " never gets through";
        return mostAllocations;
    }

private:
    std::unique_ptr<Stage> prepared() const
    {
        std::unique_ptr<Stage> stage = m_makeStage();
        stage->api.emplace(stage->database.handle(), stage->name, stage->definition, stage->create);
        VORN_JSON_DB::recType(stage->definition, stage->name);  // row callbacks cannot fill the type map themselves
        m_operation.prepare(*stage);
        return stage;
    }

    // False when the operation made fewer allocations than that.
    bool round(Allocator allocator, Failure failure, long nth) const
    {
        long before[3] = {};
        for (const Allocator each : allAllocators)
            before[static_cast<int>(each)] = faults::outstanding(each);
        bool struck = false;
        {
            const std::unique_ptr<Stage> stage = prepared();
            Shortage shortage(allocator, failure, nth);
            const Ending ending = callQuietly(m_operation, *stage, &shortage);
            struck = shortage.struck();
            judge(allocator, struck, ending, *stage);
            expectUsable(*stage);
            stage->api.reset();
            EXPECT_EQ(SQLITE_OK, stage->database.close());
        }
        for (const Allocator each : allAllocators)
            EXPECT_EQ(before[static_cast<int>(each)], faults::outstanding(each)) << "leaked from " << each;
        return struck;
    }

    void judge(Allocator allocator, bool struck, const Ending& ending, const Stage& stage) const
    {
        const std::vector<std::string> content = stage.content();
        const bool asWithMemory = ending == m_ending;
        EXPECT_TRUE(asWithMemory || (struck && isDocumented(ending, allocator))) << ending;
        const bool changed = content == m_contentAfter;
        EXPECT_TRUE(changed || content == m_contentBefore) << testing::PrintToString(content);
        if (asWithMemory && m_operation.outputs != OnFailure::Untold)
        {
            EXPECT_TRUE(changed) << "reported as done, but it is not";
            EXPECT_EQ(m_outputsAfter, stage.outputs());
        }
        else if (ending.exception.empty() && m_operation.outputs == OnFailure::Untouched)
        {
            EXPECT_EQ(m_outputsBefore, stage.outputs()) << "failed, but wrote to its outputs";
        }
    }

    const Operation& m_operation;
    std::function<std::unique_ptr<Stage>()> m_makeStage;
    Ending m_ending;
    std::string m_outputsBefore;
    std::string m_outputsAfter;
    std::vector<std::string> m_contentBefore;
    std::vector<std::string> m_contentAfter;
};

class FailingAllocations : public testing::TestWithParam<Operation>
{
};

class FailingAllocationsOfAFirstLookUp : public testing::TestWithParam<Operation>
{
};

class FailingAllocationsInAFile : public testing::TestWithParam<std::tuple<std::string, Operation>>
{
};

std::vector<Operation> operationsNamed(const std::vector<std::string>& names)
{
    std::vector<Operation> result;
    for (const std::string& name : names)
        for (const Operation& operation : operations)
            if (operation.name == name)
                result.push_back(operation);
    return result;
}

// The row callbacks are left out: without an operation before them they find no types, with or without memory.
std::vector<Operation> operationsThatLookUpTypes()
{
    return operationsNamed({"recCreate", "recCreateOfAWrongType", "recSaveOfANewRow", "recListOfEverything",
                            "recUpdateByFilter", "recDeleteByName", "checkJsonType", "fillDefaultValue", "recType"});
}

// What came of a first call.
struct FirstCall
{
    bool struck;
    bool passed;
    bool done;            // it ended as it does with enough memory,
    std::size_t outcome;  // and left this behind
    long kept[3];         // allocations that the library keeps for ever
};

// A name that the process has not seen; all have the same length, so that all are kept by as many allocations.
std::string newName()
{
    static int count = 100000;
    return "first" + std::to_string(++count);
}

// Makes an operation the first one on a new table with the nth allocation failing. Then the table is used with all its
// members and defaults.
FirstCall callFirst(const Operation& operation, Allocator allocator, Failure failure, long nth)
{
    FirstCall report = {};
    for (const Allocator each : allAllocators)
        report.kept[static_cast<int>(each)] = -faults::outstanding(each);
    {
        Stage stage(newName());
        stage.api.emplace(stage.database.handle(), stage.name, stage.definition, stage.create);
        operation.prepare(stage);
        Shortage shortage(allocator, failure, nth);
        const Ending ending = callQuietly(operation, stage, &shortage);
        report.struck = shortage.struck();
        report.done = ending == Ending{"", operation.result};
        EXPECT_TRUE(report.done || isDocumented(ending, allocator)) << ending;
        const std::vector<std::string> rows = stage.database.rows("select * from " + stage.name);
        report.outcome = std::hash<std::string>()(stage.outputs() + testing::PrintToString(rows));
        expectUsable(stage);
        EXPECT_EQ(stage.definition[stage.name]["member"].toStyledString(),
                  VORN_JSON_DB::recType(stage.definition, stage.name).toStyledString());
    }
    for (const Allocator each : allAllocators)
        report.kept[static_cast<int>(each)] += faults::outstanding(each);
    report.passed = !testing::Test::HasFailure();
    return report;
}

// The same in a process of its own.
FirstCall callFirstOfProcess(const Operation& operation, Allocator allocator, Failure failure, long nth)
{
    faults::ChildProcess child(
        [&](int report)
        { return faults::ChildProcess::send(report, callFirst(operation, allocator, failure, nth)) ? 0 : 1; });
    FirstCall report = {};
    EXPECT_TRUE(child.receive(report));
    EXPECT_EQ(0, child.wait());
    return report;
}

using FirstCaller = FirstCall (*)(const Operation& operation, Allocator allocator, Failure failure, long nth);

// A first call with each of its allocations failing in turn either fails or does as it does with enough memory, and
// what the library keeps for ever is the same in the end.
void expectGoodFirstCalls(const Operation& operation, FirstCaller caller, Allocator allocator, Failure failure)
{
    const FirstCall undisturbed = caller(operation, allocator, failure, mostAllocations);
    ASSERT_TRUE(undisturbed.passed && undisturbed.done && !undisturbed.struck);
    FirstCall report = undisturbed;
    long nth = 0;
    do
    {
        std::ostringstream where;
        where << allocator << ", " << failure << ", allocation " << ++nth;
        report = caller(operation, allocator, failure, nth);
        ASSERT_TRUE(report.passed) << where.str();
        ASSERT_TRUE(!report.done || report.outcome == undisturbed.outcome) << where.str();
        for (const Allocator each : allAllocators)
        {
            const int i = static_cast<int>(each);
            ASSERT_EQ(undisturbed.kept[i], report.kept[i]) << "leaked from " << each << ": " << where.str();
        }
    } while (report.struck);
    std::cout << allocator << ", " << failure << ": " << nth - 1 << "\n";
}

}  // namespace

TEST(FailingAllocators, FailWhereTheyAreTold)
{
    ASSERT_TRUE(faults::isReplaced(Allocator::Sqlite));
    ASSERT_TRUE(faults::isReplaced(Allocator::OperatorNew));

    ASSERT_EQ(SQLITE_OK, sqlite3_initialize());
    const long before = faults::outstanding(Allocator::Sqlite);
    Shortage sqlite(Allocator::Sqlite, Failure::Once, 2);
    void* first = sqlite3_malloc(1);
    void* second = sqlite3_malloc(1);
    void* third = sqlite3_malloc(1);
    sqlite.end();
    EXPECT_TRUE(first != nullptr && second == nullptr && third != nullptr);
    EXPECT_EQ(before + 2, faults::outstanding(Allocator::Sqlite));
    sqlite3_free(first);
    sqlite3_free(third);
    EXPECT_EQ(before, faults::outstanding(Allocator::Sqlite));

    // A record is copied without any code of this program.
    const Json::Value original = record(1);
    for (const Allocator allocator : {Allocator::OperatorNew, Allocator::Malloc})
    {
        if (faults::isReplaced(allocator))
        {
            Shortage shortage(allocator, Failure::FromThereOn, 2);
            EXPECT_ANY_THROW(Json::Value(original).clear());
            shortage.end();
            EXPECT_TRUE(shortage.struck());
        }
    }
}

// Before the other tests, so that what the library makes once, such as its JSON writer, is not made yet.
TEST(FailingAllocationsOfAFirstCall, LeaveNothingPartial)
{
    for (const Failure failure : allFailures)
        for (const Operation& operation : operationsNamed({"recSaveOfANewRow"}))
            expectGoodFirstCalls(operation, callFirstOfProcess, Allocator::OperatorNew, failure);
}

TEST_P(FailingAllocationsOfAFirstLookUp, LeaveNoPartialTypes)
{
    callFirst(GetParam(), Allocator::OperatorNew, Failure::Once, mostAllocations);
    for (const Allocator allocator : {Allocator::OperatorNew, Allocator::Malloc})
        for (const Failure failure : allFailures)
            if (faults::isReplaced(allocator))
                expectGoodFirstCalls(GetParam(), callFirst, allocator, failure);
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingAllocationsOfAFirstLookUp, testing::ValuesIn(operationsThatLookUpTypes()),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST_P(FailingAllocations, LoseNothing)
{
    const Rounds rounds(GetParam(), [] { return std::make_unique<Stage>("stage"); });
    for (const Allocator allocator : allAllocators)
        for (const Failure failure : allFailures)
            if (faults::isReplaced(allocator))
                std::cout << allocator << ", " << failure << ": " << rounds.run(allocator, failure) << "\n";
}

INSTANTIATE_TEST_SUITE_P(Operations, FailingAllocations, testing::ValuesIn(operations),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST_P(FailingAllocationsInAFile, LoseNothing)
{
    const TempFile file;
    const std::string pragma = "pragma synchronous = off; pragma journal_mode = " + std::get<0>(GetParam()) + ";";
    const Rounds rounds(std::get<1>(GetParam()), [&] { return std::make_unique<Stage>("stage", file.path(), pragma); });
    for (const Failure failure : allFailures)
    {
        const long count = rounds.run(Allocator::Sqlite, failure);
        EXPECT_LT(5, count);
        std::cout << failure << ": " << count << "\n";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Operations, FailingAllocationsInAFile,
    testing::Combine(testing::Values(std::string("delete"), std::string("wal")),
                     testing::ValuesIn(operationsNamed({"tableCreate", "recCreate", "recSaveOfAReplacingRow",
                                                        "recGetOne", "recUpdateByFilter", "recDeleteAll"}))),
    [](const auto& operation) { return std::get<0>(operation.param) + "_" + std::get<1>(operation.param).name; });
