// SPDX-License-Identifier: MIT
//
// create, set and delete.

#include <unistd.h>
#include <vorn/transaction.h>

#include <functional>
#include <iostream>

#include "commands.h"
#include "error.h"
#include "json_argument.h"
#include "output.h"
#include "record_sink.h"
#include "terminal.h"

namespace cli
{

namespace
{

int printCount(long long count)
{
    releaseSignals();
    printLine(std::to_string(count));
    return count > 0 ? kDone : kNothingFound;
}

// Changes what the filter selects, and lets a person think again where that is more than one record.
int change(Store& store, const Options& options, const Json::Value& jFilter, const std::string& strVerb,
           const std::function<long long()>& run)
{
    if (options.arguments.empty() && !options.blAll)
        throw badUsage("without a filter this would " + strVerb + " every record: say --all if it shall");
    const bool blAsks = !options.blYes && isTerminal(STDIN_FILENO);
    if (!options.blDryRun && !blAsks)
    {
        const long long changed = run();
        require(store.table(), changed >= 0);
        return printCount(changed);
    }
    const long long found = store.table().recCount(jFilter);
    require(store.table(), found >= 0);
    if (options.blDryRun)
        return printCount(found);
    if (found > 1 && !ask(strVerb + " " + std::to_string(found) + " records?"))
        throw failure(vorn::Code::Interrupted, "the answer was not yes: nothing was changed");

    // What others have stored since was not asked about.
    vorn::Transaction transaction(store.connection(), 0);
    if (!transaction.isOpen())
        throw failed(transaction.status());
    const long long changed = run();
    require(store.table(), changed >= 0);
    if (changed > found)
        throw failure(vorn::Code::Locked,
                      "meanwhile " + std::to_string(changed) + " records match: nothing was changed, ask for it again");
    if (transaction.commit() != 0)
        throw failed(transaction.status());
    return printCount(changed);
}

}  // namespace

int create(const Options& options)
{
    Store store(options, Access::Create);
    Json::Value jStored;
    require(store.table(), store.table().recCreate(recordOf(store.members(), options.arguments), jStored) == 0);
    releaseSignals();
    Output output("");
    const auto sink = openSink(output, options.strFormat, columnsOf(options, store.members()));
    sink->write(jStored);
    sink->finish();
    output.finish();
    return kDone;
}

int set(const Options& options)
{
    Store store(options, Access::Write);
    const Json::Value jFilter = filterOf(store.members(), options.arguments);
    const Json::Value jValues = recordOf(store.members(), options.values);
    return change(store, options, jFilter, "change",
                  [&] { return store.table().recUpdateByFilter(jFilter, jValues, options.blAll); });
}

int erase(const Options& options)
{
    Store store(options, Access::Write);
    const Json::Value jFilter = filterOf(store.members(), options.arguments);
    return change(store, options, jFilter, "delete", [&] { return store.table().recDelete(jFilter, options.blAll); });
}

}  // namespace cli
