// SPDX-License-Identifier: MIT
//
// The pieces of work, and one batch of one of them by one contestant.

#ifndef VORN_BENCH_WORK_H
#define VORN_BENCH_WORK_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "contestant.h"

namespace bench
{

enum class WorkKind
{
    List,
    Page,
    Create,
    Fetch,
    Update,
    Delete
};

struct Work
{
    WorkKind kind;
    std::string strId;
    std::string strName;
    std::string strRival;  // the contestant that ratios are formed against
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

struct Cost
{
    std::int64_t nanoseconds = 0;
    std::size_t allocations = 0;
    std::size_t records = 0;  // read or changed
};

// A contestant with a filled table of its own.
class Place
{
public:
    Place(const ContestantKind& kind, const Setting& setting);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    Contestant& contestant() { return *m_contestant; }

    // Makes what a batch of up to count operations gets.
    void prepare(const Work& work, std::size_t count);

    // Does the work count times and says what it cost. Before and after it the table holds the same rows.
    Cost run(std::size_t count);

    // The same without putting the table back, for tools that count everything that the process does.
    Cost runOnce(std::size_t count);

private:
    void restore(std::size_t count);
    void removeExtraRows();

    Setting m_setting;
    std::string m_strFolder;  // of the file
    std::unique_ptr<Contestant> m_contestant;
    const Work* m_pWork = nullptr;
    Input m_input;
    std::size_t m_prepared = 0;
};

}  // namespace bench

#endif  // VORN_BENCH_WORK_H
