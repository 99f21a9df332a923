# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# What is needed to build for 32-bit ARM on another machine, for the commands that do. Sourced after common.sh.

. tools/apt.sh

packages_armhf=(cmake g++-arm-linux-gnueabihf googletest ninja-build qemu-user-static)
armhf_sysroot=$PWD/build/arm/sysroot
armhf_apt_state=$PWD/build/arm/apt

# armhf_apt COMMAND...: runs an apt-get command for armhf packages. The machine's dpkg is not told of the architecture:
# the -dev packages of two architectures cannot be installed side by side, and an added one changes every later run.
armhf_apt()
{
    private_apt "$armhf_apt_state" apt-get -o APT::Architecture=armhf -o APT::Architectures=armhf "$@"
}

# armhf_unpack FOLDER PACKAGE...: unpacks the armhf packages into FOLDER without installing them.
armhf_unpack()
{
    local folder=$1 packages=$PWD/build/arm/packages package
    shift
    mkdir -p "$packages" "$folder"
    # One list that cannot be fetched, say that of a lagging mirror, is no harm while the packages are found in others.
    [ -d "$armhf_apt_state" ] || armhf_apt update 2>"$packages/update.log" || true
    for package in "$@"; do
        compgen -G "$packages/${package}_*.deb" >/dev/null || (cd "$packages" && armhf_apt download "$package") ||
            die "there is no armhf package $package; apt-get update said: $(cat "$packages/update.log")"
        dpkg -x "$packages/${package}"_*.deb "$folder"
    done
}

# armhf_prepare: fills the sysroot with the target's SQLite, JsonCpp, GoogleTest and what the program needs, once.
armhf_prepare()
{
    local done=$armhf_sysroot/complete
    [ ! -f "$done" ] || [ ! -f "$armhf_sysroot/usr/include/csv.h" ] || return 0
    say "Preparing $armhf_sysroot"
    rm -rf build/arm/sysroot build/arm/apt build/arm/packages
    armhf_unpack "$armhf_sysroot" libsqlite3-0 libsqlite3-dev libjsoncpp25 libjsoncpp-dev \
        libcli11-dev libcsv3 libcsv-dev libsmartcols1 libsmartcols-dev

    armhf_configure build/arm/googletest -S /usr/src/googletest -DCMAKE_BUILD_TYPE=Release -DBUILD_GMOCK=OFF \
        -DCMAKE_INSTALL_PREFIX="$armhf_sysroot/usr"
    compile build/arm/googletest
    cmake --install build/arm/googletest >/dev/null
    : >"$done"
}

# armhf_configure FOLDER [CMAKE-ARGUMENT...]: like configure, for armhf.
armhf_configure()
{
    configure "$@" -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/armhf.toolchain.cmake"
}

# armhf_dpkg FOLDER: unpacks the libraries that ours needs into FOLDER and describes them to dpkg in FOLDER/db, from
# which DPKG_ADMINDIR lets it work out what a package for armhf depends on.
armhf_dpkg()
{
    local folder=$1 package deb part
    local packages=(libc6 libcsv3 libgcc-s1 libjsoncpp25 libsmartcols1 libsqlite3-0 libstdc++6)
    armhf_unpack "$folder" "${packages[@]}"
    mkdir -p "$folder/db/info" "$folder/db/updates"
    printf '%s\n' amd64 armhf >"$folder/db/arch"
    echo 1 >"$folder/db/info/format"
    for package in "${packages[@]}"; do
        deb=$(echo build/arm/packages/"${package}"_*.deb)
        dpkg-deb --field "$deb" | sed '1a Status: install ok installed'
        echo
        for part in symbols shlibs; do
            dpkg-deb --info "$deb" "$part" >"$folder/db/info/$package:armhf.$part" 2>/dev/null ||
                rm "$folder/db/info/$package:armhf.$part"
        done
        dpkg-deb --fsys-tarfile "$deb" | tar --list | sed -e "s|^\.|$folder|" -e 's|/$||' \
            >"$folder/db/info/$package:armhf.list"
    done >"$folder/db/status"
}
