// SPDX-License-Identifier: MIT

#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "error.h"
#include "record_source.h"
#include "signals.h"

namespace cli
{

Input::Input(const std::string& strFile)
    : m_strName(strFile == "-" ? "standard input" : strFile),
      m_pFile(strFile == "-" ? stdin : std::fopen(strFile.c_str(), "rb"))
{
    struct stat about = {};
    if (m_pFile == nullptr || fstat(fileno(m_pFile), &about) != 0 || S_ISDIR(about.st_mode))
    {
        if (m_pFile != nullptr && m_pFile != stdin)
            static_cast<void>(std::fclose(m_pFile));
        throw failure(vorn::Code::Missing, "the file " + strFile + " cannot be read");
    }
    if (S_ISREG(about.st_mode))
        m_size = static_cast<std::uint64_t>(about.st_size);
}

Input::~Input()
{
    if (m_pFile != stdin)
        static_cast<void>(std::fclose(m_pFile));
}

int Input::refill()
{
    std::size_t size = 0;
    if (block(size) == nullptr)
        return EOF;
    m_place = 1;
    return static_cast<unsigned char>(m_buffer[0]);
}

const char* Input::block(std::size_t& size)
{
    if (m_place == m_filled)
    {
        // What there is, without waiting until the buffer is full: a pipe may give a little at a time.
        const ssize_t got = ::read(fileno(m_pFile), m_buffer, sizeof m_buffer);
        if (got < 0 && !isInterrupted())
            throw failure(vorn::Code::Missing, "reading " + m_strName + " failed");
        m_filled = got > 0 ? static_cast<std::size_t>(got) : 0;
        m_total += m_filled;
        m_place = 0;
    }
    const char* const szBlock = m_buffer + m_place;
    size = m_filled - m_place;
    m_place = m_filled;
    return size > 0 ? szBlock : nullptr;
}

void Input::skipByteOrderMark()
{
    std::size_t size = 0;
    const char* const szBlock = block(size);
    if (szBlock != nullptr)
        m_place -= size >= 3 && std::memcmp(szBlock, "\xEF\xBB\xBF", 3) == 0 ? size - 3 : size;
}

int Input::peek()
{
    const int byte = get();
    if (byte != EOF)
        --m_place;
    return byte;
}

}  // namespace cli
