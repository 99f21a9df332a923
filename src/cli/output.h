// SPDX-License-Identifier: MIT
//
// Where results go: standard output, or a file that is there whole or not at all.

#ifndef VORN_CLI_OUTPUT_H
#define VORN_CLI_OUTPUT_H

#include <cstdio>
#include <memory>
#include <string>

namespace cli
{

// A file grows beside its place, as FILE.part, and takes it in finish(); without that it goes away, and stays behind
// only where the program is killed. What is no regular file, a device or a pipe, is written where it is.
class Output
{
public:
    explicit Output(const std::string& strFile);  // "" is standard output; throws where it cannot be written
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    std::FILE* stream() const { return m_file != nullptr ? m_file.get() : stdout; }
    bool hasFailed() const { return std::ferror(stream()) != 0; }
    void write(const std::string& strText)
    {
        static_cast<void>(std::fwrite(strText.data(), 1, strText.size(), stream()));  // finish() tells
    }

    // Throws where something was not written.
    void finish();

private:
    std::string m_strName;
    std::string m_strPlace;  // of the file, links followed
    std::string m_strPart;   // "" where there is none
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
};

// Text, or a number, on a line of its own.
void printLine(const std::string& strText);

}  // namespace cli

#endif  // VORN_CLI_OUTPUT_H
