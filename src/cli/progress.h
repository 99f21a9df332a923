// SPDX-License-Identifier: MIT
//
// A bar for work that lasts, on standard error while that is a terminal. By hand: no Debian library draws one.

#ifndef VORN_CLI_PROGRESS_H
#define VORN_CLI_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace cli
{

class Progress
{
public:
    explicit Progress(std::string strWhat);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // done of total steps (bytes, say) are done, and with them so many records; total 0 where it is not known. Cheap:
    // draws ten times a second at most, and not at all in the first second.
    void show(std::uint64_t done, std::uint64_t total, std::uint64_t records);

    // Whether standard error is a terminal.
    bool isSeen() const { return m_blTerminal; }

    // Takes the bar away.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string m_strWhat;
    bool m_blTerminal;
    bool m_blShown = false;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start + std::chrono::seconds(1);
};

}  // namespace cli

#endif  // VORN_CLI_PROGRESS_H
