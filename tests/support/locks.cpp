// SPDX-License-Identifier: MIT
//
// Lock holders in a thread and in a process.

#include "locks.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <future>
#include <stdexcept>
#include <thread>

#include "child_process.h"
#include "database.h"

namespace support
{
namespace
{

// Whoever tries meanwhile reads for a moment, which the end must wait for.
constexpr const char* takeSql = "PRAGMA busy_timeout = 10000; BEGIN IMMEDIATE";
constexpr const char* releaseSql = "COMMIT";

class ThreadLock final : public WriteLock
{
public:
    explicit ThreadLock(std::string path) : m_path(std::move(path)) {}
    ~ThreadLock() override
    {
        if (m_thread.joinable())
            release();
    }

    void take() override
    {
        std::promise<int> taken;
        m_release = std::promise<void>();
        m_thread = std::thread(
            [this, &taken]
            {
                Database database(m_path);
                taken.set_value(database.run(takeSql));
                m_release.get_future().wait();
                EXPECT_EQ(SQLITE_OK, database.run(releaseSql));
            });
        EXPECT_EQ(SQLITE_OK, taken.get_future().get());
    }

    void release() override
    {
        m_release.set_value();
        m_thread.join();
    }

private:
    std::string m_path;
    std::thread m_thread;
    std::promise<void> m_release;
};

// The child runs one statement for each byte that it is sent and answers with SQLite's status.
class ProcessLock final : public WriteLock
{
public:
    explicit ProcessLock(const std::string& path)
    {
        int ends[2];
        if (pipe(ends) != 0)
            throw std::runtime_error("cannot make a pipe");
        m_child = std::make_unique<faults::ChildProcess>(
            [&](int report)
            {
                close(ends[1]);
                return serve(path, ends[0], report);
            });
        close(ends[0]);
        m_send = ends[1];
    }

    ~ProcessLock() override
    {
        close(m_send);
        EXPECT_EQ(0, m_child->wait());
    }

    void take() override { ask('t'); }
    void release() override { ask('r'); }

private:
    static int serve(const std::string& path, int receive, int report)
    {
        std::unique_ptr<Database> pDatabase;
        char request = 0;
        while (read(receive, &request, 1) == 1)
        {
            if (!pDatabase)
                pDatabase = std::make_unique<Database>(path);
            faults::ChildProcess::send(report, pDatabase->run(request == 't' ? takeSql : releaseSql));
        }
        return 0;
    }

    void ask(char request)
    {
        int status = -1;
        EXPECT_EQ(1, write(m_send, &request, 1));
        EXPECT_TRUE(m_child->receive(status));
        EXPECT_EQ(SQLITE_OK, status);
    }

    std::unique_ptr<faults::ChildProcess> m_child;
    int m_send = -1;
};

}  // namespace

std::unique_ptr<WriteLock> lockFromThread(const std::string& path)
{
    return std::make_unique<ThreadLock>(path);
}

std::unique_ptr<WriteLock> lockFromProcess(const std::string& path)
{
    return std::make_unique<ProcessLock>(path);
}

}  // namespace support
