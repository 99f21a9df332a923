// SPDX-License-Identifier: MIT
//
// check and upgrade.

#include <set>

#include "commands.h"
#include "error.h"
#include "output.h"
#include "progress.h"
#include "sql.h"
#include "utf8.h"

namespace cli
{

namespace
{

vorn::Status report(Store& store, bool blCells)
{
    Json::Value jReport;
    store.table().tableCheck(jReport, blCells);
    vorn::Status status = store.table().status();
    Output output("");
    if (!jReport.isNull())
        output.write(escaped(jReport.toStyledString()));
    output.finish();
    return status;
}

// How much work an upgrade has: SQLite's steps for a row and an index, as SQLite 3.40 counts them, so that the time
// left is near the truth. Of the rows and the members that want an index and have none.
struct Work
{
    static constexpr int kBetween = 100000;  // steps between two looks
    static constexpr std::uint64_t kStepsARow = 10;

    Work(sqlite3* pDb, const std::string& strTable, const Json::Value& jMembers)
    {
        std::set<std::string> indexed;
        Query names(pDb, "SELECT DISTINCT (SELECT name FROM pragma_index_info(l.name)) FROM pragma_index_list(?1) AS l",
                    strTable);
        while (names.step())
            indexed.insert(names.text(0));
        for (auto it = jMembers.begin(); it != jMembers.end(); ++it)
            if (((*it)["index"].asBool() || (*it)["unique"].asBool()) && indexed.count(it.name()) == 0)
                ++indexes;
        Query count(pDb, "SELECT count(*) FROM " + quoted(strTable), "");
        rows = indexes > 0 && count.step() ? static_cast<std::uint64_t>(count.number(0)) : 0;
    }

    std::uint64_t rows = 0;
    std::uint64_t indexes = 0;
    std::uint64_t steps = 0;
    Progress progress{"upgrading"};
};

int look(void* pWork)
{
    Work& work = *static_cast<Work*>(pWork);
    work.steps += Work::kBetween;
    const std::uint64_t total = work.rows * work.indexes * Work::kStepsARow;
    const std::uint64_t done = std::min(work.steps, total);
    work.progress.show(done, total, total > 0 ? done / Work::kStepsARow / work.indexes : 0);
    return isInterrupted() ? 1 : 0;
}

}  // namespace

int check(const Options& options)
{
    Store store(options, Access::Read);
    const vorn::Status status = report(store, options.blCells);
    if (status.code != vorn::Code::Ok)
        throw failed(status);
    return kDone;
}

int upgrade(const Options& options)
{
    if (options.blDryRun)
    {
        Store store(options, Access::Read);
        const vorn::Status status = report(store, false);
        if (status.code != vorn::Code::Ok && status.code != vorn::Code::Missing)
            throw failed(status);
        return kDone;
    }
    Store store(options, Access::Create);
    Work work(store.connection(), store.name(), store.members());
    sqlite3_progress_handler(store.connection(), Work::kBetween, look, &work);
    const int upgraded = store.table().tableUpgrade();
    sqlite3_progress_handler(store.connection(), 0, nullptr, nullptr);
    require(store.table(), upgraded == 0);
    return kDone;
}

}  // namespace cli
