#!/bin/bash
# SPDX-License-Identifier: MIT
# looks for faults without running anything: format, warnings of two compilers, analysers: [--quick]
#
# --quick leaves clang-tidy's hundred checks of the tests and fuzzers out, which take longer than everything else here.
. "$(dirname "$0")/common.sh"
. tools/bench.sh

tidied=.
case ${1:-} in
'') ;;
--quick) tidied="^$PWD/(bench|examples|src|tools)/" ;;
*) die "lint: unknown argument $1" ;;
esac

need "${packages_lint[@]}" "${packages_bench[@]}"

# files FIND-TEST...: files of the checkout, without what was built.
files() { find . -path ./build -prune -o -path ./.git -prune -o -type f "$@" -printf '%P\n' | sort; }
mapfile -t sources < <(files \( -name '*.cpp' -o -name '*.h' \))
mapfile -t compiled < <(files -name '*.cpp')
mapfile -t scripts < <(files -perm -u+x -not -name rules) # that of the Debian package is a makefile
mapfile -t awks < <(files -name '*.awk')
mapfile -t pythons < <(files -name '*.py')
mapfile -t cmakes < <(files \( -name CMakeLists.txt -o -name '*.cmake' \))

say "== clang-format"
clang-format --dry-run -Werror "${sources[@]}"

say "== shellcheck, gawk, pyflakes, cmake-lint"
shellcheck --check-sourced "${scripts[@]}"
for script in "${awks[@]}"; do
    # Variables start empty in awk, and these rely on it.
    ! gawk --lint -f "$script" </dev/null 2>&1 >/dev/null | grep -v 'reference to uninitialized variable' ||
        die "gawk complains about $script"
done
pyflakes3 "${pythons[@]}"
# Without what it wants of names and comments, and two of its errors: variables that differ from those of CMake in case
# alone, and the short form of separate_arguments().
cmake-lint --suppress-decorations --line-width 130 --disabled-codes C0103 C0111 C0113 E1120 W0105 -- "${cmakes[@]}"

everything=(-DVORNJSONDB_BENCH=ON -DVORNJSONDB_CLI=ON)
say "== g++, warnings are errors"
if [ -n "${CI:-}" ]; then # that of ./dev test, and what it leaves out
    build dev -DVORNJSONDB_WERROR=ON "${everything[@]}"
else
    build gcc "${everything[@]}"
fi

say "== clang++, warnings are errors"
build clang "${everything[@]}"
others=()
for source in "${compiled[@]}"; do
    case $source in
    fuzz/*) ;; # by ./dev fuzz
    *) grep -q "\"$PWD/$source\"" build/clang/compile_commands.json || others+=("$source") ;;
    esac
done
say "== clang++, what this build does not compile: ${others[*]}"
# shellcheck disable=SC2046 # flags are many words
clang++ -fsyntax-only -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -Iinclude -Itests/support \
    $(pkg-config --cflags jsoncpp) "${others[@]}"

say "== clang-tidy"
# It would go on with next to no checks where it cannot read its configuration.
grep -q bugprone-use-after-move <<<"$(clang-tidy --list-checks)" || die "clang-tidy does not understand .clang-tidy"
run-clang-tidy -quiet -j "$jobs" -p build/clang "$tidied" >build/clang/tidy.log 2>&1 ||
    { grep -E -A5 '(error|warning):' build/clang/tidy.log || cat build/clang/tidy.log; die "clang-tidy found what is above"; }

# Not its style checks: they ask for algorithms in place of loops, and for other signatures than the settled ones.
say "== cppcheck"
cppcheck --quiet --std=c++17 --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
    --library=googletest -Iinclude "${compiled[@]}"

# It sees what is compiled while it watches, so everything is, by nobody else.
say "== scan-build"
rm -rf build/scan
unset CMAKE_CXX_COMPILER_LAUNCHER
scan-build -o build/scan-reports cmake --preset release -B build/scan >/dev/null
scan-build -o build/scan-reports --status-bugs cmake --build build/scan --parallel "$jobs"
