#!/bin/bash
# SPDX-License-Identifier: MIT
# measures how much of src/ the tests run, branch by branch: [arguments of gcovr]
. "$(dirname "$0")/common.sh"

need "${packages_test[@]}" gcovr

# Unoptimised, so that a branch of the program is a branch of the source. Programs run whole: that is faster here.
folder=build/coverage
configure "$folder" --preset debug -DCMAKE_CXX_FLAGS=--coverage -DVORNJSONDB_TEST_PER_CASE=OFF -DVORNJSONDB_EXAMPLES=OFF
compile "$folder"
find "$folder" -name '*.gcda' -delete
status=0
# Where a test forbids its program large files, what the counters' library says of that is not the program's.
GCOV_ERROR_FILE=$PWD/$folder/gcov.log ctest --test-dir "$folder" --parallel "$jobs" --output-on-failure --label-exclude package || status=$?

# Branches that only an exception takes, and those that no source text holds, are not counted: g++ adds two to nearly
# every call.
mkdir -p "$folder/report"
gcovr --root . --filter src/ --object-directory "$folder" --exclude-throw-branches --exclude-unreachable-branches \
    --branches --html-details "$folder/report/index.html" --json "$folder/report/all.json" --print-summary "$@" "$folder/src"
for room in src/*/; do
    say "== $room"
    gcovr --root . --add-tracefile "$folder/report/all.json" --filter "$room" --print-summary --output "$folder/report/room"
done
say "Details: $folder/report/index.html"
exit "$status"
