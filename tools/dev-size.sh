#!/bin/bash
# SPDX-License-Identifier: MIT
# prints what the libraries weigh, as Markdown tables: [--update] writes it into docs/weight.md
. "$(dirname "$0")/common.sh"
. tools/armhf.sh

libraries=(vornjsondb vorntable)
# What they may weigh on their target, in bytes, by build: see the tables' first lines.
declare -A aim=([vornjsondb_armhf_O2]=$((64 * 1024)) [vornjsondb_armhf_Os]=$((48 * 1024)) [vorntable_armhf_O2]=$((80 * 1024)))

# Nothing in a library may start a thread or a process or open a file: with these names absent from what it imports,
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
        search=$armhf_sysroot/usr/lib/arm-linux-gnueabihf
    else
        tool=
        emulator=(env)
        read -ra dependencies <<<"$(pkg-config --cflags --libs jsoncpp sqlite3)"
        search=
    fi
}

# weigh LIBRARY COLUMN FOLDER: fills the column of the library's table.
declare -A table
weigh()
{
    local name=$1 column=$1_$2 folder=$3 library
    library=$(echo "$folder/src/lib$name".so.?)
    "${tool}strip" -o "$folder/${library##*/}" "$library"
    library=$folder/${library##*/}
    if "${tool}nm" -D --undefined-only "$library" | awk '{print $2}' | grep -E "$forbidden"; then
        die "$library imports what is named above"
    fi
    table[${column}_bytes]=$(stat -c %s "$library")
    table[${column}_relocations]=$("${tool}readelf" -rW "$library" | grep -c ' R_')
    table[${column}_data]=$("${tool}size" "$library" | awk 'NR == 2 { print $2 + $3 }')
    table[${column}_symbols]=$("${tool}nm" -D --defined-only "$library" | wc -l)

    local probe=$folder/probe_$name what value
    "${tool}g++" -std=c++17 -O2 -Iinclude "tools/size/probe_$name.cpp" -o "$probe" "$library" "${dependencies[@]}"
    while read -r what value; do
        table[${column}_$what]=$value
    done < <(LD_LIBRARY_PATH=$folder:$search "${emulator[@]}" "$probe")
    [ -n "${table[${column}_left_bytes]:-}" ] || die "$probe failed"
}

# measure PLATFORM OPTIMISATION: builds and fills the columns of the tables.
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

    local name
    for name in "${libraries[@]}"; do
        weigh "$name" "$column" "$folder"
    done
}

columns=(armhf_O2 armhf_Os amd64_O2 amd64_Os)
for column in "${columns[@]}"; do
    measure "${column%_*}" "-${column#*_}"
done

# row LIBRARY NAME TEXT
row()
{
    local column line="| $3 |"
    for column in "${columns[@]}"; do
        line+=" ${table[$1_${column}_$2]} |"
    done
    say "$line"
}
figures()
{
    say "$(date -u +%F), $(. /etc/os-release && say "$PRETTY_NAME"), g++ $(g++ -dumpfullversion):"
    local name
    for name in "${libraries[@]}"; do
        say ""
        say "| lib$name | armhf -O2 | armhf -Os | amd64 -O2 | amd64 -Os |"
        say "|---|---:|---:|---:|---:|"
        row "$name" bytes "library, stripped (bytes)"
        row "$name" relocations "relocations"
        row "$name" data "static data, initialised and not (bytes)"
        row "$name" symbols "exported symbols"
        row "$name" resident_kib "resident after the first record (KiB)"
        row "$name" copied_kib "of that written to, so not shared with other processes (KiB)"
        row "$name" object_bytes "heap of one more open object (bytes)"
        [ "$name" != vorntable ] || row "$name" statement_bytes "heap of one more kept statement, SQLite's part too (bytes)"
        row "$name" left_bytes "heap that stays when a table's object is gone (bytes)"
    done
}
figures | tee build/size/figures.md
[ "${1:-}" != --update ] || put figures build/size/figures.md docs/weight.md

for build in "${!aim[@]}"; do
    over=$((table[${build}_bytes] - aim[$build]))
    if [ $over -gt 0 ]; then
        say "$build: $over bytes over the aim of ${aim[$build]}"
    else
        say "$build: $((-over)) bytes under the aim of ${aim[$build]}"
    fi
done
