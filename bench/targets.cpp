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
            {"list", "kept", {0.90, 0.85}, Bound{0.72, 0.68}},
            {"page", "percall", time(0.90), time(0.76)},
            {"create", "percall", time(1.15), Bound{1.02, 1.00}},
            {"fetch", "percall", time(1.15), time(1.02)},
            {"update", "percall", time(1.25), time(1.15)},
            {"delete", "percall", time(1.30), time(1.18)},
            {"list", "sqlitecpp", faster, time(0.55)},
            {"page", "sqlitecpp", faster, time(0.65)},
            {"create", "sqlitecpp", faster, time(0.92)},
            {"fetch", "sqlitecpp", faster, time(0.92)},
        };
        for (const char* szRival : {"soci", "poco"})
            for (const char* szWork : {"list", "page", "create", "fetch"})
                all.push_back({szWork, szRival, faster, std::nullopt});
        return all;
    }();
    return targets;
}

namespace
{

bool instructionsDecide(const Judged& judged, const Bound& bound)
{
    return judged.instructions && judged.time.least <= bound.time && judged.time.most > bound.time;
}

std::string verdict(const Judged& judged, const Bound& bound)
{
    std::string strText = number(bound.time, 2);
    if (bound.instructions)
        strText += "/" + number(*bound.instructions, 2);
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
    const bool blFew = !judged.instructions || *judged.instructions <= bound.instructions.value_or(bound.time);
    if (instructionsDecide(judged, bound))
        return blFew;
    return judged.time.median <= bound.time && (!bound.instructions || blFew);
}

void printTargets(const std::vector<Judged>& all)
{
    MarkdownTable table({"what", "beside", "time: median (least .. most)", "instructions", "must", "aim"});
    for (const Judged& judged : all)
    {
        table.add({judged.strWhat, judged.strBeside, text(judged.time),
                   judged.instructions ? number(*judged.instructions, 2) : "", verdict(judged, judged.must),
                   judged.aim ? verdict(judged, *judged.aim) : ""});
    }
    table.print();
}

}  // namespace bench
