#!/bin/bash
# SPDX-License-Identifier: MIT
# tests libvornjsondb with SQLCipher in place of SQLite, on databases that are encrypted: [arguments of ctest]
. "$(dirname "$0")/common.sh"

need "${packages_test[@]}" libsqlcipher-dev
configure=(cmake -G Ninja -S . -B build/cipher -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVORNJSONDB_SQLCIPHER=ON
    -DVORNJSONDB_EXAMPLES=OFF -DVORNJSONDB_TEST_PER_CASE=OFF)

say "== libvorntable needs a newer SQLite than SQLCipher's"
if output=$("${configure[@]}" -DVORNJSONDB_TABLE=ON 2>&1); then
    die "libvorntable could be configured with SQLCipher"
fi
sed -n '/libvorntable needs/,/alone\./p' <<<"$output" | grep . || die "$output"

say "== libvornjsondb with SQLCipher"
output=$("${configure[@]}" -DVORNJSONDB_TABLE=OFF 2>&1) || die "$output"
cmake --build build/cipher --parallel "$jobs"
ctest --test-dir build/cipher --output-on-failure --no-tests=error --parallel "$jobs" \
    --exclude-regex '^fuzz_replay\.format$' "$@"
say "Left out, with the reasons: tests/cipher/left_out.txt"
