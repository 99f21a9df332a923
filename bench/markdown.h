// SPDX-License-Identifier: MIT
//
// A table in Markdown, its columns aligned so that it reads well as plain text.

#ifndef VORN_BENCH_MARKDOWN_H
#define VORN_BENCH_MARKDOWN_H

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace bench
{

class MarkdownTable
{
public:
    explicit MarkdownTable(std::vector<std::string> head) : m_rows{std::move(head)} {}

    void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }

    // To standard output. The first column is aligned to the left, the others to the right.
    void print() const
    {
        std::vector<std::size_t> widths(m_rows.front().size(), 3);
        for (const auto& row : m_rows)
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());

        for (const auto& row : m_rows)
        {
            for (std::size_t i = 0; i < row.size(); ++i)
                std::printf(i == 0 ? "| %-*s |" : " %*s |", static_cast<int>(widths[i]), row[i].c_str());
            std::printf("\n");
            if (&row != &m_rows.front())
                continue;
            for (std::size_t i = 0; i < row.size(); ++i)
                std::printf(i == 0 ? "|-%s-|" : "-%s:|", std::string(widths[i], '-').c_str());
            std::printf("\n");
        }
        std::printf("\n");
        std::fflush(stdout);
    }

private:
    std::vector<std::vector<std::string>> m_rows;
};

inline std::string number(double value, int digits)
{
    char szText[64];
    std::snprintf(szText, sizeof szText, "%.*f", digits, value);
    return szText;
}

}  // namespace bench

#endif  // VORN_BENCH_MARKDOWN_H
