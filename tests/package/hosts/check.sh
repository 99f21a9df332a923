#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Installs a build into a temporary folder and builds and runs hosts of every kind against it: of libvorntable, of both
# libraries, and of libvornjsondb in each C++ standard, with hidden symbols, without flags of its own, with a plugin.
# Hosts that get the two flags wrong must fail and name them. The environment names the build: see tests/package/PackageTests.cmake.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail()
{
    echo "$*" >&2
    exit 1
}

# A host's lines on standard output: exactly the one that it asks for.
runs()
{
    # shellcheck disable=SC2086 # an emulator comes with its arguments
    $EMULATOR "$@" >"$work/output" || fail "$* failed."
    [ "$(grep -c 'bad iType value=0' "$work/output")" = 1 ] || fail "$* wrote: $(cat "$work/output")"
}

# names FLAG...: the last output names the flags.
names()
{
    for flag in "$@"; do
        grep -q "$flag" "$work/output" || fail "$flag is not named: $(cat "$work/output")"
    done
}

does_not_build()
{
    ! "$CMAKE" --build "$work/build" --target "$1" >"$work/output" 2>&1 || fail "The host $1 could be linked."
}

# One at a time: installing writes into the build.
flock "$BUILD/install.lock" "$CMAKE" --install "$BUILD" --prefix "$work/elsewhere" >/dev/null
mv "$work/elsewhere" "$work/prefix"
"$CMAKE" -S "$here" -B "$work/build" -Dvornjsondb_DIR="$work/prefix/$LIBDIR/cmake/vornjsondb" \
    "-DCOMPONENTS=$COMPONENTS" \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN"
"$CMAKE" --build "$work/build"
cd "$work/build"

for host in table both; do
    # shellcheck disable=SC2086 # an emulator comes with its arguments
    [ ! -x $host ] || $EMULATOR ./$host || fail "$host failed."
done
[ -x linked_cxx11 ] || exit 0

for host in linked_cxx11 linked_cxx17 linked_cxx20 hidden quiet; do
    runs "./$host"
done
runs ./plugin_host ./libplugin.so

does_not_build without_flags
names blLogToStdout blDebugOutput
if [ "$KIND" = SHARED ]; then # a static library is linked into the host and finds its hidden symbols
    does_not_build hidden_flags
    names 'bl[A-Z][A-Za-z]*'
fi
# shellcheck disable=SC2086
! $EMULATOR ./plugin_host_without_exports ./libplugin.so >"$work/output" 2>&1 || fail "A plugin found hidden flags."
names 'undefined symbol: bl[A-Z][A-Za-z]*'
