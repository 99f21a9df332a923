// SPDX-License-Identifier: MIT

#include <stdexcept>
#include <string>
#include <vector>

#include "work.h"

namespace bench
{

namespace
{

void prove(const ContestantKind& kind, const Setting& setting)
{
    constexpr std::size_t kOperations = 200;
    Place place(kind, setting);
    Contestant& contestant = place.contestant();
    const auto expect = [&](bool blHolds, const std::string& strWhat)
    {
        if (!blHolds)
            throw std::runtime_error(kind.strName + " (" + nameOf(setting) + ") differs: " + strWhat);
    };
    const auto expectRecords = [&](const Json::Value& jExpected, const std::string& strWhat)
    { expect(!kind.blMakesRecords || contestant.result() == jExpected, strWhat); };
    const auto expectRows = [&](const Json::Value& jRecords, const std::string& strWhat)
    {
        std::vector<std::string> rows;
        for (const Json::Value& jRec : jRecords)
            rows.push_back(storedRow(jRec));
        expect(dumpTable(contestant.connection()) == rows, strWhat);
    };

    const Json::Value jBefore = recordsOf(0, setting.rows);
    const auto proveMore = [&]
    {
        for (std::size_t i = 0; i < kPages; ++i)
        {
            expect(contestant.sorted(pageOffset(i)) == kPage, "count of a sorted page");
            Json::Value jPage(Json::arrayValue);
            for (std::size_t row = 1; row <= kPage; ++row)
                jPage.append(recordOf(setting.rows - pageOffset(i) - row));
            expectRecords(jPage, "records of a sorted page");
            expect(contestant.filter(i) == kPage, "count of a filter");
            expectRecords(recordsOf(pageOffset(i), kPage), "records of a filter");
            expect(contestant.count(i) == makeInput({}).windows[i].enabled, "a counted filter");
        }
        Json::Value jVisited(Json::arrayValue);
        const auto visit = [&](const Json::Value& jRec) { return jVisited.append(jRec).isObject(); };
        expect(!kind.does(WorkKind::ForEach) || (contestant.forEach(visit) == setting.rows && jVisited == jBefore),
               "visited records");

        place.prepare(work("bulk"), 1);
        expect(contestant.createAll(0) == setting.rows, "count of a bulk");
        expectRows(recordsOf(0, 2 * setting.rows), "rows after a bulk");
    };
    place.prepare(work("fetch"), kOperations);
    expect(contestant.list() == setting.rows, "count of all records");
    expectRecords(jBefore, "all records");
    for (std::size_t i = 0; i < kPages; ++i)
    {
        expect(contestant.page(pageOffset(i)) == kPage, "count of a page");
        expectRecords(recordsOf(pageOffset(i), kPage), "records of a page");
    }
    for (std::size_t i = 0; i < kOperations; ++i)
    {
        expect(contestant.fetch(i) == 1, "count of a fetch");
        expectRecords(recordOf(spread(i, setting.rows)), "fetched record");
    }
    expectRows(jBefore, "rows before any change");
    if (kind.does(WorkKind::Bulk))
        proveMore();

    place.prepare(work("create"), kOperations);
    for (std::size_t i = 0; i < kOperations; ++i)
    {
        expect(contestant.create(i) == 1, "count of a create");
        expectRecords(recordOf(setting.rows + i), "stored record");
    }
    expectRows(recordsOf(0, setting.rows + kOperations), "rows after creates");

    for (std::size_t i = 0; i < kOperations; ++i)
        expect(contestant.remove(i) == 1, "count of a delete");
    expect(contestant.remove(0) == 0, "count of a delete without a row");
    expectRows(jBefore, "rows after deletes");

    place.prepare(work("update"), kOperations);
    Json::Value jAfter = jBefore;
    for (std::size_t i = 0; i < kOperations; ++i)
    {
        expect(contestant.update(i) == 1, "count of an update");
        const std::size_t row = spread(i, setting.rows);
        const Json::Value jChanges = changesOf(row);
        for (const std::string& strName : jChanges.getMemberNames())
            jAfter[static_cast<Json::ArrayIndex>(row)][strName] = jChanges[strName];
    }
    expectRows(jAfter, "rows after updates");
    contestant.list();
    expectRecords(jAfter, "records after updates");
}

}  // namespace

void proveSameRecords(std::size_t rows)
{
    for (const ContestantKind& kind : work("create").contestants(true))
        for (const bool blFile : {false, true})
            prove(kind, {blFile, false, rows});
}

}  // namespace bench
