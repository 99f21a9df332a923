#!/bin/bash
# SPDX-License-Identifier: MIT
# runs demos and trials on a real Ceph cluster on the loopback address: [--update] [kills: 4] [restarts of the store: 3]
#
# --update writes the latencies into docs/scaling.md, which is right only on a machine that has nothing else to do.
. "$(dirname "$0")/common.sh"
. tools/ceph/cluster.sh

update=
if [ "${1:-}" = --update ]; then
    update=yes
    shift
fi
kills=${1:-4}
restarts=${2:-3}
need "${packages_demo[@]}" ceph-mon ceph-osd iproute2 libsqlite3-mod-ceph pkgconf
iso=/usr/share/iso-codes/json/iso_3166-1.json
work=$(mktemp -d)
writers=()
# shellcheck disable=SC2317 # called by the trap
finish()
{
    [ ${#writers[@]} -eq 0 ] || kill -9 "${writers[@]}" 2>/dev/null || true
    cluster_stop
    rm -rf "$work"
}
trap finish EXIT

build demo
read -ra dependencies <<<"$(pkg-config --cflags --libs jsoncpp sqlite3)"
g++ -shared -fPIC -O2 tools/ceph/register_vfs.cpp -o "$work/register_vfs.so" "${dependencies[@]}"
g++ -std=c++17 -O2 -Iinclude tools/ceph/trial.cpp -o "$work/trial" "-Wl,-rpath,$PWD/build/demo/src" \
    build/demo/src/libvorntable.so build/demo/src/libvornjsondb.so "${dependencies[@]}"

# on_ceph PROGRAM...: runs it with the VFS registered. A client of a store that is gone waits for ever.
on_ceph() { timeout --foreground 300 env LD_PRELOAD="$work/register_vfs.so" "$@"; }

# uri DATABASE: each in a namespace of its own.
uri() { printf 'file:///db:%s/%s.db?vfs=ceph' "$1" "$1"; }

say "== a monitor and an object store (bluestore in a file)"
SECONDS=0
cluster_make bluestore
say "serving after $SECONDS s"

for demo in countries/countries table/countries_table; do
    name=${demo#*/}
    say "== the demo $name, on a local file and on Ceph"
    "build/demo/examples/$demo" "$work/$name.db" "$iso" >"$work/local.txt"
    on_ceph "build/demo/examples/$demo" "$(uri "$name")" "$iso" >"$work/ceph.txt"
    diff "$work/local.txt" "$work/ceph.txt" || die "on Ceph the demo writes something else"
    say "the same $(wc -l <"$work/ceph.txt") lines"
done

say "== mean latencies in ms, Ceph / local file"
{
    say "| journal, locking | class | create | create, 249 in a transaction | fetch | update |"
    say "|---|---|---:|---:|---:|---:|"
} | tee "$work/latencies.md"
for setting in "DELETE NORMAL" "PERSIST NORMAL" "PERSIST EXCLUSIVE" "WAL EXCLUSIVE"; do
    read -r journal locking <<<"$setting"
    name=latency_${journal}_$locking
    on_ceph "$work/trial" latency "$(uri "$name")" "$journal" "$locking" >"$work/ceph.txt"
    "$work/trial" latency "$work/$name.db" "$journal" "$locking" >"$work/local.txt"
    paste -d ' ' "$work/ceph.txt" "$work/local.txt" | awk -v setting="$journal, $locking" '{
        printf "| %s | %s |", setting, $1
        for (i = 2; i <= 5; i++)
            printf " %s / %s |", $i, $(i + 5)
        printf "\n"
    }' | tee -a "$work/latencies.md"
done
[ -z "$update" ] || put latencies "$work/latencies.md" docs/scaling.md

# start_writer NAME DATABASE FIRST: in the background; its acknowledged ids go into acks-NAME.FIRST.
start_writer()
{
    : >"$work/acks-$1.$2"
    LD_PRELOAD=$work/register_vfs.so "$work/trial" write "$(uri "$1")" PERSIST "$2" >"$work/acks-$1.$2" \
        2>"$work/errors-$1.$2" &
    writers+=($!)
}

# acknowledged DATABASE: how many records so far.
acknowledged() { cat "$work/acks-$1."* | wc -l; }

# goes_on DATABASE: waits until another record is acknowledged and says how long that took.
goes_on()
{
    local before start=$SECONDS
    before=$(acknowledged "$1")
    until [ "$(acknowledged "$1")" -gt "$before" ]; do
        [ $((SECONDS - start)) -lt 120 ] || die "no writer goes on: $(cat "$work/errors-$1."*)"
        sleep 0.2
    done
    say "writers go on after $((SECONDS - start)) s"
}

# break_lock DATABASE: takes the lock of a dead client away, which otherwise keeps it for the 30 s of its lease.
break_lock()
{
    local object=$1.db.0000000000000000 locker cookie
    read -r locker cookie < <(rados -p db -N "$1" lock info "$object" striper.lock |
        sed -nE 's/.*"name":"([^"]*)","cookie":"([^"]*)".*/\1 \2/p') || return 0
    rados -p db -N "$1" lock break "$object" striper.lock "$locker" --lock-cookie "$cookie" || true
}

say "== one of two writers killed, $kills times"
first=0
start_writer kill $((first += 1000000))
start_writer kill $((first += 1000000))
goes_on kill
for ((i = 1; i <= kills; ++i)); do
    sleep "$((RANDOM % 3)).$((RANDOM % 10))"
    victim=${writers[0]}
    writers=("${writers[@]:1}")
    kill -9 "$victim"
    wait "$victim" 2>/dev/null || true
    if [ "$i" -lt "$kills" ]; then
        break_lock kill
        goes_on kill
        start_writer kill $((first += 1000000))
    else # the last time nobody helps: the lease runs out by itself
        goes_on kill
    fi
done

# stop_writers: lets them finish the record that they are at.
stop_writers()
{
    local writer
    for writer in "${writers[@]}"; do
        kill -TERM "$writer"
        wait "$writer" || die "a writer failed: $(cat "$work"/errors-*)"
    done
    writers=()
}
stop_writers
on_ceph "$work/trial" verify "$(uri kill)" "$work"/acks-kill.*

say "== the object store stopped and started under two writers, $restarts times"
start_writer restart $((first += 1000000))
start_writer restart $((first += 1000000))
goes_on restart
for ((i = 1; i <= restarts; ++i)); do
    sleep "$((RANDOM % 3)).$((RANDOM % 10))"
    cluster_end osd
    ceph-osd -i 0 >>"$cluster/start.log" 2>&1
    goes_on restart
done
stop_writers
on_ceph "$work/trial" verify "$(uri restart)" "$work"/acks-restart.*
