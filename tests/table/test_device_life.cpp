// SPDX-License-Identifier: MIT
//
// A device's life: operations of all kinds on one table in one file, with firmware that starts anew, upgrades, older
// firmware, kills, and a second process that reads all the time. Half of it is one process, whose memory must not grow;
// then the process that works is killed again and again. What it has acknowledged must be in the file, at most one
// operation more, and each whole. VORN_TEST_OPERATIONS sets how many operations; VORN_TEST_SEED repeats a run, but for
// the moments of kills.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <thread>

#include "child_process.h"
#include "device_model.h"
#include "failing_allocators.h"
#include "faulty_vfs.h"
#include "holdings.h"
#include "table_fixture.h"

using namespace table_tests;
using faults::ChildProcess;
using faults::FaultyVfs;
using support::Holdings;

namespace
{

constexpr long kSamples = 20;
constexpr long kUpgrades = 10;
constexpr long kSqliteSwing = 4096;
constexpr std::uintmax_t kGrowth = 96UL * 1024;  // of the file: what is added to each record, twice as an index
constexpr std::uintmax_t kMostBeside = 16UL * 1024 * 1024;  // SQLite writes a log of 4 MB back, when nobody reads

struct Report
{
    long nStep;
    bool blSample;
    Holdings held;
    std::uintmax_t fileBytes, besideBytes;
};

std::uintmax_t sizeOf(const std::string& strPath)
{
    std::error_code none;
    const std::uintmax_t size = std::filesystem::file_size(strPath, none);
    return none ? 0 : size;
}

class DeviceLife : public testing::TestWithParam<const char*>
{
protected:
    // A child's part: works until that operation is done, and tells each.
    int work(int report, long nUntil)
    {
        const FaultyVfs withoutSyncs;
        Device device(m_file.path());
        device.open(m_model.version());
        while (m_model.steps() < nUntil && !HasFailure())
        {
            Report now = {m_model.step(&device), false, {}, 0, 0};
            now.blSample = now.nStep % m_nSampleEvery == 0;
            if (now.blSample)
            {
                device.close();
                now.held = support::holdings();
                now.fileBytes = sizeOf(m_file.path());
                now.besideBytes = sizeOf(m_file.path() + "-wal") + sizeOf(m_file.path() + "-journal");
                device.open(m_model.version());
            }
            if (!ChildProcess::send(report, now))
                return 1;
        }
        return HasFailure() ? 1 : 0;
    }

