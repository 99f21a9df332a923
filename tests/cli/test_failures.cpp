// SPDX-License-Identifier: MIT
//
// Locks, signals, full disks, files that cannot be written: a clear error, and nothing half-done.

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>

#include "program.h"

namespace
{

using cli_test::Cli;
using cli_test::expectAll;
using cli_test::Result;
using cli_test::sh;
using cli_test::sql;
using cli_test::writeFile;

constexpr int kFailure = 3;
constexpr const char* kRolledBack = "Interrupted: interrupted: everything was rolled back, nothing has changed\n";

class Failures : public Cli
{
protected:
    void SetUp() override
    {
        Cli::SetUp();
        ASSERT_EQ(sh("vornjsondb create id=1 name=Ann").status, 0);
    }
};

double seconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Holds the write lock as long as it lives.
class Lock
{
public:
    Lock()
    {
        sqlite3_open("people.db", &m_pDb);
        EXPECT_EQ(sqlite3_exec(m_pDb, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    ~Lock() { sqlite3_close(m_pDb); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    sqlite3* m_pDb = nullptr;
};

TEST_F(Failures, ALockIsWaitedForAsLongAsAsked)
{
    const Lock lock;
    for (const char* szCommand : {"list", "create id=2", "set id=1 --to age=1", "delete id=1", "import in", "upgrade"})
    {
        writeFile("in", "{\"id\":3}\n");
        const double dWaited = seconds(
            [szCommand] {
                expectAll({{std::string("vornjsondb --wait 0.4 ") + szCommand, kFailure, "", "Locked: "}});
            });
        EXPECT_GE(dWaited, 0.4) << szCommand;
        EXPECT_LT(dWaited, 4.0) << szCommand;
    }
}

TEST_F(Failures, ALockThatGoesIsWaitedFor)
{
    ASSERT_EQ(sh("mkfifo in").status, 0);
    // The import holds the lock until its file ends.
    const Result result =
        sh("vornjsondb import --format jsonl in & exec 3>in; vornjsondb --wait 20 create id=2 3>&- >made & "
           "echo '{\"id\":3}' >&3; sleep 0.5; exec 3>&-; wait; cat made");
    EXPECT_EQ(result.out, "1\n{\"city\":\"Bern\",\"id\":2}\n") << result.err;
    EXPECT_EQ(sh("vornjsondb count").out, "3\n");
}

// Starts the line in the background, waits until it works, and interrupts it.
Result interrupt(const std::string& line, const std::string& strSignal)
{
    return sh(line +
              " & i=0; while [ $i -lt 500 ] && ! [ -e people.db-journal ]; do sleep 0.01; i=$((i+1)); done; "
              "sleep 0.1; kill -" +
              strSignal + " $!; wait $!");
}

TEST_F(Failures, AnInterruptedImportIsRolledBackAndSaysSo)
{
    ASSERT_EQ(
        sh("mkfifo in; sh -c 'exec 3<>in; while yes \"{}\" | head -n 300 >&3; do sleep 0.1; done' & echo $! >feeder")
            .status,
        0);
    for (const char* szSignal : {"INT", "TERM", "HUP"})
    {
        const Result result = interrupt("vornjsondb import --format jsonl in", szSignal);
        EXPECT_EQ(result.status, kFailure);
        EXPECT_EQ(result.err, std::string("vornjsondb: ") + kRolledBack);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(sh("vornjsondb count").out, "1\n");
    }
    sh("kill $(cat feeder)");
}

TEST_F(Failures, InterruptedDeletesAndUpgradesAreRolledBackAndSaySo)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) INSERT INTO people(id, name) "
        "SELECT i, 'n' || i FROM n; CREATE TRIGGER slow BEFORE DELETE ON people BEGIN SELECT count(*) FROM (WITH "
        "RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) SELECT i FROM n); END");
    writeFile("more.json", R"({"people": {"member": {"name": {"cpptype": "string", "index": true},
        "new": {"cpptype": "string", "index": true}, "score": {"cpptype": "double", "index": true},
        "city": {"cpptype": "string", "index": true}, "active": {"cpptype": "bool", "index": true}}}})");
    for (const char* szLine : {"vornjsondb delete id.gt=0", "vornjsondb --def more.json upgrade"})
    {
        const Result result = interrupt(szLine, "INT");
        EXPECT_EQ(result.status, kFailure) << szLine;
        EXPECT_EQ(result.err, std::string("vornjsondb: ") + kRolledBack) << szLine;
    }
    expectAll({{"vornjsondb count", 0, "300000\n", ""}, {"vornjsondb check | grep -c name", 1, "0\n", ""}});
}

TEST_F(Failures, WaitingForALockIsInterruptedAtOnce)
{
    const Lock lock;
    const double dWaited = seconds(
        []
        {
            const Result result = sh("vornjsondb --wait 60 create id=2 & sleep 0.5; kill -INT $!; wait $!");
            EXPECT_EQ(result.status, kFailure);
            EXPECT_EQ(result.err, std::string("vornjsondb: ") + kRolledBack);
        });
    EXPECT_LT(dWaited, 20.0);
}

