#!/bin/bash
# SPDX-License-Identifier: MIT
# measures both libraries beside hand-written code and other libraries: [--quick|--count|--counted]
#
# Without an argument it rewrites the figures in docs/benchmark.md and its pictures. --count counts instructions only, which may be
# done on a busy machine; --counted takes these counts and only measures time, about 10 minutes of a machine that has nothing
# else to do. --quick is for a first impression and rewrites nothing.
. "$(dirname "$0")/common.sh"
. tools/bench.sh

quick=()
mode=${1:-}
case $mode in
'' | --count | --counted) ;;
--quick) quick=(--quick) ;;
*) die "bench: unknown argument $1" ;;
esac

need "${packages_bench[@]}"
folder=build/bench
bench_build $folder
program=$folder/bench/bench
data=$folder/data
mkdir -p $data
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# What is counted, in lines for count_works.
works=(list page create fetch update delete)
to_count()
{
    local work setting
    if [ ${#quick[@]} -gt 0 ]; then
        printf '%s\n' {list,page,create,fetch,update,delete}' '{library,table,percall,kept,sqlitecpp}
        return
    fi
    printf '%s\n' 'list library 100000'
    for work in "${works[@]}"; do
        for setting in '' --transaction --file '--file --transaction'; do
            printf "$work %s 1000${setting:+ $setting}\n" library table percall kept sqlitecpp soci poco
        done
        printf "$work %s\n" exec raw
    done
    printf '%s\n' {create,fetch,update,delete}' '{sqlitecpp,soci,poco}-kept \
        {sorted,filter,count,bulk,foreach}' '{table,percall,kept,sqlitecpp,soci} {sorted,filter,count,bulk}' poco'
}

if [ "$mode" != --counted ]; then
    say "Counting instructions"
    to_count | count_works $program >$data/counts.txt
fi
# when_and_where: date and machine class.
when_and_where()
{
    printf '%s, %s, %s processors, %s' "$(date -u +%F)" "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | sed -n 1p)" \
        "$(nproc)" "$(. /etc/os-release && printf '%s' "$PRETTY_NAME")"
}

# picture DATA COLOURS WHAT RIVAL PICTURE: bars of one room; the colours are numbers of bench/style.gp.
picture()
{
    gnuplot -e "data='$data/$1'; columns=$(awk -F '\t' 'NR == 1 { print NF }' "$data/$1"); colours='$2'; what='$3'; rival='$4'" \
        -e "picture='docs/$5'" bench/works.gp
}

# counted_table: the room of vorn::Table, each cell the ratio of instructions to hand-written code with kept statements. As a
# table of the page, and as data for the picture.
counted_table()
{
    awk -v data=$data/counted.tsv '
        BEGIN {
            count = split("table percall sqlitecpp sqlitecpp-kept soci soci-kept poco poco-kept", column)
            printf "\"work\"\t\"vorn::Table\"\t\"hand-written, prepared per call\"\t\"SQLiteCpp\"\t\"SQLiteCpp, kept\"" >data
            printf "\t\"SOCI\"\t\"SOCI, kept\"\t\"POCO\"\t\"POCO, kept\"\n" >data
            print "| | instructions | vorn::Table | prepared per call | SQLiteCpp | kept | SOCI | kept | POCO | kept |"
            print "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|"
        }
        { instructions[$1, $2] = $3 }
        END {
            works = split("list page create fetch update delete sorted filter count bulk foreach", work)
            for (w = 1; w <= works; w++) {
                kept = instructions[work[w], "kept"]
                printf "| %s | %d |", work[w], kept
                printf "\"%s\"", work[w] >data
                for (i = 1; i <= count; i++) {
                    own = instructions[work[w], column[i]]
                    printf own ? " %.2f |" : " |", own / kept
                    printf own ? "\t%.3f" : "\tnan", own / kept >data
                }
                printf "\n"
                printf "\n" >data
            }
        }' $data/counts.txt
}
if [ ${#quick[@]} -eq 0 ]; then
    counted_table >$folder/counted.md
    put counted $folder/counted.md docs/benchmark.md
    picture counted.tsv '2 3 6 10 7 11 8 12' 'Instructions' 'kept statements' benchmark-table.svg
fi
[ "$mode" != --count ] || exit 0

# machine: one line on what the figures were measured with.
machine()
{
    when_and_where
    versions g++-12 libc6 libsqlite3-0 libjsoncpp25 libsqlitecpp-dev libsoci-dev libpoco-dev valgrind |
        awk '{ printf ", %s %s", $1, $2 }'
    printf '; the library at commit %s%s.\n' "$(git rev-parse --short HEAD)" \
        "$(git diff --quiet HEAD -- src include bench || printf ' with changes')"
}

# since_the_first_version: what has been won, from the stored figures.
since_the_first_version()
{
    printf '### Instructions per record: first version, now, hand-written\n\n'
    printf '| %-14s | %13s | %7s | %6s | %12s | %6s |\n' "machine, work" "first version" now ratio hand-written ratio
    printf '|----------------|--------------:|--------:|-------:|-------------:|-------:|\n'
    awk '/^#/ || $2 == "with" { next }
        FNR == NR { now[$1 " " $2] = $3; next }
        { n = now[$1 " " $2]
          printf "| %-14s | %13d | %7d | %6.2f | %12d | %6.2f |\n", $1 ", " $2, $3, n, n / $3, $4, n / $4 }' \
        bench/figures.txt bench/first-version.txt
    printf '\n'
}

{
    printf '%s\n\n' "$(machine)"
    since_the_first_version
    $program "${quick[@]}" --counts $data/counts.txt --data $data
} | tee $folder/report.md
[ ${#quick[@]} -eq 0 ] || exit 0

picture works.tsv '1 3 4 5 6 7 8 9' 'CPU time' 'statements prepared per call' benchmark-works.svg
columns=$(awk -F '\t' 'NR == 1 { print NF }' $data/growth-rows.tsv)
gnuplot -e "folder='$data'; columns=$columns; picture='docs/benchmark-growth.svg'" bench/growth.gp

# in_short DATA CONTESTANT...: a table of one room. The contestants are those of the data's columns; one with a minus in front is left
# out. Of the contract class, whose six works are those of the data, each cell is the ratio of time and that of instructions.
in_short()
{
    awk -F '[\t ]' -v contestants="${*:2}" '
        BEGIN { count = split(contestants, column) }
        FNR == NR { instructions[$1, $2] = $3; next }
        FNR > 1 {
            work = $1
            gsub("\"", "", work)
            rival = work == "list" ? "kept" : "percall"
            printf "| %s |", work
            for (i = 1; i <= count; i++) {
                if (column[i] ~ /^-/)
                    continue
                if ($(i + 1) ~ /nan/)
                    printf " |"
                else if (column[1] == "library")
                    printf " %.2f, %.2f |", $(i + 1), instructions[work, column[i]] / instructions[work, rival]
                else
                    printf " %.2f |", $(i + 1)
            }
            printf "\n"
        }' $data/counts.txt "$data/$1"
}
{
    printf '%s:\n\n' "$(when_and_where)"
    printf '| | vornjsondb | hand-written, kept | SQLiteCpp | SOCI | POCO |\n|---|---|---|---|---|---|\n'
    in_short works.tsv library -percall kept -exec sqlitecpp soci poco -raw
} >$folder/short.md
{
    printf '%s:\n\n' "$(when_and_where)"
    printf '| | vorn::Table | SQLiteCpp | kept | SOCI | kept | POCO | kept |\n|---|---:|---:|---:|---:|---:|---:|---:|\n'
    in_short table.tsv table -kept sqlitecpp sqlitecpp-kept soci soci-kept poco poco-kept
} >$folder/short-table.md

put figures $folder/report.md docs/benchmark.md
put short $folder/short.md docs/benchmark.md
put short-table $folder/short-table.md docs/benchmark.md
