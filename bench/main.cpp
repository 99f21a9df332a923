// SPDX-License-Identifier: MIT
//
// The benchmark: options, and what they run.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>

#include "report.h"
#include "table.h"

namespace
{

struct Options
{
    bool blReport = false;
    bool blQuick = false;
    std::vector<std::string> works;
    std::vector<std::string> contestants;
    std::vector<std::string> only;
    std::size_t count = 1;
    std::size_t rounds = 11;
    bench::Setting setting;
    std::string strCounts;
    std::string strData;
};

// Those that are named, or all.
template <class Item>
std::vector<Item> chosen(const std::vector<Item>& all, const std::vector<std::string>& names)
{
    std::vector<Item> items;
    std::copy_if(all.begin(), all.end(), std::back_inserter(items),
                 [&](const Item& item)
                 { return names.empty() || std::find(names.begin(), names.end(), item.strId) != names.end(); });
    if (!names.empty() && items.size() != names.size())
        throw std::invalid_argument("--works and --contestants take names from the help's lists");
    return items;
}

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

// One setting, without proof: for a look while working on the library.
void runSetting(const bench::ReportOptions& report, const bench::Setting& setting)
{
    std::mt19937 random(20240229);
    for (const bench::Work& work : report.works)
    {
        const bench::Rounds rounds = bench::runWork(work, setting, report.kinds, report.effort, random);
        std::printf("%s, %zu rows, %s\n\n", work.strName.c_str(), setting.rows, bench::nameOf(setting).c_str());
        bench::Table table({"contestant", "ns/record", "ratio", "least", "most", "allocations/record"});
        for (const bench::ContestantKind& kind : report.kinds)
        {
            const bench::Spread ratio = rounds.ratio(kind.strId, work.strRival);
            table.add({kind.strName, bench::number(rounds.nanoseconds(kind.strId).median, 0),
                       bench::number(ratio.median, 2), bench::number(ratio.least, 2), bench::number(ratio.most, 2),
                       bench::number(rounds.allocations(kind.strId), 2)});
        }
        table.print();
    }
}

void run(const Options& options)
{
    if (!options.only.empty())
    {
        runOnly(options);
        return;
    }
    bench::ReportOptions report;
    report.kinds = chosen(bench::contestantKinds(), options.contestants);
    report.works = chosen(bench::works(), options.works);
    report.effort.rounds = options.rounds;
    if (options.blQuick)
        report.effort.batch = 5000000;
    if (!options.blReport)
    {
        runSetting(report, options.setting);
        return;
    }
    report.blEverySetting = !options.blQuick;
    if (!options.strCounts.empty())
        report.counts = bench::Counts(options.strCounts);
    report.strDataFolder = options.strData;
    bench::report(report);
}

}  // namespace

int main(int argc, char** argv)
try
{
    std::signal(SIGPIPE, SIG_IGN);  // a contestant's process that ends is told by what cannot be read from it
    Options options;
    CLI::App app("Measures the library beside hand-written code and other libraries, all at the same work.");
    app.add_flag("--report", options.blReport, "proof, works, growth, memory, targets; otherwise works in one setting");
    app.add_flag("--quick", options.blQuick, "short batches; the report in memory with autocommit only");
    app.add_option("--works", options.works, "of list,page,create,fetch,update,delete")->delimiter(',');
    app.add_option("--contestants", options.contestants,
                   "of library,percall,kept,exec,sqlitecpp,soci,poco,raw; with kept and percall among them")
        ->delimiter(',');
    app.add_option("--rounds", options.rounds, "measured rounds")->check(CLI::Range(1, 1000));
    app.add_option("--rows", options.setting.rows, "rows of the table, outside the report")
        ->check(CLI::Range(500, 1000000));
    app.add_flag("--file", options.setting.blFile, "on a file (WAL, synchronous OFF) instead of in memory");
    app.add_flag("--transaction", options.setting.blTransaction, "each batch inside one transaction");
    app.add_option("--counts", options.strCounts, "file of instructions per record for the report");
    app.add_option("--data", options.strData, "folder for the data of the report's pictures");
    app.add_option("--only", options.only, "WORK CONTESTANT: one batch, nothing else, for counting tools")->expected(2);
    app.add_option("--count", options.count, "operations of --only")->check(CLI::Range(1, 1000));
    CLI11_PARSE(app, argc, argv);

    run(options);
    return 0;
}
catch (const std::exception& error)
{
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
}
