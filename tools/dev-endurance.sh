#!/bin/bash
# SPDX-License-Identifier: MIT
# lets one process work for long and shows what it holds; before, the table's trials at full size: [--arm] [operations: 1000000, or 50000 with --arm]
. "$(dirname "$0")/common.sh"

arm=
if [ "${1:-}" = --arm ]; then
    arm=yes
    shift
fi

if [ -n "$arm" ]; then
    . tools/armhf.sh
    need "${packages_armhf[@]}"
    armhf_prepare
    folder=build/arm/plain
    armhf_configure "$folder" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVORNJSONDB_WERROR=ON
    run=(qemu-arm-static -L /usr/arm-linux-gnueabihf)
    operations=50000
else
    need "${packages_test[@]}"
    folder=build/dev
    configure "$folder" --preset dev
    run=()
    operations=1000000
    trials=(contention corrupt kills)
    compile "$folder" "${trials[@]/#/test_table_}"
    for trial in "${trials[@]}"; do
        say "== test_table_$trial"
        VORN_TEST_WHOLE=1 "$folder/tests/test_table_$trial" --gtest_brief=1
    done
fi

compile "$folder" test_long_life
VORN_TEST_OPERATIONS=${1:-$operations} "${run[@]}" "$folder/tests/test_long_life" --gtest_brief=1
