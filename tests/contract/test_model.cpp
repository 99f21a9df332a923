// SPDX-License-Identifier: MIT
//
// Random definitions, records and parameters: the library must write the texts, run the statements, leave the rows and
// return the results that the model says. VORN_TEST_SEED repeats a run, VORN_TEST_CASES sets its length.

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>

#include "log_capture.h"
#include "model.h"
#include "model_case.h"
#include "model_table.h"
#include "store.h"

using model::Call;
using support::Database;
using support::LogCapture;
using support::StatementLog;

namespace
{

constexpr std::uint64_t casesPerDatabase = 100;

std::uint64_t seedOfThisRun()
{
    const char* const given = std::getenv("VORN_TEST_SEED");
    return given ? std::strtoull(given, nullptr, 10) : std::random_device()();
}

std::uint64_t casesOfThisRun()
{
    const char* const given = std::getenv("VORN_TEST_CASES");
    return given ? std::strtoull(given, nullptr, 10) : 20000;
}

// What a caller can see of one call.
struct Outcome
{
    bool threw = false;
    int status = 0;
    std::string text;
    Json::Value first;
    Json::Value second;

    bool operator==(const Outcome& other) const
    {
        return threw == other.threw && status == other.status && text == other.text && first == other.first &&
               second == other.second;
    }
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome)
{
    return out << (outcome.threw ? "exception" : "status " + std::to_string(outcome.status)) << "\n  text <"
               << outcome.text << ">\n  first " << model::jsonText(outcome.first) << "\n  second "
               << model::jsonText(outcome.second);
}

// A builder's text replaces the caller's only when there is one.
int take(const std::optional<std::string>& text, std::string& out)
{
    if (text)
    {
        out = *text;
    }
    return text ? 0 : -1;
}

std::optional<std::string> appended(const std::string& before, const std::optional<std::string>& text)
{
    return text ? std::optional<std::string>(before + *text) : std::nullopt;
}

int take(const model::Fragment& fragment, std::string& out)
{
    out = fragment.text;
    return fragment.result;
}

int expectedStatus(model::Table& table, const model::Step& step, Outcome& out)
{
    const model::Columns& columns = table.columns();
    switch (step.call)
    {
        case Call::ColumnList:
            out.text += model::columnList(columns, step.flag ? &out.first : nullptr);
            return 0;
        case Call::ValueList:
            return take(model::valueList(out.text, columns, out.first), out.text);
        case Call::Match:
            return take(appended(out.text, model::matchCondition(columns, step.name, out.first)), out.text);
        case Call::ListCondition:
            return take(appended(out.text, model::listCondition(columns, step.name, out.first)), out.text);
        case Call::MemberList:
            return take(model::memberList(out.text, columns, out.first, step.number), out.text);
        case Call::SortAndPage:
            return take(model::sortAndPage(out.text, out.first), out.text);
        case Call::CheckTypes:
            return model::typesFit(columns, out.first) ? 0 : -1;
        case Call::FillDefaults:
            out.first = model::withDefaults(table.definition(), table.name(), out.first);
            return 0;
        case Call::Query:
            return table.run(out.text, &out.second);
        case Call::Create:
            return table.create(out.first, out.second);
        case Call::Save:
            return table.save(out.first, step.flag);
        case Call::List:
            return table.list(out.first, out.second);
        case Call::GetOne:
            return table.getOne(out.first, out.second);
        case Call::UpdateByFilter:
            return table.updateByFilter(out.first, out.second);
        case Call::UpdateByWhere:
            return table.updateByWhere(out.first, out.text);
        case Call::Delete:
            return table.remove(out.first, step.flag);
        case Call::DeleteAll:
            return table.remove(Json::Value(Json::objectValue), true);
        case Call::DeleteByArray:
            return table.removeByArray(step.texts, step.name);
        case Call::DeleteByName:
            return table.removeByName(out.text, step.name);
    }
    return -2;
}

int libraryStatus(VornJsonDbApi& api, const model::Step& step, Outcome& out)
{
    std::string name = step.name;
    std::vector<std::string> texts = step.texts;
    switch (step.call)
    {
        case Call::ColumnList:
            return api.SqlExpandMemberName(out.text, step.flag ? &out.first : nullptr);
        case Call::ValueList:
            return api.SqlExpandMemberSymbol(out.text, out.first);
        case Call::Match:
            return api.SqlMakeByMatchField(name, out.first, out.text);
        case Call::ListCondition:
            return api.SqlMakeByListField(name.c_str(), out.first, out.text);
        case Call::MemberList:
            return api.SqlExpandMemberList(out.first, out.text, step.number);
        case Call::SortAndPage:
            return api.SqlFilterConditionFromJson(out.first, out.text);
        case Call::CheckTypes:
            return api.checkJsonType(out.first);
        case Call::FillDefaults:
            return api.fillDefaultValue(out.first, false);
        case Call::Query:
            return api.runSqlEx(out.text, VornJsonDbApi::DbCallBackFillList, &out.second);
        case Call::Create:
            return api.recCreate(out.first, out.second);
        case Call::Save:
            return api.recSave(out.first, step.flag);
        case Call::List:
            return api.recList(out.first, out.second);
        case Call::GetOne:
            return api.recGetOne(out.first, out.second);
        case Call::UpdateByFilter:
            return api.recUpdateByFilter(out.first, out.second);
        case Call::UpdateByWhere:
            return api.recUpdateByWhere(out.first, out.text);
        case Call::Delete:
            return api.recDelete(out.first, step.flag);
        case Call::DeleteAll:
            return api.recDeleteAll();
        case Call::DeleteByArray:
            return api.recDeleteByArray(texts, name.c_str());
        case Call::DeleteByName:
            return api.recDeleteByName(out.text, name.c_str());
    }
    return -3;
}

bool changesRows(Call call)
{
    return call >= Call::Create && call != Call::List && call != Call::GetOne;
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
        {
            out.push_back(line.message.substr(at + mark.size()));
        }
    }
    return out;
}

