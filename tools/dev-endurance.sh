#!/bin/bash
# SPDX-License-Identifier: MIT
# lets processes work for long, kills some, and shows what they hold; before, the table's trials at full size: [--arm] [operations: 1000000, or 50000 with --arm]
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

compile "$folder" test_long_life test_device_life test_table_bulk test_table_upgrade
operations=${1:-$operations}
run_test() { # TEST [FILTER]
    "${run[@]}" "$folder/tests/$1" --gtest_brief=1 --gtest_filter="${2:-*}"
}
VORN_TEST_OPERATIONS=$operations run_test test_long_life
VORN_TEST_OPERATIONS=$operations run_test test_device_life '*/wal'
VORN_TEST_OPERATIONS=$((operations / 10)) run_test test_device_life '*/delete' # waits for its reader all the time
VORN_TEST_ROWS=$operations run_test test_table_bulk '*.HoldsNoMore*'
VORN_TEST_ROWS=$operations run_test test_table_upgrade '*.Costs*'
