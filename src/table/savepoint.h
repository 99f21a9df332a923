// SPDX-License-Identifier: MIT
//
// Several statements as one: a transaction of their own, or a savepoint in the caller's.

#ifndef VORN_SAVEPOINT_H
#define VORN_SAVEPOINT_H

#include <vorn/status.h>

struct sqlite3;

namespace vorn
{

struct Store;
class Waiter;

// The first statement inside must be one that writes: it then waits for the lock before any work is done.
class Savepoint
{
public:
    Savepoint(Store& store, Waiter& waiter) : m_store(store), m_waiter(waiter) {}
    ~Savepoint() { undo(); }  // what was not kept
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

    // Misuse where SQLite is in the midst of a statement that writes.
    bool begin(Status& status);

    // Repeated while it is locked; where it stays locked, everything is undone.
    bool keep(Status& status);

private:
    void undo() noexcept;
    void close() noexcept;

    Store& m_store;
    Waiter& m_waiter;
    bool m_blOpen = false;
    bool m_blOwn = false;  // it began the transaction
};

}  // namespace vorn

#endif  // VORN_SAVEPOINT_H
