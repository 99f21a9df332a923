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
build "$preset"
ctest --preset "$preset" --parallel "$jobs" "$@"
