// SPDX-License-Identifier: MIT
//
// Random definitions, records and parameters: the library must write the texts, run the statements, leave the rows and
// return the results that the model says. VORN_TEST_SEED repeats a run, VORN_TEST_CASES sets its length.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "log_capture.h"
#include "model_case.h"
#include "model_comparison.h"
#include "random.h"

using model::Comparison;
using support::LogCapture;

namespace
{

std::uint64_t casesOfThisRun()
{
    const char* const given = std::getenv("VORN_TEST_CASES");
    return given ? std::strtoull(given, nullptr, 10) : 20000;
}

// The texts that SQLite refused, as the executor's trace lines tell them.
std::vector<std::string> refusedTexts(const LogCapture& capture)
{
    std::vector<std::string> out;
    for (const support::LogLine& line : capture.lines())
    {
        const std::string mark = " run sql failed, ";
        const std::size_t at = line.message.find(mark);
        if (at != std::string::npos && !line.located)
            out.push_back(line.message.substr(at + mark.size()));
    }
    return out;
}

// What the random cases have met.
struct Tally
{
    std::uint64_t kinds[3] = {};
    std::uint64_t refused = 0;
    std::uint64_t succeeded[model::kCallCount] = {};
    std::uint64_t of(Comparison::Kind kind) const { return kinds[static_cast<std::size_t>(kind)]; }
};

std::string differenceInRefused(const model::Table& table, const std::vector<std::string>& seen)
{
    std::vector<std::string> expected;
    for (const auto& [error, sql] : table.refused())
    {
        // A line ends the text at its first NUL.
        expected.push_back("error=" + error + ", sql=" + sql.c_str());
    }
    return expected == seen
               ? ""
               : "refused texts: " + testing::PrintToString(seen) + "\nexpected: " + testing::PrintToString(expected);
}

// What the library did otherwise than the model says.
std::string differenceIn(const model::Case& example, Tally& tally)
{
    LogCapture capture;
    Comparison comparison(example.table, example.definition,
                          "CREATE TABLE IF NOT EXISTS " + example.table + " (" + example.columns + ")");
    std::string difference;
    for (std::size_t i = 0; i < example.steps.size() && difference.empty(); i++)
    {
        difference = comparison.differenceIn(example.steps[i]);
        tally.kinds[static_cast<std::size_t>(comparison.lastKind())]++;
        if (comparison.lastKind() == Comparison::Kind::Result && comparison.lastStatus() >= 0)
            tally.succeeded[static_cast<std::size_t>(example.steps[i].call)]++;
    }
    capture.stop();
    const std::vector<std::string> refused = refusedTexts(capture);
    tally.refused += refused.size();
    return difference.empty() && comparison.isKnown() ? differenceInRefused(comparison.table(), refused) : difference;
}

}  // namespace

TEST(Model, LibraryAgreesOnRandomCases)
{
    const std::uint64_t seed = support::Random().seed();
    const std::uint64_t caseCount = casesOfThisRun();
    std::cout << "VORN_TEST_CASES=" << caseCount << std::endl;
    ASSERT_GT(caseCount, 0u);
    RecordProperty("seed", std::to_string(seed));

    Tally tally;
    int failures = 0;
    for (std::uint64_t index = 0; index < caseCount && failures < 3; index++)
    {
        const model::Case example = model::randomCase(seed, index);
        const std::string difference = differenceIn(example, tally);
        if (!difference.empty())
        {
            failures++;
            ADD_FAILURE() << "seed " << seed << ", case " << index << "\n" << difference << "\n" << asInput(example);
        }
    }
    const std::uint64_t compared = tally.of(Comparison::Kind::Result) + tally.of(Comparison::Kind::Exception);
    std::cout << compared << " calls compared, " << tally.of(Comparison::Kind::Exception) << " exceptions, "
              << tally.refused << " texts refused by SQLite, " << tally.of(Comparison::Kind::Unknown)
              << " calls left out" << std::endl;

    // The cases are worth comparing: every call succeeds often, and few are left out.
    for (std::size_t call = 0; call < model::kCallCount && failures == 0; call++)
        EXPECT_GT(tally.succeeded[call], caseCount / 50) << model::kCallShapes[call].szName;
    EXPECT_LT(tally.of(Comparison::Kind::Unknown), compared / 20);
}
