# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# What the commands that build the benchmark share. Sourced after common.sh.

. tools/armhf.sh

packages_figures=("${packages_build[@]}" libcli11-dev valgrind)
packages_bench=("${packages_figures[@]}" gnuplot-nox libboost-dev libpoco-dev libsoci-dev libsqlitecpp-dev)

bench_arguments=(-DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG" -DVORNJSONDB_BENCH=ON
    -DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF)

# bench_build FOLDER [CMAKE-ARGUMENT...]: speaks only when it fails.
bench_build()
{
    local output
    configure "$@" "${bench_arguments[@]}"
    output=$(compile "$1" 2>&1) || die "$output"
}

# The root of target packages in which callgrind for the target runs under emulation.
armhf_counting=$PWD/build/arm/counting

# bench_build_armhf FOLDER: builds without the peers for the target and makes callgrind ready there.
bench_build_armhf()
{
    local output
    armhf_prepare
    output=$({ [ -d "$armhf_sysroot/usr/include/CLI" ] || armhf_unpack "$armhf_sysroot" libcli11-dev; } &&
        { [ -f "$armhf_counting/complete" ] || armhf_unpack "$armhf_counting" gcc-12-base libc6 libc6-dbg libgcc-s1 \
            libjsoncpp25 libsqlite3-0 libstdc++6 valgrind; } &&
        : >"$armhf_counting/complete" &&
        armhf_configure "$1" "${bench_arguments[@]}" -DVORNJSONDB_BENCH_PEERS=OFF && compile "$1") || die "$output"
}

# count_works PROGRAM: reads lines "WORK CONTESTANT [ROWS [OPTION...]]" and writes those of count-work.sh, in another
# order. Callgrind and the emulator are slow, so the table is small unless the line says otherwise.
count_works()
{
    xargs -P "$jobs" -L 1 tools/count-work.sh "$1"
}

# count_works_armhf PROGRAM: the same on the emulated target.
count_works_armhf()
{
    local tool=$armhf_counting/usr/libexec/valgrind/callgrind-arm-linux
    VALGRIND_LIB=$armhf_counting/usr/libexec/valgrind VALGRIND_LAUNCHER=$armhf_counting/usr/bin/valgrind \
        VORN_COUNTER="qemu-arm-static -L $armhf_counting $tool --tool=callgrind --callgrind-out-file=/dev/null" \
        count_works "$1"
}

# versions PACKAGE...: one line "PACKAGE VERSION" each.
versions()
{
    dpkg-query -W -f '${Package} ${Version}\n' "$@"
}

# versions_armhf: those that are unpacked for the target, and the compiler's.
versions_armhf()
{
    local file
    versions g++-12-arm-linux-gnueabihf
    for file in libc6 libjsoncpp25 libsqlite3-0 libstdc++6; do
        basename "$(compgen -G "build/arm/packages/${file}_*.deb")" .deb | sed 's/_armhf$//; s/%3a/:/; s/_/ /'
    done
}