class Comparison
{
public:
    explicit Comparison(std::uint64_t seed) : m_seed(seed) {}

    // True when the library did what the model says.
    bool agreesOn(std::uint64_t index)
    {
        if (index % casesPerDatabase == 0)
        {
            m_expectedDb = std::make_unique<Database>();
            m_db = std::make_unique<Database>();
        }
        const model::Case example = model::randomCase(m_seed, index);
        model::Table table(m_expectedDb->handle(), example.table, example.definition);
        table.run(example.createStatement, nullptr);

        LogCapture capture;
        const StatementLog expectedStatements(*m_expectedDb);
        const StatementLog statements(*m_db);
        std::string name = example.table;
        Json::Value definition = example.definition;
        std::string createStatement = example.createStatement;
        VornJsonDbApi api(m_db->handle(), name, definition, createStatement);

        std::size_t firstOwn = statements.statements().size();
        std::string difference;
        std::size_t i = 0;
        for (; i < example.steps.size() && difference.empty(); i++)
        {
            difference = differenceIn(example.steps[i], table, api);
        }
        if (difference.empty() && !std::equal(statements.statements().begin() + static_cast<std::ptrdiff_t>(firstOwn),
                                              statements.statements().end(), expectedStatements.statements().begin(),
                                              expectedStatements.statements().end()))
        {
            difference = "other statements were run\n";
        }
        capture.stop();
        if (difference.empty())
        {
            difference = differenceInRefused(table, refusedTexts(capture));
        }
        if (!difference.empty())
        {
            ADD_FAILURE() << "seed " << m_seed << ", case " << index << "\n"
                          << difference << "as a test:\n"
                          << model::asTest(example, i - 1);
        }
        return difference.empty();
    }

    std::uint64_t compared() const { return m_compared; }
    std::uint64_t skipped() const { return m_skipped; }
    std::uint64_t exceptions() const { return m_exceptions; }
    std::uint64_t succeeded(Call call) const { return m_succeeded[static_cast<std::size_t>(call)]; }
    std::uint64_t refused() const { return m_refused; }

private:
    std::string differenceIn(const model::Step& step, model::Table& table, VornJsonDbApi& api)
    {
        Outcome expected{false, 0, step.text, step.first, step.second};
        Outcome seen = expected;
        try
        {
            expected.status = expectedStatus(table, step, expected);
        }
        catch (const model::Undefined&)
        {
            m_skipped++;
            return {};
        }
        catch (const model::Refused&)
        {
            expected = {true, 0, step.text, step.first, step.second};
            m_exceptions++;
        }
        try
        {
            seen.status = libraryStatus(api, step, seen);
        }
        catch (const Json::Exception&)
        {
            seen.threw = true;
        }
        // An unfinished condition may stay behind when a later member's kind is refused.
        if (step.call == Call::MemberList && expected.threw)
        {
            seen.text = expected.text;
        }
        m_compared++;
        if (!expected.threw && expected.status >= 0)
        {
            m_succeeded[static_cast<std::size_t>(step.call)]++;
        }

        std::ostringstream out;
        if (!(expected == seen))
        {
            out << "expected " << expected << "\nseen " << seen << "\n";
        }
        if (table.message() != api.getErrMsg())
        {
            out << "expected message <" << table.message() << ">, seen <" << api.getErrMsg() << ">\n";
        }
        if (changesRows(step.call))
        {
            const std::string sql = "select rowid, * from " + table.name() + " order by rowid";
            if (m_expectedDb->rows(sql) != m_db->rows(sql))
            {
                out << "the tables hold other rows\n";
            }
        }
        return out.str();
    }

