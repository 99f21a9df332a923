// SPDX-License-Identifier: MIT

#include "progress.h"

#include <langinfo.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>

#include "terminal.h"

namespace cli
{

namespace
{

std::string duration(double dSeconds)
{
    constexpr long kMinute = 60;
    const long seconds = std::lround(dSeconds);
    const std::string strSeconds = std::to_string(seconds % kMinute);
    return std::to_string(seconds / kMinute) + (strSeconds.size() < 2 ? ":0" : ":") + strSeconds;
}

std::string bar(double dShare, std::size_t cells)
{
    const bool blUtf8 = std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    const auto full = static_cast<std::size_t>(dShare * static_cast<double>(cells));
    std::string strBar;
    for (std::size_t i = 0; i < cells; ++i)
        strBar += i < full ? (blUtf8 ? "█" : "#") : (blUtf8 ? "░" : ".");
    return strBar;
}

void draw(const std::string& strLine)
{
    std::cerr << "\r\033[K" + strLine;  // in one piece
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
    const auto rate = static_cast<std::uint64_t>(static_cast<double>(records) / dSeconds);
    std::string strLine = m_strWhat + ' ' + std::to_string(records) + " records, " + std::to_string(rate) + "/s";
    const std::size_t width = terminalWidth(STDERR_FILENO) - 1;  // the last column would begin a new line
    if (total > 0 && done > 0)
    {
        const double dShare = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
        strLine += ", " + std::to_string(static_cast<int>(dShare * 100.0)) + " %, " +
                   duration(dSeconds * (1.0 - dShare) / dShare) + " left";
        constexpr std::size_t kShortestBar = 5;
        if (strLine.size() + 1 + kShortestBar <= width)
            return draw(bar(dShare, width - strLine.size() - 1) + ' ' + strLine);
    }
    draw(strLine.substr(0, width));
}

void Progress::clear()
{
    if (m_blShown)
        draw("");
    m_blShown = false;
}

}  // namespace cli