    // Another child's: old firmware that reads, whole records in whole transactions.
    int read(int report) const
    {
        const FaultyVfs withoutSyncs;
        Device device(m_file.path());
        device.open(0);
        while (!HasFailure())
        {
            long long nSum = 0;
            const long long nRecords = device.table().recForEach(Json::Value(),
                                                                 [&](Json::Value& jRecord)
                                                                 {
                                                                     nSum += jRecord["amount"].asInt64();
                                                                     return DeviceModel::isWhole(jRecord);
                                                                 });
            EXPECT_TRUE(done(device.table(), nRecords, std::max(nRecords, 0LL)));
            EXPECT_EQ(0, nSum);
            if (!ChildProcess::send(report, nRecords))
                return 1;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return 1;
    }

    // Lets a child work, and another read, until that operation; or kills it at a random moment after that one.
    void live(long nUntil, bool blKill)
    {
        const auto start = std::chrono::steady_clock::now();
        ChildProcess reader([this](int report) { return read(report); });
        ChildProcess worker([this, nUntil, blKill](int report)
                            { return work(report, blKill ? m_nOperations : nUntil); });
        Report report = {};
        while (m_model.steps() < nUntil && worker.receive(report))
            note(report);
        if (blKill)
        {
            std::this_thread::sleep_for(std::chrono::microseconds(m_random.below(2000)));
            worker.kill();
            while (worker.receive(report))
                note(report);
        }
        EXPECT_EQ(blKill ? -SIGKILL : 0, worker.wait());
        reader.kill();
        EXPECT_EQ(-SIGKILL, reader.wait()) << "what it has read was not whole";
        for (long long nRecords = 0; reader.receive(nRecords);)
            ++m_nReads;
        m_seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        compare(blKill);
    }

    void note(const Report& report)
    {
        ASSERT_EQ(report.nStep, m_model.step(nullptr));
        if (report.blSample)
            m_samples.push_back(report);
    }

    // The file holds what the model does, or, after a kill, the operation that follows too.
    void compare(bool blKilled)
    {
        const Database db(m_file.path());
        EXPECT_EQ(std::vector<std::string>{"ok"}, db.rows("PRAGMA integrity_check"));
        const auto rows = db.rows("SELECT * FROM device ORDER BY id");
        const std::size_t columns = db.rows("PRAGMA table_info(device)").size();
        const auto isSame = [&]
        { return columns == m_nColumns + static_cast<std::size_t>(m_model.level()) && rows == m_model.rows(); };
        if (blKilled && !isSame() && m_model.steps() < m_nOperations)
        {
            m_model.step(nullptr);
            ++m_nUnacknowledged;
        }
        EXPECT_TRUE(isSame()) << "after operation " << m_model.steps();
    }

    void expectFlat()
    {
        std::cout << "| operations | " << support::holdingsTitle << " | file kB | journal kB |\n"
                  << "|---:|---:|---:|---:|---:|---:|---:|---:|\n";
        for (const Report& sample : m_samples)
            std::cout << "| " << sample.nStep << " | " << sample.held << " | " << sample.fileBytes / 1024 << " | "
                      << sample.besideBytes / 1024 << " |\n";
        ASSERT_LT(2U, m_samples.size());
        const Report& settled = m_samples[1];
        for (std::size_t i = 2; i < m_samples.size(); ++i)
        {
            SCOPED_TRACE("after operation " + std::to_string(m_samples[i].nStep));
            if (m_samples[i].nStep <= m_nOperations / 2)  // of one process
                support::expectNoMore(settled.held, m_samples[i].held, kSqliteSwing);
            EXPECT_GE(settled.fileBytes + kGrowth, m_samples[i].fileBytes);
            EXPECT_GE(kMostBeside, m_samples[i].besideBytes);
        }
    }

    static long operations()
    {
        // A machine of 32 bits is emulated more often than not, and a build with a sanitizer is slow.
        const bool blSlow = sizeof(void*) == 4 || !faults::isReplaced(faults::Allocator::Malloc);
        const char* const szGiven = std::getenv("VORN_TEST_OPERATIONS");
        return szGiven != nullptr ? std::max(1000L, std::strtol(szGiven, nullptr, 10)) : blSlow ? 2000 : 10000;
    }

    const std::size_t m_nColumns = 5;
    const long m_nOperations = operations();
    const long m_nKills = std::clamp(m_nOperations / 5000, m_nOperations < 10000 ? 5L : 25L, 200L);
    const long m_nSampleEvery = m_nOperations / kSamples;
    support::TempFile m_file;
    support::Random m_random;
    DeviceModel m_model{m_random.seed(), m_nOperations / kUpgrades - 1, m_nSampleEvery};
    std::vector<Report> m_samples;
    long m_nReads = 0;
    int m_nUnacknowledged = 0;
    double m_seconds = 0;
};

}  // namespace

TEST_P(DeviceLife, LosesNothingAndHoldsNoMoreInTheEndThanAtTheStart)
{
    {
        Database db(m_file.path());
        ASSERT_EQ(SQLITE_OK, db.run("PRAGMA journal_mode = " + std::string(GetParam())));
        Device(m_file.path()).open(0);
    }
    live(m_nOperations / 2, false);
    for (long i = 1; i <= m_nKills && !HasFailure(); ++i)
    {
        SCOPED_TRACE("kill " + std::to_string(i));
        live(m_nOperations / 2 + (m_nOperations / 2 - m_nSampleEvery) * i / m_nKills, true);
    }
    live(m_nOperations, false);
    expectFlat();
    EXPECT_LE(kUpgrades, m_model.level());
    EXPECT_LT(m_nKills, m_nReads);
    std::cout << m_model.steps() << " operations, " << m_model.level() << " upgrades, " << m_nKills << " kills, "
              << m_nUnacknowledged << " operations done but not acknowledged, " << m_nReads << " reads; " << std::fixed
              << std::setprecision(1) << m_seconds << " s\n";
}

INSTANTIATE_TEST_SUITE_P(JournalModes, DeviceLife, testing::Values("delete", "wal"),
                         [](const auto& mode) { return std::string(mode.param); });
