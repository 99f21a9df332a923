// SPDX-License-Identifier: MIT
//
// Rows of a table's results, which SQLite gives as texts, as JSON values.

#ifndef VORN_ROW_READER_H
#define VORN_ROW_READER_H

#include <json/json.h>

#include <vector>

#include "../core/json_reader.h"
#include "../core/record_prototype.h"
#include "../core/schema.h"

class RowReader
{
public:
    // Keeps a reference to the schema.
    explicit RowReader(const Schema& schema);

    // Makes jRec, which is null or an empty object, the record of the row. False, with jRec as it was, where the row's
    // columns are not exactly the members, one of them is NULL, or one has a type that cannot be read back.
    bool readRow(int n_column, char** column_value, char** column_name, Json::Value& jRec);

    // Sets jValue by the member's type, to the value that the text of its column (not null) stands for. False for types
    // that cannot be read back.
    bool readColumn(const Member& member, const char* szText, Json::Value& jValue);

private:
    bool matches(char** column_name) const;
    bool learnColumns(char** column_name);

    const Schema& m_schema;
    std::vector<JsonReader> m_readers;   // one for each member
    RecordPrototype m_prototype;         // none where no record of the table can be filled at once
    std::vector<std::size_t> m_columns;  // the column of each member, as in the last row
};

#endif  // VORN_ROW_READER_H
