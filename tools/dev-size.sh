#!/bin/bash
# SPDX-License-Identifier: MIT
# prints what the library weighs, as a Markdown table: [--update] writes it into docs/weight.md
. "$(dirname "$0")/common.sh"
. tools/armhf.sh

# What the library may weigh on its target, in bytes, by build: see the table's first line.
aim_armhf_O2=$((64 * 1024))
aim_armhf_Os=$((48 * 1024))

# Nothing in the library may start a thread or a process or open a file: with these names absent from what it imports,
# neither its functions nor its constructors can, other than through SQLite and the C library's log and time zone.
forbidden='^(_ZNSt6thread|_ZNSt13basic_filebuf|pthread_create|thrd_create|clone|v?fork|posix_spawn|exec|system|popen|f?open|openat|creat|socket|dlopen)'

need "${packages_build[@]}" "${packages_armhf[@]}" binutils pkgconf
armhf_prepare

# use PLATFORM: names the tools and flags for amd64 or armhf.
use()
{
    platform=$1
    if [ "$platform" = armhf ]; then
        tool=arm-linux-gnueabihf-
        emulator=(qemu-arm-static -L /usr/arm-linux-gnueabihf)
        dependencies=(-isystem "$armhf_sysroot/usr/include" -isystem "$armhf_sysroot/usr/include/jsoncpp" -Wno-psabi
            "-L$armhf_sysroot/usr/lib/arm-linux-gnueabihf" -ljsoncpp -lsqlite3)
        libraries=$armhf_sysroot/usr/lib/arm-linux-gnueabihf
    else
        tool=
        emulator=(env)
        read -ra dependencies <<<"$(pkg-config --cflags --libs jsoncpp sqlite3)"
        libraries=
    fi
}

# measure PLATFORM OPTIMISATION: builds and fills the columns of the table.
declare -A table
measure()
{
    use "$1"
    local column=$1_${2#-} folder=build/size/$1$2 arguments=(-DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="$2 -DNDEBUG") output
    if [ "$platform" = armhf ]; then
        armhf_configure "$folder" "${arguments[@]}"
    else
        configure "$folder" "${arguments[@]}"
    fi
    output=$(compile "$folder" 2>&1) || die "$output"

    local library=$folder/libvornjsondb.so.7
    "${tool}strip" -o "$library" "$folder/src/libvornjsondb.so.7"
    if "${tool}nm" -D --undefined-only "$library" | awk '{print $2}' | grep -E "$forbidden"; then
        die "the library imports what is named above"
    fi
    table[${column}_bytes]=$(stat -c %s "$library")
    table[${column}_relocations]=$("${tool}readelf" -rW "$library" | grep -c ' R_')
    table[${column}_data]=$("${tool}size" "$library" | awk 'NR == 2 { print $2 + $3 }')
    table[${column}_symbols]=$("${tool}nm" -D --defined-only "$library" | wc -l)

    "${tool}g++" -std=c++17 -O2 -Iinclude tools/size/probe.cpp -o "$folder/probe" "$library" "${dependencies[@]}"
    local name value
    while read -r name value; do
        table[${column}_$name]=$value
    done < <(LD_LIBRARY_PATH=$folder:$libraries "${emulator[@]}" "$folder/probe")
    [ -n "${table[${column}_type_map_bytes]:-}" ] || die "$folder/probe failed"
}

columns=(armhf_O2 armhf_Os amd64_O2 amd64_Os)
for column in "${columns[@]}"; do
    measure "${column%_*}" "-${column#*_}"
done

row()
{
    local column line="| $2 |"
    for column in "${columns[@]}"; do
        line+=" ${table[${column}_$1]} |"
    done
    say "$line"
}
figures()
{
    say "$(date -u +%F), $(. /etc/os-release && say "$PRETTY_NAME"), g++ $(g++ -dumpfullversion):"
    say ""
    say "| | armhf -O2 | armhf -Os | amd64 -O2 | amd64 -Os |"
    say "|---|---:|---:|---:|---:|"
    row bytes "library, stripped (bytes)"
    row relocations "relocations"
    row data "static data, initialised and not (bytes)"
    row symbols "exported symbols"
    row resident_kib "resident after the first record (KiB)"
    row copied_kib "of that written to, so not shared with other processes (KiB)"
    row object_bytes "heap of one more open object (bytes)"
    row type_map_bytes "heap that a table's type map keeps (bytes)"
}
figures | tee build/size/figures.md
[ "${1:-}" != --update ] || put figures build/size/figures.md docs/weight.md

for column in armhf_O2 armhf_Os; do
    aim=aim_$column
    over=$((table[${column}_bytes] - ${!aim}))
    if [ $over -gt 0 ]; then
        say "$column: $over bytes over the aim of ${!aim}"
    else
        say "$column: $((-over)) bytes under the aim of ${!aim}"
    fi
done
