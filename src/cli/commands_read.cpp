// SPDX-License-Identifier: MIT
//
// list, get, count, explain and export.

#include <algorithm>
#include <functional>

#include "commands.h"
#include "error.h"
#include "json_argument.h"
#include "output.h"
#include "progress.h"
#include "record_sink.h"
#include "utf8.h"

namespace cli
{

namespace
{

// Writes the records of the request as they come, each after prepare; returns their count.
long long writeAll(Store& store, const Options& options, const Json::Value& jRequest, Output& output,
                   const std::string& strFormat, const std::function<void(Json::Value&)>& prepare)
{
    const auto sink = openSink(output, strFormat, columnsOf(options, store.members()));
    const long long found = store.table().recForEach(jRequest,
                                                     [&](Json::Value& jRec)
                                                     {
                                                         prepare(jRec);
                                                         sink->write(jRec);
                                                         return !output.hasFailed();
                                                     });
    require(store.table(), found >= 0);
    sink->finish();
    output.finish();
    return found;
}

// How many records the request will give.
std::uint64_t expected(Store& store, const Options& options)
{
    const long long found = store.table().recCount(filterOf(store.members(), options.arguments));
    require(store.table(), found >= 0);
    const long long left = std::max(0LL, found - std::max(0LL, options.iOffset));
    return static_cast<std::uint64_t>(options.iLimit >= 0 ? std::min(left, options.iLimit) : left);
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
    Output output("");
    const Json::Value jRequest = requestOf(options, store.members());
    const long long found = writeAll(store, options, jRequest, output, options.strFormat, [](Json::Value&) {});
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
    Output output("");
    const auto sink = openSink(output, options.strFormat, columnsOf(options, store.members()));
    sink->write(jRec);
    sink->finish();
    output.finish();
    return kDone;
}

int count(const Options& options)
{
    Store store(options, Access::Read);
    const long long found = store.table().recCount(filterOf(store.members(), options.arguments));
    require(store.table(), found >= 0);
    printLine(std::to_string(found));
    return found > 0 ? kDone : kNothingFound;
}

int explain(const Options& options)
{
    Store store(options, Access::Read);
    Json::Value jOut;
    require(store.table(), store.table().explain(requestOf(options, store.members()), jOut) == 0);
    std::string strText = jOut["sql"].asString();
    for (const Json::Value& jValue : jOut["parameters"])
        strText += "\n  ? " + compact(jValue);
    for (const Json::Value& jLine : jOut["plan"])
        strText += "\n  " + jLine.asString();
    printLine(harmless(strText, true));
    return kDone;
}

int exportRecords(const Options& options)
{
    Store store(options, Access::Read);
    const Json::Value jRequest = requestOf(options, store.members());
    Progress progress("exporting");
    const std::uint64_t total = progress.isSeen() ? expected(store, options) : 0;
    Output output(options.strOutput);
    const std::string strFormat = options.strFormat.empty() ? "jsonl" : options.strFormat;
    // A member that is absent is written as null where an import would fill in its default.
    std::vector<std::string> filled;
    for (const std::string& strName : columnsOf(options, store.members()))
        if (store.members()[strName].isMember("cppDefaultValue"))
            filled.push_back(strName);
    const auto prepare = [&, records = std::uint64_t{0}](Json::Value& jRec) mutable
    {
        for (const std::string& strName : filled)
            jRec[strName];
        ++records;
        progress.show(records, total, records);
    };
    const long long found = writeAll(store, options, jRequest, output, strFormat, prepare);
    return found > 0 ? kDone : kNothingFound;
}

}  // namespace cli
