#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Two hundred short recordings decoded as a job array of a Slurm of its own, a node of which is killed
# in the middle: ends with status 0 only when the archive holds what one machine alone makes of them,
# nothing less and nothing twice. Needs root, the packages slurm-wlm and sox, and a build;
# `try-cluster.sh BUILD` takes that one (default: build/dev). RECORDINGS is how many (default: 200).
set -euo pipefail
cd "$(dirname "$0")/.."

build=$(realpath "${1:-build/dev}")
recordings=${RECORDINGS:-200}
cluster=$PWD/data/slurm/morsehost-cluster.sh
work=$(mktemp -d)
pids=()
daemons=()
finish() {
    for name in "${!daemons[@]}"; do kill_node "$name" >/dev/null; done
    for pid in "${pids[@]}"; do kill -9 "$pid" 2>/dev/null || true; done
    rm -rf "$work"
}
trap finish EXIT
PATH=$build/bin:/usr/sbin:$PATH
export SLURM_CONF=$work/slurm.conf

# await TEXT WORDS...: until the command's output holds the text; five minutes at most.
await() {
    local text=$1 end=$((SECONDS + 300))
    shift
    until "$@" 2>/dev/null | grep -q -- "$text"; do
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$text'"; tail -n 20 "$work"/*.log; exit 1; }
        read -rt 0.2 <> <(:) || true
    done
}

echo "Making $recordings recordings"
mkdir "$work/recordings"
for ((i = 0; i < recordings; i++)); do
    # The same words at another pitch: other bytes, and another begin in the name.
    day=$(date -u -d "2026-05-12 $i minutes" +%Y%m%d_%H%M%S)
    sox data/samples/three-overs.flac "$work/recordings/${day}Z.flac" speed "$(bc <<<"scale=4; 1 + $i / 2000")" rate 8000 2>/dev/null
done

echo "On one machine"
"$build/bin/morsehost" decode --archive "$work/alone.db" --start auto "$work"/recordings/*.flac >/dev/null

# A cluster of two nodes, both of them this machine.
host=$(hostname -s)
control=$((20000 + RANDOM % 10000))
dd if=/dev/urandom of="$work/munge.key" bs=1024 count=1 2>/dev/null
chown munge "$work/munge.key" && chmod 400 "$work/munge.key"
mkdir "$work/munge" "$work/state" "$work/spool1" "$work/spool2"
chown munge "$work/munge" && chmod 755 "$work" "$work/munge"
cat >"$work/slurm.conf" <<CONF
ClusterName=try
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$control
AuthInfo=socket=$work/munge/socket
CredType=cred/munge
SlurmUser=root
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool%n
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd%n.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdTimeout=10
ReturnToService=2
MailProg=/bin/true
NodeName=1 NodeHostname=$host NodeAddr=127.0.0.1 Port=$((control + 1)) CPUs=1 State=UNKNOWN
NodeName=2 NodeHostname=$host NodeAddr=127.0.0.1 Port=$((control + 2)) CPUs=1 State=UNKNOWN
PartitionName=all Nodes=1,2 Default=YES State=UP
CONF
setpriv --reuid munge --regid munge --clear-groups munged --foreground --key-file="$work/munge.key" --socket="$work/munge/socket" \
    --pid-file="$work/munge/pid" --log-file="$work/munge/log" --seed-file="$work/munge/seed" >"$work/munged.log" 2>&1 &
pids+=($!)
slurmctld -D >"$work/slurmctld.log" 2>&1 &
pids+=($!)
node() {
    slurmd -D -N "$1" >"$work/slurmd$1.log" 2>&1 &
    pids+=($!)
    daemons[$1]=$!
}
# is_of NODE PROCESS: whether a task of the node started it.
is_of() {
    [ "$({ tr '\0' '\n' <"/proc/$2/environ"; } 2>/dev/null |
        grep -cxF -e "SLURMD_NODENAME=$1" -e "SLURM_CONF=$work/slurm.conf")" = 2 ]
}
# The processes of a node: its daemon, the tasks, which say where they run, and above them the steps'
# daemons, which are nobody's children.
processes_of() {
    local process parent
    echo "${daemons[$1]}"
    for process in /proc/[0-9]*; do
        is_of "$1" "${process#/proc/}" || continue
        echo "${process#/proc/}"
        parent=$(ps -o ppid= -p "${process#/proc/}" | tr -d ' ')
        [ "$(ps -o comm= -p "${parent:-0}")" != slurmstepd ] || echo "$parent"
    done | sort -u
}
# As the power cord would end them: stopped first, so that none sees that another has gone.
kill_node() {
    local found pass
    for pass in stop kill; do
        mapfile -t found < <(processes_of "$1")
        kill -"${pass^^}" "${found[@]}" 2>/dev/null || true
    done
    echo "Killed node $1: ${#found[@]} processes"
}
node 1
node 2
await '2 *idle' sinfo -h -o '%D %t'

echo "As a job array"
"$cluster" --archive "$work/cluster.db" --partition all --state "$work/jobs" --wait \
    "$work/recordings" >"$work/cluster.log" 2>&1 &
submitted=$!
archived() { { morsehost search --archive "$work/cluster.db" --limit 100000 2>/dev/null || true; } | wc -l; }
# Half of them are done, and a task runs on the node: it is held, since a recording takes but a moment.
hold_task() {
    local process
    for process in $(pgrep -x morsehost); do
        if is_of 2 "$process" && kill -STOP "$process" && grep -q '^State:.*stopped' "/proc/$process/status"; then
            return
        fi
    done
    return 1
}
until [ "$(archived)" -gt $((recordings * 3 / 2)) ]; do read -rt 0.2 <> <(:) || true; done
until hold_task 2>/dev/null; do
    squeue -h | grep . >/dev/null || { echo "BAD: no task was caught on the node" && exit 1; }
    read -rt 0.05 <> <(:) || true
done
echo "$(archived) transmissions are archived"
kill_node 2
await 'down' sinfo -h -n 2 -o '%t'
node 2
wait $submitted || { tail -n 5 "$work/cluster.log"; exit 1; }

rows() { morsehost search --archive "$1" --limit 100000 --json | sed 's/"id":[0-9]*,//' | sort; }
rows "$work/alone.db" >"$work/alone"
rows "$work/cluster.db" >"$work/cluster"
tried=$(cat "$work"/jobs/logs/*.log | grep -c 'is in the archive' || true)
echo "transmissions: alone $(wc -l <"$work/alone"), cluster $(wc -l <"$work/cluster"); tried again and left out: $tried"
[ "$(wc -l <"$work/alone")" -ge "$recordings" ] && diff "$work/alone" "$work/cluster" && echo "nothing missing, nothing twice"
