#!/bin/sh
# SPDX-License-Identifier: MIT
#
# Installs a build into a temporary folder and checks what lies there:
#   check.sh layout              exactly the files that belong there, none of which names a folder of the build
#   check.sh symbols             each library exports what ../exported_LIBRARY.txt lists, no more and no less
#   check.sh find_package        hosts are built with CMake, from a prefix that was moved after installing, and run
#   check.sh missing_component   CMake names a component that is not there
#   check.sh pkg_config          hosts are built by hand with pkg-config and run
#   check.sh old_sqlite          libvorntable is not built with an SQLite that is too old for it, libvornjsondb is
# The environment names the build: see tests/package/PackageTests.cmake.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
flags=$here/../hosts/flags.cpp

# One at a time: installing writes into the build.
install_to() { flock "$BUILD/install.lock" "$CMAKE" --install "$BUILD" --prefix "$1" >/dev/null; }

fail()
{
    echo "$*" >&2
    exit 1
}

# has COMPONENT: whether it was built
has()
{
    case " $COMPONENTS " in
    *" $1 "*) true ;;
    *) false ;;
    esac
}

# library NAME VERSION: the files of libNAME
library()
{
    if [ "$KIND" = SHARED ]; then
        printf '%s\n' "$LIBDIR/lib$1.so" "$LIBDIR/lib$1.so.${2%%.*}" "$LIBDIR/lib$1.so.$2"
    else
        echo "$LIBDIR/lib$1.a"
    fi
}

expected_files()
{
    if has contract; then
        library vornjsondb "$VERSION"
        printf '%s\n' include/VornJsonDbApi.h "$LIBDIR/libvornjsondb-quiet.a" "$LIBDIR/pkgconfig/vornjsondb.pc" \
            "$LIBDIR/pkgconfig/vornjsondb-quiet.pc"
    fi
    if has table; then
        library vorntable "$TABLE_VERSION"
        printf '%s\n' include/vorn/status.h include/vorn/table.h include/vorn/transaction.h \
            "$LIBDIR/pkgconfig/vorntable.pc"
    fi
    [ "$SQLCIPHER" = OFF ] || echo "$LIBDIR/cmake/vornjsondb/FindSQLCipher.cmake"
    [ "$CLI" = OFF ] || printf '%s\n' bin/vornjsondb share/bash-completion/completions/vornjsondb share/man/man1/vornjsondb.1
    for file in FindJsonCpp vornjsondb-config vornjsondb-config-version; do
        echo "$LIBDIR/cmake/vornjsondb/$file.cmake"
    done
    for component in $COMPONENTS; do
        echo "$LIBDIR/cmake/vornjsondb/vornjsondb-$component-targets.cmake"
        echo "$LIBDIR/cmake/vornjsondb/vornjsondb-$component-targets-BUILD_TYPE.cmake"
    done
}

# files_that_name FOLDER: those of what is installed that hold it as an absolute path. A path is what nothing comes
# before that could belong to it: "./src" and "lib/src" do not name a checkout at /src.
files_that_name()
{
    folder=$(printf '%s\n' "$1" | sed 's/[][\.*^$+?(){}|]/\\&/g')
    find "$work/stage" -type f | while IFS= read -r file; do
        ! strings -n 6 "$file" | LC_ALL=C grep -qE "(^|[^[:alnum:]._~+/-])$folder(\$|[^[:alnum:]._~+-])" || echo "$file"
    done
}

check_layout()
{
    DESTDIR=$work/stage install_to /opt/vornjsondb
    (cd "$work/stage/opt/vornjsondb" && find . -type f -o -type l) |
        sed -E -e 's|^\./||' -e 's/(-targets)-[a-z]+/\1-BUILD_TYPE/' | sort >"$work/found"
    expected_files | sort >"$work/expected"
    diff -u "$work/expected" "$work/found" || fail "Other files were installed than expected (-)."

    # Sanitizers put the sources' places into the library, for their reports.
    [ -z "$SANITIZE" ] || return 0
    [ -n "$(files_that_name /opt/vornjsondb)" ] || fail "The prefix is found in no file, so nothing would be."
    for folder in "$SOURCE" "$BUILD" "$work"; do
        files=$(files_that_name "$folder")
        [ -z "$files" ] || fail "These files name the folder $folder:
$files"
    done
}

