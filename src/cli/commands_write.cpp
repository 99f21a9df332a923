// SPDX-License-Identifier: MIT
//
// create, set and delete; check and upgrade.

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "commands.h"
#include "error.h"
#include "json_argument.h"
#include "progress.h"
#include "record_sink.h"
#include "terminal.h"

namespace cli
{

namespace
{

// Counts what the filter selects, and lets a person think again. True to go on.
bool mayChange(Store& store, const Options& options, const Json::Value& jFilter, const std::string& strVerb, int& iExit)
{
    if (options.arguments.empty() && !options.blAll)
        throw badUsage("without a filter this would " + strVerb + " every record: say --all if it shall");
    const bool blAsks = !options.blYes && isTerminal(STDIN_FILENO);
    if (!options.blDryRun && !blAsks)
        return true;
    const long long found = store.table().recCount(jFilter);
    require(store.table(), found >= 0);
    if (options.blDryRun)
    {
        std::printf("%lld\n", found);
        iExit = found > 0 ? kDone : kNothingFound;
        return false;
    }
    if (found > 1 && !ask(strVerb + " " + std::to_string(found) + " records?"))
    {
        std::cerr << "nothing was changed\n";
        iExit = kFailure;
        return false;
    }
    return true;
}

int printChanged(Store& store, long long changed)
{
    require(store.table(), changed >= 0);
    std::printf("%lld\n", changed);
    return changed > 0 ? kDone : kNothingFound;
}

}  // namespace

int create(const Options& options)
{
    Store store(options, Access::Create);
    Json::Value jStored;
    require(store.table(), store.table().recCreate(recordOf(store.members(), options.arguments), jStored) == 0);
    const auto sink = openSink(stdout, options.strFormat, columnsOf(options, store.members()));
    sink->write(jStored);
    sink->finish();
    return kDone;
}

int set(const Options& options)
{
    Store store(options, Access::Write);
    const Json::Value jFilter = filterOf(store.members(), options.arguments);
    const Json::Value jValues = recordOf(store.members(), options.values);
    int iExit = kDone;
    if (!mayChange(store, options, jFilter, "change", iExit))
        return iExit;
    return printChanged(store, store.table().recUpdateByFilter(jFilter, jValues, options.blAll));
}

int erase(const Options& options)
{
    Store store(options, Access::Write);
    const Json::Value jFilter = filterOf(store.members(), options.arguments);
    int iExit = kDone;
    if (!mayChange(store, options, jFilter, "delete", iExit))
        return iExit;
    return printChanged(store, store.table().recDelete(jFilter, options.blAll));
}

int check(const Options& options)
{
    Store store(options, Access::Read);
    Json::Value jReport;
    const bool blUsable = store.table().tableCheck(jReport, options.blCells) == 0;
    const vorn::Status status = store.table().status();
    if (!jReport.isNull())
        std::cout << jReport.toStyledString();
    if (!blUsable)
        throw failed(status);
    return kDone;
}

int upgrade(const Options& options)
{
    if (options.blDryRun)
        return check(options);
    Store store(options, Access::Create);
    Progress progress("upgrading");
    sqlite3_progress_handler(
        store.connection(), 100000,
        [](void* pProgress)
        {
            static_cast<Progress*>(pProgress)->show(0, 0, 0);
            return isInterrupted() ? 1 : 0;
        },
        &progress);
    require(store.table(), store.table().tableUpgrade() == 0);
    return kDone;
}

}  // namespace cli
