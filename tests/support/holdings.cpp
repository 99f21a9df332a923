// SPDX-License-Identifier: MIT

#include "holdings.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "failing_allocators.h"

#if defined(__has_feature)
#define HAS_FEATURE(feature) __has_feature(feature)
#else
#define HAS_FEATURE(feature) 0
#endif

namespace support
{

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || HAS_FEATURE(address_sanitizer) || \
    HAS_FEATURE(thread_sanitizer)
constexpr bool isSanitized = true;  // most of the resident memory is then the sanitizer's
#else
constexpr bool isSanitized = false;
#endif

long residentKb()
{
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

}  // namespace

const char* const holdingsTitle = "resident kB | sqlite3_memory_used | operator new | malloc | files";

Holdings holdings()
{
    using faults::Allocator;
    using faults::outstanding;
    const long ofMalloc = outstanding(Allocator::Malloc) - outstanding(Allocator::Sqlite);
    const auto folder = std::filesystem::directory_iterator("/proc/self/fd");
    return {residentKb(), static_cast<long>(sqlite3_memory_used()), outstanding(Allocator::OperatorNew),
            faults::isReplaced(Allocator::Malloc) ? ofMalloc : 0,
            static_cast<long>(std::distance(begin(folder), end(folder)))};
}

std::ostream& operator<<(std::ostream& out, const Holdings& held)
{
    return out << held.residentKb << " | " << held.sqliteBytes << " | " << held.allocationsOfNew << " | "
               << held.allocationsOfMalloc << " | " << held.files;
}

void expectNoMore(const Holdings& settled, const Holdings& now, long sqliteSwing)
{
    EXPECT_EQ(settled.files, now.files);
    EXPECT_GE(settled.allocationsOfNew + 20, now.allocationsOfNew);
    EXPECT_GE(settled.allocationsOfMalloc + 40, now.allocationsOfMalloc);
    EXPECT_GE(settled.sqliteBytes + sqliteSwing, now.sqliteBytes);
    EXPECT_TRUE(isSanitized || settled.residentKb + 2048 >= now.residentKb) << now.residentKb;
}

}  // namespace support
