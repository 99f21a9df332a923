#!/bin/bash
# SPDX-License-Identifier: MIT
# compares the binary interfaces with those that abi/ describes: [--update], which describes today's
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

# check PLATFORM LIBRARY VERSION: what is built against abi/LIBRARY-PLATFORM.abi
check()
{
    local stored=abi/$2-$1.abi today=build/abi-$1/$2.abi what="the binary interface of $2 $3 on $1" report status=0
    describe "build/abi-$1/src/lib$2.so" "$today"
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
        die "$what is another now (abidiff gives $status). Programs that were built with it may fail, so take the
change back or, for a release with a new soname, describe it anew: ./dev abi --update"
    fi
    abidiff "$stored" "$today" || true
    say "$what is all there."
}

[ "${1:-}" != --update ] || update=yes
arguments=(-DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo)
configure build/abi-amd64 "${arguments[@]}" -DCMAKE_CXX_COMPILER=g++
compile build/abi-amd64 >/dev/null
armhf_configure build/abi-armhf "${arguments[@]}"
compile build/abi-armhf >/dev/null
for platform in amd64 armhf; do
    check "$platform" vornjsondb 7.0.0
    check "$platform" vorntable 0.1.0
done
