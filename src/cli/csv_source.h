// SPDX-License-Identifier: MIT
//
// CSV as in RFC 4180, with a first line of names. A cell without anything, not even quotes, is null; "" is an empty
// text.

#ifndef VORN_CLI_CSV_SOURCE_H
#define VORN_CLI_CSV_SOURCE_H

#include <csv.h>

#include <deque>
#include <string>
#include <vector>

#include "record_source.h"

namespace cli
{

class Csv : public RecordSource
{
public:
    Csv(Input& input, const Json::Value& jMembers, bool blPlainTexts);
    ~Csv() override;
    Csv(const Csv&) = delete;
    Csv& operator=(const Csv&) = delete;

    bool next(Json::Value& jRec, std::string& strText, std::string& strProblem) override;

private:
    struct Cell
    {
        bool blNull = false;
        std::string strText;
    };
    using Row = std::vector<Cell>;

    bool nextRow(Row& row);
    static void onCell(void* pText, std::size_t length, void* pThis);
    static void onRow(int end, void* pThis);

    Input& m_input;
    csv_parser m_parser{};
    bool m_blPlainTexts;
    bool m_blAtEnd = false;
    std::vector<std::string> m_names;
    std::vector<std::string> m_types;
    Row m_row;               // that is being read
    std::deque<Row> m_rows;  // that were read and not taken
    std::uint64_t m_line = 0;
};

}  // namespace cli

#endif  // VORN_CLI_CSV_SOURCE_H
