// SPDX-License-Identifier: MIT
//
// One run of one statement.

#ifndef VORN_RUN_H
#define VORN_RUN_H

#include <vorn/status.h>

#include <memory>
#include <vector>

#include "bound_value.h"
#include "store.h"

namespace vorn
{

// The statement is released when the run's object goes, whichever way.
class Run
{
public:
    Run(Store& store, Waiter& waiter) : m_store(store), m_waiter(waiter) {}
    ~Run() { release(); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    // Gets the statement. start() does it too.
    bool prepareFor(const Shape& shape, Status& status);

    // Runs the statement up to its first row or its end, waiting for locks. The values stay where they are until the
    // run has ended or is started again, which needs no new statement where the shape is the same.
    bool start(const Shape& shape, const std::vector<BoundValue>& values, Status& status);

    // Whether there is a row to be read.
    bool isRow() const { return m_blRow; }

    // On to the next row.
    bool next(Status& status);

    // The record of the row, by the members of a Select; jRec is null.
    bool read(Json::Value& jRec, Status& status)
    {
        return m_pKept->reader.read(statement(), m_store.strictReader, jRec, status);
    }

    sqlite3_stmt* statement() const { return m_pKept->pStatement.get(); }

    // Resets the statement and gives it back.
    void release() noexcept;

private:
    bool bind(const std::vector<BoundValue>& values, Status& status);
    bool failStep(int iResult, bool blStale, Status& status);

    Store& m_store;
    Waiter& m_waiter;
    std::unique_ptr<KeptStatement> m_pKept;
    unsigned m_iGeneration = 0;
    bool m_blRow = false;
    bool m_blInTransaction = false;  // before the run
};

// Runs a statement whose rows are not wanted to its end.
bool runToEnd(Run& run, const Shape& shape, const std::vector<BoundValue>& values, Status& status);
bool runToEnd(Store& store, Waiter& waiter, const Shape& shape, const std::vector<BoundValue>& values, Status& status);

}  // namespace vorn

#endif  // VORN_RUN_H
