#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Compiles the sources of each library and a host with nothing but the flags of the two dependencies, as one does who
# takes the sources into another build, and runs the host.
set -eu

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# compile ROOM SOURCE...
compile()
{
    room=$1
    shift
    # shellcheck disable=SC2046 # flags are many words
    "$CXX" -std=c++17 -Iinclude src/core/*.cpp src/"$room"/*.cpp "$@" -o "$work/host" \
        $(pkg-config --cflags --libs jsoncpp sqlite3)
    "$work/host"
}

cd "$SOURCE"
hosts=tests/package/consumer
for component in $COMPONENTS; do
    case $component in
    contract) compile contract $hosts/contract.cpp tests/package/hosts/flags.cpp ;;
    table) compile table $hosts/table.cpp ;;
    esac
done
