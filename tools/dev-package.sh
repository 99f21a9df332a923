#!/bin/bash
# SPDX-License-Identifier: MIT
# makes and tries the source archive and Debian packages (amd64, armhf); checks the Buildroot and Yocto recipes
. "$(dirname "$0")/common.sh"
. tools/armhf.sh
. tools/bare.sh

[ "$(id -u)" -eq 0 ] || die "trying packages in a new system needs root"
need "${packages_test[@]}" "${packages_armhf[@]}" debhelper dpkg-dev fakeroot lintian make python3-kconfiglib
armhf_prepare

version=$(sed -nE 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
name=vornjsondb-$version
revision=$(sed -nE '1s/^vornjsondb \((.*)\) .*/\1/p' packaging/debian/changelog)
out=$PWD/build/package
rm -rf "$out"
mkdir -p "$out"

say "== source archive"
archive=$out/$name.tar.gz
if git rev-parse --verify -q HEAD >/dev/null; then
    [ -z "$(git status --porcelain)" ] || say "Changes that are not committed are left out."
    git archive --prefix="$name/" HEAD | gzip -9n >"$archive"
else # itself unpacked from an archive
    tar --create --exclude=./build --sort=name --owner=0 --group=0 --numeric-owner --transform="s|^\.|$name|" . |
        gzip -9n >"$archive"
fi
sha256=$(sha256sum "$archive" | cut -d ' ' -f 1)

# debian_packages ARCHITECTURE [ARGUMENT OF dpkg-buildpackage...]: builds from what the archive holds, and nothing else.
debian_packages()
{
    local folder=$out/$1 log=$out/$1.log
    say "== Debian packages for $1"
    shift
    mkdir -p "$folder"
    cp "$archive" "$folder/vornjsondb_$version.orig.tar.gz"
    tar --extract --file="$archive" --directory="$folder"
    cp -r "$folder/$name/packaging/debian" "$folder/$name/debian"
    if ! (cd "$folder/$name" && dpkg-buildpackage -us -uc "$@") >"$log" 2>&1; then
        tail -n 50 "$log" >&2
        die "the packages could not be built, see $log"
    fi
    lintian --allow-root --fail-on error "$folder"/*.changes
}

# Options of the caller, such as nocheck, hold as well.
DEB_BUILD_OPTIONS="parallel=$jobs ${DEB_BUILD_OPTIONS:-}" debian_packages amd64
armhf_dpkg "$out/dpkg"
DEB_BUILD_OPTIONS="parallel=$jobs nocheck" CMAKE_TOOLCHAIN_FILE=$PWD/cmake/armhf.toolchain.cmake \
    DPKG_ADMINDIR=$out/dpkg/db LD_LIBRARY_PATH=$out/dpkg/lib/arm-linux-gnueabihf:$out/dpkg/usr/lib/arm-linux-gnueabihf \
    debian_packages armhf --build=binary --host-arch=armhf --build-profiles=cross,nocheck --no-check-builddeps
contract=libvornjsondb7_${revision}_
table=libvorntable0_${revision}_
development=libvornjsondb-dev_${revision}_
tools=vornjsondb-tools_${revision}_

say "== the packages for armhf, unpacked"
unpacked=$out/unpacked
for package in "$contract" "$table" "$development" "$tools"; do
    dpkg -x "$out/armhf/${package}armhf.deb" "$unpacked"
done
libraries=usr/lib/arm-linux-gnueabihf

# armhf_host LIBRARY FILE SOURCE...: builds a host with what was unpacked and runs it.
armhf_host()
{
    local library=$1 file=$2
    shift 2
    [[ $(readelf -h "$unpacked/$libraries/$file") =~ Machine:\ +ARM.*hard-float ]] ||
        die "the package for armhf holds something else"
    arm-linux-gnueabihf-g++ -std=c++17 -Wno-psabi "$@" -o "$out/$library-host-armhf" -isystem "$unpacked/usr/include" \
        -isystem "$armhf_sysroot/usr/include" -isystem "$armhf_sysroot/usr/include/jsoncpp" \
        -L"$unpacked/$libraries" -L"$armhf_sysroot/$libraries" "-l$library" -ljsoncpp -lsqlite3
    LD_LIBRARY_PATH=$unpacked/$libraries:$armhf_sysroot/$libraries \
        qemu-arm-static -L /usr/arm-linux-gnueabihf "$out/$library-host-armhf"
}
hosts=tests/package/consumer
armhf_host vornjsondb libvornjsondb.so.7 $hosts/contract.cpp tests/package/hosts/flags.cpp
armhf_host vorntable libvorntable.so.0 $hosts/table.cpp
say "Hosts run with them."
LD_LIBRARY_PATH=$unpacked/$libraries:$armhf_sysroot/$libraries \
    qemu-arm-static -L /usr/arm-linux-gnueabihf "$unpacked/usr/bin/vornjsondb" --version

say "== recipes"
packaging/check.sh "$(echo "$out/amd64/$name"/obj-*)"
cp -r packaging/buildroot packaging/yocto "$out"
echo "sha256  $sha256  $name.tar.gz" >>"$out/buildroot/vornjsondb/vornjsondb.hash"
sed -i "s/@sha256@/$sha256/" "$out/yocto/vornjsondb_$version.bb"
# As both of them build and stage it, with the options that they give.
mapfile -t options < <(make -s BR2_PACKAGE_VORNJSONDB_CONTRACT=y BR2_PACKAGE_VORNJSONDB_TABLE=y -f <(printf '%s\n' 'cmake-package =' 'include packaging/buildroot/vornjsondb/vornjsondb.mk' \
    "all: ; @printf '%s\\n' \$(VORNJSONDB_CONF_OPTS)"))
armhf_configure "$out/recipe" -S "$out/armhf/$name" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr "${options[@]}"
compile "$out/recipe" >/dev/null
DESTDIR=$out/staging cmake --install "$out/recipe" >/dev/null
for file in include/VornJsonDbApi.h include/vorn/table.h lib/cmake/vornjsondb/vornjsondb-config.cmake \
    lib/pkgconfig/vornjsondb.pc lib/pkgconfig/vorntable.pc; do
    [ -f "$out/staging/usr/$file" ] || die "the recipes would not stage $file"
done
say "Checked without Buildroot and Yocto: what only they can tell is open."

say "== in a bare Debian"
bare_make
inside apt-get -qq update
mkdir "$root/packages"
cp "$out/amd64/$contract"amd64.deb "$out/amd64/$table"amd64.deb "$out/amd64/$development"amd64.deb \
    "$out/amd64/$tools"amd64.deb "$hosts/contract.cpp" "$hosts/table.cpp" "$root/packages"

# apt COMMAND PACKAGE...
apt()
{
    inside env DEBIAN_FRONTEND=noninteractive apt-get -qq -y -o Dpkg::Use-Pty=0 --no-install-recommends "$@" \
        >"$out/bare.log" 2>&1 || die "$(cat "$out/bare.log")"
}
apt install "/packages/${contract}amd64.deb" "/packages/${table}amd64.deb" "/packages/${development}amd64.deb" \
    g++ pkgconf
# shellcheck disable=SC2016 # expanded inside
inside sh -euc 'cd /packages
    for host in contract:vornjsondb-quiet table:vorntable; do
        g++ -std=c++17 "${host%:*}.cpp" -o "${host%:*}" $(pkg-config --cflags --libs "${host#*:}")
        "./${host%:*}"
    done'
say "A host of each library is built and runs."
apt install "/packages/${tools}amd64.deb"
inside vornjsondb --version
say "The program runs."
apt purge libvornjsondb-dev vornjsondb-tools
inside /packages/contract
inside /packages/table
say "They run with the libraries alone."
apt purge libvornjsondb7
inside /packages/table
! inside /packages/contract 2>/dev/null || die "a host runs without its library, so nothing was tried"
say "That of libvorntable runs without the other library."
apt purge libvorntable0
! inside /packages/table 2>/dev/null || die "a host runs without its library, so nothing was tried"
left=$(find "$root" -xdev \( -iname '*vornjsondb*' -o -iname '*vorntable*' -o -path '*/include/vorn*' \) \
    -not -path "$root/packages/*" -not -path "$root")
[ -z "$left" ] || die "removing leaves: $left"
say "Removing leaves nothing."

say "== made in $out"
(cd "$out" && stat --format '%s %n' "$name.tar.gz" amd64/*.deb armhf/*.deb)
