// SPDX-License-Identifier: MIT
//
// import: everything in one transaction, a batch of records at a time.

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

    // Where the next record is to be read to. What an earlier one left there may be used again.
    Json::Value& place() { return m_jBatch[m_waiting]; }

    // The record at place() is complete; so many bytes were read for it.
    void add(std::uint64_t bytes)
    {
        constexpr Json::ArrayIndex kMostRecords = 200;  // few enough to stay in the processor's cache
        constexpr std::uint64_t kMostBytes = std::uint64_t{1024} * 1024;
        if (m_options.blUpsert)
            return save(place());
        ++m_waiting;
        m_waitingBytes += bytes;
        if (m_waiting == kMostRecords || m_waitingBytes >= kMostBytes)
            flush();
    }

    // Stores what waits.
    void flush()
    {
        m_jBatch.resize(m_waiting);
        vorn::Table& table = m_store.table();
        if (table.recCreateAll(m_jBatch) >= 0)
        {
            m_stored += m_waiting;
        }
        else if (!skips(table.status()))
        {
            throw failedAt(m_stored + m_skipped + static_cast<unsigned long long>(table.status().index + 1));
        }
        else
        {
            for (Json::Value& jRec : m_jBatch)
                if (table.recCreate(jRec) == 0)
                    ++m_stored;
                else if (skips(table.status()))
                    skip(jRec, table.status());
                else
                    throw failedAt(0);
        }
        m_waiting = 0;
        m_waitingBytes = 0;
    }

    // A text that is no record.
    void refuse(const std::string& strText, const std::string& strProblem)
    {
        flush();
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
        flush();
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
                return m_bad != nullptr;
            default:
                return false;
        }
    }

    void save(Json::Value& jRec)
    {
        const Json::Value jGiven = m_bad != nullptr ? jRec : Json::Value();
        vorn::Table& table = m_store.table();
        if (table.recSave(jRec, false) == 0)
            ++m_stored;
        else if (skips(table.status()))
            skip(jGiven, table.status());
        else
            throw failedAt(m_stored + m_skipped + 1);
        jRec = Json::Value();
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

    // What the table said, with the record's number, from 1, where that is known. Nothing of a record is bad usage.
    Error failedAt(unsigned long long record) const
    {
        vorn::Status status = m_store.table().status();
        if (record > 0)
            status.text = "record " + std::to_string(record) + ": " + status.text;
        return {kFailure, status};
    }

    const Options& m_options;
    Store& m_store;
    std::unique_ptr<Output> m_bad;           // null where bad records are not passed over
    Json::Value m_jBatch{Json::arrayValue};  // its first m_waiting records wait to be stored
    Json::ArrayIndex m_waiting = 0;
    std::uint64_t m_waitingBytes = 0;
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
    std::string strText;
    std::string strProblem;
    std::uint64_t before = 0;
    while (!isInterrupted() && source->next(import.place(), strText, strProblem))
    {
        if (strProblem.empty())
            import.add(input.done() - before);
        else
            import.refuse(strText, strProblem);
        before = input.done();
        progress.show(before, input.size(), import.stored());
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
