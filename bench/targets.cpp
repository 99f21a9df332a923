// SPDX-License-Identifier: MIT

#include "targets.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "table.h"

namespace bench
{

Counts::Counts(const std::string& strPath)
{
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
        m_instructions[strWork + ' ' + strContestant] = instructions;
    }
}

std::optional<double> Counts::instructions(const std::string& strWork, const std::string& strContestant) const
{
    const auto it = m_instructions.find(strWork + ' ' + strContestant);
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
    constexpr auto none = std::nullopt;
    constexpr double faster = 0.999;
    static const std::vector<Target> targets{
        {"list", "kept", 0.90, 0.72, 0.85, 0.68},          {"page", "percall", 0.90, 0.76, none, none},
        {"create", "percall", 1.15, 1.02, none, 1.00},     {"fetch", "percall", 1.15, 1.02, none, none},
        {"update", "percall", 1.25, 1.15, none, none},     {"delete", "percall", 1.30, 1.18, none, none},
        {"list", "sqlitecpp", faster, 0.55, none, none},   {"page", "sqlitecpp", faster, 0.65, none, none},
        {"create", "sqlitecpp", faster, 0.92, none, none}, {"fetch", "sqlitecpp", faster, 0.92, none, none},
        {"list", "soci", faster, none, none, none},        {"page", "soci", faster, none, none, none},
        {"create", "soci", faster, none, none, none},      {"fetch", "soci", faster, none, none, none},
        {"list", "poco", faster, none, none, none},        {"page", "poco", faster, none, none, none},
        {"create", "poco", faster, none, none, none},      {"fetch", "poco", faster, none, none, none},
    };
    return targets;
}

std::string verdict(const Judged& judged, const std::optional<double>& bound,
                    const std::optional<double>& instructionBound)
{
    if (!bound)
        return "";
    const bool blNoise = judged.time.least <= *bound && judged.time.most > *bound;
    bool blReached = judged.time.median <= *bound;
    const bool blByInstructions = blNoise && judged.instructions;
    if (blByInstructions)
        blReached = *judged.instructions <= instructionBound.value_or(*bound);
    else if (instructionBound && judged.instructions)
        blReached = blReached && *judged.instructions <= *instructionBound;
    std::string strBound = number(*bound, 2);
    if (instructionBound)
        strBound += "/" + number(*instructionBound, 2);
    return strBound + (blReached ? " reached" : " MISSED") + (blByInstructions ? " (i)" : "");
}

void printTargets(const std::vector<Judged>& all)
{
    Table table({"what", "beside", "time: median (least .. most)", "instructions", "must", "aim"});
    for (const Judged& judged : all)
    {
        table.add({judged.strWhat, judged.strBeside,
                   number(judged.time.median, 2) + " (" + number(judged.time.least, 2) + " .. " +
                       number(judged.time.most, 2) + ")",
                   judged.instructions ? number(*judged.instructions, 2) : "",
                   verdict(judged, judged.must, judged.mustInstructions),
                   verdict(judged, judged.aim, judged.aimInstructions)});
    }
    table.print();
}

}  // namespace bench
