// SPDX-License-Identifier: MIT

#include "sleep_watch.h"

#include <unistd.h>

#include <ctime>

namespace support
{
namespace
{

SleepWatch* g_watch = nullptr;

}  // namespace

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
        m_onSleep(static_cast<int>(m_pauses.size()));
    return m_pause == Pause::Real;
}

}  // namespace support

extern "C" __attribute__((visibility("default"))) int usleep(useconds_t microseconds)
{
    if (support::g_watch != nullptr && !support::g_watch->note(microseconds))
        return 0;
    timespec pause = {};
    pause.tv_sec = static_cast<time_t>(microseconds / 1000000);
    pause.tv_nsec = static_cast<long>(microseconds % 1000000) * 1000;
    return nanosleep(&pause, nullptr);
}
