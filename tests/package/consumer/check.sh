#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Installs a build into a temporary folder and checks what lies there:
#   check.sh layout         exactly the files that belong there, none of which names a folder of the build
#   check.sh symbols        the library exports what exported_symbols.txt lists, no more and no less
#   check.sh find_package   a host is built with CMake, from a prefix that was moved after installing, and runs
#   check.sh pkg_config     a host is built by hand with pkg-config and runs
# The environment names the build: see tests/package/PackageTests.cmake.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

install_to() { "$CMAKE" --install "$BUILD" --prefix "$1" >/dev/null; }

fail()
{
    echo "$*" >&2
    exit 1
}

check_layout()
{
    DESTDIR=$work/stage install_to /opt/vornjsondb
    (cd "$work/stage/opt/vornjsondb" && find . -type f -o -type l) |
        sed -E -e 's|^\./||' -e 's/(vornjsondb-targets)-[a-z]+/\1-BUILD_TYPE/' | sort >"$work/found"
    {
        echo "include/VornJsonDbApi.h"
        if [ "$KIND" = SHARED_LIBRARY ]; then
            printf '%s\n' "$LIBDIR/libvornjsondb.so" "$LIBDIR/libvornjsondb.so.${VERSION%%.*}" \
                "$LIBDIR/libvornjsondb.so.$VERSION"
        else
            echo "$LIBDIR/libvornjsondb.a"
        fi
        echo "$LIBDIR/pkgconfig/vornjsondb.pc"
        echo "$LIBDIR/cmake/vornjsondb/vornjsondb-quiet.cpp"
        for file in FindJsonCpp vornjsondb-config vornjsondb-config-version vornjsondb-targets vornjsondb-targets-BUILD_TYPE; do
            echo "$LIBDIR/cmake/vornjsondb/$file.cmake"
        done
    } | sort >"$work/expected"
    diff -u "$work/expected" "$work/found" || fail "Other files were installed than expected (-)."

    # Sanitizers put the sources' places into the library, for their reports.
    [ -z "$SANITIZE" ] || return 0
    for folder in "$SOURCE" "$BUILD" "$work"; do
        ! grep -rlF "$folder" "$work/stage" || fail "The files above name the folder $folder."
    done
}

# Class and argument names as a reader writes them: whatever differs between standard libraries is taken away.
plain_names()
{
    sed -E -e 's/^[0-9a-f]+ [A-Za-z] //' -e 's/\[abi:cxx11\]//g' -e 's/std::__[a-z0-9_]+::/std::/g' -e 's/ >/>/g' \
        -e 's/std::basic_string<char, std::char_traits<char>, std::allocator<char>>/std::string/g' \
        -e 's/std::vector<std::string, std::allocator<std::string>>/std::vector<std::string>/g' | LC_ALL=C sort -u
}

check_symbols()
{
    install_to "$prefix"
    "$NM" -D --defined-only --demangle "$prefix/$LIBDIR/libvornjsondb.so" | plain_names >"$work/exported"
    diff -u "$here/../exported_symbols.txt" "$work/exported" || fail "The exported symbols have changed.
A line with - is gone: hosts that use it no longer start, so that needs a new soname. A line with + is new.
Where the change is meant, copy the lines to tests/package/exported_symbols.txt and tell it in CHANGELOG.md."
}

check_find_package()
{
    install_to "$work/elsewhere"
    mv "$work/elsewhere" "$prefix"
    mkdir "$work/host"
    cp "$here/host.cpp" "$here/CMakeLists.txt" "$work/host"
    "$CMAKE" -S "$work/host" -B "$work/build" -Dvornjsondb_DIR="$prefix/$LIBDIR/cmake/vornjsondb" \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" "$@" ||
        fail "A host could not be configured."
    "$CMAKE" --build "$work/build" || fail "A host could not be built."
    # shellcheck disable=SC2086 # an emulator comes with its arguments
    $EMULATOR "$work/build/host"
}

check_pkg_config()
{
    install_to "$prefix"
    cp "$here/host.cpp" "$work"
    PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
    export PKG_CONFIG_PATH
    [ "$(pkg-config --modversion vornjsondb)" = "$VERSION" ] || fail "pkg-config gives another version than $VERSION."
    # shellcheck disable=SC2046,SC2086 # flags are many words
    "$CXX" $CXXFLAGS -std=c++17 "$work/host.cpp" -o "$work/host.out" $(pkg-config --cflags --libs vornjsondb) \
        "-Wl,-rpath,$prefix/$LIBDIR"
    "$work/host.out"
}

what=$1
shift
"check_$what" "$@"
