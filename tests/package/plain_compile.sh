#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Compiles the sources and a host with nothing but the flags of the two dependencies, as one does who takes the sources
# into another build, and runs the host.
set -eu

source=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cd "$source"
# shellcheck disable=SC2046 # flags are many words
"$CXX" -std=c++17 -Iinclude src/core/*.cpp src/contract/*.cpp tests/package/consumer/host.cpp -o "$work/host" \
    $(pkg-config --cflags --libs jsoncpp sqlite3)
"$work/host"
