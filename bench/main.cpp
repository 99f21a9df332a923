// SPDX-License-Identifier: MIT
//
// The benchmark: options, and what they run.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "measure.h"
#include "proof.h"
#include "runner.h"

namespace
{

struct Options
{
    bool blQuick = false;
    std::vector<std::string> works;
    std::vector<std::string> contestants;
    std::vector<std::string> only;
    std::size_t count = 1;
    bench::Setting setting;
    std::size_t rounds = 11;
};

// One batch and nothing else, for tools that count what a process does: two runs that differ in --count alone differ
// by the cost of the work.
void runOnly(const Options& options)
{
    constexpr std::size_t kMostOperations = 1000;
    const bench::Work& work = bench::work(options.only.at(0));
    bench::Place place(bench::contestantKind(options.only.at(1)), options.setting);
    place.prepare(work, kMostOperations);
    const bench::Cost cost = place.runOnce(options.count);
    std::printf("records %zu allocations %zu\n", cost.records, cost.allocations);
}

void runAll(const Options& options)
{
    bench::proveSameRecords(500);
    std::printf("All contestants give the same records.\n");

    std::vector<bench::ContestantKind> kinds;
    for (const bench::ContestantKind& kind : bench::contestantKinds())
    {
        const auto& wanted = options.contestants;
        if (wanted.empty() || std::find(wanted.begin(), wanted.end(), kind.strId) != wanted.end())
            kinds.push_back(kind);
    }

    std::mt19937 random(20240229);
    const bench::Effort effort{options.rounds, options.blQuick ? 5000000 : 30000000};
    for (const bench::Work& work : bench::works())
    {
        const auto& wanted = options.works;
        if (!wanted.empty() && std::find(wanted.begin(), wanted.end(), work.strId) == wanted.end())
            continue;
        const bench::Result result = bench::measure(work, options.setting, kinds, effort, random);
        std::printf("\n%s, %zu rows, %s\n  %-34s %10s  %-22s %8s\n", work.strName.c_str(), options.setting.rows,
                    bench::nameOf(options.setting).c_str(), "", "ns/record", "ratio (least .. most)", "allocs");
        for (const bench::ContestantKind& kind : kinds)
        {
            const bench::Spread ratio = result.ratio(kind.strId, work.strRival);
            std::printf("  %-34s %10.0f  %5.2f (%.2f .. %.2f)    %8.2f%s\n", kind.strName.c_str(),
                        result.time(kind.strId).median, ratio.median, ratio.least, ratio.most,
                        result.allocations.at(kind.strId), kind.strId == work.strRival ? "  rival" : "");
        }
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    Options options;
    CLI::App app("Measures the library beside hand-written code and other libraries, all at the same work.");
    app.add_flag("--quick", options.blQuick, "shorter batches: a first impression");
    app.add_option("--works", options.works, "only these works")->delimiter(',');
    app.add_option("--contestants", options.contestants, "only these contestants, the works' rivals among them")
        ->delimiter(',');
    app.add_option("--only", options.only, "WORK CONTESTANT: one batch, nothing else, for counting tools")->expected(2);
    app.add_option("--count", options.count, "operations of --only")->check(CLI::Range(1, 1000));
    app.add_option("--rows", options.setting.rows, "rows of the table")->check(CLI::Range(500, 1000000));
    app.add_option("--rounds", options.rounds, "measured rounds")->check(CLI::Range(1, 1000));
    app.add_flag("--file", options.setting.blFile, "on a file (WAL, synchronous OFF) instead of in memory");
    app.add_flag("--transaction", options.setting.blTransaction, "each batch inside one transaction");
    CLI11_PARSE(app, argc, argv);

    try
    {
        if (!options.only.empty())
            runOnly(options);
        else
            runAll(options);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "bench: %s\n", error.what());
        return 1;
    }
}
