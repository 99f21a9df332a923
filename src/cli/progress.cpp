// SPDX-License-Identifier: MIT

#include "progress.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "terminal.h"

namespace cli
{

namespace
{

std::string duration(double dSeconds)
{
    constexpr long kMinute = 60;
    const long seconds = static_cast<long>(dSeconds + 0.5);
    char szText[32];
    std::snprintf(szText, sizeof szText, "%ld:%02ld", seconds / kMinute, seconds % kMinute);
    return szText;
}

}  // namespace

Progress::Progress(std::string strWhat) : m_strWhat(std::move(strWhat)), m_blTerminal(isTerminal(STDERR_FILENO)) {}

void Progress::show(std::uint64_t done, std::uint64_t total, std::uint64_t records)
{
    if (!m_blTerminal)
        return;
    const Clock::time_point now = Clock::now();
    if (now < m_next)
        return;
    m_next = now + std::chrono::milliseconds(100);
    m_blShown = true;

    const double dSeconds = std::chrono::duration<double>(now - m_start).count();
    std::string strEnd = " " + std::to_string(records) + " records, " +
                         std::to_string(static_cast<std::uint64_t>(static_cast<double>(records) / dSeconds)) + "/s";
    if (total > 0 && done > 0)
    {
        const double dShare = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
        strEnd += ", " + std::to_string(static_cast<int>(dShare * 100.0)) + " %, " +
                  duration(dSeconds * (1.0 - dShare) / dShare) + " left";
        const std::size_t width = terminalWidth() - 1;
        const std::size_t taken = m_strWhat.size() + strEnd.size() + 3;
        if (taken + 5 < width)
        {
            const bool blUtf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
            const std::size_t cells = width - taken;
            const auto full = static_cast<std::size_t>(dShare * static_cast<double>(cells));
            std::string strBar;
            for (std::size_t i = 0; i < cells; ++i)
                strBar += i < full ? (blUtf8 ? "█" : "#") : (blUtf8 ? "░" : ".");
            strEnd = " " + strBar + strEnd;
        }
    }
    std::string strLine = m_strWhat + strEnd;
    // Only the bar holds bytes that are no characters of their own, and it fits.
    if (strLine.size() >= terminalWidth() && strEnd.find("█") == std::string::npos)
        strLine.resize(terminalWidth() - 1);
    std::fprintf(stderr, "\r\033[K%s", strLine.c_str());
    std::fflush(stderr);
}

void Progress::clear()
{
    if (m_blShown)
        std::fputs("\r\033[K", stderr);
    m_blShown = false;
}

}  // namespace cli
