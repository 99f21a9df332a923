#!/bin/bash
# SPDX-License-Identifier: MIT
# runs ./dev demo and ./dev test twice in a new, bare Debian 12, or another with VORN_DEBIAN=trixie: [commands instead of those two]
. "$(dirname "$0")/common.sh"
. tools/bare.sh

[ "$(id -u)" -eq 0 ] || die "making a new system needs root"
commands=("$@")
[ $# -gt 0 ] || commands=(demo test)

# run COMMAND: ./dev COMMAND in the new system's checkout, with the time that it took.
run()
{
    say "== bare Debian, ./dev $1"
    SECONDS=0
    inside /bin/sh -c "cd /src && exec ./dev $1"
    say "== ./dev $1 took $SECONDS s"
}

bare_make

# Only what is kept in version control; in an unpacked source archive that is everything.
# A place of few letters, which other texts hold too: no check may take them for it.
mkdir "$root/src"
{ git ls-files -z 2>/dev/null || find . -path ./build -prune -o -type f -print0; } |
    tar --create --null --files-from=- | tar --extract --no-same-owner --directory="$root/src"
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
