# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# A small real Ceph cluster on the loopback address: one monitor and one object store, each a plain process of this
# user, without keys. Sourced after common.sh.

cluster=$PWD/build/ceph
export CEPH_CONF=$cluster/ceph.conf CEPH_ARGS=

# cluster_free_port: a port of the loopback address on which nobody listens now.
cluster_free_port()
{
    local port
    for port in $(shuf -i 20000-30000 -n 50); do
        ! (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || continue
        printf '%s\n' "$port"
        return
    done
    die "there is no free port"
}

# cluster_make STORE: makes a new cluster, whose object store keeps its data in a file (bluestore) or in memory
# (memstore), and starts it.
cluster_make()
{
    local store=$1 port fsid osd
    cluster_stop
    rm -rf "$cluster"
    mkdir -p "$cluster"/{mon,osd,run,crash}
    port=$(cluster_free_port)
    fsid=$(cat /proc/sys/kernel/random/uuid)
    osd=$(cat /proc/sys/kernel/random/uuid)
    cat >"$CEPH_CONF" <<END
[global]
fsid = $fsid
mon host = v2:127.0.0.1:$port
public addr = 127.0.0.1
auth cluster required = none
auth service required = none
auth client required = none
osd pool default size = 1
osd pool default min size = 1
run dir = $cluster/run
crash dir = $cluster/crash
log file = $cluster/\$type.log
[mon]
mon data = $cluster/mon
mon allow pool size one = true
pid file = $cluster/mon.pid
[osd]
osd data = $cluster/osd
osd objectstore = $store
bluestore block size = 10737418240
memstore device bytes = 4294967296
pid file = $cluster/osd.pid
[client]
log file =
admin socket =
END
    {
        monmaptool --create --clobber --fsid "$fsid" --addv a "[v2:127.0.0.1:$port]" "$cluster/monmap"
        ceph-mon -i a --mkfs --monmap "$cluster/monmap"
        ceph-mon -i a
        ceph osd new "$osd"
        ceph-osd -i 0 --mkfs --osd-uuid "$osd"
        ceph-osd -i 0
        ceph osd pool create db 8
        timeout 60 rados -p db put probe /dev/null
    } >"$cluster/start.log" 2>&1 || die "the cluster did not start: $(tail -n 20 "$cluster/start.log")"
}

# cluster_end PART: ends the process "mon" or "osd" and waits until it is gone.
cluster_end()
{
    local file=$cluster/$1.pid pid
    [ -f "$file" ] || return 0
    pid=$(cat "$file")
    rm -f "$file"
    kill "$pid" 2>/dev/null || return 0
    while kill -0 "$pid" 2>/dev/null; do
        sleep 0.1
    done
}

cluster_stop()
{
    cluster_end osd
    cluster_end mon
}
