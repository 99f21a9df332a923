#!/bin/bash
# SPDX-License-Identifier: MIT
# builds the program vornjsondb and shows it on ISO 3166-1, 3166-2 and 639-3, beside sqlite3's import: [records, 1000000]
. "$(dirname "$0")/common.sh"

records=${1:-1000000}
need "${packages_demo[@]}" "${packages_cli[@]}" jq sqlite3 time
build demo -DVORNJSONDB_CLI=ON
PATH=$PWD/build/demo/src/cli:$PATH
rm -rf build/cli-demo
mkdir -p build/cli-demo
cd build/cli-demo

# run ARGUMENT...: shows the command and what it writes.
run()
{
    say "\$ vornjsondb $*"
    vornjsondb "$@"
}

for standard in 3166-1 3166-2 639-3; do
    source=/usr/share/iso-codes/json/iso_$standard.json
    say "== ISO $standard"
    export VORNJSONDB_DB=$standard.db VORNJSONDB_DEF=definition.json
    key=alpha_3
    [ $standard != 3166-2 ] || key=code
    run --table "$standard" init "$source" --output guessed.json 2>init.log
    sed 's/^/    /' init.log
    # Of what could be the key one is; the longest names have no column yet, so that there is something to upgrade.
    jq --arg key $key '.[].member[$key].key = true' guessed.json >"$VORNJSONDB_DEF"
    jq 'del(.[].member.name)' "$VORNJSONDB_DEF" >before.json
    run --def before.json upgrade
    run upgrade
    run import "$source"
    run count
    run list --limit 3 --sort "$key" --format table
    run list name.like=%land% --sort -name --limit 2
    run check >/dev/null
    for format in json jsonl csv; do
        run export --sort "$key" --format $format --output "$standard.$format"
        vornjsondb --db "$standard-$format.db" import "$standard.$format" >/dev/null
        # The records in the order of their keys, members in the order of their names.
        vornjsondb --db "$standard-$format.db" export --sort "$key" | jq -cS . >stored.jsonl
        jq -cS --arg key $key '.[] | sort_by(.[$key])[]' "$source" | cmp - stored.jsonl ||
            die "what was exported as $format is not what the source holds"
    done
    say "All three exports hold what the source holds."
done

say "== $records records of CSV, beside sqlite3"
awk -v n="$records" 'BEGIN {
    print "id,name,age,score,active,city"
    for (i = 1; i <= n; i++) printf "%d,\"Name %d, the %dth\",%d,%.3f,%d,City%d\n", i, i, i, i % 100, i / 7, i % 2, i % 1000
}' >many.csv
cat >many.json <<'END'
{"people": {"member": {"id": {"cpptype": "int", "key": true}, "name": {"cpptype": "string"}, "age": {"cpptype": "int"},
 "score": {"cpptype": "double"}, "active": {"cpptype": "int"}, "city": {"cpptype": "string"}}}}
END
table='CREATE TABLE people(id INTEGER PRIMARY KEY, name TEXT, age INTEGER, score REAL, active INTEGER, city TEXT)'
# measure NAME COMMAND...: seconds of processor time and KiB of memory, in turns because a machine is not always as fast.
measure()
{
    /usr/bin/time -a -o "$1.time" -f '%U %S %M' "${@:2}" >/dev/null
}
for _ in 1 2 3; do
    rm -f ours.db theirs.db
    measure vornjsondb vornjsondb --db ours.db --def many.json import many.csv
    measure sqlite3 sqlite3 theirs.db "$table" '.import --csv --skip 1 many.csv people'
done
columns='SELECT id, name, age, score, active, city FROM people ORDER BY id'
cmp <(sqlite3 ours.db "$columns") <(sqlite3 theirs.db "$columns") || die "the tables differ"
head -n "$((records / 10 + 1))" many.csv >tenth.csv
rm -f ours.db
measure tenth vornjsondb --db ours.db --def many.json import tenth.csv
awk -v records="$records" '
    FNR == 1 { ++file }
    { cpu = $1 + $2; if (!(file in best) || cpu < best[file]) best[file] = cpu; if ($3 > memory[file]) memory[file] = $3 }
    END {
        printf "vornjsondb: %.2f s of processor time, %d KiB; with a tenth of the records %d KiB\n", best[1], memory[1], memory[3]
        printf "sqlite3:    %.2f s of processor time, %d KiB\n", best[2], memory[2]
        printf "speed of vornjsondb beside sqlite3: %.2f (at least 0.5 is wanted)\n", best[2] / best[1]
        if (records >= 100000 && best[2] / best[1] < 0.5) { print "too slow"; exit 1 }
        if (records >= 1000000 && memory[1] > memory[3] * 1.2) { print "memory grows"; exit 1 }
    }' vornjsondb.time sqlite3.time tenth.time
