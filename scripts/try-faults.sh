#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a station withstands, in figures: killed without warning at random moments (ROUNDS, default: 100),
# readers of its page that never read, a receiver that sends rubbish, a full disk and room again (where
# this runs as root). Ends with status 0 only when no transmission that was reported is missing, and none
# is there twice. Needs a build; `try-faults.sh BUILD` takes that one (default: build/dev).
set -euo pipefail
cd "$(dirname "$0")/.."

build=$(realpath "${1:-build/dev}")
rounds=${ROUNDS:-100}
work=$(mktemp -d)
station=
finish() {
    [ -z "$station" ] || kill -9 "$station" 2>/dev/null || true
    umount "$work/small" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
port=$((20000 + RANDOM % 20000))
failed=0
start() { # FILE LOG
    "$build/bin/morsehost" station "$1" 2>>"$2" &
    station=$!
}
stop() {
    kill "$station"
    wait "$station" || true
    station=
}
# await TEXT FILE [COUNT]: until the file holds it so often; five minutes at most.
await() {
    local end=$((SECONDS + 300))
    until [ "$(grep -c -- "$1" "$2" 2>/dev/null)" -ge "${3:-1}" ]; do
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$1'" && tail -n 5 "$2" && exit 1; }
        read -rt 0.1 <> <(:) || true
    done
}
rows() { "$build/bin/morsehost" search --archive "$1" --limit 1000000 --json; }
# compare FOLDER LOG: what the log reports against what the archive holds.
compare() {
    local reported archived twice
    reported=$(grep -c 'GOOD EVENING' "$2")
    rows "$1/archive.db" >"$work/rows"
    archived=$(grep -c 'GOOD EVENING' "$work/rows")
    twice=$(grep -oP '"(receiver|start)":"\K[^"]*' "$work/rows" | paste - - | sort | uniq -d | wc -l)
    echo "reported $reported, archived $archived, twice $twice"
    if [ "$reported" -eq 0 ] || [ "$archived" -lt "$reported" ] || [ "$twice" -gt 0 ]; then
        echo "BAD: something is missing or there twice"
        failed=1
    fi
}
config() { # FOLDER
    printf '[station]\nfolder=%s\n[page]\nlisten=127.0.0.1:%d\n' "$1" $port
    printf '[receiver evening]\nfile=%s/data/samples/evening.flac\nrepeat=1\nsave=no\n' "$PWD"
}

echo "== killed $rounds times"
config "$work/killed" >"$work/killed.ini"
for ((i = 0; i < rounds; i++)); do
    start "$work/killed.ini" "$work/killed.log"
    read -rt "$((RANDOM % 3)).$((RANDOM % 10))" <> <(:) || true
    kill -9 "$station"
    wait "$station" 2>/dev/null || true
done
start "$work/killed.ini" "$work/killed.log"
await 'GOOD EVENING' "$work/killed.log" $(($(grep -c 'GOOD EVENING' "$work/killed.log") + 1))
stop
compare "$work/killed" "$work/killed.log"

echo "== 200 readers, 50 of which never read; a receiver that sends rubbish"
config "$work/readers" >"$work/readers.ini"
printf '[receiver noise]\ncommand="head -c 100000000 /dev/urandom"\nstall=0\nsave=no\n' >>"$work/readers.ini"
start "$work/readers.ini" "$work/readers.log"
await 'page:' "$work/readers.log"
cat >"$work/readers.py" <<'PYTHON'
import selectors, socket, sys, time
port, seconds = int(sys.argv[1]), float(sys.argv[2])
loop = selectors.DefaultSelector()
idle, got = [], {}
for number in range(200):
    one = socket.socket()
    if number < 50:
        one.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    one.connect(("127.0.0.1", port))
    one.sendall(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n")
    if number < 50:
        idle.append(one)
    else:
        one.setblocking(False)
        got[one] = [0, b""]
        loop.register(one, selectors.EVENT_READ)
end = time.monotonic() + seconds
ended = 0
while time.monotonic() < end:
    for key, _ in loop.select(1):
        data = key.fileobj.recv(65536)
        if not data:
            ended += 1
            loop.unregister(key.fileobj)
            continue
        state = got[key.fileobj]
        state[0] += (state[1] + data).count(b"event: transmission\n")
        state[1] = data[-19:]
counts = [state[0] for state in got.values()]
print("readers %d, of these ended %d; transmissions each %d to %d" % (len(got), ended, min(counts), max(counts)))
sys.exit(0 if ended == 0 and min(counts) > 0 and max(counts) - min(counts) <= 1 else 1)
PYTHON
python3 "$work/readers.py" $port "${READ_SECONDS:-60}" || { echo "BAD: they do not get the same" && failed=1; }
echo "memory $(awk '/VmRSS/ { print $2 }' "/proc/$station/status") kB, descriptors $(find "/proc/$station/fd" | wc -l)"
stop
compare "$work/readers" "$work/readers.log"

if [ "$(id -u)" -eq 0 ]; then
    echo "== a full disk, then room"
    mkdir "$work/small"
    mount -t tmpfs -o size=2m none "$work/small"
    config "$work/small/kept" >"$work/small.ini"
    start "$work/small.ini" "$work/small.log"
    await 'GOOD EVENING' "$work/small.log" 3
    dd if=/dev/zero of="$work/small/filling" bs=4k 2>/dev/null || true
    await 'kept in memory' "$work/small.log"
    await 'GOOD EVENING' "$work/small.log" $(($(grep -c 'GOOD EVENING' "$work/small.log") + 5))
    rm "$work/small/filling"
    await 'takes transmissions again' "$work/small.log"
    stop
    compare "$work/small/kept" "$work/small.log"
fi
[ $failed -eq 0 ]
