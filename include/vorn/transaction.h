// SPDX-License-Identifier: MIT
//
// Several operations of one connection as one: all of them are stored, or none.

#ifndef VORN_TRANSACTION_H
#define VORN_TRANSACTION_H

#include <vorn/status.h>

#include <memory>

struct sqlite3;

namespace vorn
{

// Begins when it is constructed and waits for the writer's lock then, so that nothing that follows meets it. Inside
// another transaction it is a savepoint. Neither copyable nor movable. Belongs, with everything else on the connection,
// to one thread at a time.
class Transaction
{
public:
    // pDb must outlive the object. Waits for lockTimeoutMs milliseconds at most, 0: not at all. Where it cannot begin,
    // isOpen() is false and status() says why.
    VORN_TABLE_EXPORT explicit Transaction(sqlite3* pDb, int lockTimeoutMs = 5000);

    // Rolls back what was not committed.
    VORN_TABLE_EXPORT ~Transaction();

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // False before it began, after commit() or rollback(), and where SQLite has ended it by itself.
    VORN_TABLE_EXPORT bool isOpen() const;

    VORN_TABLE_EXPORT const Status& status() const;

    // 0, or -1: on Locked the transaction is still open and commit() may be called again. Misuse where it is not open.
    VORN_TABLE_EXPORT int commit();

    // 0, or -1. Misuse where it is not open.
    VORN_TABLE_EXPORT int rollback();

private:
    struct Inside;
    std::unique_ptr<Inside> m_pInside;
};

}  // namespace vorn

#endif  // VORN_TRANSACTION_H
