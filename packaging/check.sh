#!/bin/bash
# SPDX-License-Identifier: MIT
#
# Checks the recipes beside this file against the project, as far as that goes without Buildroot and Yocto: the version,
# the licence, the options and the variables. What only their own tools can tell is left open: whether the recipes build
# there, and with which of their releases.
#   check.sh BUILD    BUILD: a folder that CMake has configured
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
mk=packaging/buildroot/vornjsondb/vornjsondb.mk
bb=(packaging/yocto/vornjsondb_*.bb)

fail()
{
    printf '%s\n' "$*" >&2
    exit 1
}

# same WHAT EXPECTED FOUND
same() { [ "$2" = "$3" ] || fail "$1: '$2' is expected, '$3' was found"; }

# buildroot VARIABLE: its value, as make reads it with a package infrastructure that does nothing.
buildroot()
{
    # shellcheck disable=SC2016 # expanded by make
    make -s BR2_PACKAGE_VORNJSONDB_CONTRACT=y -f <(printf 'cmake-package =\ninclude %s\nall: ; @echo "$(%s)"\n' "$mk" "$1")
}

# yocto VARIABLE: its value, as it stands.
yocto() { sed -nE "/\\\\\$/{N;s/\\\\\n//};s/^$1 *\??= *\"(.*)\"\$/\1/p" "${bb[0]}"; }

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
same "version in Buildroot" "$version" "$(buildroot VORNJSONDB_VERSION)"
same "recipe for Yocto" "packaging/yocto/vornjsondb_$version.bb" "${bb[*]}"
same "version in Debian" "$version" "$(sed -nE '1s/^vornjsondb \((.*)-[0-9]+\) .*/\1/p' packaging/debian/changelog)"

read -r licence_sha256 _ < <(sha256sum LICENSE)
read -r licence_md5 _ < <(md5sum LICENSE)
same "LICENSE in Buildroot" "sha256  $licence_sha256  LICENSE" "$(grep LICENSE packaging/buildroot/vornjsondb/vornjsondb.hash)"
same "LICENSE in Yocto" "file://LICENSE;md5=$licence_md5" "$(yocto LIC_FILES_CHKSUM)"
same "licence in Buildroot" "MIT LICENSE" "$(buildroot VORNJSONDB_LICENSE) $(buildroot VORNJSONDB_LICENSE_FILES)"
same "licence in Yocto" MIT "$(yocto LICENSE)"

same "dependencies in Buildroot" "jsoncpp sqlite" "$(buildroot VORNJSONDB_DEPENDENCIES)"
same "dependencies in Yocto" "jsoncpp sqlite3" "$(yocto DEPENDS)"
same "staging in Buildroot" YES "$(buildroot VORNJSONDB_INSTALL_STAGING)"
for variable in SUMMARY DESCRIPTION SECTION SRC_URI; do
    [ -n "$(yocto "$variable")" ] || fail "${bb[0]} has no $variable"
done
grep -qx 'inherit cmake' "${bb[0]}" || fail "${bb[0]} does not inherit cmake"

options=$(buildroot VORNJSONDB_CONF_OPTS)
[[ $options == *-DVORNJSONDB_CONTRACT=ON*-DVORNJSONDB_TABLE=OFF* ]] || fail "Buildroot chooses the libraries: $options"

# An option that CMake does not know is ignored without a word.
for option in $options $(grep -ohE -- '-D[A-Z]+_[A-Z_]+' "${bb[0]}" packaging/debian/rules); do
    name=${option%%=*}
    grep -q "^${name#-D}:BOOL=" "$build/CMakeCache.txt" || fail "there is no option ${name#-D}"
done

# Debian's own, which sees Debian's packages.
/usr/bin/python3 packaging/check_config.py packaging/buildroot/vornjsondb/Config.in
