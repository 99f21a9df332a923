#!/bin/bash
# SPDX-License-Identifier: MIT
# counts instructions and allocations per record against bench/figures.txt: [--armhf] [--update]
#
# --update stores them there, and the targets that they decide in docs/benchmark.md.
. "$(dirname "$0")/common.sh"
. tools/bench.sh

stored=bench/figures.txt
architecture=$(dpkg --print-architecture)
update=
missed=
for argument in "$@"; do
    case $argument in
    --armhf) architecture=armhf ;;
    --update) update=yes ;;
    *) die "figures: unknown argument $argument" ;;
    esac
done

if [ "$architecture" = "$(dpkg --print-architecture)" ]; then
    need "${packages_figures[@]}"
    bench_build build/figures -DVORNJSONDB_BENCH_PEERS=OFF
    used=$(versions g++-12 libc6 libjsoncpp25 libsqlite3-0 libstdc++6)
    counted=$({
        # the longest first
        printf '%s\n' 'list table 100000' {values,filters}' table '{1000,101} 'members table '{256,16}
        printf '%s kept\n' list page create fetch update delete bulk
        printf '%s table\n' list page create fetch update delete sorted filter count bulk foreach
        printf '%s library\n' list page create fetch update delete
    } | count_works build/figures/bench/bench)
else
    need "${packages_figures[@]}" "${packages_armhf[@]}"
    bench_build_armhf build/arm/figures
    used=$(versions_armhf)
    counted=$(printf '%s 500\n' {list,create}' '{library,table} | count_works_armhf build/arm/figures/bench/bench)
fi
if [ "$architecture" != armhf ]; then
    printf '%s\n' "$counted" >build/figures/counts.txt
    build/figures/bench/bench --targets --counts build/figures/counts.txt | tee build/figures/targets.md || missed=yes
fi
now=$({
    awk -v architecture="$architecture" '{ print architecture, "with", $1, $2 }' <<<"$used"
    awk -v architecture="$architecture" '
        $2 == "library" { print architecture, $1, $3, $4 }
        $2 == "table" { print architecture, "table/" $1, $3, $4 }' <<<"$counted"
} | sort)

if [ -n "$update" ]; then
    others=$(grep -v -e '^#' -e "^$architecture " "$stored" || true)
    {
        cat <<'END'
# What one record costs the library: ARCHITECTURE WORK INSTRUCTIONS ALLOCATIONS, and what it was built and run with. WORK
# begins with table/ where it is vorn::Table that does it; behind an @ stands the size of what its cost grows with.
# Written by ./dev figures --update and ./dev figures --armhf --update, checked by the same without --update.
END
        printf '%s\n' "$others" "$now" | sed '/^$/d' | sort
    } >"$stored.new"
    mv "$stored.new" "$stored"
    [ "$architecture" = armhf ] || put targets build/figures/targets.md docs/benchmark.md
    grep "^$architecture " "$stored"
    exit
fi

# A change of more than 3 % is told; growth is a failure where everything else is as it was when the figures were stored.
awk -v architecture="$architecture" -v missed="$missed" -v room=0.03 '
    $1 != architecture { next }
    $2 == "with" && FNR == NR { with[$3] = $4; next }
    $2 == "with" { if (with[$3] != $4) { changed = 1; print $3 ": " with[$3] " then, " $4 " now" } next }
    FNR == NR { instructions[$2] = $3; allocations[$2] = $4; known[$2] = 1; next }
    !known[$2] { print $2 ": no stored figure"; next }
    {
        seen[$2] = 1
        compare($2, "instructions", instructions[$2], $3)
        compare($2, "allocations", allocations[$2], $4)
    }
    function compare(work, what, then, now)
    {
        change = then > 0 ? now / then - 1 : now > 0
        printf "%-18s %-12s %10s then, %10s now, %+6.1f %%", work, what, then, now, 100 * change
        if (change > room) { grown = 1; print "  GREW" }
        else if (change < -room) { shrunk = 1; print "  shrank" }
        else print ""
    }
    END {
        for (work in known)
            if (!seen[work]) { print work ": not counted"; grown = 1 }
        if (shrunk) print "figures: store what was won with ./dev figures --update"
        if (changed || !length(known)) print "figures: nothing to compare with here, so this is only a report"
        else if (grown) { print "figures: the library does more than it did"; exit 1 }
        else if (missed) { print "figures: vorn::Table misses what it must reach"; exit 1 }
    }' "$stored" - <<<"$now"
