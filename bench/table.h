// SPDX-License-Identifier: MIT
//
// A table in Markdown, its columns aligned so that it reads well as plain text.

#ifndef VORN_BENCH_TABLE_H
#define VORN_BENCH_TABLE_H

#include <string>
#include <vector>

namespace bench
{

class Table
{
public:
    explicit Table(std::vector<std::string> head) : m_rows{std::move(head)} {}

    void add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }

    // To standard output. The first column is aligned to the left, the others to the right.
    void print() const;

private:
    std::vector<std::vector<std::string>> m_rows;
};

std::string number(double value, int digits);

}  // namespace bench

#endif  // VORN_BENCH_TABLE_H
