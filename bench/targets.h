// SPDX-License-Identifier: MIT
//
// What the library is to reach, and whether it does.

#ifndef VORN_BENCH_TARGETS_H
#define VORN_BENCH_TARGETS_H

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "runner.h"

namespace bench
{

// Instructions per record, by work and contestant, as a counting tool gave them.
class Counts
{
public:
    explicit Counts(const std::string& strPath);  // lines "WORK CONTESTANT INSTRUCTIONS ..."; none without a path

    std::optional<double> instructions(const std::string& strWork, const std::string& strContestant) const;
    std::optional<double> ratio(const std::string& strWork, const std::string& strContestant,
                                const std::string& strRival) const;

private:
    std::map<std::pair<std::string, std::string>, double> m_instructions;  // by work and contestant
};

// A bound of time, with one of instructions where there is such.
struct Bound
{
    double time;
    std::optional<double> instructions;
};
inline Bound time(double bound)
{
    return {bound, std::nullopt};
}

struct Target
{
    std::string strWork;
    std::string strRival;
    Bound must;
    std::optional<Bound> aim;
};
const std::vector<Target>& workTargets();

// One measured ratio beside its bounds.
struct Judged
{
    std::string strWhat;
    std::string strBeside;
    Spread time;
    std::optional<double> instructions;
    Bound must;
    std::optional<Bound> aim;
};

// "median (least .. most)"
std::string text(const Spread& spread);

// Where rounds lie on both sides of the bound, time is noise and the instructions decide, if they were counted.
bool reaches(const Judged& judged, const Bound& bound);

void printTargets(const std::vector<Judged>& all);

}  // namespace bench

#endif  // VORN_BENCH_TARGETS_H
