// SPDX-License-Identifier: MIT
//
// Waiting for locks, for one whole operation.

#ifndef VORN_WAITER_H
#define VORN_WAITER_H

#include <chrono>

namespace vorn
{

class Waiter
{
public:
    explicit Waiter(int iMilliseconds) : m_timeout(iMilliseconds) {}

    // Sleeps a little, longer every time. False, at once, when the time is over; it begins to run with the first call.
    bool pause();

private:
    using Clock = std::chrono::steady_clock;

    std::chrono::milliseconds m_timeout;
    std::chrono::milliseconds m_pause{0};  // the next one; 0 before the first
    Clock::time_point m_end;
};

}  // namespace vorn

#endif  // VORN_WAITER_H
