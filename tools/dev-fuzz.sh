#!/bin/bash
# SPDX-License-Identifier: MIT
# lets each fuzzer look for faults: [seconds, 60] [target...], or shows what their inputs reach: coverage [target...]
. "$(dirname "$0")/common.sh"

every_target=(json_text format rows conditions save table_requests table_cells table_definitions)
inputs=build/fuzz-inputs # what earlier runs found worth keeping
finds=build/fuzz-finds   # what made a fuzzer fail

# build_targets PRESET CMAKE-TARGET...
build_targets()
{
    configure "build/$1" --preset "$1"
    compile "build/$1" "${@:2}"
}

# fuzz TARGET SECONDS. A fuzzer may end early because of its -runs; then it starts again with what it has learnt.
fuzz()
{
    local target=$1 seconds=$2
    local log=$finds/$target.log end=$((SECONDS + seconds)) options=() runs=0 run
    case $target in
    # Every input makes a table of its own, whose types the library keeps: the process must not grow for ever, and the
    # check for leaks after each input would search through all of it. It is made at the end.
    rows | save | table_definitions) options+=(-runs=50000 -detect_leaks=0) ;;
    # Nested texts make the sanitizer remember ever more stacks: 2 GB after 150,000 inputs.
    json_text) options+=(-runs=50000) ;;
    esac

    mkdir -p "$inputs/$target" "$finds/$target"
    local seeds=("fuzz/corpus/$target")
    [ ! -d "fuzz/regressions/$target" ] || seeds+=("fuzz/regressions/$target")
    while [ "$SECONDS" -lt "$end" ]; do
        if ! "build/fuzz/fuzz/fuzz_$target" "-max_total_time=$((end - SECONDS))" -max_len=4096 -timeout=20 \
            -print_final_stats=1 "${options[@]}" "-dict=fuzz/dictionaries/$target.dict" \
            "-artifact_prefix=$finds/$target/" "$inputs/$target" "${seeds[@]}" >"$log" 2>&1; then
            tail -60 "$log"
            die "fuzz_$target failed. When the fault is mended, keep the input above in fuzz/regressions/$target/."
        fi
        run=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        runs=$((runs + run))
    done
    say "$target: $runs runs in $seconds s, $(find "$inputs/$target" -type f | wc -l) inputs kept"
}

look_for_faults()
{
    local seconds=$1 target
    shift
    need "${packages_fuzz[@]}"
    build_targets fuzz "${@/#/fuzz_}"
    # Few frames of each allocation: JSON texts nest in so many ways that whole stacks would fill the memory.
    export ASAN_OPTIONS=malloc_context_size=4:quarantine_size_mb=32:detect_stack_use_after_return=1
    export UBSAN_OPTIONS=print_stacktrace=1
    for target in "$@"; do
        fuzz "$target" "$seconds"
    done
}

# Replays the seeds, the regressions and what was found here, and counts what of src/ they run.
show_coverage()
{
    need "${packages_fuzz[@]}" llvm
    local folder=build/fuzz-coverage programs=() target extra
    build_targets fuzz-coverage "${@/#/replay_}"
    rm -f "$folder"/*.profraw
    for target in "$@"; do
        local folders=("fuzz/corpus/$target")
        for extra in "fuzz/regressions/$target" "$inputs/$target"; do
            [ ! -d "$extra" ] || folders+=("$extra")
        done
        LLVM_PROFILE_FILE=$folder/$target.profraw "$folder/fuzz/replay_$target" "${folders[@]}" | tail -1
        llvm-profdata merge -o "$folder/$target.profdata" "$folder/$target.profraw"
        say "== $target"
        report "$target" "$folder/fuzz/replay_$target"
        programs+=(${programs[0]:+-object} "$folder/fuzz/replay_$target")
    done
    llvm-profdata merge -o "$folder/all.profdata" "$folder"/*.profraw
    say "== all of them"
    report all "${programs[@]}"
}

# report NAME PROGRAM [-object PROGRAM...]: the lines and branches of src/ alone.
report()
{
    llvm-cov report "${@:2}" -instr-profile="build/fuzz-coverage/$1.profdata" -show-region-summary=false \
        -ignore-filename-regex='/(fuzz|tests)/'
}

work=(look_for_faults 60)
case ${1:-} in
coverage)
    work=(show_coverage)
    shift
    ;;
[0-9]*)
    work=(look_for_faults "$1")
    shift
    ;;
esac
[ $# -gt 0 ] || set -- "${every_target[@]}"
for target in "$@"; do
    [ -f "fuzz/fuzz_$target.cpp" ] || die "there is no fuzzer '$target', only: ${every_target[*]}"
done

"${work[@]}" "$@"
