// SPDX-License-Identifier: MIT

#include "record_sink.h"

#include <csv.h>
#include <unistd.h>

#include <limits>

#include "terminal.h"

namespace cli
{

namespace
{

class JsonLinesSink : public RecordSink
{
public:
    explicit JsonLinesSink(std::FILE* pOutput) : m_pOutput(pOutput) {}

    void write(const Json::Value& jRec) override
    {
        const std::string strText = compact(jRec) + "\n";
        std::fwrite(strText.data(), 1, strText.size(), m_pOutput);
    }

private:
    std::FILE* m_pOutput;
};

class JsonArraySink : public RecordSink
{
public:
    explicit JsonArraySink(std::FILE* pOutput) : m_pOutput(pOutput) {}

    void write(const Json::Value& jRec) override
    {
        const std::string strText = (m_blAny ? ",\n" : "[\n") + compact(jRec);
        std::fwrite(strText.data(), 1, strText.size(), m_pOutput);
        m_blAny = true;
    }

    void finish() override { std::fputs(m_blAny ? "\n]\n" : "[]\n", m_pOutput); }

private:
    std::FILE* m_pOutput;
    bool m_blAny = false;
};

// Texts in quotes, so that an empty text and a member that is absent differ.
class CsvSink : public RecordSink
{
public:
    CsvSink(std::FILE* pOutput, const std::vector<std::string>& names) : m_pOutput(pOutput), m_names(names)
    {
        for (const std::string& strName : m_names)
        {
            separate(&strName == &m_names.front());
            quote(strName);
        }
        std::fputs("\r\n", m_pOutput);
    }

    void write(const Json::Value& jRec) override
    {
        for (const std::string& strName : m_names)
        {
            separate(&strName == &m_names.front());
            const Json::Value& jValue = jRec[strName];
            if (jValue.isString())
                quote(jValue.asString());
            else if (jValue.isObject() || jValue.isArray())
                quote(compact(jValue));
            else if (!jValue.isNull())
                std::fputs(compact(jValue).c_str(), m_pOutput);
        }
        std::fputs("\r\n", m_pOutput);
    }

private:
    void separate(bool blFirst)
    {
        if (!blFirst)
            std::fputc(',', m_pOutput);
    }
    void quote(const std::string& strText) { csv_fwrite(m_pOutput, strText.data(), strText.size()); }

    std::FILE* m_pOutput;
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
    return Json::writeString(builder, jValue);
}

std::unique_ptr<RecordSink> openSink(std::FILE* pOutput, const std::string& strFormat,
                                     const std::vector<std::string>& names)
{
    const std::string strKnown = !strFormat.empty() ? strFormat : isTerminal(fileno(pOutput)) ? "table" : "jsonl";
    if (strKnown == "json")
        return std::make_unique<JsonArraySink>(pOutput);
    if (strKnown == "csv")
        return std::make_unique<CsvSink>(pOutput, names);
    if (strKnown == "table")
        return openTable(pOutput, names);
    return std::make_unique<JsonLinesSink>(pOutput);
}

}  // namespace cli
