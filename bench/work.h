// SPDX-License-Identifier: MIT
//
// The pieces of work, and one batch of one of them by one contestant.

#ifndef VORN_BENCH_WORK_H
#define VORN_BENCH_WORK_H

#include <memory>
#include <string>
#include <vector>

#include "contestant.h"
#include "measure.h"
#include "statements.h"

namespace bench
{

struct Work
{
    WorkKind kind;
    std::string strId;
    std::string strName;
    std::string strRival;      // the contestant that ratios are formed against
    std::size_t rows = 10000;  // of the table where time is measured

    // How many records one operation reads or changes in a table of so many rows. A count is one record.
    std::size_t records(std::size_t rowsOfTable) const;
    bool isWhole() const { return kind == WorkKind::List || kind == WorkKind::Bulk || kind == WorkKind::ForEach; }
    bool isSingle() const { return kind >= WorkKind::Create && kind <= WorkKind::Delete; }

    // Everyone who does this work; the peers' kept forms too, where it is about single records.
    std::vector<ContestantKind> contestants(bool blKeptPeers) const;
};

const std::vector<Work>& works();
const Work& work(const std::string& strId);

// Where the table lies and how the work is committed.
struct Setting
{
    bool blFile = false;         // WAL, synchronous OFF; otherwise in memory
    bool blTransaction = false;  // all of a batch in one transaction; otherwise each statement on its own
    std::size_t rows = 10000;
};

std::string nameOf(const Setting& setting);

// A contestant with a filled table of its own.
class Place
{
public:
    Place(const ContestantKind& kind, const Setting& setting);

    Contestant& contestant() { return *m_contestant; }

    // Makes what a batch of count operations gets.
    void prepare(const Work& work, std::size_t count);

    // Does the prepared work and says what it cost. Afterwards the table holds the same rows as before. A few
    // operations come first that are not measured: freed memory that the C library has yet to merge would else be
    // charged to whoever allocates next, another contestant as it may be.
    Cost run();

    // Does the first count of the prepared operations and nothing else, for tools that count all that a process does.
    Cost runOnce(std::size_t count) { return batch(0, count); }

private:
    std::size_t operate(std::size_t i);  // the i-th operation: the records that it read or changed
    Cost batch(std::size_t first, std::size_t count);
    void removeExtraRows();

    Setting m_setting;
    std::unique_ptr<support::TempFile> m_file;
    std::unique_ptr<Contestant> m_contestant;
    const Work* m_pWork = nullptr;
    Input m_input;
    std::size_t m_prepared = 0;
    std::size_t m_warmUp = 0;
};

// Before anything is measured: every contestant does every work in a table of that size, in memory and on a file.
// Throws, and says which contestant differs in what, unless all give the records and leave the rows that they must.
void proveSameRecords(std::size_t rows);

}  // namespace bench

#endif  // VORN_BENCH_WORK_H
