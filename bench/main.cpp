// SPDX-License-Identifier: MIT
//
// The benchmark: options, and what they run.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>

#include "growth.h"
#include "report.h"
#include "targets.h"
#include "work.h"

namespace
{

// One batch and nothing else, for tools that count what a process does: two runs that differ in --count alone differ
// by the cost of the work.
void runOnly(const std::string& strWork, const std::string& strContestant, const bench::Setting& setting,
             std::size_t count)
{
    const auto inTable = [&]
    {
        const bench::Work& work = bench::work(strWork);
        bench::Place place(bench::contestantKind(strContestant), setting);
        place.prepare(work, work.isWhole() ? 4 : 1000);  // always the same, so that it falls out
        return place.runOnce(count);
    };
    const bench::Cost cost =
        bench::isSized(strWork) ? bench::runSized(strWork, strContestant, setting.rows, count) : inTable();
    std::printf("records %zu allocations %zu\n", cost.records, cost.allocations);
}

// 0 where all that must be reached is.
int judgeCounts(const std::string& strCounts)
{
    const std::vector<bench::Judged> all = bench::countedTargets(bench::Counts(strCounts));
    bench::printTargets(all);
    const auto reached = [](const bench::Judged& judged) { return bench::reaches(judged, judged.must); };
    return std::all_of(all.begin(), all.end(), reached) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
try
{
    std::signal(SIGPIPE, SIG_IGN);  // a contestant's process that ends is told by what cannot be read from it
    bench::ReportOptions options;
    bench::Setting setting;
    std::vector<std::string> only;
    std::size_t count = 1;
    CLI::App app("Measures the library beside hand-written code and other libraries, all at the same work.");
    CLI::Option* const pOnly = app.add_option("--only", only, "WORK CONTESTANT: one batch, nothing else")->expected(2);
    app.add_option("--count", count, "operations of --only")->check(CLI::Range(1, 1000))->needs(pOnly);
    app.add_option("--rows", setting.rows, "rows of its table, or the work's size")
        ->check(CLI::Range(1, 1000000))
        ->needs(pOnly);
    app.add_flag("--file", setting.blFile, "on a file (WAL, synchronous OFF) instead of in memory")->needs(pOnly);
    app.add_flag("--transaction", setting.blTransaction, "the batch inside one transaction")->needs(pOnly);
    app.add_flag("--quick", options.blQuick, "short batches, in memory with autocommit only")->excludes(pOnly);
    app.add_option("--counts", options.strCounts, "file of instructions per record")->excludes(pOnly);
    app.add_option("--data", options.strDataFolder, "folder for the pictures' data")->excludes(pOnly);
    bool blTargets = false;
    app.add_flag("--targets", blTargets, "judges --counts by the targets of vorn::Table, measures nothing")
        ->excludes(pOnly);
    CLI11_PARSE(app, argc, argv);

    if (blTargets)
        return judgeCounts(options.strCounts);
    if (only.empty())
        bench::report(options);
    else
        runOnly(only[0], only[1], setting, count);
    return 0;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
}
