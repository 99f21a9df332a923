// SPDX-License-Identifier: MIT
//
// The whole benchmark: every work in every setting, growth, memory, targets; in Markdown on standard output, and as
// data for the pictures.

#ifndef VORN_BENCH_REPORT_H
#define VORN_BENCH_REPORT_H

#include <string>

namespace bench
{

struct ReportOptions
{
    bool blQuick = false;       // short batches, in memory with autocommit only
    std::string strCounts;      // file of instructions per record
    std::string strDataFolder;  // where the pictures' data goes; empty: nowhere
};

void report(const ReportOptions& options);

}  // namespace bench

#endif  // VORN_BENCH_REPORT_H
