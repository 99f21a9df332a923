// SPDX-License-Identifier: MIT

#include "table.h"

#include <algorithm>
#include <cstdio>

namespace bench
{

void Table::print() const
{
    std::vector<std::size_t> widths(m_rows.front().size(), 3);
    for (const auto& row : m_rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }

    for (const auto& row : m_rows)
    {
        for (std::size_t i = 0; i < row.size(); ++i)
            std::printf(i == 0 ? "| %-*s |" : " %*s |", static_cast<int>(widths[i]), row[i].c_str());
        std::printf("\n");
        if (&row != &m_rows.front())
            continue;
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            const std::string strLine(widths[i], '-');
            std::printf(i == 0 ? "|-%s-|" : "-%s:|", strLine.c_str());
        }
        std::printf("\n");
    }
    std::printf("\n");
    std::fflush(stdout);
}

std::string number(double value, int digits)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%.*f", digits, value);
    return szText;
}

}  // namespace bench
