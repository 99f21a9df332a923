// SPDX-License-Identifier: MIT
//
// The records of a file, one after the other, however large the file is.

#ifndef VORN_CLI_RECORD_SOURCE_H
#define VORN_CLI_RECORD_SOURCE_H

#include <json/json.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace cli
{

// Bytes of a file or of standard input.
class Input
{
public:
    explicit Input(const std::string& strFile);  // throws where it cannot be opened
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // The next byte, or EOF.
    int get() { return m_place < m_filled ? static_cast<unsigned char>(m_buffer[m_place++]) : refill(); }
    int peek();
    void skipByteOrderMark();  // at the beginning
    // What is left of the block that was read, for those who take many bytes at once; null at the end of the file.
    const char* block(std::size_t& size);

    std::uint64_t done() const { return m_total - (m_filled - m_place); }  // bytes that were taken
    std::uint64_t size() const { return m_size; }                          // of the whole file; 0 where unknown
    const std::string& name() const { return m_strName; }

private:
    int refill();

    std::string m_strName;
    std::FILE* m_pFile;
    std::uint64_t m_size = 0;
    std::uint64_t m_total = 0;
    std::size_t m_place = 0;
    std::size_t m_filled = 0;
    char m_buffer[65536] = {};
};

constexpr std::size_t kLongestRecord = std::size_t{64} * 1024 * 1024;  // memory stays flat, whatever a file holds

class RecordSource
{
public:
    virtual ~RecordSource() = default;

    // Reads the next record, as JSON or as whatever the file holds in its place. False at the end. Where strProblem is
    // not empty afterwards there is no record but strText, which could not be read as one; the next call goes on
    // behind it. Throws where nothing behind the fault can be read.
    virtual bool next(Json::Value& jRec, std::string& strText, std::string& strProblem) = 0;
};

// strFormat: "json", "jsonl", "csv", or "" to tell by the file's name and its first byte. The types of jMembers tell
// how the cells of CSV are read; without a member of its column's name a cell is read as what it looks like. With
// blPlainTexts the cells stay texts.
std::unique_ptr<RecordSource> openSource(Input& input, const std::string& strFormat, const Json::Value& jMembers,
                                         bool blPlainTexts = false);

}  // namespace cli

#endif  // VORN_CLI_RECORD_SOURCE_H
