// SPDX-License-Identifier: MIT
//
// A forked child of a test, which reports through a pipe and never outlives the test.

#ifndef VORNJSONDB_TESTS_CHILD_PROCESS_H
#define VORNJSONDB_TESTS_CHILD_PROCESS_H

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <type_traits>

namespace faults
{

class ChildProcess
{
public:
    // What the child runs: it is given the end of the pipe to write to, and its result becomes the exit status.
    using Body = std::function<int(int report)>;

    // SQLite connections must not be carried into a child: have none open.
    explicit ChildProcess(const Body& body);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // The next value that the child has sent; false when there will be none.
    template <class Value>
    bool receive(Value& value)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        return receiveBytes(&value, sizeof value);
    }

    // For the child: false when the value could not be sent whole.
    template <class Value>
    static bool send(int report, const Value& value)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        return sendBytes(report, &value, sizeof value);
    }

    void kill() const;

    // Waits for the child's end. Its exit status, or minus the signal that ended it.
    int wait();

private:
    bool receiveBytes(void* pTo, std::size_t size) const;
    static bool sendBytes(int report, const void* pFrom, std::size_t size);

    pid_t m_child;
    int m_report;
    bool m_waited = false;
};

}  // namespace faults

#endif  // VORNJSONDB_TESTS_CHILD_PROCESS_H
