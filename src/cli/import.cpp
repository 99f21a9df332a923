// SPDX-License-Identifier: MIT
//
// import: everything in one transaction.

#include <iostream>
#include <memory>

#include "commands.h"
#include "error.h"
#include "output.h"
#include "progress.h"
#include "record_sink.h"
#include "record_source.h"
#include "utf8.h"

namespace cli
{

namespace
{

class Import
{
public:
    Import(const Options& options, Store& store) : m_options(options), m_store(store)
    {
        if (options.strSkipBad.empty())
            return;
        m_bad = std::make_unique<Output>(options.strSkipBad);
    }

    // One at a time: a record that was just read lies in the processor's cache, which is worth more than a list's
    // common preparations.
    void add(Json::Value& jRec)
    {
        vorn::Table& table = m_store.table();
        const Json::Value jGiven = m_options.blUpsert && m_bad != nullptr ? jRec : Json::Value();
        if ((m_options.blUpsert ? table.recSave(jRec, false) : table.recCreate(jRec)) == 0)
            ++m_stored;
        else if (skips(table.status()))
            skip(m_options.blUpsert ? jGiven : jRec, table.status());
        else
            throw failedAt(m_stored + m_skipped + 1);
        if (m_options.blUpsert)
            jRec = Json::Value();  // it is the stored one by now
    }

    // A text that is no record.
    void refuse(const std::string& strText, const std::string& strProblem)
    {
        vorn::Status status;
        status.code = vorn::Code::BadType;
        status.text = strProblem;
        if (m_bad == nullptr)
            throw Error(kFailure, status);
        skip(asUtf8(strText), status);
    }

    unsigned long long stored() const { return m_stored; }
    unsigned long long skipped() const { return m_skipped; }

    void finish()
    {
        if (m_bad != nullptr)
            m_bad->finish();
    }

private:
    // Whether the record itself is to blame, and bad records are passed over.
    bool skips(const vorn::Status& status) const
    {
        switch (status.code)
        {
            case vorn::Code::BadRequest:
            case vorn::Code::UnknownMember:
            case vorn::Code::BadType:
            case vorn::Code::OutOfRange:
            case vorn::Code::Duplicate:
            case vorn::Code::Constraint:
                return m_bad != nullptr && m_store.transaction().isOpen();  // a trigger may have ended all
            default:
                return false;
        }
    }

    void skip(const Json::Value& jRec, const vorn::Status& status)
    {
        Json::Value jBad;
        jBad["code"] = vorn::codeName(status.code);
        jBad["member"] = status.member;
        jBad["reason"] = status.text;
        jBad["record"] = jRec;
        m_bad->write(compact(jBad) + '\n');
        ++m_skipped;
    }

    // What the table said, with the record's number, from 1. Nothing of a record is bad usage.
    Error failedAt(unsigned long long record) const
    {
        vorn::Status status = m_store.table().status();
        status.text = "record " + std::to_string(record) + ": " + status.text;
        return {kFailure, status};
    }

    const Options& m_options;
    Store& m_store;
    std::unique_ptr<Output> m_bad;  // null where bad records are not passed over
    unsigned long long m_stored = 0;
    unsigned long long m_skipped = 0;
};

}  // namespace

int importRecords(const Options& options)
{
    Store store(options, Access::Create, true);
    Input input(options.strFile);
    const auto source = openSource(input, options.strFormat, store.members());

    Import import(options, store);
    Progress progress("importing");
    Json::Value jRec;
    std::string strText;
    std::string strProblem;
    while (!isInterrupted() && source->next(jRec, strText, strProblem))
    {
        if (strProblem.empty())
            import.add(jRec);
        else
            import.refuse(strText, strProblem);
        progress.show(input.done(), input.size(), import.stored());
    }
    progress.clear();
    if (!isInterrupted())
        import.finish();
    if (isInterrupted())
        throw failure(vorn::Code::Interrupted, "");
    if (!options.blDryRun && store.transaction().commit() != 0)
        throw failed(store.transaction().status());
    releaseSignals();

    if (import.skipped() > 0)
        std::cerr << "bad records, in " << harmless(options.strSkipBad, false) << ": " << import.skipped() << '\n';
    printLine(std::to_string(import.stored()));
    return import.stored() > 0 ? kDone : kNothingFound;
}

}  // namespace cli
