// SPDX-License-Identifier: MIT
//
// Storage that fails when a test says so: a VFS over SQLite's default one, in its place while an object lives.

#ifndef VORNJSONDB_TESTS_FAULTY_VFS_H
#define VORNJSONDB_TESTS_FAULTY_VFS_H

#include <sqlite3.h>

#include <ostream>

namespace faults
{

// What SQLite asks of its storage.
enum class Request
{
    Open,
    Read,
    Write,
    Truncate,
    Sync,
    Delete,
    Lock,
    SharedMemory,
    SharedLock,
    Any  // of those that change something that others see: all but Read
};

std::ostream& operator<<(std::ostream& out, Request request);

// Syncs are counted but not done: only a power cut would show the difference.
class FaultyVfs
{
public:
    FaultyVfs();
    ~FaultyVfs();
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;

    // The nth request of that kind from now on gets this status, and with stays all after it too. A write that fails
    // has written the first half.
    void fail(Request request, int status, long nth, bool stays);

    // At the nth request of that kind from now on the process is killed, a write having written the first half.
    void kill(Request request, long nth);

    // Ends what fail() began.
    void heal();

    // Whether a request has failed since the last fail().
    bool struck() const { return m_struck; }

    // For the functions of the VFS: what the request shall return; SQLITE_OK: what the default VFS returns.
    int ask(Request request);

private:
    sqlite3_vfs m_vfs;
    sqlite3_vfs* m_pReal;
    Request m_request = Request::Any;
    int m_status = SQLITE_OK;
    long m_left = 0;  // 0: nothing fails
    bool m_stays = false;
    bool m_kills = false;
    bool m_struck = false;
};

}  // namespace faults

#endif  // VORNJSONDB_TESTS_FAULTY_VFS_H
