// SPDX-License-Identifier: MIT

#include "output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "error.h"

namespace cli
{

namespace
{

Error failedWriting(const std::string& strName)
{
    const int error = errno;
    vorn::Code code = vorn::Code::ReadOnly;
    if (error == ENOSPC || error == EDQUOT || error == EFBIG)
        code = vorn::Code::Full;
    else if (error == EPIPE)  // nobody reads any more
        code = vorn::Code::Interrupted;
    else if (error == ENOENT)
        code = vorn::Code::Missing;
    return failure(code, "writing " + strName + " failed: " + std::strerror(error));
}

}  // namespace

Output::Output(const std::string& strFile)
    : m_strName(strFile.empty() ? "standard output" : strFile), m_file(nullptr, &std::fclose)
{
    if (strFile.empty())
        return;
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(strFile.c_str(), nullptr), &std::free);
    m_strPlace = resolved != nullptr ? resolved.get() : strFile;
    struct stat about = {};
    if (stat(m_strPlace.c_str(), &about) != 0 || S_ISREG(about.st_mode))
        m_strPart = m_strPlace + ".part";
    m_file.reset(std::fopen((m_strPart.empty() ? m_strPlace : m_strPart).c_str(), "wb"));
    if (m_file == nullptr)
    {
        m_strPart.clear();
        throw failedWriting(strFile);
    }
}

Output::~Output()
{
    m_file.reset();
    if (!m_strPart.empty())
        unlink(m_strPart.c_str());
}

void Output::finish()
{
    // ferror() alone would say that something failed, but no longer what.
    const bool blFailed = hasFailed();
    if (std::fflush(stream()) != 0 || blFailed)
        throw failedWriting(m_strName);
    if (m_strPart.empty())
        return;
    if (fsync(fileno(stream())) != 0 || std::rename(m_strPart.c_str(), m_strPlace.c_str()) != 0)
        throw failedWriting(m_strName);
    m_strPart.clear();
}

void printLine(const std::string& strText)
{
    Output output("");
    output.write(strText + '\n');
    output.finish();
}

}  // namespace cli
