// SPDX-License-Identifier: MIT
//
// Somebody else who holds the write lock of a database file.

#ifndef VORNJSONDB_TESTS_LOCKS_H
#define VORNJSONDB_TESTS_LOCKS_H

#include <memory>
#include <string>

namespace support
{

// Holds the write lock of a database file from elsewhere. take() and release() return when it is done.
class WriteLock
{
public:
    virtual ~WriteLock() = default;
    virtual void take() = 0;
    virtual void release() = 0;
};

// A second connection in a thread of its own.
std::unique_ptr<WriteLock> lockFromThread(const std::string& path);

// A connection in a process of its own. Make it before any thread and before the test opens the file itself.
std::unique_ptr<WriteLock> lockFromProcess(const std::string& path);

}  // namespace support

#endif  // VORNJSONDB_TESTS_LOCKS_H
