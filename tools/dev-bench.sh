#!/bin/bash
# SPDX-License-Identifier: MIT
# measures the library beside hand-written code and other libraries: [--quick] for a first impression
#
# Without --quick it also rewrites the figures in README.md and docs/benchmark.md and its pictures; that takes about 20 minutes of a
# machine that has nothing else to do.
. "$(dirname "$0")/common.sh"
. tools/bench.sh

quick=()
case ${1:-} in
'') ;;
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

contestants=(library table percall kept exec sqlitecpp soci poco raw)
[ ${#quick[@]} -eq 0 ] || contestants=(library table percall kept sqlitecpp)
say "Counting instructions"
works=(list page create fetch update delete)
settings=('')
[ ${#quick[@]} -gt 0 ] || settings+=(--transaction --file '--file --transaction')
for setting in "${settings[@]}"; do
    for work in "${works[@]}"; do
        printf "$work %s 1000${setting:+ $setting}\n" "${contestants[@]}"
    done
done | count_works $program >$data/counts.txt
[ ${#quick[@]} -gt 0 ] || tools/count-work.sh $program list library 100000 | sed 's/^list/list@100000/' >>$data/counts.txt

# when_and_where: date and machine class.
when_and_where()
{
    printf '%s, %s, %s processors, %s' "$(date -u +%F)" "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | sed -n 1p)" \
        "$(nproc)" "$(. /etc/os-release && printf '%s' "$PRETTY_NAME")"
}

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

columns=$(awk -F '\t' 'NR == 1 { print NF }' $data/works.tsv)
gnuplot -e "data='$data/works.tsv'; columns=$columns; picture='docs/benchmark-works.svg'" bench/works.gp
gnuplot -e "folder='$data'; columns=$columns; picture='docs/benchmark-growth.svg'" bench/growth.gp

# in_short: the first table of the page, each cell the ratio of time and that of instructions.
in_short()
{
    printf '%s:\n\n' "$(when_and_where)"
    printf '| | vornjsondb | vorn::Table | hand-written, kept | SQLiteCpp | SOCI | POCO |\n|---|---|---|---|---|---|---|\n'
    awk -F '[\t ]' -v contestants="${contestants[*]}" '
        BEGIN { count = split(contestants, column) }
        FNR == NR { instructions[$1, $2] = $3; next }
        FNR > 1 {
            work = $1
            gsub("\"", "", work)
            rival = work == "list" ? "kept" : "percall"
            printf "| %s |", work
            for (i = 1; i <= count; i++)
                if (column[i] !~ /^(percall|exec|raw)$/)
                    printf " %.2f, %.2f |", $(i + 1), instructions[work, column[i]] / instructions[work, rival]
            printf "\n"
        }' $data/counts.txt $data/works.tsv
}
in_short >$folder/short.md

put figures $folder/report.md docs/benchmark.md
put short $folder/short.md docs/benchmark.md
