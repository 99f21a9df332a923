// SPDX-License-Identifier: MIT

#include "json_text.h"

#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>

#include "json_reader.h"

namespace
{

// Appends what is written to it to a string.
class StringSink : public std::streambuf
{
public:
    std::string strText;

protected:
    int_type overflow(int_type c) override
    {
        if (!traits_type::eq_int_type(c, traits_type::eof()))
            strText.push_back(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* sz, std::streamsize n) override
    {
        strText.append(sz, static_cast<std::size_t>(n));
        return n;
    }
};

// JsonCpp's writer and the stream that it writes to, built once: building them costs more than most values do.
class Writer
{
public:
    Writer() : m_stream(&m_sink)
    {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        builder["commentStyle"] = "None";
        builder["emitUTF8"] = true;
        builder["useSpecialFloats"] = true;
        builder["precision"] = 17;
        m_writer.reset(builder.newStreamWriter());
        m_stream.exceptions(std::ios::badbit);  // a stream swallows exceptions otherwise, and the text would be cut
    }

    std::string write(const Json::Value& jValue)
    {
        m_stream.clear();
        m_sink.strText.clear();
        m_writer->write(jValue, &m_stream);
        return m_sink.strText;
    }

private:
    StringSink m_sink;
    std::ostream m_stream;
    std::unique_ptr<Json::StreamWriter> m_writer;
};

std::unique_ptr<Json::CharReader> makeReader()
{
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    builder["allowSpecialFloats"] = true;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

}  // namespace

std::string toString(const Json::Value& jValue)
{
    static Writer writer;
    return writer.write(jValue);
}

Json::Value fromString(const char* szText)
{
    Json::Value jValue;
    if (readPlainJson(szText, jValue))
        return jValue;

    static const std::unique_ptr<Json::CharReader> reader = makeReader();
    try
    {
        if (!reader->parse(szText, szText + std::strlen(szText), &jValue, nullptr))
            jValue = Json::Value();  // a failed parse leaves what it had read so far
    }
    catch (const Json::Exception&)  // nested too deep
    {
        jValue = Json::Value();
    }
    return jValue;
}
