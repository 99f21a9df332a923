#!/bin/bash
# SPDX-License-Identifier: MIT
# tests with clang++, as static libraries, each library alone and with other releases of JsonCpp: [Debian suites to take JsonCpp from]
. "$(dirname "$0")/common.sh"
. tools/apt.sh

need "${packages_test[@]}" binutils clang dpkg-dev
suites=("$@")
[ $# -gt 0 ] || suites=(trixie)
out=$PWD/build/variants

# variant NAME [CMAKE-ARGUMENT...]: builds and runs all tests but the slow ones.
variant()
{
    local folder=$out/$1
    say "== $1"
    configure "$folder" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVORNJSONDB_WERROR=ON "${@:2}"
    compile "$folder"
    ctest --test-dir "$folder" --output-on-failure --no-tests=error --parallel "$jobs" --label-exclude slow
}

# jsoncpp SUITE: makes the JsonCpp of a Debian suite in $out/jsoncpp-SUITE, from its source, since a newer suite's own
# package needs a newer C++ library too.
jsoncpp()
{
    local suite=$1 folder=$out/jsoncpp-$1 codename archive log
    [ ! -f "$folder/complete" ] || return 0
    rm -rf "$folder"
    mkdir -p "$folder/source"
    log=$folder/log
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # the names are apt's
    archive=$(apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        sed -n "s/ $codename main\$//p" | sed -n 1p)
    [ -n "$archive" ] || die "apt's sources name no Debian archive"
    echo "deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $archive $suite main" >"$folder/sources"
    suite_apt() { private_apt "$folder/apt" apt-get -o Dir::Etc::SourceList="$folder/sources" -o Dir::Etc::SourceParts=- "$@"; }
    if ! { suite_apt update && (cd "$folder" && suite_apt --download-only --tar-only source libjsoncpp); } >"$log" 2>&1; then
        cat "$log" >&2
        die "there is no source of JsonCpp in $suite"
    fi
    tar --extract --file="$(echo "$folder"/libjsoncpp_*.orig.tar.*)" --strip-components=1 --directory="$folder/source"
    configure "$folder/build" -S "$folder/source" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_STANDARD=17 \
        -DCMAKE_INSTALL_PREFIX="$folder/prefix" -DCMAKE_INSTALL_LIBDIR=lib -DJSONCPP_WITH_TESTS=OFF \
        -DBUILD_STATIC_LIBS=OFF -DBUILD_OBJECT_LIBS=OFF
    if ! { compile "$folder/build" && cmake --install "$folder/build"; } >"$log" 2>&1; then
        tail -n 30 "$log" >&2
        die "the JsonCpp of $suite could not be built"
    fi
    : >"$folder/complete"
}

variant clang -DCMAKE_CXX_COMPILER=clang++

variant static -DVORNJSONDB_STATIC=ON

variant contract-alone -DVORNJSONDB_TABLE=OFF
variant table-alone -DVORNJSONDB_CONTRACT=OFF

say "== SQLite"
# All that is used of SQLite, none of which it calls deprecated.
used=$(nm --undefined-only -C "$out"/static/src/libvornjsondb.a | sed -n 's/^ *U \(sqlite3_\)/\1/p' | sort -u | xargs)
[ "$used" = "sqlite3_changes sqlite3_exec sqlite3_free sqlite3_malloc64 sqlite3_mprintf sqlite3_realloc64" ] || die "other functions of SQLite are used: $used"
for source in src/core/*.cpp src/contract/*.cpp src/table/*.cpp; do
    # shellcheck disable=SC2046 # flags are many words
    g++ -std=c++17 -fsyntax-only -DSQLITE_OMIT_DEPRECATED -Iinclude $(pkg-config --cflags jsoncpp sqlite3) "$source"
done
say "Used of it: $used"

for suite in "${suites[@]}"; do
    jsoncpp "$suite"
    installed=$(sed -n 's/^Version: //p' "$out/jsoncpp-$suite/prefix/lib/pkgconfig/jsoncpp.pc")
    # The hosts that the tests build find the same one.
    prefix=$out/jsoncpp-$suite/prefix
    CMAKE_PREFIX_PATH=$prefix PKG_CONFIG_PATH=$prefix/lib/pkgconfig LD_LIBRARY_PATH=$prefix/lib \
        variant "jsoncpp-$installed"
    grep -q "$out/jsoncpp-$suite/" <<<"$(ldd "$out/jsoncpp-$installed/src/libvornjsondb.so")" ||
        die "another JsonCpp was tested"
done
