// SPDX-License-Identifier: MIT
//
// Four processes write into one file, for real.

#include <memory>
#include <vector>

#include "child_process.h"
#include "table_fixture.h"

using namespace table_tests;

namespace
{

constexpr int kProcesses = 4;
constexpr int kRecords = 2000;

int writeRecords(const std::string& strPath, int iProcess)
{
    const Database db(strPath);
    // Only a power cut would show the difference. The pragma reads the schema, and so may meet a lock.
    if (db.run("PRAGMA busy_timeout = 60000; PRAGMA synchronous = OFF; PRAGMA busy_timeout = 0") != SQLITE_OK)
        return 1;
    vorn::Table table(db.handle(), "T",
                      definitionOf("T", json(R"({"n": {"cpptype": "int"}, "p": {"cpptype": "int"}})")));
    table.setLockTimeout(60000);
    for (int i = 0; i < kRecords; ++i)
    {
        Json::Value jRecord, jOut;
        jRecord["n"] = i;
        jRecord["p"] = iProcess;
        if (table.recCreate(jRecord, jOut) != 0 || jOut != jRecord)
            return 1;
    }
    return 0;
}

}  // namespace

// Without a unique key nothing would tell a record that is stored twice.
TEST(TableContention, OfFourProcessesStoresEveryRecordOnce)
{
    for (const char* szJournal : {"DELETE", "WAL"})
    {
        SCOPED_TRACE(szJournal);
        const support::TempFile file;
        {
            const Database db(file.path());
            ASSERT_EQ(SQLITE_OK, db.run("PRAGMA journal_mode = " + std::string(szJournal) +
                                        "; CREATE TABLE T (n INTEGER, p INTEGER)"));
        }
        std::vector<std::unique_ptr<faults::ChildProcess>> children;
        for (int i = 0; i < kProcesses; ++i)
            children.push_back(
                std::make_unique<faults::ChildProcess>([&file, i](int) { return writeRecords(file.path(), i); }));
        for (const auto& pChild : children)
            EXPECT_EQ(0, pChild->wait());
        const Database db(file.path());
        EXPECT_EQ(std::vector<std::string>{std::to_string(kProcesses * kRecords)}, db.rows("SELECT count(*) FROM T"));
        EXPECT_EQ(std::vector<std::string>{std::to_string(kProcesses * kRecords)},
                  db.rows("SELECT count(*) FROM (SELECT DISTINCT n, p FROM T)"));
    }
}
