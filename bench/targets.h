// SPDX-License-Identifier: MIT
//
// What the libraries are to reach, and whether they do.

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

// A bound of time, one of instructions, or both.
struct Bound
{
    std::optional<double> time;
    std::optional<double> instructions;
};
inline Bound time(double bound)
{
    return {bound, std::nullopt};
}
inline Bound instructions(double bound)
{
    return {std::nullopt, bound};
}

struct Target
{
    std::string strContestant;
    std::string strWork;
    std::string strRival;
    Bound must;
    std::optional<Bound> aim;
    std::optional<Bound> onFile;  // the must where the table lies on a file, if another
};
const std::vector<Target>& workTargets();

// One measured ratio beside its bounds.
struct Judged
{
    std::string strWhat;
    std::string strBeside;
    std::optional<Spread> time;
    std::optional<double> instructions;
    Bound must;
    std::optional<Bound> aim;
};

// "median (least .. most)"
std::string text(const Spread& spread);

// Where rounds lie on both sides of the bound, time is noise and the instructions decide, if they were counted. A bound
// of instructions alone is not reached where they were not.
bool reaches(const Judged& judged, const Bound& bound);

void printTargets(const std::vector<Judged>& all);

// The targets of vorn::Table that are of instructions alone, its growth included, of counts in memory with autocommit.
std::vector<Judged> countedTargets(const Counts& counts);

}  // namespace bench

#endif  // VORN_BENCH_TARGETS_H
