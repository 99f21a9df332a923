// SPDX-License-Identifier: MIT

#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "growth.h"
#include "markdown.h"
#include "targets.h"

namespace bench
{

namespace
{

std::string text(const std::optional<double>& value, int digits)
{
    return value ? number(*value, digits) : "";
}

// The data of one picture: a line of the contestants' names, then lines of a label and numbers.
class DataFile
{
public:
    DataFile(const std::string& strFolder, const std::string& strName, const std::string& strLabel,
             const std::vector<ContestantKind>& kinds)
    {
        if (strFolder.empty())
            return;
        m_file.open(strFolder + '/' + strName);
        if (!m_file)
            throw std::runtime_error("cannot write " + strFolder + '/' + strName);
        label(strLabel);
        for (const ContestantKind& kind : kinds)
            m_file << "\t\"" << kind.strName << '"';
        m_file << '\n';
    }

    void label(const std::string& strLabel) { m_file << '"' << strLabel << '"'; }
    void add(double value) { m_file << '\t' << value; }
    void end() { m_file << '\n'; }

private:
    std::ofstream m_file;
};

std::vector<ContestantKind> kindsOf(std::initializer_list<const char*> ids)
{
    std::vector<ContestantKind> kinds;
    kinds.reserve(ids.size());
    for (const char* szId : ids)
        kinds.push_back(contestantKind(szId));
    return kinds;
}

class Report
{
public:
    explicit Report(const ReportOptions& options)
        : m_options(options), m_batch(options.blQuick ? 5000000 : 30000000), m_counts(options.strCounts)
    {
    }

    void run()
    {
        // The memory first: freed memory of other work would be used up before the process grows.
        const std::map<std::string, long> peaks = peakOfListing(100000);
        proveSameRecords(500);
        std::printf("All contestants gave the same records and left the same rows.\n\n");

        mainSetting();
        if (!m_options.blQuick)
            otherSettings();
        growth();
        memory(peaks);

        std::printf("### Targets\n\n");
        printTargets(m_judged);
        std::printf("### Targets of vorn::Table\n\n");
        printTargets(m_judgedTable);
        if (!m_options.blQuick)
        {
            std::printf("### Targets missed in other settings, of %zu\n\n", m_judgedElsewhere.size());
            m_judgedElsewhere.erase(std::remove_if(m_judgedElsewhere.begin(), m_judgedElsewhere.end(),
                                                   [](const Judged& judged) {
                                                       return reaches(judged, judged.must) &&
                                                              (!judged.aim || reaches(judged, *judged.aim));
                                                   }),
                                    m_judgedElsewhere.end());
            printTargets(m_judgedElsewhere);
        }
        std::printf("(i): rounds lay on both sides of the bound, so the instructions decided.\n");
    }

private:
    void mainSetting()
    {
        // Who stands in which table of the page, in this order.
        const std::vector<ContestantKind> contractRoom =
            kindsOf({"library", "percall", "kept", "exec", "sqlitecpp", "soci", "poco", "raw"});
        const std::vector<ContestantKind> tableRoom =
            kindsOf({"table", "kept", "sqlitecpp", "sqlitecpp-kept", "soci", "soci-kept", "poco", "poco-kept"});
        DataFile contract(m_options.strDataFolder, "works.tsv", "work", contractRoom);
        DataFile table(m_options.strDataFolder, "table.tsv", "work", tableRoom);
        for (const Work& work : works())
        {
            Setting here;
            here.rows = work.rows;
            const Rounds rounds = runWork(work, here, m_batch, true);
            std::printf("### %s (%s)\n\n", work.strName.c_str(), nameOf(here).c_str());
            MarkdownTable figures({"contestant", "ns/record", "instructions/record", "allocations/record",
                                   "beside per call: time", "instructions", "beside kept: time", "instructions"});
            for (const ContestantKind& kind : work.contestants(true))
            {
                std::vector<std::string> row{kind.strName, number(rounds.nanoseconds(kind.strId).median, 0),
                                             text(m_counts.instructions(work.strId, kind.strId), 0),
                                             number(rounds.allocations(kind.strId), 1)};
                for (const char* szRival : {"percall", "kept"})
                {
                    row.push_back(kind.strId == szRival ? "1" : text(rounds.ratio(kind.strId, szRival)));
                    row.push_back(kind.strId == szRival ? "1"
                                                        : text(m_counts.ratio(work.strId, kind.strId, szRival), 2));
                }
                figures.add(std::move(row));
            }
            figures.print();
            if (contestantKind("library").does(work.kind))
                enterRatios(contract, work, rounds, contractRoom, work.strRival);
            enterRatios(table, work, rounds, tableRoom, "kept");
            judge(work, here, rounds);
        }
    }

    // A contestant that does not do the work has no bar.
    static void enterRatios(DataFile& data, const Work& work, const Rounds& rounds,
                            const std::vector<ContestantKind>& kinds, const std::string& strRival)
    {
        data.label(work.strId);
        for (const ContestantKind& kind : kinds)
            data.add(rounds.has(kind.strId) ? rounds.ratio(kind.strId, strRival).median : std::nan(""));
        data.end();
    }

