// SPDX-License-Identifier: MIT

#include "record_sink.h"

#include <limits>

#include "error.h"
#include "terminal.h"
#include "utf8.h"

namespace cli
{

namespace
{

// A record as JSON, which cannot say what is no UTF-8.
std::string recordText(const Json::Value& jRec)
{
    std::string strText = compact(jRec);
    if (!isUtf8(strText))
        throw failure(vorn::Code::BadCell, "a record holds a text that is not UTF-8: --format csv writes it as it is");
    return strText;
}

class JsonLinesSink : public RecordSink
{
public:
    explicit JsonLinesSink(Output& output) : m_output(output) {}

    void write(const Json::Value& jRec) override { m_output.write(recordText(jRec) + '\n'); }

private:
    Output& m_output;
};

class JsonArraySink : public RecordSink
{
public:
    explicit JsonArraySink(Output& output) : m_output(output) {}

    void write(const Json::Value& jRec) override
    {
        const std::string strText = recordText(jRec);
        m_output.write((m_blAny ? ",\n" : "[\n") + strText);
        m_blAny = true;
    }

    void finish() override { m_output.write(m_blAny ? "\n]\n" : "[]\n"); }

private:
    Output& m_output;
    bool m_blAny = false;
};

// Texts in quotes, so that an empty text and a member that is absent differ.
class CsvSink : public RecordSink
{
public:
    CsvSink(Output& output, const std::vector<std::string>& names)
        : m_output(output), m_blTerminal(isTerminal(fileno(output.stream()))), m_names(names)
    {
    }

    void write(const Json::Value& jRec) override
    {
        writeNames();
        std::string strLine;
        for (std::size_t i = 0; i < m_names.size(); ++i)
        {
            const Json::Value& jValue = jRec[m_names[i]];
            strLine += i > 0 ? "," : "";
            if (jValue.isString())
                strLine += inQuotes(jValue.asString());
            else if (jValue.isObject() || jValue.isArray())
                strLine += inQuotes(compact(jValue));
            else if (!jValue.isNull())
                strLine += compact(jValue);
        }
        m_output.write(strLine + "\r\n");
    }

    void finish() override { writeNames(); }

private:
    // Not before the first record: a mistake in the request is told by then.
    void writeNames()
    {
        if (m_blNamed)
            return;
        m_blNamed = true;
        std::string strLine;
        for (const std::string& strName : m_names)
            strLine += (strLine.empty() ? "" : ",") + inQuotes(strName);
        m_output.write(strLine + "\r\n");
    }

    std::string inQuotes(const std::string& strText) const
    {
        const std::string strShown = m_blTerminal ? harmless(strText, true) : strText;
        if (strShown.find('\0') != std::string::npos)
            throw failure(vorn::Code::BadCell,
                          "a record holds a text with a NUL, which no CSV has: use --format jsonl");
        std::string strQuoted = "\"";
        for (const char c : strShown)
            strQuoted.append(c == '"' ? 2 : 1, c);
        return strQuoted + '"';
    }

    Output& m_output;
    bool m_blTerminal;
    bool m_blNamed = false;
    std::vector<std::string> m_names;
};

}  // namespace

std::string compact(const Json::Value& jValue)
{
    static const Json::StreamWriterBuilder builder = []
    {
        Json::StreamWriterBuilder made;
        made["indentation"] = "";
        made["emitUTF8"] = true;
        made["precision"] = std::numeric_limits<double>::max_digits10;
        return made;
    }();
    return escaped(Json::writeString(builder, jValue));
}

std::unique_ptr<RecordSink> openSink(Output& output, const std::string& strFormat,
                                     const std::vector<std::string>& names)
{
    const bool blTerminal = isTerminal(fileno(output.stream()));
    const std::string strKnown = !strFormat.empty() ? strFormat : blTerminal ? "table" : "jsonl";
    if (strKnown == "json")
        return std::make_unique<JsonArraySink>(output);
    if (strKnown == "csv")
        return std::make_unique<CsvSink>(output, names);
    if (strKnown == "table")
        return openTable(output, names);
    return std::make_unique<JsonLinesSink>(output);
}

}  // namespace cli
