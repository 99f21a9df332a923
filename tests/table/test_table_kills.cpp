// SPDX-License-Identifier: MIT
//
// Writers that are killed: a child does mixed work and acknowledges each piece of it, until it is killed at a random
// moment. Every acknowledged piece must be in the file, the one after it whole or not at all, and the file must be
// sound. VORN_TEST_SEED repeats a run, as far as the moments of kills can be repeated.

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <map>
#include <thread>

#include "child_process.h"
#include "faulty_vfs.h"
#include "random.h"
#include "table_fixture.h"
#include "whole.h"

using namespace table_tests;
using faults::ChildProcess;

namespace
{

constexpr int kKills = 500;
constexpr int kMostAwaited = 12;  // acknowledged pieces before the kill
constexpr int kMostPieces = 60;   // in one child's life
constexpr int kStep = 8;          // identities for each piece
constexpr int kWidest = 40;       // range of identities
constexpr int kKept = 300;        // identities that records may have at a time

using Records = std::map<int, std::string>;

enum class Work
{
    Create,
    CreateAll,
    SaveNew,
    SaveOld,
    Update,
    Delete,
    Commit,
    RollBack
};
constexpr int kWorks = 8;

// A piece of work, which follows from its number alone, so that the parent knows what the child does.
struct Piece
{
    explicit Piece(int iNumber) : iFirst(iNumber * kStep)
    {
        support::Random random(static_cast<std::uint64_t>(iNumber));
        work = static_cast<Work>(random.below(kWorks));
        iLow = iFirst - static_cast<int>(random.below(kKept));
        iHigh = iLow + static_cast<int>(random.below(kWidest));
        // The longest take several pages, and more than the writer's page cache holds.
        strText = std::to_string(iNumber) + " " + std::string(random.oneIn(3) ? random.below(20000) : 5, 'x');
    }

    Json::Value record(int i) const
    {
        Json::Value jRecord;
        jRecord["id"] = i;
        jRecord["text"] = strText;
        return jRecord;
    }

    Json::Value range() const
    {
        Json::Value jFilter;
        jFilter["id"]["$gte"] = iLow;
        jFilter["id"]["$lt"] = iHigh;
        return jFilter;
    }

    Json::Value old() const  // and so that the file does not grow for ever
    {
        Json::Value jFilter;
        jFilter["$or"].append(range());
        jFilter["$or"].append(Json::Value())["id"]["$lt"] = iFirst - kKept;
        return jFilter;
    }

    Json::Value text() const
    {
        Json::Value jValues;
        jValues["text"] = strText;
        return jValues;
    }

    Work work;
    int iFirst, iLow, iHigh;
    std::string strText;
};

bool several(vorn::Table& table, const Piece& piece)
{
    return table.recCreate(piece.record(piece.iFirst)) == 0 &&
           table.recUpdateByFilter(piece.range(), piece.text()) >= 0 && table.recDelete(piece.old()) >= 0 &&
           table.recCreate(piece.record(piece.iFirst + 1)) == 0;
}

bool doPiece(sqlite3* pDb, vorn::Table& table, const Piece& piece)
{
    Json::Value jOut, jRecords;
    switch (piece.work)
    {
        case Work::Create:
            return table.recCreate(piece.record(piece.iFirst), jOut) == 0;
        case Work::CreateAll:
            for (int i = 0; i < kStep; ++i)
                jRecords.append(piece.record(piece.iFirst + i));
            return table.recCreateAll(jRecords) == kStep;
        case Work::SaveNew:
            jOut = piece.record(piece.iFirst);
            return table.recSave(jOut, true) == 0;
        case Work::SaveOld:
            jOut = piece.record(piece.iLow);
            return table.recSave(jOut, false) == 0;
        case Work::Update:
            return table.recUpdateByFilter(piece.range(), piece.text()) >= 0;
        case Work::Delete:
            return table.recDelete(piece.old()) >= 0;
        default:
        {
            vorn::Transaction transaction(pDb);
            if (!transaction.isOpen() || !several(table, piece))
                return false;
            return (piece.work == Work::Commit ? transaction.commit() : transaction.rollback()) == 0;
        }
    }
}

// The same by plain means.
void workOut(const Piece& piece, Records& records)
{
    const auto update = [&]
    {
        for (auto& [iId, strText] : records)
            if (iId >= piece.iLow && iId < piece.iHigh)
                strText = piece.strText;
    };
    const auto erase = [&]
    {
        for (auto it = records.begin(); it != records.end();)
            it = (it->first >= piece.iLow && it->first < piece.iHigh) || it->first < piece.iFirst - kKept
                     ? records.erase(it)
                     : std::next(it);
    };
    switch (piece.work)
    {
        case Work::Create:
        case Work::SaveNew:
            records[piece.iFirst] = piece.strText;
            break;
        case Work::CreateAll:
            for (int i = 0; i < kStep; ++i)
                records[piece.iFirst + i] = piece.strText;
            break;
        case Work::SaveOld:
            records[piece.iLow] = piece.strText;
            break;
        case Work::Update:
            update();
            break;
        case Work::Delete:
            erase();
            break;
        case Work::Commit:
            records[piece.iFirst] = piece.strText;
            update();
            erase();
            records[piece.iFirst + 1] = piece.strText;
            break;
        case Work::RollBack:
            break;
    }
}

class TableKills : public testing::TestWithParam<std::string>
{
protected:
    // The file is written as for a power cut, but nothing waits for the disk: only the order of writes matters to a
    // killed process.
    int work(int report, int iFirst) const
    {
        const faults::FaultyVfs withoutSyncs;
        const Database db(m_file.path());
        if (db.run("PRAGMA cache_size = 5; PRAGMA wal_autocheckpoint = 10; PRAGMA journal_mode = " + GetParam()) !=
            SQLITE_OK)
            return 1;
        vorn::Table table(db.handle(), "T", m_jTableDef);
        for (int i = iFirst; i < iFirst + kMostPieces; ++i)
            if (!doPiece(db.handle(), table, Piece(i)) || !ChildProcess::send(report, i))
                return 1;
        pause();  // whoever has nothing left to do waits for the end
        return 0;
    }