TEST_F(Failures, OutputThatCannotBeWrittenIsAnError)
{
    for (const char* szCommand : {"list", "list --format json", "list --format csv", "list --format table", "get id=1",
                                  "count", "export", "explain", "check", "init --table people 2>/dev/null"})
    {
        const std::string strCommand = std::string("vornjsondb ") + szCommand;
        const bool blQuiet = strCommand.find("2>") != std::string::npos;
        expectAll({{strCommand + " >/dev/full", kFailure, "",
                    blQuiet ? "" : "Full: writing standard output failed: No space left on device"},
                   {strCommand + " >&-", kFailure, "", blQuiet ? "" : "writing standard output failed"},
                   {"(sleep 0.2; " + strCommand + "; echo $? >status) | true; cat status", 0, "3\n",
                    blQuiet ? "" : "Interrupted: writing standard output failed: Broken pipe"}});
    }
    expectAll({{"vornjsondb export --output /dev/full", kFailure, "", "Full: writing /dev/full failed"},
               {"vornjsondb export --output none/out", kFailure, "", "Missing: writing none/out failed"},
               {"vornjsondb export --output /dev/stdout", 0, "{\"city\":\"Bern\",\"id\":1,\"name\":\"Ann\"}\n", ""}});
}

TEST_F(Failures, AnExportThatIsKilledLeavesNothingThatLooksWhole)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) INSERT INTO people(id) "
        "SELECT i "
        "FROM n");
    writeFile("out.json", "before\n");
    sh("vornjsondb export --format json --output out.json & while ! [ -s out.json.part ]; do sleep 0.01; done; kill "
       "-KILL $!; "
       "wait $!");
    EXPECT_EQ(cli_test::readFile("out.json"), "before\n");
    EXPECT_TRUE(std::filesystem::exists("out.json.part"));
    const Result result =
        sh("rm out.json.part; vornjsondb export --format json --output out.json & while ! [ -s "
           "out.json.part ]; do sleep 0.01; done; kill -INT $!; wait $!");
    EXPECT_EQ(result.err, "vornjsondb: Interrupted: interrupted\n");
    EXPECT_EQ(cli_test::readFile("out.json"), "before\n");
    EXPECT_FALSE(std::filesystem::exists("out.json.part"));
    EXPECT_EQ(sh("vornjsondb export --format json --output out.json").status, 0);
    EXPECT_EQ(sh("tail -n 1 out.json").out, "]\n");
}

TEST_F(Failures, WhatIsNoDatabaseIsToldAndLeftAlone)
{
    writeFile("no.db", std::string(5000, 'x'));
    writeFile("in", "{\"id\":3}\n");
    for (const char* szCommand :
         {"list", "create id=2", "delete id=1", "import in", "upgrade", "check", "init --table people"})
        expectAll({{std::string("vornjsondb --db no.db ") + szCommand, kFailure, "", "Corrupt: "}});
    EXPECT_EQ(cli_test::readFile("no.db"), std::string(5000, 'x'));
}

TEST_F(Failures, AReadOnlyDatabaseIsReadAndNothingElse)
{
    writeFile("in", "{\"id\":3}\n");
    const std::string strDb = "vornjsondb --db 'file:people.db?mode=ro' ";
    expectAll({{strDb + "count", 0, "1\n", ""}});
    for (const char* szCommand : {"create id=2", "delete id=1", "set id=1 --to age=3", "import in"})
        expectAll({{strDb + szCommand, kFailure, "", "ReadOnly: "}});
}

// Neither the file nor what it holds grows beyond what is free.
TEST_F(Failures, AnImportThatADiskHasNoRoomForLeavesTheDatabaseAsItWas)
{
    std::string strRecords;
    for (int i = 2; i < 30000; ++i)
        strRecords += "{\"id\":" + std::to_string(i) + ",\"name\":\"a name that takes some room\"}\n";
    writeFile("in.jsonl", strRecords);
    const std::string strBefore = cli_test::readFile("people.db");
    // A limit for every file stands for the disk.
    expectAll({{"ulimit -f 200; vornjsondb import in.jsonl", kFailure, "", "vornjsondb: "},
               {"vornjsondb count", 0, "1\n", ""}});

    const Result result =
        sh("unshare --mount sh -c 'mount -t tmpfs -o size=300k tmpfs /mnt && cp people.db /mnt && "
           "(vornjsondb --db /mnt/people.db import in.jsonl; echo $?; vornjsondb --db /mnt/people.db count)'");
    if (result.out.empty())
        GTEST_SKIP() << "no small disk may be mounted here: " << result.err;
    EXPECT_EQ(result.out, "3\n1\n");
    EXPECT_NE(result.err.find("vornjsondb: Full: "), std::string::npos) << result.err;
}

}  // namespace
