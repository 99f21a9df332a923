// SPDX-License-Identifier: MIT
//
// Before anything is measured: all contestants give the same records and leave the same rows.

#ifndef VORN_BENCH_PROOF_H
#define VORN_BENCH_PROOF_H

#include <cstddef>

namespace bench
{

// Throws, and says which contestant differs in what, unless every contestant does every work right.
void proveSameRecords(std::size_t rows);

}  // namespace bench

#endif  // VORN_BENCH_PROOF_H
