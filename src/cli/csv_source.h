// SPDX-License-Identifier: MIT
//
// CSV as in RFC 4180, with a first line of names. A cell without anything, not even quotes, is null; "" is an empty
// text.

#ifndef VORN_CLI_CSV_SOURCE_H
#define VORN_CLI_CSV_SOURCE_H

#include <csv.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "record_source.h"

namespace cli
{

class Csv : public RecordSource
{
public:
    Csv(Input& input, const Json::Value& jMembers, bool blPlainTexts);

    // What jRec holds must be of this source, or null: an object that has the columns already is filled anew, which
    // costs half of making one.
    bool next(Json::Value& jRec, std::string& strText, std::string& strProblem) override;

private:
    struct Column
    {
        std::string strName;
        std::string strType;
        std::size_t place = 0;  // among the cells of a row
    };
    struct Cell
    {
        std::size_t start = 0;  // in m_strBytes
        std::size_t length = 0;
        bool blNull = false;
    };

    void readNames(const Json::Value& jMembers);
    bool read();
    bool refill();
    bool setValue(const Column& column, Json::Value& jValue) const;
    std::string text(const Cell& cell) const { return m_strBytes.substr(cell.start, cell.length); }
    std::string where() const;
    static void onCell(void* pText, std::size_t length, void* pThis);
    static void onRow(int end, void* pThis);

    Input& m_input;
    csv_parser m_parser{};
    std::unique_ptr<csv_parser, decltype(&csv_free)> m_freed{&m_parser, &csv_free};
    bool m_blPlainTexts;
    bool m_blAtEnd = false;
    std::vector<Column> m_columns;  // in the order of their names, as JSON objects have it

    // The rows that were read, and the beginning of the next.
    std::string m_strBytes;
    std::vector<Cell> m_cells;
    std::vector<std::size_t> m_ends;  // of each row that is complete: the place behind its last cell
    std::size_t m_taken = 0;          // rows of these
    std::size_t m_first = 0;          // cell of the row at hand
    std::size_t m_width = 0;          // cells that it has
    std::uint64_t m_rows = 0;         // taken in all
};

}  // namespace cli

#endif  // VORN_CLI_CSV_SOURCE_H
