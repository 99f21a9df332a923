// SPDX-License-Identifier: MIT
//
// Trials that take minutes at full size: a part of them runs with the other tests, all of them with VORN_TEST_WHOLE=1,
// as ./dev endurance sets it.

#ifndef VORN_TESTS_WHOLE_H
#define VORN_TESTS_WHOLE_H

#include <cstdlib>

namespace support
{

inline int partOrWhole(int iPart, int iWhole)
{
    return std::getenv("VORN_TEST_WHOLE") != nullptr ? iWhole : iPart;
}

}  // namespace support

#endif  // VORN_TESTS_WHOLE_H
