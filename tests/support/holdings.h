// SPDX-License-Identifier: MIT
//
// What a process holds, for tests of a long life. In a program that links this the allocators count, see
// failing_allocators.h.

#ifndef VORNJSONDB_TESTS_HOLDINGS_H
#define VORNJSONDB_TESTS_HOLDINGS_H

#include <iosfwd>

namespace support
{

struct Holdings
{
    long residentKb;
    long sqliteBytes;
    long allocationsOfNew;
    long allocationsOfMalloc;  // those of SQLite's allocator left out; 0 in a build with a sanitizer
    long files;
};

Holdings holdings();

// The cells of a row, and their titles.
std::ostream& operator<<(std::ostream& out, const Holdings& held);
extern const char* const holdingsTitle;

// That there is no more now than there was when all had been done once, but for a few small things and what SQLite's
// caches swing by.
void expectNoMore(const Holdings& settled, const Holdings& now, long sqliteSwing);

}  // namespace support

#endif  // VORNJSONDB_TESTS_HOLDINGS_H
