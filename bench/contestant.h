// SPDX-License-Identifier: MIT
//
// What contestants do: pieces of work on one table, records in, records out. Six of them are for everyone.

#ifndef VORN_BENCH_CONTESTANT_H
#define VORN_BENCH_CONTESTANT_H

#include <json/json.h>
#include <sqlite3.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "data.h"

namespace bench
{

// Every operation returns how many records it read or changed and throws where it fails. What it read stays until the
// next operation that reads, or clear().
class Contestant
{
public:
    // Gets each record that forEach() reads.
    using Visit = std::function<bool(Json::Value&)>;

    virtual ~Contestant() = default;

    // The connection that the contestant works on, for what is not measured.
    virtual sqlite3* connection() = 0;

    // What the next operations get. Not measured: here a contestant turns it into its own kind of record, where that is
    // not Json::Value. The input outlives its use and is not changed by it.
    virtual void give(Input& input) { m_pInput = &input; }

    virtual std::size_t list() = 0;
    virtual std::size_t create(std::size_t i) = 0;  // and get the stored row back
    virtual std::size_t page(std::size_t /* offset */) { return cannot(); }
    virtual std::size_t sorted(std::size_t /* offset */) { return cannot(); }  // a page, by time, the latest first
    virtual std::size_t fetch(std::size_t /* i */) { return cannot(); }
    virtual std::size_t update(std::size_t /* i */) { return cannot(); }
    virtual std::size_t remove(std::size_t /* i */) { return cannot(); }
    virtual std::size_t filter(std::size_t /* window */) { return cannot(); }  // four conditions that give a page
    virtual std::size_t count(std::size_t /* window */) { return cannot(); }   // of the enabled rows
    virtual std::size_t count(const Json::Value& /* jFilter */) { return cannot(); }
    virtual std::size_t createAll(std::size_t /* i */) { return cannot(); }  // an array, in a transaction of its own
    virtual std::size_t forEach(const Visit&) { return cannot(); }

    // What was read last: an array of records after those that give many, one record after create() and fetch(). Making
    // it is not measured.
    virtual Json::Value result() const { return m_jResult; }
    virtual void clear() { m_jResult = Json::Value(); }

protected:
    Input& input() const { return *m_pInput; }

    // Makes the result the array of the records that readRow(record) fills, one for each time that step() is true.
    template <class Step, class ReadRow>
    std::size_t readAll(const Step& step, const ReadRow& readRow)
    {
        m_jResult = Json::Value(Json::arrayValue);
        while (step())
        {
            Json::Value jRec(Json::objectValue);
            readRow(jRec);
            m_jResult.append(std::move(jRec));
        }
        return m_jResult.size();
    }

    // Gives visit the records one by one, as long as it is content. A list of them is never made.
    template <class Step, class ReadRow>
    static std::size_t visitAll(const Visit& visit, const Step& step, const ReadRow& readRow)
    {
        std::size_t count = 0;
        for (bool blGoOn = true; blGoOn && step(); ++count)
        {
            Json::Value jRec(Json::objectValue);
            readRow(jRec);
            blGoOn = visit(jRec);
        }
        return count;
    }

    Json::Value m_jResult;

private:
    [[noreturn]] static std::size_t cannot() { throw std::logic_error("this contestant does not do that work"); }

    Input* m_pInput = nullptr;
};

// The works, those first that everyone does.
enum class WorkKind
{
    List,
    Page,
    Create,
    Fetch,
    Update,
    Delete,
    Sorted,
    Filter,
    Count,
    Bulk,
    ForEach
};

// How a contestant is made: on the database at a path, or ":memory:".
struct ContestantKind
{
    std::string strId;  // for the command line
    std::string strName;
    std::function<std::unique_ptr<Contestant>(const std::string& strPath)> open;
    WorkKind last = WorkKind::ForEach;  // it does the works up to this one
    bool blMakesRecords = true;         // false: the floor, which only runs the statements

    bool does(WorkKind work) const { return work <= last; }
};

// All that this program was built with; and the other libraries with statements that are kept, which is of interest
// where one record is worked with.
const std::vector<ContestantKind>& contestantKinds();
const std::vector<ContestantKind>& keptPeers();
const ContestantKind& contestantKind(const std::string& strId);

// The contestants, each in a file of its own.
std::unique_ptr<Contestant> openLibrary(const std::string& strPath, const Shape& shape);
std::unique_ptr<Contestant> openTable(const std::string& strPath, const Shape& shape);
std::unique_ptr<Contestant> openHandWrittenPerCall(const std::string& strPath);
std::unique_ptr<Contestant> openHandWrittenKept(const std::string& strPath);
std::unique_ptr<Contestant> openHandWrittenExec(const std::string& strPath);
std::unique_ptr<Contestant> openRaw(const std::string& strPath);
std::unique_ptr<Contestant> openSqliteCpp(const std::string& strPath, bool blKept);
std::unique_ptr<Contestant> openSoci(const std::string& strPath, bool blKept);
std::unique_ptr<Contestant> openPoco(const std::string& strPath, bool blKept);

// Hand-written code for any table: it can only list() and create().
std::unique_ptr<Contestant> openHandWrittenWide(const std::string& strPath, const Shape& shape);

}  // namespace bench

#endif  // VORN_BENCH_CONTESTANT_H