    std::string differenceInRefused(const model::Table& table, const std::vector<std::string>& seen)
    {
        m_refused += seen.size();
        std::vector<std::string> expected;
        for (const auto& [error, sql] : table.refused())
        {
            // A line ends the text at its first NUL.
            expected.push_back("error=" + error + ", sql=" + sql.c_str());
        }
        std::string out;
        for (std::size_t i = 0; i < expected.size() || i < seen.size(); i++)
        {
            const std::string left = i < expected.size() ? expected[i] : "(none)";
            const std::string right = i < seen.size() ? seen[i] : "(none)";
            if (left != right)
            {
                out += "expected refused text <" + left + ">\nseen <" + right + ">\n";
            }
        }
        return out;
    }

    std::uint64_t m_seed;
    std::unique_ptr<Database> m_expectedDb;
    std::unique_ptr<Database> m_db;
    std::uint64_t m_compared = 0;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_exceptions = 0;
    std::uint64_t m_refused = 0;
    std::uint64_t m_succeeded[static_cast<std::size_t>(Call::DeleteByName) + 1] = {};
};

}  // namespace

TEST(Model, LibraryAgreesOnRandomCases)
{
    const std::uint64_t seed = seedOfThisRun();
    const std::uint64_t caseCount = casesOfThisRun();
    std::cout << "VORN_TEST_SEED=" << seed << " VORN_TEST_CASES=" << caseCount << std::endl;
    ASSERT_GT(caseCount, 0u);
    RecordProperty("seed", std::to_string(seed));

    Comparison comparison(seed);
    int failures = 0;
    for (std::uint64_t index = 0; index < caseCount && failures < 3; index++)
    {
        failures += comparison.agreesOn(index) ? 0 : 1;
    }
    std::cout << comparison.compared() << " calls compared, " << comparison.exceptions() << " exceptions, "
              << comparison.refused() << " texts refused by SQLite, " << comparison.skipped() << " calls left out"
              << std::endl;

    // The cases are worth comparing: every call succeeds often, and few are left out.
    EXPECT_EQ(0, failures);
    for (int call = 0; call <= static_cast<int>(Call::DeleteByName) && failures == 0; call++)
    {
        EXPECT_GT(comparison.succeeded(static_cast<Call>(call)), caseCount / 50) << "call " << call;
    }
    EXPECT_LT(comparison.skipped(), comparison.compared() / 20);
}

// The model's own account of '%' against the formatter that it describes.
TEST(Model, PercentSignsInEarlierValuesAreFormattedAgain)
{
    const model::Columns columns{{"a", "string"}, {"b", "string"}, {"c", "int"}};
    const char* const texts[] = {"", "x", "%%", "%%%%", "50%", "%k", "%% of", "100%%'", "%&"};
    for (const char* const first : texts)
    {
        for (const char* const second : texts)
        {
            Json::Value record;
            record["a"] = first;
            record["b"] = second;
            record["c"] = 5;
            std::optional<std::string> expected;
            try
            {
                expected = model::valueList("(", columns, record);
            }
            catch (const model::Undefined&)
            {
                continue;
            }
            const auto format = [](const std::string& text, auto value)
            {
                const std::unique_ptr<char, decltype(&sqlite3_free)> out(sqlite3_mprintf(text.c_str(), value),
                                                                         sqlite3_free);
                return std::string(out.get());
            };
            std::string plain = format("(%Q", first) + ",";
            plain = format(plain + "%Q", second) + ",";
            plain = format(plain + "%lld", 5LL) + ") ";
            EXPECT_EQ(plain, expected.value()) << first << " " << second;
        }
    }
}
