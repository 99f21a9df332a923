// SPDX-License-Identifier: MIT
//
// A device that keeps records in one table for years: every operation that it does has a number and follows from that
// and from the records that there are. One and the same code does an operation on the table and on the model of it, or
// on the model alone where another process has done it on the table.

#ifndef VORN_TESTS_DEVICE_MODEL_H
#define VORN_TESTS_DEVICE_MODEL_H

#include <json/json.h>
#include <vorn/table.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "database.h"
#include "random.h"

namespace table_tests
{

// A connection and the table on it, as firmware of one version opens them. Version 0 has the first members, each that
// follows one more: "v1", "v2", ...
class Device
{
public:
    explicit Device(std::string strPath) : m_strPath(std::move(strPath)) {}
    void open(int iVersion);
    void close();
    vorn::Table& table() { return *m_pTable; }
    sqlite3* handle() { return m_pDb->handle(); }

private:
    std::string m_strPath;
    std::unique_ptr<support::Database> m_pDb;
    std::unique_ptr<vorn::Table> m_pTable;
};

class DeviceModel
{
public:
    // Each operation n that upgradeEvery divides upgrades, each that emptyEvery divides takes all records away.
    DeviceModel(std::uint64_t seed, long nUpgradeEvery, long nEmptyEvery)
        : m_seed(seed), m_nUpgradeEvery(nUpgradeEvery), m_nEmptyEvery(nEmptyEvery)
    {
    }

    // The next operation, and its number; on the table, too, unless there is none. What differs fails the test.
    long step(Device* pDevice);

    long steps() const { return m_nDone; }
    int version() const { return m_iVersion; }
    int level() const { return static_cast<int>(m_added.size()); }  // the newest version that there was

    // The table's rows as SQL selects all of them by "id".
    std::vector<std::string> rows() const;

    // A record as every version sees it, complete in itself; the sum of all "amount" is 0 at any time.
    static bool isWhole(const Json::Value& jRecord);

private:
    struct Record
    {
        int iRevision = 0;
        long long nAmount = 0;
        std::vector<int> added;
    };
    using Records = std::map<int, Record>;

    void create();
    void createSeveral();
    void save();
    void update();
    void transfer();
    void startAndGiveUp();
    void remove(std::size_t count);
    void read();
    void visit();
    void runSql();
    void fail();
    void look();
    void reopen();
    void upgrade();
    void empty();

    Json::Value toJson(int iId) const;
    Records::iterator any();
    int revision() { return static_cast<int>(m_random.below(1000)); }
    vorn::Table& table() { return m_pDevice->table(); }

    std::uint64_t m_seed;
    long m_nUpgradeEvery;
    long m_nEmptyEvery;
    long m_nDone = 0;
    int m_iVersion = 0;
    int m_iNextId = 1;
    std::vector<int> m_added;  // the defaults of what was added
    Records m_records;

    Device* m_pDevice = nullptr;  // during a step, like what follows
    support::Random m_random{0};  // of the step
};

}  // namespace table_tests

#endif  // VORN_TESTS_DEVICE_MODEL_H
