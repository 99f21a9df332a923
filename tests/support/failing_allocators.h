// SPDX-License-Identifier: MIT
//
// Memory that runs out when a test says so. A program that links this has SQLite's allocator, operator new and, outside
// sanitizers, malloc() replaced by ones that count what is outstanding and fail on demand. SQLite takes them before
// main() starts, and without lookaside memory, so that each of its allocations is a real one.

#ifndef VORNJSONDB_TESTS_FAILING_ALLOCATORS_H
#define VORNJSONDB_TESTS_FAILING_ALLOCATORS_H

#include <ostream>

namespace faults
{

enum class Allocator
{
    Sqlite,
    OperatorNew,
    Malloc  // below the other two, and where JsonCpp has its strings from
};

enum class Failure
{
    Once,
    FromThereOn
};

std::ostream& operator<<(std::ostream& out, Allocator allocator);
std::ostream& operator<<(std::ostream& out, Failure failure);

// False for malloc() in a build with a sanitizer, which brings its own.
bool isReplaced(Allocator allocator);

// Lets the nth allocation from now on fail, until it ends. One at a time.
class Shortage
{
public:
    Shortage(Allocator allocator, Failure failure, long nth);
    ~Shortage() { end(); }
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;

    void end();
    bool struck() const { return m_failed > 0; }

private:
    Allocator m_allocator;
    long m_failed = 0;
};

// Allocations that have not been released.
long outstanding(Allocator allocator);

// What counts the most: malloc(), or operator new in a build with a sanitizer.
Allocator lowest();

// The most bytes of the heap that were taken at once, beyond what was taken when it began, as lowest() counts them. One
// at a time.
class HeapPeak
{
public:
    HeapPeak();
    long bytes() const;

private:
    long m_before;
};

}  // namespace faults

#endif  // VORNJSONDB_TESTS_FAILING_ALLOCATORS_H
