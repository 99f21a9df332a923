// SPDX-License-Identifier: MIT
//
// From the rows of one statement to records.

#ifndef VORN_ROW_READER_H
#define VORN_ROW_READER_H

#include <json/json.h>
#include <vorn/status.h>

#include <vector>

#include "../core/record_prototype.h"
#include "definition.h"
#include "read_cell.h"

struct sqlite3_stmt;

namespace vorn
{

class RowReader
{
public:
    RowReader() = default;

    // The members in ascending order of their names, one for each column from the first on. Where blRowid says so, the
    // rowid is in the column behind them.
    RowReader(std::vector<const Member*> members, bool blRowid);

    // Makes jRec, which is null, the record of the row. False with BadCell.
    bool read(sqlite3_stmt* pStatement, StrictReader& strictReader, Json::Value& jRec, Status& status);

private:
    std::vector<const Member*> m_members;
    std::vector<JsonReader> m_readers;
    RecordPrototype m_prototype;
    bool m_blRowid = false;
};

// For a cell that cannot be read, in no row that has a number.
bool failCell(Status& status, const Member& member);

}  // namespace vorn

#endif  // VORN_ROW_READER_H
