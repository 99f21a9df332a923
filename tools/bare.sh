# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# A new, bare Debian to try things in, for the commands that need one. Sourced after common.sh, by root.

release=${VORN_DEBIAN:-bookworm}

# debian_sources: "URI SUITE COMPONENT" for each of this machine's own sources of Debian packages.
debian_sources()
{
    local host_release
    host_release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # the names are apt's
    apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' | sort -u |
        sed -nE "s/^([^ ]+) $host_release((-updates|-security)? [^ ]+)\$/\1 $release\2/p"
}

# inside COMMAND...: runs it as root of the new system. The mounts live in a namespace that ends with the command,
# however that ends.
inside()
{
    # shellcheck disable=SC2016 # expanded by the inner shell
    unshare --mount --pid --fork --kill-child bash -euc '
        root=$1
        shift
        # Devices of its own: what packages do to those of this machine would stay done.
        mount -t tmpfs -o mode=755 tmpfs "$root/dev"
        while read -r name minor; do
            mknod -m 666 "$root/dev/$name" c 1 "$minor"
        done <<<"null 3
zero 5
full 7
random 8
urandom 9"
        ln -s /proc/self/fd "$root/dev/fd"
        ln -s fd/0 "$root/dev/stdin"
        ln -s fd/1 "$root/dev/stdout"
        ln -s fd/2 "$root/dev/stderr"
        mkdir -m 1777 "$root/dev/shm"
        mkdir "$root/dev/pts"
        mount -t devpts -o newinstance,ptmxmode=666,mode=620,gid=5 devpts "$root/dev/pts"
        ln -s pts/ptmx "$root/dev/ptmx"
        mount -t proc proc "$root/proc"
        exec env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
            ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
            chroot "$root" "$@"' inside "$root" "$@"
}

# bare_make: makes the system in the folder $root, which is removed when the script ends.
bare_make()
{
    need "${packages_fresh[@]}"
    root=$(mktemp -d "${TMPDIR:-/tmp}/vornjsondb-fresh.XXXXXX")
    # Nothing is ever mounted below it here: see inside().
    trap 'rm -rf --one-file-system "$root"' EXIT

    local sources mirror proxy='' uri suite component
    sources=$(debian_sources)
    mirror=$(sed -nE "s/^([^ ]+) $release main\$/\1/p" <<<"$sources" | sed -n 1p)
    [ -n "$mirror" ] || die "apt's sources name no Debian archive to make a new system from"

    say "== making a bare Debian ($release) in $root"
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    # In a namespace of its own, because it mounts /proc in the new system and, where it fails, leaves it mounted.
    if ! http_proxy=${proxy:-${http_proxy:-}} unshare --mount \
        debootstrap --variant=minbase "$release" "$root" "$mirror" >"$root.log" 2>&1; then
        tail -n 3 "$root.log" >&2
        tail -n 20 "$root/debootstrap/debootstrap.log" >&2 || true
        rm -f "$root.log"
        die "debootstrap failed"
    fi
    rm -f "$root.log"

    # The new system gets its packages the way in which this machine gets its own.
    while read -r uri suite component; do
        say "deb $uri $suite $component"
    done <<<"$sources" >"$root/etc/apt/sources.list"
    apt-config dump | grep -E '^Acquire::(http|https|Check-Valid-Until|Check-Date|Retries)\b' \
        >"$root/etc/apt/apt.conf.d/90host" || true
    cp /etc/hosts "$root/etc/hosts"
}
