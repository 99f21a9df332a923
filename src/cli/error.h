// SPDX-License-Identifier: MIT
//
// How the program ends, and how its parts say that something failed.

#ifndef VORN_CLI_ERROR_H
#define VORN_CLI_ERROR_H

#include <vorn/status.h>

#include <exception>
#include <string>
#include <utility>

namespace cli
{

enum Exit
{
    kDone = 0,
    kNothingFound = 1,
    kBadUsage = 2,
    kFailure = 3
};

// Thrown to main(), which tells it in one line.
class Error : public std::exception
{
public:
    Error(int iExit, vorn::Status status) : m_iExit(iExit), m_status(std::move(status)) {}

    int exitStatus() const { return m_iExit; }
    const vorn::Status& status() const { return m_status; }
    const char* what() const noexcept override { return m_status.text.c_str(); }

private:
    int m_iExit;
    vorn::Status m_status;
};

// An argument that cannot be used.
inline Error badUsage(std::string strText)
{
    vorn::Status status;
    status.code = vorn::Code::BadRequest;
    status.text = std::move(strText);
    return {kBadUsage, status};
}

// Something that went wrong outside the table: a file that cannot be read, say.
inline Error failure(vorn::Code code, std::string strText)
{
    vorn::Status status;
    status.code = code;
    status.text = std::move(strText);
    return {kFailure, status};
}

// What the table said. A mistake in a filter or in a record that was typed is one of usage.
inline Error failed(const vorn::Status& status)
{
    switch (status.code)
    {
        case vorn::Code::BadRequest:
        case vorn::Code::UnknownMember:
        case vorn::Code::BadType:
        case vorn::Code::OutOfRange:
            return {kBadUsage, status};
        default:
            return {kFailure, status};
    }
}

}  // namespace cli

#endif  // VORN_CLI_ERROR_H
