// SPDX-License-Identifier: MIT

#include "child_process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace faults
{

ChildProcess::ChildProcess(const Body& body)
{
    constexpr unsigned longestLife = 600;  // seconds

    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("cannot make a pipe");
    std::fflush(stdout);
    m_child = fork();
    if (m_child < 0)
        throw std::runtime_error("cannot fork");
    if (m_child == 0)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        alarm(longestLife);
        close(ends[0]);
        const int status = body(ends[1]);
        std::fflush(stdout);
        _exit(status);
    }
    close(ends[1]);
    m_report = ends[0];
}

ChildProcess::~ChildProcess()
{
    if (!m_waited)
    {
        kill();
        wait();
    }
    close(m_report);
}

void ChildProcess::kill() const
{
    ::kill(m_child, SIGKILL);
}

int ChildProcess::wait()
{
    int status = 0;
    pid_t ended = -1;
    do
    {
        ended = waitpid(m_child, &status, 0);
    } while (ended < 0 && errno == EINTR);
    m_waited = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool ChildProcess::receiveBytes(void* pTo, std::size_t size) const
{
    // A value is far shorter than what a pipe takes at once, so it arrives whole.
    ssize_t got = -1;
    do
    {
        got = read(m_report, pTo, size);
    } while (got < 0 && errno == EINTR);
    return got == static_cast<ssize_t>(size);
}

bool ChildProcess::sendBytes(int report, const void* pFrom, std::size_t size)
{
    return write(report, pFrom, size) == static_cast<ssize_t>(size);
}

}  // namespace faults
