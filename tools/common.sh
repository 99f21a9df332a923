# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# What the commands behind ./dev share. Each sources this file, which also moves to the top of the checkout.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Debian packages by purpose: everything that a command installs is named here.
packages_build=(cmake g++ libjsoncpp-dev libsqlite3-dev ninja-build)
packages_demo=("${packages_build[@]}" iso-codes)
packages_cli=(libcli11-dev libcsv-dev libsmartcols-dev)
packages_test=("${packages_build[@]}" "${packages_cli[@]}" binutils iso-codes libgtest-dev locales pkgconf)
packages_lint=("${packages_test[@]}" "${packages_cli[@]}" clang clang-format clang-tidy clang-tools
    cmake-format cppcheck gawk perl pyflakes3 shellcheck)
packages_fuzz=("${packages_build[@]}" clang libclang-rt-dev)
packages_fresh=(debootstrap)

jobs=$(nproc)

say() { printf '%s\n' "$*"; }

die()
{
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

# apt_install PACKAGE...: quiet unless it fails.
apt_install()
{
    DEBIAN_FRONTEND=noninteractive apt-get -qq -y -o DPkg::Lock::Timeout=300 -o Dpkg::Use-Pty=0 \
        install --no-install-recommends "$@"
}

# need PACKAGE...: installs those that are missing and says so; does nothing where none is. With VORNJSONDB_NO_INSTALL
# set it takes for granted that everything is there, for systems that are not Debian.
need()
{
    [ -z "${VORNJSONDB_NO_INSTALL:-}" ] || return 0
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        die "there is no apt here. Install what these Debian packages hold, then set VORNJSONDB_NO_INSTALL=1: $*"
    fi

    local package missing=()
    for package in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        die "packages are missing. As root: apt-get install --no-install-recommends ${missing[*]}"
    fi

    say "Installing: ${missing[*]}"
    local log
    log=$(mktemp)
    # The package lists may be absent or name versions that are gone; only then are they fetched.
    if ! apt_install "${missing[@]}" >"$log" 2>&1; then
        if ! { apt-get -qq update && apt_install "${missing[@]}"; } >"$log" 2>&1; then
            cat "$log" >&2
            rm -f "$log"
            die "apt could not install: ${missing[*]}"
        fi
    fi
    rm -f "$log"
}

# configure FOLDER [CMAKE-ARGUMENT...]: prepares a build in FOLDER, of this checkout unless -S names another source; speaks
# only when it fails.
configure()
{
    local folder=$1 output
    shift
    output=$(cmake -G Ninja -B "$folder" "$@" 2>&1) || die "CMake could not configure $folder:
$output"
}

# compile FOLDER [TARGET...]: builds these targets, or all.
compile()
{
    local folder=$1
    shift
    [ $# -gt 0 ] || set -- all
    cmake --build "$folder" --parallel "$jobs" --target "$@"
}

# build PRESET [CMAKE-ARGUMENT...]: all of build/PRESET.
build()
{
    configure "build/$1" --preset "$@"
    compile "build/$1"
}

# put NAME FILE PAGE: replaces what stands between the page's marks <!-- NAME --> and <!-- end of NAME --> with the file.
put()
{
    awk -v name="$1" -v figures="$2" '
        $0 == "<!-- " name " -->" { print; print ""; while ((getline line < figures) > 0) print line; print ""; skip = 1 }
        $0 == "<!-- end of " name " -->" { skip = 0 }
        !skip' "$3" >"$3.new"
    mv "$3.new" "$3"
    say "Written: $3"
}
