// SPDX-License-Identifier: MIT
//
// A process of its own for each contestant: what one leaves in the allocator must not cost or help another.

#ifndef VORN_BENCH_WORKER_H
#define VORN_BENCH_WORKER_H

#include <malloc.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace bench
{

// Does one of its tasks when it is told to, and waits between. Answer is what a task gives.
template <class Answer>
class Worker
{
    static_assert(std::is_trivially_copyable_v<Answer>, "it goes through a pipe");

public:
    using Tasks = std::vector<std::function<Answer()>>;

    // setUp makes the tasks, in the new process. The parent waits for them.
    explicit Worker(const std::function<Tasks()>& setUp)
    {
        int orders[2];
        int answers[2];
        if (pipe(orders) != 0 || pipe(answers) != 0)
            throw std::runtime_error("no pipe");
        std::fflush(nullptr);
        malloc_trim(0);
        m_child = fork();
        if (m_child < 0)
            throw std::runtime_error("cannot fork");
        if (m_child == 0)
        {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            serve(setUp, orders[0], answers[1]);
            _exit(0);
        }
        close(orders[0]);
        close(answers[1]);
        m_orders = orders[1];
        m_answers = answers[0];
        receive();
    }

    ~Worker()
    {
        order(kEnd);
        close(m_orders);
        close(m_answers);
        waitpid(m_child, nullptr, 0);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // Runs the task of that index.
    Answer run(unsigned char task = 0)
    {
        order(task);
        return receive();
    }

private:
    static constexpr unsigned char kEnd = 255;

    // The first answer says that the tasks are there. No answer says that something failed.
    static void serve(const std::function<Tasks()>& setUp, int orders, int answers)
    {
        try
        {
            const Tasks tasks = setUp();
            Answer answer{};
            unsigned char order = kEnd;
            while (write(answers, &answer, sizeof answer) == sizeof answer && read(orders, &order, 1) == 1 &&
                   order != kEnd)
                answer = tasks.at(order)();
        }
        catch (const std::exception& error)
        {
            std::fprintf(stderr, "bench: %s\n", error.what());
        }
    }

    bool order(unsigned char what) { return write(m_orders, &what, 1) == 1; }

    Answer receive()
    {
        Answer answer{};
        if (read(m_answers, &answer, sizeof answer) != sizeof answer)
            throw std::runtime_error("a contestant's process failed");
        return answer;
    }

    pid_t m_child = -1;
    int m_orders = -1;
    int m_answers = -1;
};

}  // namespace bench

#endif  // VORN_BENCH_WORKER_H
