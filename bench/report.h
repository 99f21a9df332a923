// SPDX-License-Identifier: MIT
//
// The whole benchmark: every work in every setting, growth, memory, targets; in Markdown on standard output, and as
// data for the pictures.

#ifndef VORN_BENCH_REPORT_H
#define VORN_BENCH_REPORT_H

#include <string>
#include <vector>

#include "runner.h"
#include "targets.h"

namespace bench
{

struct ReportOptions
{
    std::vector<ContestantKind> kinds;
    std::vector<Work> works;
    Effort effort;
    bool blEverySetting = true;  // otherwise in memory, autocommit, only
    Counts counts;
    std::string strDataFolder;  // where the pictures' data goes; empty: nowhere
};

void report(const ReportOptions& options);

}  // namespace bench

#endif  // VORN_BENCH_REPORT_H
