// SPDX-License-Identifier: MIT
//
// A table for people, fitted to the terminal by libsmartcols.

#include <libsmartcols/libsmartcols.h>

#include <new>

#include "record_sink.h"
#include "terminal.h"
#include "utf8.h"

namespace cli
{

namespace
{

class TableSink : public RecordSink
{
public:
    TableSink(Output& output, const std::vector<std::string>& names)
        : m_names(names), m_pTable(scols_new_table(), &scols_unref_table)
    {
        if (m_pTable == nullptr)
            throw std::bad_alloc();
        const int fd = fileno(output.stream());
        const bool blTerminal = isTerminal(fd);
        scols_table_set_stream(m_pTable.get(), output.stream());
        scols_table_enable_colors(m_pTable.get(), hasColours(fd) ? 1 : 0);
        // Elsewhere nothing is cut off.
        scols_table_set_termforce(m_pTable.get(), blTerminal ? SCOLS_TERMFORCE_ALWAYS : SCOLS_TERMFORCE_NEVER);
        scols_table_set_termwidth(m_pTable.get(), terminalWidth(fd));
        for (const std::string& strName : m_names)
        {
            libscols_column* const pColumn =
                scols_table_new_column(m_pTable.get(), strName.c_str(), 0.0, SCOLS_FL_TRUNC);
            if (pColumn == nullptr)
                throw std::bad_alloc();
            scols_cell_set_color(scols_column_get_header(pColumn), "bold");
            m_columns.push_back(pColumn);
        }
    }

    void write(const Json::Value& jRec) override
    {
        libscols_line* const pLine = scols_table_new_line(m_pTable.get(), nullptr);
        if (pLine == nullptr)
            throw std::bad_alloc();
        for (std::size_t i = 0; i < m_names.size(); ++i)
        {
            const Json::Value& jValue = jRec[m_names[i]];
            if (jValue.isNumeric() && !jValue.isBool())
                scols_column_set_flags(m_columns[i], SCOLS_FL_RIGHT);  // half a number would be another one
            const std::string strText = jValue.isNull() ? "" : jValue.isString() ? jValue.asString() : compact(jValue);
            if (scols_line_set_data(pLine, i, harmless(strText, false).c_str()) != 0)
                throw std::bad_alloc();
        }
        m_blAny = true;
    }

    void finish() override
    {
        if (m_blAny && scols_print_table(m_pTable.get()) != 0)
            throw std::bad_alloc();
    }

private:
    std::vector<std::string> m_names;
    std::unique_ptr<libscols_table, decltype(&scols_unref_table)> m_pTable;
    std::vector<libscols_column*> m_columns;
    bool m_blAny = false;
};

// A line for each member, for terminals on which the names do not stand side by side.
class UprightSink : public RecordSink
{
public:
    explicit UprightSink(Output& output, const std::vector<std::string>& names)
        : m_names(names), m_table(output, {kMember, kValue})
    {
    }

    void write(const Json::Value& jRec) override
    {
        if (m_blAny)
            m_table.write(Json::objectValue);
        m_blAny = true;
        for (const std::string& strName : m_names)
            if (const Json::Value& jValue = jRec[strName]; !jValue.isNull())
            {
                Json::Value jLine;
                jLine[kMember] = strName;
                jLine[kValue] = jValue.isString() ? jValue.asString() : compact(jValue);
                m_table.write(jLine);
            }
    }

    void finish() override { m_table.finish(); }

private:
    static constexpr const char* kMember = "member";
    static constexpr const char* kValue = "value";

    std::vector<std::string> m_names;
    TableSink m_table;
    bool m_blAny = false;
};

}  // namespace

std::unique_ptr<RecordSink> openTable(Output& output, const std::vector<std::string>& names)
{
    const int fd = fileno(output.stream());
    std::size_t width = 0;
    for (const std::string& strName : names)
        width += strName.size() + 1;
    if (isTerminal(fd) && width > terminalWidth(fd) + 1)
        return std::make_unique<UprightSink>(output, names);
    return std::make_unique<TableSink>(output, names);
}

}  // namespace cli