    Records stored() const
    {
        const Database db(m_file.path());
        EXPECT_EQ(std::vector<std::string>{"ok"}, db.rows("PRAGMA integrity_check"));
        Records found;
        for (const std::string& strRow : db.rows("SELECT id, text FROM T"))
            EXPECT_TRUE(found.emplace(std::stoi(strRow), strRow.substr(strRow.find('|') + 1)).second)
                << "twice: " << strRow;
        return found;
    }

    support::TempFile m_file;
    Json::Value m_jTableDef = definitionOf(
        "T", json(R"({"id": {"cpptype": "int", "key": true}, "text": {"cpptype": "string", "index": true}})"));
};

}  // namespace

TEST_P(TableKills, AtAnyMomentOfMixedWorkLoseNothingAcknowledgedAndLeaveNoHalf)
{
    support::Random random;
    {
        const Database db(m_file.path());
        ASSERT_EQ(SQLITE_OK, db.run("PRAGMA journal_mode = " + GetParam()));
        const vorn::Table table(db.handle(), "T", m_jTableDef);
        ASSERT_EQ(Code::Ok, table.status().code) << describe(table.status());
    }
    const int iKills = support::partOrWhole(kKills / 10, kKills);
    int iNext = kKept;  // so that no identity is below 1
    int iAcknowledged = 0, iUnacknowledged = 0;
    Records records;
    for (int iKill = 0; iKill < iKills && !HasFailure(); ++iKill)
    {
        SCOPED_TRACE("VORN_TEST_SEED=" + std::to_string(random.seed()) + ", kill " + std::to_string(iKill));
        ChildProcess writer([&](int report) { return work(report, iNext); });
        // After some acknowledged pieces, or none yet, and a moment of the length of a few.
        int iLast = iNext - 1;
        for (std::size_t left = random.below(kMostAwaited); left > 0; --left)
            ASSERT_TRUE(writer.receive(iLast)) << "piece " << iLast + 1;
        std::this_thread::sleep_for(std::chrono::microseconds(random.below(iLast < iNext ? 10000 : 1500)));
        writer.kill();
        while (writer.receive(iLast))
        {
        }
        EXPECT_EQ(-SIGKILL, writer.wait());
        for (; iNext <= iLast; ++iNext, ++iAcknowledged)
            workOut(Piece(iNext), records);

        const Records found = stored();
        if (found != records)
        {
            workOut(Piece(iNext), records);
            ++iNext;
            ++iUnacknowledged;
            EXPECT_TRUE(found == records) << records.size() << " records expected, " << found.size() << " found";
        }
    }
    EXPECT_LT(iKills, iAcknowledged);
    std::cout << iKills << " kills, " << iAcknowledged << " pieces of work acknowledged, " << iUnacknowledged
              << " stored but not acknowledged\n";
}

INSTANTIATE_TEST_SUITE_P(JournalModes, TableKills, testing::Values("delete", "wal"),
                         [](const auto& mode) { return mode.param; });
