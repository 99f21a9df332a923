#!/bin/bash
# SPDX-License-Identifier: MIT
# runs the tests of what is promised about threads under the thread sanitizer: [arguments of the test program]
. "$(dirname "$0")/common.sh"

need "${packages_test[@]}"
configure build/thread --preset thread
compile build/thread test_threads test_table_threads

# The sanitizer of this compiler cannot live with an address space that is laid out too randomly.
plainly=()
! setarch -R true 2>/dev/null || plainly=(setarch -R)
run=("${plainly[@]}" build/thread/tests/test_threads)

"${run[@]}" --gtest_brief=1 "$@"
"${plainly[@]}" build/thread/tests/test_table_threads --gtest_brief=1 "$@"

# What is not promised must be noticed, or the run above shows nothing.
say "== two objects used at once, which the sanitizer must find"
report=$("${run[@]}" --gtest_also_run_disabled_tests --gtest_filter='*DISABLED*' 2>&1) &&
    die "the thread sanitizer finds nothing where there is something"
grep -q 'ThreadSanitizer: data race' <<<"$report" || die "$report"
say "found"
