#!/bin/bash
# SPDX-License-Identifier: MIT
# runs ./dev demo and ./dev test twice in a new, bare Debian 12: [commands instead of those two]
. "$(dirname "$0")/common.sh"

[ "$(id -u)" -eq 0 ] || die "making a new system needs root"
need "${packages_fresh[@]}"
commands=("$@")
[ $# -gt 0 ] || commands=(demo test)

release=bookworm
root=$(mktemp -d "${TMPDIR:-/tmp}/vornjsondb-fresh.XXXXXX")
# Nothing is ever mounted below it here: see inside().
trap 'rm -rf --one-file-system "$root"' EXIT

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
        mount --bind /dev "$root/dev"
        mount -t proc proc "$root/proc"
        exec env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin \
            ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
            chroot "$root" "$@"' inside "$root" "$@"
}

# run COMMAND: ./dev COMMAND in the new system's checkout, with the time that it took.
run()
{
    say "== bare Debian, ./dev $1"
    SECONDS=0
    inside /bin/sh -c "cd /checkout && exec ./dev $1"
    say "== ./dev $1 took $SECONDS s"
}

sources=$(debian_sources)
mirror=$(sed -nE "s/^([^ ]+) $release main\$/\1/p" <<<"$sources" | head -n 1)
[ -n "$mirror" ] || die "apt's sources name no Debian archive to make a new system from"

say "== making a bare Debian 12 in $root"
proxy=''
eval "$(apt-config shell proxy Acquire::http::Proxy)"
if ! http_proxy=${proxy:-${http_proxy:-}} debootstrap --variant=minbase "$release" "$root" "$mirror" \
    >"$root.log" 2>&1; then
    tail -n 20 "$root.log" >&2
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

# Only what is kept in version control; in an unpacked source archive that is everything.
mkdir "$root/checkout"
{ git ls-files -z 2>/dev/null || find . -path ./build -prune -o -type f -print0; } |
    tar --create --null --files-from=- | tar --extract --no-same-owner --directory="$root/checkout"
for tool in git cmake c++ make python3; do
    ! inside /bin/sh -c "command -v $tool" >/dev/null || die "the new system is not bare: it has $tool"
done

for command in "${commands[@]}"; do
    run "$command"
done

packages=$(inside dpkg-query -W)
for command in "${commands[@]}"; do
    run "$command"
done
[ "$(inside dpkg-query -W)" = "$packages" ] || die "the second runs have changed the installed packages"
say "== the second runs installed nothing"
