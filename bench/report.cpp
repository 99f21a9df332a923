// SPDX-License-Identifier: MIT

#include "report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "growth.h"
#include "peak.h"
#include "proof.h"
#include "table.h"

namespace bench
{

namespace
{

constexpr std::size_t kPeakRows = 100000;

std::string text(const Spread& spread)
{
    return number(spread.median, 2) + " (" + number(spread.least, 2) + " .. " + number(spread.most, 2) + ")";
}

std::string text(const std::optional<double>& value, int digits)
{
    return value ? number(*value, digits) : "";
}

// The data of one picture: a line of names, then lines of a label and numbers.
class DataFile
{
public:
    DataFile(const std::string& strFolder, const std::string& strName)
    {
        if (strFolder.empty())
            return;
        m_file.open(strFolder + '/' + strName);
        if (!m_file)
            throw std::runtime_error("cannot write " + strFolder + '/' + strName);
    }

    void label(const std::string& strLabel) { m_file << '"' << strLabel << '"'; }
    void add(const std::string& strName) { m_file << "\t\"" << strName << '"'; }
    void add(double value) { m_file << '\t' << value; }
    void end() { m_file << '\n'; }

private:
    std::ofstream m_file;
};

class Report
{
public:
    explicit Report(const ReportOptions& options) : m_options(options) {}