# Class and argument names as a reader writes them: whatever differs between standard libraries is taken away.
plain_names()
{
    sed -E -e 's/^[0-9a-f]+ [A-Za-z] //' -e 's/\[abi:cxx11\]//g' -e 's/std::__[a-z0-9_]+::/std::/g' -e 's/ >/>/g' \
        -e 's/std::basic_string<char, std::char_traits<char>, std::allocator<char>>/std::string/g' \
        -e 's/std::vector<std::string, std::allocator<std::string>>/std::vector<std::string>/g' | LC_ALL=C sort -u
}

# exports LIBRARY
exports()
{
    "$NM" -D --defined-only --demangle "$prefix/$LIBDIR/lib$1.so" | plain_names >"$work/exported"
    diff -u "$here/../exported_$1.txt" "$work/exported" || fail "The exported symbols have changed.
A line with - is gone: hosts that use it no longer start, so that needs a new soname. A line with + is new.
Where the change is meant, copy the lines to tests/package/exported_$1.txt and tell it in CHANGELOG.md."
}

check_symbols()
{
    install_to "$prefix"
    ! has contract || exports vornjsondb
    ! has table || exports vorntable
}

# configure COMPONENTS [CMAKE-ARGUMENT...]: a host's build, which asks for the components
configure()
{
    wanted=$1
    shift
    mkdir -p "$work/host"
    cp "$here"/*.cpp "$here/CMakeLists.txt" "$flags" "$work/host"
    "$CMAKE" -S "$work/host" -B "$work/build" -Dvornjsondb_DIR="$prefix/$LIBDIR/cmake/vornjsondb" \
        "-DCOMPONENTS=$wanted" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_CXX_FLAGS="$CXXFLAGS" \
        -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" "$@"
}

check_find_package()
{
    install_to "$work/elsewhere"
    mv "$work/elsewhere" "$prefix"
    for component in $COMPONENTS; do
        rm -rf "$work/build"
        # What CMake finds without naming a component is tried here too.
        [ "$component" != contract ] || component=
        configure "$component" "$@" || fail "A host of '$component' could not be configured."
        "$CMAKE" --build "$work/build" || fail "A host of '$component' could not be built."
        # shellcheck disable=SC2086 # an emulator comes with its arguments
        $EMULATOR "$work/build/host"
    done
}

check_missing_component()
{
    install_to "$prefix"
    for component in contract table nonesuch; do
        rm -f "$prefix/$LIBDIR/cmake/vornjsondb/vornjsondb-$component-targets.cmake"
        ! configure "$component" >"$work/output" 2>&1 || fail "$component was found, and is not there."
        tr -s ' \n' '  ' <"$work/output" | grep -q "was built without the component \"$component\"" ||
            fail "It is not told that $component is missing: $(cat "$work/output")"
    done
}

# by_hand PACKAGE VERSION SOURCE...: built with nothing but what pkg-config says
by_hand()
{
    package=$1
    [ "$(pkg-config --modversion "$package")" = "$2" ] || fail "pkg-config gives another version of $package than $2."
    shift 2
    # shellcheck disable=SC2046,SC2086 # flags are many words
    "$CXX" $CXXFLAGS -std=c++17 "$@" -o "$work/host.out" $(pkg-config --cflags --libs "$package") \
        "-Wl,-rpath,$prefix/$LIBDIR" || fail "A host could not be built with $package."
    "$work/host.out" || fail "A host that was built with $package failed."
}

check_pkg_config()
{
    install_to "$prefix"
    PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
    export PKG_CONFIG_PATH
    if has contract; then
        by_hand vornjsondb "$VERSION" "$here/contract.cpp" "$flags"
        by_hand vornjsondb-quiet "$VERSION" "$here/contract.cpp"
        by_hand vornjsondb-quiet "$VERSION" "$here/contract.cpp" "$flags" # which come first
    fi
    ! has table || by_hand vorntable "$TABLE_VERSION" "$here/table.cpp"
}

check_old_sqlite()
{
    echo '#define SQLITE_VERSION "3.37.2"' >"$work/sqlite3.h"
    for table in ON OFF; do
        "$CMAKE" -S "$SOURCE" -B "$work/$table" "-DSQLite3_INCLUDE_DIR=$work" -DVORNJSONDB_TABLE=$table \
            -DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF -DCMAKE_CXX_COMPILER="$CXX" \
            -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" >"$work/output" 2>&1 && found=yes || found=no
        [ "$table,$found" = OFF,yes ] || grep -q 'needs SQLite 3.38 or newer; this is "3.37.2"' "$work/output" ||
            fail "With VORNJSONDB_TABLE=$table: $(cat "$work/output")"
    done
}

what=$1
shift
"check_$what" "$@"
