#!/bin/bash
# SPDX-License-Identifier: MIT
# builds everything and runs the tests: [--sanitize] [arguments of ctest]
. "$(dirname "$0")/common.sh"

preset=dev
if [ "${1:-}" = --sanitize ]; then
    preset=sanitize
    shift
fi

need "${packages_test[@]}"
# Where changes are judged a warning is an error from the first build on, so that ./dev lint has it already.
build "$preset" ${CI:+-DVORNJSONDB_WERROR=ON}
ctest --preset "$preset" --parallel "$jobs" "$@"
