// SPDX-License-Identifier: MIT

#include "csv_source.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "error.h"
#include "json_argument.h"
#include "utf8.h"

namespace cli
{

Csv::Csv(Input& input, const Json::Value& jMembers, bool blPlainTexts) : m_input(input), m_blPlainTexts(blPlainTexts)
{
    if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL) != 0)
        throw std::bad_alloc();
    csv_set_space_func(&m_parser, [](unsigned char) { return 0; });  // blanks belong to the cells
    csv_set_blk_size(&m_parser, 65536);                              // long cells grow by as much
    readNames(jMembers);
}

void Csv::readNames(const Json::Value& jMembers)
{
    if (!read())
        throw failure(vorn::Code::BadType, m_input.name() + " has no line of names");
    for (std::size_t i = 0; i < m_width; ++i)
    {
        Column column{text(m_cells[m_first + i]), "", i};
        if (!isUtf8(column.strName))
            throw failure(vorn::Code::BadType, m_input.name() + ": the line of names is not UTF-8");
        const Json::Value& jMember = jMembers.isObject() ? jMembers[column.strName] : Json::Value::nullSingleton();
        if (jMember.isObject() && jMember["cpptype"].isString())
            column.strType = jMember["cpptype"].asString();
        m_columns.push_back(std::move(column));
    }
    std::sort(m_columns.begin(), m_columns.end(),
              [](const Column& one, const Column& other) { return one.strName < other.strName; });
    const auto twice =
        std::adjacent_find(m_columns.begin(), m_columns.end(),
                           [](const Column& one, const Column& other) { return one.strName == other.strName; });
    if (twice != m_columns.end())
        throw failure(vorn::Code::BadType, m_input.name() + " names the column \"" + twice->strName + "\" twice");
}

void Csv::onCell(void* pText, std::size_t length, void* pThis)
{
    auto& self = *static_cast<Csv*>(pThis);
    self.m_cells.push_back({self.m_strBytes.size(), length, pText == nullptr});
    if (pText != nullptr)
        self.m_strBytes.append(static_cast<const char*>(pText), length);
}

void Csv::onRow(int /*end*/, void* pThis)
{
    auto& self = *static_cast<Csv*>(pThis);
    self.m_ends.push_back(self.m_cells.size());
}

std::string Csv::where() const
{
    return m_input.name() + ", behind row " + std::to_string(m_rows + m_ends.size() - m_taken);
}

// Forgets the rows that were taken and reads until there is another. False at the end.
bool Csv::refill()
{
    const std::size_t cell = m_ends.empty() ? 0 : m_ends.back();
    const std::size_t byte = cell < m_cells.size() ? m_cells[cell].start : m_strBytes.size();
    m_strBytes.erase(0, byte);
    m_cells.erase(m_cells.begin(), m_cells.begin() + static_cast<std::ptrdiff_t>(cell));
    for (Cell& kept : m_cells)
        kept.start -= byte;
    m_ends.clear();
    m_taken = 0;
    while (m_ends.empty() && !m_blAtEnd)
    {
        std::size_t size = 0;
        const char* const szBlock = m_input.block(size);
        m_blAtEnd = szBlock == nullptr;
        if (!m_blAtEnd && std::memchr(szBlock, '\0', size) != nullptr)
            throw failure(vorn::Code::BadType, where() + ": a NUL byte, which no CSV has; is it UTF-16?");
        const bool blRead = m_blAtEnd ? csv_fini(&m_parser, onCell, onRow, this) == 0
                                      : csv_parse(&m_parser, szBlock, size, onCell, onRow, this) == size;
        if (!blRead)
            throw csv_error(&m_parser) == CSV_EPARSE
                ? failure(vorn::Code::BadType, where() + ": a quote in the wrong place, or one that is never closed")
                : failure(vorn::Code::OutOfRange, where() + ": " + csv_strerror(csv_error(&m_parser)));
        if (csv_get_buffer_size(&m_parser) + m_strBytes.size() > kLongestRecord)
            throw failure(vorn::Code::OutOfRange, where() + ": a record is longer than 64 MiB");
    }
    return !m_ends.empty();
}

// Goes to the next row.
bool Csv::read()
{
    if (m_taken == m_ends.size() && !refill())
        return false;
    m_first = m_taken > 0 ? m_ends[m_taken - 1] : 0;
    m_width = m_ends[m_taken] - m_first;
    ++m_taken;
    ++m_rows;
    return true;
}

// False where the cell is no text.
bool Csv::setValue(const Column& column, Json::Value& jValue) const
{
    const Cell& cell = m_cells[m_first + column.place];
    const std::string_view bytes(m_strBytes.data() + cell.start, cell.length);
    if (cell.blNull)
        jValue = Json::Value();
    else if (m_blPlainTexts)
        jValue = Json::Value(bytes.data(), bytes.data() + bytes.size());
    else
        jValue = valueOf(column.strType, bytes);
    return isUtf8(bytes);
}

bool Csv::next(Json::Value& jRec, std::string& strText, std::string& strProblem)
{
    strText.clear();
    strProblem.clear();
    if (!read())
        return false;
    if (m_width != m_columns.size())
        strProblem =
            "has " + std::to_string(m_width) + " cells, and " + std::to_string(m_columns.size()) + " are named";
    else
    {
        if (!jRec.isObject() || jRec.size() != m_columns.size())
        {
            jRec = Json::Value(Json::objectValue);
            for (const Column& column : m_columns)
                jRec[column.strName];
        }
        auto it = jRec.begin();
        for (const Column& column : m_columns)
            if (!setValue(column, *it++))
                strProblem = "is not UTF-8 in the column \"" + column.strName + '"';
    }
    if (strProblem.empty())
        return true;
    strProblem = m_input.name() + ", record " + std::to_string(m_rows - 1) + ' ' + strProblem;
    for (std::size_t i = 0; i < m_width; ++i)
        strText += (i > 0 ? "," : "") + text(m_cells[m_first + i]);
    return true;
}

}  // namespace cli
