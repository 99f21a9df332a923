#!/bin/bash
# SPDX-License-Identifier: MIT
# builds for 32-bit ARM and runs all tests under emulation: [--sanitize] [arguments of ctest]
. "$(dirname "$0")/common.sh"
. tools/armhf.sh

need "${packages_armhf[@]}"
armhf_prepare

# Random comparisons run this many cases instead of their own, much larger number: emulation is 5 to 10 times slower.
export VORN_TEST_CASES=${VORN_TEST_CASES:-2000}
say "VORN_TEST_CASES=$VORN_TEST_CASES"

# arm_tests NAME TARGET [CMAKE-ARGUMENT...]: builds TARGET in build/arm/NAME and runs the tests that are selected.
arm_tests()
{
    local folder=build/arm/$1
    say "== armhf, $1"
    armhf_configure "$folder" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVORNJSONDB_WERROR=ON -DVORNJSONDB_CLI=ON "${@:3}"
    compile "$folder" "$2"
    ctest --test-dir "$folder" --output-on-failure --no-tests=error --parallel "$jobs" "${selection[@]}"
}

if [ "${1:-}" = --sanitize ]; then
    shift
    selection=("$@")
    # LeakSanitizer needs ptrace, which emulation does not have. Of freed memory and of stacks little is kept, because an
    # address sanitizer that runs out of 32-bit addresses hangs.
    export ASAN_OPTIONS=detect_leaks=0:quarantine_size_mb=16:malloc_context_size=5 UBSAN_OPTIONS=print_stacktrace=1
    # An exception leaves the marks of the scopes that it ended behind under emulation: the next function that uses their
    # part of the stack would be reported. ./dev test --sanitize looks for uses after scope.
    arm_tests sanitize all -DVORNJSONDB_SANITIZE="address;undefined" \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g -fno-sanitize-address-use-after-scope"
else
    selection=("$@")
    arm_tests plain all
    # With a time_t of 64 bits beside a long of 32.
    selection=(-R '^test_times$')
    arm_tests time64 test_times -DCMAKE_CXX_FLAGS="-Wno-psabi -D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64"
fi
