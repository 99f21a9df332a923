// SPDX-License-Identifier: MIT

#include "proof.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "work.h"

namespace bench
{

namespace
{

Json::Value recordsOf(std::size_t first, std::size_t count)
{
    Json::Value jRecords(Json::arrayValue);
    for (std::size_t i = first; i < first + count; ++i)
        jRecords.append(recordOf(i));
    return jRecords;
}

class Proof
{
public:
    Proof(const ContestantKind& kind, const Setting& setting)
        : m_kind(kind), m_setting(setting), m_place(kind, setting), m_contestant(m_place.contestant())
    {
    }

    void run()
    {
        read();
        write();
    }

private:
    void expect(bool blHolds, const std::string& strWhat)
    {
        if (!blHolds)
            throw std::runtime_error(m_kind.strName + " (" + nameOf(m_setting) + ") differs: " + strWhat);
    }

    void expectRecords(const Json::Value& jExpected, const std::string& strWhat)
    {
        if (m_kind.blMakesRecords)
            expect(m_contestant.result() == jExpected, strWhat);
    }

    void read()
    {
        m_place.prepare(work("fetch"), kOperations);
        expect(m_contestant.list() == m_setting.rows, "count of all records");
        expectRecords(recordsOf(0, m_setting.rows), "all records");
        for (std::size_t i = 0; i < kPages; ++i)
        {
            expect(m_contestant.page(pageOffset(i)) == kPage, "count of a page");
            expectRecords(recordsOf(pageOffset(i), kPage), "records of a page");
        }
        for (std::size_t i = 0; i < kOperations; ++i)
        {
            expect(m_contestant.fetch(i) == 1, "count of a fetch");
            expectRecords(recordOf(spread(i, m_setting.rows)), "fetched record");
        }
    }

    void write()
    {
        const Json::Value jBefore = recordsOf(0, m_setting.rows);
        expectRows(jBefore, "rows before any change");

        m_place.prepare(work("create"), kOperations);
        for (std::size_t i = 0; i < kOperations; ++i)
        {
            expect(m_contestant.create(i) == 1, "count of a create");
            expectRecords(recordOf(m_setting.rows + i), "stored record");
        }
        expectRows(recordsOf(0, m_setting.rows + kOperations), "rows after creates");

        for (std::size_t i = 0; i < kOperations; ++i)
            expect(m_contestant.remove(i) == 1, "count of a delete");
        expect(m_contestant.remove(0) == 0, "count of a delete without a row");
        expectRows(jBefore, "rows after deletes");

        m_place.prepare(work("update"), kOperations);
        Json::Value jAfter = jBefore;
        for (std::size_t i = 0; i < kOperations; ++i)
        {
            expect(m_contestant.update(i) == 1, "count of an update");
            const std::size_t row = spread(i, m_setting.rows);
            const Json::Value jChanges = changesOf(row);
            for (const std::string& strName : jChanges.getMemberNames())
                jAfter[static_cast<Json::ArrayIndex>(row)][strName] = jChanges[strName];
        }
        expectRows(jAfter, "rows after updates");
        m_contestant.list();
        expectRecords(jAfter, "records after updates");
    }

    void expectRows(const Json::Value& jRecords, const std::string& strWhat)
    {
        std::vector<std::string> rows;
        for (const Json::Value& jRec : jRecords)
            rows.push_back(storedRow(jRec));
        expect(dumpTable(m_contestant.connection()) == rows, strWhat);
    }

    static constexpr std::size_t kOperations = 200;

    const ContestantKind& m_kind;
    Setting m_setting;
    Place m_place;
    Contestant& m_contestant;
};

}  // namespace

void proveSameRecords(std::size_t rows)
{
    for (const ContestantKind& kind : contestantKinds())
    {
        Proof(kind, {false, false, rows}).run();
        Proof(kind, {true, false, rows}).run();
    }
}

}  // namespace bench
