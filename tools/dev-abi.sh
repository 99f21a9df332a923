#!/bin/bash
# SPDX-License-Identifier: MIT
# compares the binary interface with that of 7.0.0: [--update], which makes today's that of 7.0.0
. "$(dirname "$0")/common.sh"
. tools/armhf.sh

need "${packages_build[@]}" "${packages_armhf[@]}" abigail-tools
armhf_prepare

# describe LIBRARY FILE
describe()
{
    abidw --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed \
        --suppressions abi/ours.suppr --out-file "$2" "$1"
}

# check PLATFORM FOLDER: what is built in FOLDER against abi/PLATFORM.abi
check()
{
    local stored=abi/$1.abi today=$2/$1.abi report status=0
    describe "$2/src/libvornjsondb.so" "$today"
    if [ -n "${update:-}" ]; then
        cp "$today" "$stored"
        say "$stored describes what was built now."
        return
    fi
    [ -f "$stored" ] || die "$stored is missing"

    # Additions are compatible: they are told, and everything else fails.
    report=$(abidiff --no-unreferenced-symbols --no-added-syms "$stored" "$today" 2>&1) || status=$?
    if [ "$status" -ne 0 ]; then
        say "$report"
        die "the binary interface on $1 is no longer that of 7.0.0 (abidiff gives $status). Programs that were built with it
may fail, so take the change back or, for a release with a new soname, describe it anew: ./dev abi --update"
    fi
    abidiff "$stored" "$today" || true
    say "$1: the binary interface of 7.0.0 is all there."
}

[ "${1:-}" != --update ] || update=yes
arguments=(-S . -DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo)
cmake -G Ninja -B build/abi-amd64 "${arguments[@]}" -DCMAKE_CXX_COMPILER=g++ >/dev/null
cmake --build build/abi-amd64 --parallel "$jobs" >/dev/null
armhf_cmake build/abi-armhf "${arguments[@]}" >/dev/null
check amd64 build/abi-amd64
check armhf build/abi-armhf
