// SPDX-License-Identifier: MIT
//
// The library and the model, each on a table of its own in a database of its own, doing the same.

#ifndef VORN_TESTS_MODEL_COMPARISON_H
#define VORN_TESTS_MODEL_COMPARISON_H

#include <memory>
#include <string>

#include "VornJsonDbApi.h"
#include "model_step.h"
#include "model_table.h"
#include "safe_database.h"

namespace model
{

class Comparison
{
public:
    Comparison(std::string strTable, Json::Value jDefinition, std::string strCreate);

    // Makes the call on both sides. What differs in results, arguments, texts, rows or statements; empty when nothing
    // does. Where no model can tell what must happen, as with a definition that is none, it looks for what must never
    // happen, and the tables are not compared any more.
    std::string differenceIn(const Step& step);

    const Table& table() const { return m_table; }
    bool isKnown() const { return m_blKnown; }

    enum class Kind
    {
        Result,
        Exception,
        Unknown
    };
    Kind lastKind() const { return m_lastKind; }
    int lastStatus() const { return m_lastStatus; }

private:
    struct Outcome;
    static int seenStatus(VornJsonDbApi& api, const Step& step, Outcome& out);
    int expectedStatus(const Step& step, Outcome& out);
    std::string differenceInTables();
    std::string differenceInUnknown(const Step& step, const Outcome& seen, const std::string& strBefore);

    support::SafeDatabase m_expectedDb;
    support::SafeDatabase m_seenDb;
    Table m_table;
    std::string m_strTable;
    Json::Value m_jDefinition;
    std::string m_strCreate;
    std::unique_ptr<VornJsonDbApi> m_pApi;
    std::unique_ptr<support::StatementLog> m_pExpectedStatements;
    std::unique_ptr<support::StatementLog> m_pSeenStatements;
    bool m_blKnown = false;  // whether the model's rows are those that must be
    Kind m_lastKind = Kind::Result;
    int m_lastStatus = 0;
};

}  // namespace model

#endif  // VORN_TESTS_MODEL_COMPARISON_H
