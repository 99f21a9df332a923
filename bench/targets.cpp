// SPDX-License-Identifier: MIT

#include "targets.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "markdown.h"

namespace bench
{

Counts::Counts(const std::string& strPath)
{
    if (strPath.empty())
        return;
    std::ifstream file(strPath);
    if (!file)
        throw std::runtime_error("cannot read " + strPath);
    std::string strLine;
    while (std::getline(file, strLine))
    {
        std::istringstream words(strLine);
        std::string strWork;
        std::string strContestant;
        double instructions = 0;
        if (!(words >> strWork >> strContestant >> instructions))
            throw std::runtime_error("not a line of counts: " + strLine);
        m_instructions[{strWork, strContestant}] = instructions;
    }
}

std::optional<double> Counts::instructions(const std::string& strWork, const std::string& strContestant) const
{
    const auto it = m_instructions.find({strWork, strContestant});
    return it == m_instructions.end() ? std::nullopt : std::optional<double>(it->second);
}

std::optional<double> Counts::ratio(const std::string& strWork, const std::string& strContestant,
                                    const std::string& strRival) const
{
    const std::optional<double> own = instructions(strWork, strContestant);
    const std::optional<double> rival = instructions(strWork, strRival);
    return own && rival ? std::optional<double>(*own / *rival) : std::nullopt;
}

const std::vector<Target>& workTargets()
{
    constexpr Bound faster{0.999, std::nullopt};
    static const std::vector<Target> targets = [&]
    {
        std::vector<Target> all{
            {"library", "list", "kept", {0.90, 0.85}, Bound{0.72, 0.68}, {}},
            {"library", "page", "percall", time(0.90), time(0.76), {}},
            {"library", "create", "percall", time(1.15), Bound{1.02, 1.00}, {}},
            {"library", "fetch", "percall", time(1.15), time(1.02), {}},
            {"library", "update", "percall", time(1.25), time(1.15), {}},
            {"library", "delete", "percall", time(1.30), time(1.18), {}},
            {"library", "list", "sqlitecpp", faster, time(0.55), {}},
            {"library", "page", "sqlitecpp", faster, time(0.65), {}},
            {"library", "create", "sqlitecpp", faster, time(0.92), {}},
            {"library", "fetch", "sqlitecpp", faster, time(0.92), {}},
        };
        for (const char* szRival : {"soci", "poco"})
            for (const char* szWork : {"list", "page", "create", "fetch"})
                all.push_back({"library", szWork, szRival, faster, {}, {}});

        const std::vector<Target> table{
            {"table", "list", "kept", instructions(0.58), instructions(0.50), {}},
            {"table", "page", "kept", instructions(0.62), instructions(0.55), {}},
            {"table", "create", "kept", instructions(1.05), instructions(0.90), {}},
            {"table", "fetch", "kept", instructions(1.00), instructions(0.85), {}},
            {"table", "update", "kept", instructions(1.20), instructions(1.05), {}},
            {"table", "delete", "kept", instructions(1.20), instructions(1.05), {}},
            {"table", "bulk", "kept", instructions(1.10), instructions(1.00), {}},
        };
        all.insert(all.end(), table.begin(), table.end());
        for (const Work& work : works())
        {
            const bool blTwice = work.strId == "create" || work.strId == "fetch";
            const bool blByHalf = work.strId == "update" || work.strId == "delete";
            const Bound must = blTwice ? time(1 / 2.0) : blByHalf ? time(1 / 1.5) : faster;
            for (const char* szRival : {"sqlitecpp", "soci", "poco"})
                all.push_back({"table", work.strId, szRival, must, {}, faster});
        }
        return all;
    }();
    return targets;
}

namespace
{

bool instructionsDecide(const Judged& judged, const Bound& bound)
{
    return judged.instructions && judged.time && bound.time && judged.time->least <= *bound.time &&
           judged.time->most > *bound.time;
}

std::string verdict(const Judged& judged, const Bound& bound)
{
    std::string strText = bound.time ? number(*bound.time, 2) : "";
    if (bound.instructions)
        strText += (bound.time ? "/" : "") + number(*bound.instructions, 2);
    strText += reaches(judged, bound) ? " reached" : " MISSED";
    return instructionsDecide(judged, bound) ? strText + " (i)" : strText;
}

}  // namespace

std::string text(const Spread& spread)
{
    return number(spread.median, 2) + " (" + number(spread.least, 2) + " .. " + number(spread.most, 2) + ")";
}

bool reaches(const Judged& judged, const Bound& bound)
{
    const std::optional<double> most = bound.instructions ? bound.instructions : bound.time;
    if (!bound.time)
        return judged.instructions && *judged.instructions <= *most;
    const bool blFew = !judged.instructions || *judged.instructions <= *most;
    if (instructionsDecide(judged, bound))
        return blFew;
    return judged.time && judged.time->median <= *bound.time && (!bound.instructions || blFew);
}

void printTargets(const std::vector<Judged>& all)
{
    MarkdownTable table({"what", "beside", "time: median (least .. most)", "instructions", "must", "aim"});
    for (const Judged& judged : all)
    {
        table.add({judged.strWhat, judged.strBeside, judged.time ? text(*judged.time) : "",
                   judged.instructions ? number(*judged.instructions, judged.time ? 2 : 3) : "",
                   verdict(judged, judged.must), judged.aim ? verdict(judged, *judged.aim) : ""});
    }
    table.print();
}

std::vector<Judged> countedTargets(const Counts& counts)
{
    std::vector<Judged> all;
    for (const Target& target : workTargets())
    {
        if (target.strContestant == "table" && !target.must.time)
            all.push_back({work(target.strWork).strName, contestantKind(target.strRival).strName, std::nullopt,
                           counts.ratio(target.strWork, "table", target.strRival), target.must, target.aim});
    }
    const auto grow =
        [&](const std::string& strWhat, const std::string& strLarge, const std::string& strSmall, double must)
    {
        const std::optional<double> large = counts.instructions(strLarge, "table");
        const std::optional<double> small = counts.instructions(strSmall, "table");
        all.push_back({strWhat,
                       "itself",
                       std::nullopt,
                       large && small ? std::optional<double>(*large / *small) : std::nullopt,
                       instructions(must),
                       {}});
    };
    grow("list all, per record, 100k : 1k rows", "list@100000", "list", 1.05);
    grow("create, per member, 256 : 16 members", "members@256", "members@16", 1.30);
    grow("count, per value of a list, 1,000 : 101", "values@1000", "values@101", 1.10);
    grow("count, per filter in $or, 1,000 : 101", "filters@1000", "filters@101", 1.10);
    return all;
}

}  // namespace bench
