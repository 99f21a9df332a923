// SPDX-License-Identifier: MIT
//
// Lock holders in a thread and in a process, and the replaced usleep().

#include "locks.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <future>
#include <stdexcept>
#include <thread>

#include "store.h"

namespace support
{
namespace
{

SleepWatch* g_watch = nullptr;

constexpr const char* takeSql = "BEGIN IMMEDIATE";
constexpr const char* releaseSql = "COMMIT";

class ThreadLock final : public WriteLock
{
public:
    explicit ThreadLock(std::string path) : m_path(std::move(path)) {}
    ~ThreadLock() override
    {
        if (m_thread.joinable())
        {
            release();
        }
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
        int toChild[2];
        int fromChild[2];
        if (pipe(toChild) != 0 || pipe(fromChild) != 0)
        {
            throw std::runtime_error("cannot make pipes");
        }
        m_child = fork();
        if (m_child < 0)
        {
            throw std::runtime_error("cannot fork");
        }
        if (m_child == 0)
        {
            close(toChild[1]);
            close(fromChild[0]);
            serve(path, toChild[0], fromChild[1]);
        }
        close(toChild[0]);
        close(fromChild[1]);
        m_send = toChild[1];
        m_receive = fromChild[0];
    }

    ~ProcessLock() override
    {
        close(m_send);
        close(m_receive);
        int status = 0;
        EXPECT_EQ(m_child, waitpid(m_child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }

    void take() override { ask('t'); }
    void release() override { ask('r'); }

private:
    [[noreturn]] static void serve(const std::string& path, int receive, int send)
    {
        sqlite3* pDb = nullptr;
        char request = 0;
        while (read(receive, &request, 1) == 1)
        {
            if (pDb == nullptr && sqlite3_open(path.c_str(), &pDb) != SQLITE_OK)
            {
                _exit(1);
            }
            const char* const sql = request == 't' ? takeSql : releaseSql;
            const char status = static_cast<char>(sqlite3_exec(pDb, sql, nullptr, nullptr, nullptr));
            if (write(send, &status, 1) != 1)
            {
                _exit(1);
            }
        }
        sqlite3_close(pDb);
        _exit(0);
    }

    void ask(char request)
    {
        char status = -1;
        EXPECT_EQ(1, write(m_send, &request, 1));
        EXPECT_EQ(1, read(m_receive, &status, 1));
        EXPECT_EQ(SQLITE_OK, status);
    }

    pid_t m_child = -1;
    int m_send = -1;
    int m_receive = -1;
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

SleepWatch::SleepWatch(Pause pause, std::function<void(int)> onSleep) : m_pause(pause), m_onSleep(std::move(onSleep))
{
    g_watch = this;
}

SleepWatch::~SleepWatch()
{
    g_watch = nullptr;
}

bool SleepWatch::note(unsigned microseconds)
{
    m_pauses.push_back(microseconds);
    if (m_onSleep)
    {
        m_onSleep(static_cast<int>(m_pauses.size()));
    }
    return m_pause == Pause::Real;
}

}  // namespace support

extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds)
{
    if (support::g_watch != nullptr && !support::g_watch->note(microseconds))
    {
        return 0;
    }
    timespec pause = {};
    pause.tv_sec = static_cast<time_t>(microseconds / 1000000);
    pause.tv_nsec = static_cast<long>(microseconds % 1000000) * 1000;
    return nanosleep(&pause, nullptr);
}
