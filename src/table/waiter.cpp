// SPDX-License-Identifier: MIT

#include "waiter.h"

#include <algorithm>
#include <thread>

namespace vorn
{

bool Waiter::pause()
{
    constexpr std::chrono::milliseconds kFirst(1);
    constexpr std::chrono::milliseconds kLongest(50);

    const Clock::time_point now = Clock::now();
    if (m_pause.count() == 0)
    {
        m_pause = kFirst;
        m_end = now + m_timeout;
    }
    if (now >= m_end)
        return false;
    std::this_thread::sleep_for(std::min<Clock::duration>(m_pause, m_end - now));
    m_pause = std::min(m_pause * 2, kLongest);
    return true;
}

}  // namespace vorn