    void run()
    {
        // The memory first: freed memory of other work would be used up before the process grows.
        const std::map<std::string, long> peaks = peakOfListing(m_options.kinds, kPeakRows);
        proveSameRecords(500);
        std::printf("All contestants gave the same records and left the same rows.\n\n");

        mainSetting();
        if (m_options.blEverySetting)
            otherSettings();
        growth();
        memory(peaks);

        std::printf("### Targets\n\n");
        printTargets(m_judged);
        if (m_options.blEverySetting)
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
    static Setting setting(bool blFile, bool blTransaction) { return {blFile, blTransaction, 10000}; }

    bool takesPart(const std::string& strId) const
    {
        return std::any_of(m_options.kinds.begin(), m_options.kinds.end(),
                           [&](const ContestantKind& kind) { return kind.strId == strId; });
    }

    void mainSetting()
    {
        DataFile data(m_options.strDataFolder, "works.tsv");
        data.label("work");
        for (const ContestantKind& kind : m_options.kinds)
            data.add(kind.strName);
        data.end();

        for (const Work& work : m_options.works)
        {
            const Setting here = setting(false, false);
            const Rounds rounds = runWork(work, here, m_options.kinds, m_options.effort, m_random);
            std::printf("### %s (%s)\n\n", work.strName.c_str(), nameOf(here).c_str());
            Table table({"contestant", "ns/record", "ratio (least .. most)", "instructions/record", "ratio",
                         "allocations/record"});
            data.label(work.strId);
            for (const ContestantKind& kind : m_options.kinds)
            {
                const bool blRival = kind.strId == work.strRival;
                table.add({kind.strName, number(rounds.nanoseconds(kind.strId).median, 0),
                           blRival ? "1" : text(rounds.ratio(kind.strId, work.strRival)),
                           text(m_options.counts.instructions(work.strId, kind.strId), 0),
                           blRival ? "1" : text(m_options.counts.ratio(work.strId, kind.strId, work.strRival), 2),
                           number(rounds.allocations(kind.strId), 1)});
                data.add(rounds.ratio(kind.strId, work.strRival).median);
            }
            data.end();
            table.print();
            judge(work, here, rounds);
        }
    }

    void otherSettings()
    {
        std::printf("### Other settings: ratio of time\n\n");
        std::vector<std::string> head{"contestant"};
        for (const Work& work : m_options.works)
            head.push_back(work.strId);

        for (const Setting& here : {setting(false, true), setting(true, false), setting(true, true)})
        {
            std::vector<Rounds> columns;
            for (const Work& work : m_options.works)
            {
                columns.push_back(runWork(work, here, m_options.kinds, m_options.effort, m_random));
                judge(work, here, columns.back());
            }
            head[0] = nameOf(here);
            Table table(head);
            for (const ContestantKind& kind : m_options.kinds)
            {
                std::vector<std::string> row{kind.strName};
                for (std::size_t i = 0; i < columns.size(); ++i)
                    row.push_back(number(columns[i].ratio(kind.strId, m_options.works[i].strRival).median, 2));
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
            if (target.strWork != work.strId || !takesPart(target.strRival) || !takesPart("library"))
                continue;
            Judged judged{blMain ? work.strName : work.strName + ", " + nameOf(here),
                          contestantKind(target.strRival).strName,
                          rounds.ratio("library", target.strRival),
                          m_options.counts.ratio(strCounted, "library", target.strRival),
                          target.must,
                          target.aim};
            (blMain ? m_judged : m_judgedElsewhere).push_back(std::move(judged));
        }
    }

    void growth()
    {
        const Rounds rows = listByRows(m_options.kinds, m_options.effort, m_random);
        std::printf("### Growth by rows: list all, ns/record\n\n");
        growthTable(rows, m_options.kinds, growthRows(), "rows", "growth-rows.tsv");
        // Counted in a table of 1,000 rows where the name of the work does not say otherwise.
        const auto many = m_options.counts.instructions("list@100000", "library");
        const auto few = m_options.counts.instructions("list", "library");
        m_judged.push_back({"list all, per record, 100k : 1k rows", "itself",
                            rows.ratio(lane("library", 100000), lane("library", 1000)),
                            many && few ? std::optional<double>(*many / *few) : std::nullopt, Bound{1.35, std::nullopt},
                            Bound{1.25, std::nullopt}});

        const std::vector<ContestantKind> kinds{contestantKind("library"), contestantKind("percall")};
        const Rounds creates = createByMembers(m_options.effort, m_random);
        const Rounds lists = listByMembers(m_options.effort, m_random);
        std::printf("### Growth by members: create and get back, ns/member\n\n");
        growthTable(creates, kinds, growthMembers(), "members", "growth-members-create.tsv");
        std::printf("### Growth by members: list all, ns/member\n\n");
        growthTable(lists, kinds, growthMembers(), "members", "growth-members-list.tsv");
        m_judged.push_back({"create, per member, 256 : 16 members", "itself",
                            creates.ratio(lane("library", 256), lane("library", 16)), std::nullopt,
                            Bound{1.5, std::nullopt}, Bound{1.3, std::nullopt}});
    }

    void growthTable(const Rounds& rounds, const std::vector<ContestantKind>& kinds,
                     const std::vector<std::size_t>& sizes, const std::string& strUnit, const std::string& strFile)
    {
        std::vector<std::string> head{"contestant"};
        for (const std::size_t size : sizes)
            head.push_back(std::to_string(size) + ' ' + strUnit);
        head.push_back("largest : smallest");
        Table table(head);
        for (const ContestantKind& kind : kinds)
        {
            std::vector<std::string> row{kind.strName};
            for (const std::size_t size : sizes)
                row.push_back(number(rounds.nanoseconds(lane(kind.strId, size)).median, 0));
            row.push_back(text(rounds.ratio(lane(kind.strId, sizes.back()), lane(kind.strId, sizes.front()))));
            table.add(std::move(row));
        }
        table.print();

        DataFile data(m_options.strDataFolder, strFile);
        data.label(strUnit);
        for (const ContestantKind& kind : kinds)
            data.add(kind.strName);
        data.end();
        for (const std::size_t size : sizes)
        {
            data.label(std::to_string(size));
            for (const ContestantKind& kind : kinds)
                data.add(rounds.nanoseconds(lane(kind.strId, size)).median);
            data.end();
        }
    }

    void memory(const std::map<std::string, long>& peaks)
    {
        std::printf("### Peak memory of listing 100,000 records\n\n");
        const auto rival = static_cast<double>(peaks.at("kept"));
        Table table({"contestant", "MiB above what the process had before", "ratio"});
        for (const ContestantKind& kind : m_options.kinds)
        {
            const auto peak = static_cast<double>(peaks.at(kind.strId));
            table.add({kind.strName, number(peak / 1024, 1), number(peak / rival, 2)});
        }
        table.print();
        const double ratio = static_cast<double>(peaks.at("library")) / rival;
        m_judged.push_back({"peak memory of listing 100k",
                            contestantKind("kept").strName,
                            {ratio, ratio, ratio},
                            std::nullopt,
                            Bound{1.00, std::nullopt},
                            Bound{0.90, std::nullopt}});
    }

    const ReportOptions& m_options;
    std::mt19937 m_random{20240229};
    std::vector<Judged> m_judged;           // in memory with autocommit
    std::vector<Judged> m_judgedElsewhere;  // in the other settings
};

}  // namespace

void report(const ReportOptions& options)
{
    Report(options).run();
}

}  // namespace bench
