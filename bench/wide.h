// SPDX-License-Identifier: MIT
//
// Tables of any number of members, to see how the cost grows with it.

#ifndef VORN_BENCH_WIDE_H
#define VORN_BENCH_WIDE_H

#include <memory>

#include "work.h"

namespace bench
{

// Creates records of a wide table and lists them, in memory, in batches of as many records as hold about kBatchMembers
// members. A cost's records are members here.
class Wide
{
public:
    virtual ~Wide() = default;

    Cost create();  // into an empty table
    Cost list();    // after create()

    // The records listed last must be those that were created.
    void prove();

protected:
    explicit Wide(std::size_t members);

    std::string strCreateTable() const;

    virtual sqlite3* connection() = 0;
    virtual void createOne(Json::Value& jRec, Json::Value& jStored) = 0;
    virtual void listAll(Json::Value& jRecords) = 0;

    struct Column
    {
        std::string strName;
        std::string strType;  // as the library's definitions name it
    };
    std::string m_strTable;
    std::vector<Column> m_columns;

private:
    Cost measured(void (Wide::*work)(Json::Value&));
    void createAll(Json::Value& jRecords);

    std::vector<Json::Value> m_records;
};

std::unique_ptr<Wide> openWideLibrary(std::size_t members);
std::unique_ptr<Wide> openWideHandWritten(std::size_t members);

}  // namespace bench

#endif  // VORN_BENCH_WIDE_H
