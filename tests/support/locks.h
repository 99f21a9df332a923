// SPDX-License-Identifier: MIT
//
// What the retry of locked statements meets in tests: somebody else who holds the write lock of a database file, and a
// usleep() that is counted and need not really sleep.

#ifndef VORNJSONDB_TESTS_LOCKS_H
#define VORNJSONDB_TESTS_LOCKS_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

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

// Watches usleep() while it lives; one at a time.
class SleepWatch
{
public:
    enum class Pause
    {
        Real,
        Skipped
    };

    // onSleep is called at every pause with their count so far.
    explicit SleepWatch(Pause pause, std::function<void(int)> onSleep = {});
    ~SleepWatch();
    SleepWatch(const SleepWatch&) = delete;
    SleepWatch& operator=(const SleepWatch&) = delete;

    // The microseconds of every pause.
    const std::vector<unsigned>& pauses() const { return m_pauses; }

    // For the replaced usleep(): whether it shall really sleep.
    bool note(unsigned microseconds);

private:
    Pause m_pause;
    std::function<void(int)> m_onSleep;
    std::vector<unsigned> m_pauses;
};

}  // namespace support

#endif  // VORNJSONDB_TESTS_LOCKS_H
