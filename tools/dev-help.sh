#!/bin/sh
# SPDX-License-Identifier: MIT
# lists these commands
set -eu
echo "./dev COMMAND, where COMMAND is one of"
for script in "$(dirname "$0")"/dev-*.sh; do
    name=${script##*/dev-}
    printf '  %-10s %s\n' "${name%.sh}" "$(sed -n '3s/^# //p' "$script")"
done