    void otherSettings()
    {
        std::printf("### Other settings: ratio of time\n\n");
        for (const Setting& here : {Setting{false, true}, Setting{true, false}, Setting{true, true}})
        {
            std::vector<std::string> head{nameOf(here)};
            std::vector<Rounds> columns;
            for (const Work& work : works())
            {
                if (!contestantKind("library").does(work.kind))
                    break;
                head.push_back(work.strId);
                columns.push_back(runWork(work, here, m_batch, false));
                judge(work, here, columns.back());
            }
            MarkdownTable table(head);
            for (const ContestantKind& kind : contestantKinds())
            {
                if (!columns.front().has(kind.strId))
                    continue;
                std::vector<std::string> row{kind.strName};
                for (std::size_t i = 0; i < columns.size(); ++i)
                    row.push_back(number(columns[i].ratio(kind.strId, works()[i].strRival).median, 2));
                table.add(std::move(row));
            }
            table.print();
        }
    }

    // Enters the targets of one work.
    void judge(const Work& work, const Setting& here, const Rounds& rounds)
    {
        const bool blMain = !here.blFile && !here.blTransaction;
        const std::string strCounted =
            work.strId + (here.blFile ? "--file" : "") + (here.blTransaction ? "--transaction" : "");
        for (const Target& target : workTargets())
        {
            if (target.strWork != work.strId || !target.must.time)  // the others need no clock
                continue;
            if (!rounds.has(target.strContestant) || !rounds.has(target.strRival))
                continue;
            const Judged judged{blMain ? work.strName : work.strName + ", " + nameOf(here),
                                contestantKind(target.strRival).strName,
                                rounds.ratio(target.strContestant, target.strRival),
                                m_counts.ratio(strCounted, target.strContestant, target.strRival),
                                here.blFile && target.onFile ? *target.onFile : target.must,
                                target.aim};
            (!blMain                           ? m_judgedElsewhere
             : target.strContestant == "table" ? m_judgedTable
                                               : m_judged)
                .push_back(judged);
        }
    }

    void growth()
    {
        const Rounds rows = listByRows();
        growthTable("rows: list all, ns/record", rows, contestantKinds(), kGrowthRows, "rows", "growth-rows.tsv");
        // Counted in a table of 1,000 rows where the name of the work does not say otherwise.
        const auto many = m_counts.instructions("list@100000", "library");
        const auto few = m_counts.instructions("list", "library");
        m_judged.push_back({"list all, per record, 100k : 1k rows", "itself",
                            rows.ratio(lane("library", 100000), lane("library", 1000)),
                            many && few ? std::optional<double>(*many / *few) : std::nullopt, time(1.35), time(1.25)});

        const std::vector<ContestantKind>& kinds = wideKinds();
        const Rounds creates = createByMembers();
        growthTable("members: create and get back, ns/member", creates, kinds, kGrowthMembers, "members",
                    "growth-members-create.tsv");
        growthTable("members: list all, ns/member", listByMembers(), kinds, kGrowthMembers, "members",
                    "growth-members-list.tsv");
        m_judged.push_back({"create, per member, 256 : 16 members", "itself",
                            creates.ratio(lane("library", 256), lane("library", 16)), std::nullopt, time(1.5),
                            time(1.3)});
    }

    template <class Sizes>
    void growthTable(const std::string& strTitle, const Rounds& rounds, const std::vector<ContestantKind>& kinds,
                     const Sizes& sizes, const std::string& strUnit, const std::string& strFile)
    {
        std::printf("### Growth by %s\n\n", strTitle.c_str());
        DataFile data(m_options.strDataFolder, strFile, strUnit, kinds);
        std::vector<std::string> head{"contestant"};
        for (const std::size_t size : sizes)
        {
            head.push_back(std::to_string(size) + ' ' + strUnit);
            data.label(std::to_string(size));
            for (const ContestantKind& kind : kinds)
                data.add(rounds.nanoseconds(lane(kind.strId, size)).median);
            data.end();
        }
        head.push_back("largest : smallest");
        MarkdownTable table(head);
        for (const ContestantKind& kind : kinds)
        {
            std::vector<std::string> row{kind.strName};
            for (const std::size_t size : sizes)
                row.push_back(number(rounds.nanoseconds(lane(kind.strId, size)).median, 0));
            row.push_back(text(rounds.ratio(lane(kind.strId, *(std::end(sizes) - 1)), lane(kind.strId, sizes[0]))));
            table.add(std::move(row));
        }
        table.print();
    }

    void memory(const std::map<std::string, long>& peaks)
    {
        std::printf("### Peak memory of listing 100,000 records\n\n");
        const auto rival = static_cast<double>(peaks.at("kept"));
        MarkdownTable table({"contestant", "MiB above what the process had before", "ratio"});
        for (const ContestantKind& kind : contestantKinds())
        {
            const auto peak = static_cast<double>(peaks.at(kind.strId));
            table.add({kind.strName, number(peak / 1024, 1), number(peak / rival, 2)});
        }
        table.print();
        const double ratio = static_cast<double>(peaks.at("library")) / rival;
        m_judged.push_back({"peak memory of listing 100k", contestantKind("kept").strName, Spread{ratio, ratio, ratio},
                            std::nullopt, time(1.00), time(0.90)});
    }

    const ReportOptions& m_options;
    const std::int64_t m_batch;  // nanoseconds
    const Counts m_counts;
    std::vector<Judged> m_judged;           // in memory with autocommit
    std::vector<Judged> m_judgedTable;      // the same of vorn::Table
    std::vector<Judged> m_judgedElsewhere;  // in the other settings
};

}  // namespace

void report(const ReportOptions& options)
{
    Report(options).run();
}

}  // namespace bench
