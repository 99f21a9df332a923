// SPDX-License-Identifier: MIT
//
// What a fuzzer asserts: a condition that does not hold is printed and ends the process, which is how both libFuzzer
// and the replay notice it.

#ifndef VORN_FUZZ_CHECK_H
#define VORN_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz
{

[[noreturn]] inline void fail(const char* szFile, int iLine, const char* szCondition, const std::string& strDetail)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n%s\n", szFile, iLine, szCondition, strDetail.c_str());
    std::abort();
}

}  // namespace fuzz

// FUZZ_CHECK(condition, detail): the detail is a text and is made only when the condition does not hold.
#define FUZZ_CHECK(condition, detail)                             \
    do                                                            \
    {                                                             \
        if (!(condition))                                         \
            fuzz::fail(__FILE__, __LINE__, #condition, (detail)); \
    } while (false)

#endif  // VORN_FUZZ_CHECK_H
