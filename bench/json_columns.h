// SPDX-License-Identifier: MIT
//
// The JSON reader and writer that hand-written code keeps.

#ifndef VORN_BENCH_JSON_COLUMNS_H
#define VORN_BENCH_JSON_COLUMNS_H

#include <json/json.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace bench
{

// Text in JSON columns, with a reader and a writer that are built once.
class JsonColumns
{
public:
    JsonColumns()
    {
        Json::CharReaderBuilder readerBuilder;
        readerBuilder["collectComments"] = false;
        m_reader.reset(readerBuilder.newCharReader());
        Json::StreamWriterBuilder writerBuilder;
        writerBuilder["indentation"] = "";
        m_writer.reset(writerBuilder.newStreamWriter());
    }

    void read(const char* szText, std::size_t length, Json::Value& jValue)
    {
        if (!m_reader->parse(szText, szText + length, &jValue, nullptr))
            throw std::runtime_error("not JSON");
    }

    std::string write(const Json::Value& jValue)
    {
        m_stream.str(std::string());
        m_writer->write(jValue, &m_stream);
        return m_stream.str();
    }

private:
    std::unique_ptr<Json::CharReader> m_reader;
    std::unique_ptr<Json::StreamWriter> m_writer;
    std::ostringstream m_stream;
};

}  // namespace bench

#endif  // VORN_BENCH_JSON_COLUMNS_H
