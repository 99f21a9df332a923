// SPDX-License-Identifier: MIT
//
// list, get, count, explain and export.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "commands.h"
#include "error.h"
#include "json_argument.h"
#include "progress.h"
#include "record_sink.h"

namespace cli
{

namespace
{

void requireWritten(std::FILE* pOutput, const std::string& strName)
{
    if (std::fflush(pOutput) != 0 || std::ferror(pOutput) != 0)
        throw failure(errno == ENOSPC ? vorn::Code::Full : vorn::Code::Sqlite,
                      "writing " + strName + " failed: " + std::strerror(errno));
}

// Writes the records of the request as they come; returns their count.
long long writeAll(Store& store, const Json::Value& jRequest, RecordSink& sink, Progress* pProgress)
{
    std::uint64_t records = 0;
    const long long found = store.table().recForEach(jRequest,
                                                     [&](Json::Value& jRec)
                                                     {
                                                         sink.write(jRec);
                                                         if (pProgress != nullptr)
                                                             pProgress->show(0, 0, ++records);
                                                         return true;
                                                     });
    require(store.table(), found >= 0);
    sink.finish();
    return found;
}

}  // namespace

void require(const vorn::Table& table, bool blHolds)
{
    if (!blHolds)
        throw failed(table.status());
}

Json::Value requestOf(const Options& options, const Json::Value& jMembers)
{
    Json::Value jRequest = filterOf(jMembers, options.arguments);
    if (!options.strSort.empty())
        jRequest["$sort_by"] = listOf(options.strSort);
    if (options.iLimit >= 0)
        jRequest["$limit"] = static_cast<Json::Int64>(options.iLimit);
    if (options.iOffset >= 0)
        jRequest["$offset"] = static_cast<Json::Int64>(options.iOffset);
    if (!options.strFields.empty())
        jRequest["$fields"] = listOf(options.strFields);
    return jRequest;
}

std::vector<std::string> columnsOf(const Options& options, const Json::Value& jMembers)
{
    std::vector<std::string> names;
    for (const Json::Value& jName : listOf(options.strFields))
        names.push_back(jName.asString());
    return options.strFields.empty() ? jMembers.getMemberNames() : names;
}

int list(const Options& options)
{
    Store store(options, Access::Read);
    const auto sink = openSink(stdout, options.strFormat, columnsOf(options, store.members()));
    const long long found = writeAll(store, requestOf(options, store.members()), *sink, nullptr);
    requireWritten(stdout, "standard output");
    return found > 0 ? kDone : kNothingFound;
}

int get(const Options& options)
{
    Store store(options, Access::Read);
    Json::Value jRec;
    const int found = store.table().recGetOne(requestOf(options, store.members()), jRec);
    require(store.table(), found >= 0);
    if (found == 0)
        return kNothingFound;
    const auto sink = openSink(stdout, options.strFormat, columnsOf(options, store.members()));
    sink->write(jRec);
    sink->finish();
    requireWritten(stdout, "standard output");
    return kDone;
}

int count(const Options& options)
{
    Store store(options, Access::Read);
    const long long found = store.table().recCount(filterOf(store.members(), options.arguments));
    require(store.table(), found >= 0);
    std::printf("%lld\n", found);
    requireWritten(stdout, "standard output");
    return found > 0 ? kDone : kNothingFound;
}

int explain(const Options& options)
{
    Store store(options, Access::Read);
    Json::Value jOut;
    require(store.table(), store.table().explain(requestOf(options, store.members()), jOut) == 0);
    std::printf("%s\n", jOut["sql"].asCString());
    for (const Json::Value& jValue : jOut["parameters"])
        std::printf("  ? %s\n", compact(jValue).c_str());
    for (const Json::Value& jLine : jOut["plan"])
        std::printf("  %s\n", jLine.asCString());
    requireWritten(stdout, "standard output");
    return kDone;
}

int exportRecords(const Options& options)
{
    Store store(options, Access::Read);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(nullptr, &std::fclose);
    if (!options.strOutput.empty())
        file.reset(std::fopen(options.strOutput.c_str(), "wb"));
    if (!options.strOutput.empty() && file == nullptr)
        throw failure(vorn::Code::ReadOnly, "the file " + options.strOutput + " cannot be written");
    std::FILE* const pOutput = file != nullptr ? file.get() : stdout;

    const std::string strFormat = options.strFormat.empty() ? "jsonl" : options.strFormat;
    const auto sink = openSink(pOutput, strFormat, columnsOf(options, store.members()));
    Progress progress("exporting");
    const long long found = writeAll(store, requestOf(options, store.members()), *sink, &progress);
    requireWritten(pOutput, options.strOutput.empty() ? "standard output" : options.strOutput);
    return found > 0 ? kDone : kNothingFound;
}

}  // namespace cli
