#!/bin/bash
# SPDX-License-Identifier: MIT
# looks for faults without running anything: format, warnings of two compilers, four analysers
. "$(dirname "$0")/common.sh"
. tools/bench.sh

need "${packages_lint[@]}" "${packages_bench[@]}"

folders=()
for folder in include src tests examples bench fuzz; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
mapfile -t sources < <(find "${folders[@]}" -name '*.cpp' -o -name '*.h')
mapfile -t scripts < <(find dev .ci tools tests -type f -perm -u+x)

say "== clang-format"
clang-format --dry-run -Werror "${sources[@]}"

say "== shellcheck"
shellcheck "${scripts[@]}"

say "== g++, warnings are errors"
build gcc -DVORNJSONDB_BENCH=ON

# A build repeats what has changed, but does not know of clang-tidy's configuration.
if [ -n "$(find . -name .clang-tidy -newer build/clang/CMakeCache.txt 2>/dev/null)" ]; then
    rm -rf build/clang
fi
say "== clang++, warnings are errors, and clang-tidy"
# It would go on with next to no checks where it cannot read its configuration.
grep -q bugprone-use-after-move <<<"$(clang-tidy --list-checks)" || die "clang-tidy does not understand .clang-tidy"
build clang -DVORNJSONDB_BENCH=ON "-DCMAKE_CXX_CLANG_TIDY=clang-tidy;--quiet"

# Not its style checks: they ask for algorithms in place of loops, and for other signatures than the settled ones.
say "== cppcheck"
cppcheck --quiet --std=c++17 --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
    --library=googletest -Iinclude "${folders[@]}"

# It sees what is compiled while it watches, so everything is.
say "== scan-build"
rm -rf build/scan
scan-build -o build/scan-reports cmake --preset release -B build/scan >/dev/null
scan-build -o build/scan-reports --status-bugs cmake --build build/scan --parallel "$jobs"
