// SPDX-License-Identifier: MIT

#include "csv_source.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "error.h"
#include "json_argument.h"

namespace cli
{

Csv::Csv(Input& input, const Json::Value& jMembers, bool blPlainTexts) : m_input(input), m_blPlainTexts(blPlainTexts)
{
    if (csv_init(&m_parser, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL | CSV_APPEND_NULL) != 0)
        throw std::bad_alloc();
    csv_set_space_func(&m_parser, [](unsigned char) { return 0; });  // blanks belong to the cells
    Row names;
    if (!nextRow(names))
        throw failure(vorn::Code::BadType, input.name() + " has no line of names");
    for (Cell& name : names)
    {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (m_names.empty() && name.strText.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0)
            name.strText.erase(0, kByteOrderMark.size());
        const Json::Value& jMember = jMembers.isObject() ? jMembers[name.strText] : Json::Value::nullSingleton();
        const bool blTyped = jMember.isObject() && jMember["cpptype"].isString();
        m_types.push_back(blTyped ? jMember["cpptype"].asString() : "");
        m_names.push_back(std::move(name.strText));
    }
}

Csv::~Csv()
{
    csv_free(&m_parser);
}

void Csv::onCell(void* pText, std::size_t length, void* pThis)
{
    Row& row = static_cast<Csv*>(pThis)->m_row;
    row.emplace_back();
    row.back().blNull = pText == nullptr;
    if (pText != nullptr)
        row.back().strText.assign(static_cast<const char*>(pText), length);
}

void Csv::onRow(int /*end*/, void* pThis)
{
    auto& self = *static_cast<Csv*>(pThis);
    self.m_rows.push_back(std::move(self.m_row));
    self.m_row.clear();
}

bool Csv::nextRow(Row& row)
{
    while (m_rows.empty() && !m_blAtEnd)
    {
        constexpr std::size_t kPiece = 4096;  // few rows wait at a time
        std::size_t size = 0;
        const char* const szBlock = m_input.block(size);
        m_blAtEnd = szBlock == nullptr;
        bool blRead = true;
        for (std::size_t place = 0; place < size && blRead; place += kPiece)
        {
            const std::size_t piece = std::min(kPiece, size - place);
            blRead = csv_parse(&m_parser, szBlock + place, piece, onCell, onRow, this) == piece;
        }
        if (m_blAtEnd)
            blRead = csv_fini(&m_parser, onCell, onRow, this) == 0;
        if (!blRead)
            throw failure(vorn::Code::BadType, m_input.name() + ", behind line " +
                                                   std::to_string(m_line + m_rows.size()) + ": " +
                                                   csv_strerror(csv_error(&m_parser)));
        constexpr std::size_t kLongestCell = 64U * 1024U * 1024U;
        if (csv_get_buffer_size(&m_parser) > kLongestCell)
            throw failure(vorn::Code::OutOfRange, m_input.name() + ", behind line " +
                                                      std::to_string(m_line + m_rows.size()) +
                                                      ": a cell is longer than 64 MiB");
    }
    if (m_rows.empty())
        return false;
    row = std::move(m_rows.front());
    m_rows.pop_front();
    ++m_line;
    return true;
}

bool Csv::next(Json::Value& jRec, std::string& strText, std::string& strProblem)
{
    strText.clear();
    strProblem.clear();
    Row row;
    if (!nextRow(row))
        return false;
    Json::Value jRead(Json::objectValue);
    for (std::size_t i = 0; i < row.size() && i < m_names.size(); ++i)
    {
        Json::Value& jValue = jRead[m_names[i]];
        if (!row[i].blNull)
            jValue = m_blPlainTexts ? Json::Value(row[i].strText) : valueOf(m_types[i], row[i].strText);
    }
    jRec = std::move(jRead);
    if (row.size() != m_names.size())
    {
        strProblem = m_input.name() + ", record " + std::to_string(m_line - 1) + " has " + std::to_string(row.size()) +
                     " cells, and " + std::to_string(m_names.size()) + " are named";
        strText = jRec.toStyledString();
    }
    return true;
}

}  // namespace cli
