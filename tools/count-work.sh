#!/bin/bash
# SPDX-License-Identifier: MIT
# Counts what one record of one work costs one contestant of the benchmark: PROGRAM WORK CONTESTANT [ROWS [OPTION...]]
#
# ROWS is the size of work that has one, and is then part of the printed name, as it is where the table is large.
# Prints "WORK CONTESTANT INSTRUCTIONS ALLOCATIONS", both per record, with the options joined to the work's name. Two runs
# that differ in the number of operations alone are subtracted, so that everything else falls out. VORN_COUNTER is the
# command that counts, if not callgrind.
set -euo pipefail

program=$1 work=$2 contestant=$3 rows=${4:-1000}
options=("${@:5}")
label=$work
[ "$rows" -lt 100000 ] || label=$work@$rows
case $work in
members | values | filters) fewer=2 more=12 label=$work@$rows ;;
list | bulk | foreach) if [ "$rows" -lt 100000 ]; then fewer=2 more=4; else fewer=1 more=2; fi ;;
page | sorted | filter) fewer=10 more=60 ;;
*) fewer=100 more=400 ;;
esac
read -ra counter <<<"${VORN_COUNTER:-valgrind --tool=callgrind --callgrind-out-file=/dev/null}"

# The same string functions whatever the processor can do.
export GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX,-AVX2,-AVX512F,-AVX512VL,-AVX512BW,-BMI2,-ERMS,-FSRM,-RTM,-SSE4_1,-SSE4_2

# run COUNT: prints "RECORDS ALLOCATIONS INSTRUCTIONS".
run()
{
    local output records allocations instructions
    output=$("${counter[@]}" "$program" --only "$work" "$contestant" --rows "$rows" --count "$1" "${options[@]}" 2>&1) ||
        { printf '%s\n' "$output" >&2 && return 1; }
    read -r _ records _ allocations < <(grep '^records ' <<<"$output")
    instructions=$(sed -n 's/.*Collected *: *\([0-9]*\).*/\1/p' <<<"$output")
    [ -n "$instructions" ] || { printf '%s\n' "$output" >&2 && return 1; }
    printf '%s %s %s\n' "$records" "$allocations" "$instructions"
}

few=$(run "$fewer")
many=$(run "$more")
awk -v work="$label$(printf '%s' "${options[@]}")" -v contestant="$contestant" -v few="$few" -v many="$many" 'BEGIN {
    split(few, a)
    split(many, b)
    records = b[1] - a[1]
    printf "%s %s %.0f %.2f\n", work, contestant, (b[3] - a[3]) / records, (b[2] - a[2]) / records
}'
