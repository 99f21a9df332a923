// SPDX-License-Identifier: MIT
//
// The pauses of the retry of locked statements: a usleep() that is counted and need not really sleep.

#ifndef VORNJSONDB_TESTS_SLEEP_WATCH_H
#define VORNJSONDB_TESTS_SLEEP_WATCH_H

#include <functional>
#include <vector>

namespace support
{

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
    // onSleep is called in that pause only.
    SleepWatch(Pause pause, int nth, const std::function<void()>& onSleep)
        : SleepWatch(pause,
                     [=](int count)
                     {
                         if (count == nth)
                             onSleep();
                     })
    {
    }
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

#endif  // VORNJSONDB_TESTS_SLEEP_WATCH_H
