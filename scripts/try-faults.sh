#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a station withstands, in figures: killed without warning at random moments (ROUNDS, default: 100);
# an archive that is away for an hour of signal; a clock that steps (with the package faketime); 200 readers
# of its page of which 50 never read, requests that are bad or never end, a receiver that sends rubbish; a
# full disk and room again (where this runs as root). Ends with status 0 only when no transmission that was
# reported is missing, and none is there twice. Needs a build; `try-faults.sh BUILD` takes that one (default:
# build/dev). FAULTS names some of: killed away clock readers disk (default: all).
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
wanted() { [[ " ${FAULTS:-killed away clock readers disk} " = *" $1 "* ]]; }
start() { # FILE LOG [WORDS before the command...]
    "${@:3}" "$build/bin/morsehost" station "$1" 2>>"$2" &
    station=$!
}
stop() {
    kill "$station"
    wait "$station" || true
    station=
}
pause() { read -rt "${1:-0.1}" <> <(:) || true; }
count() { grep -c -- "$1" "$2" 2>/dev/null || true; }
# await TEXT FILE [COUNT]: until the file holds it so often; ten minutes at most.
await() {
    local end=$((SECONDS + 600))
    until [ "$(count "$1" "$2")" -ge "${3:-1}" ]; do
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$1'" && tail -n 5 "$2" && exit 1; }
        pause
    done
}
bad() {
    echo "BAD: $1"
    failed=1
}
rows() { "$build/bin/morsehost" search --archive "$1" --limit 1000000 --json; }
# compare ARCHIVE LOG: what the log reports against what the archive holds.
compare() {
    local reported archived twice
    reported=$(count 'GOOD EVENING' "$2")
    rows "$1" >"$work/rows"
    archived=$(count 'GOOD EVENING' "$work/rows")
    twice=$(grep -oP '"(receiver|start)":"\K[^"]*' "$work/rows" | paste - - | sort | uniq -d | wc -l)
    echo "reported $reported, archived $archived, twice $twice"
    [ "$reported" -gt 0 ] || bad "nothing was heard"
    [ "$archived" -ge "$reported" ] || bad "something is missing"
    [ "$twice" -eq 0 ] || bad "something is there twice"
}
status() {
    echo "memory $(awk '/VmRSS/ { print $2 }' "/proc/$station/status") kB," \
        "descriptors $(find "/proc/$station/fd" -mindepth 1 | wc -l)"
}
# config FOLDER [RECEIVERS [ARCHIVE]]: a recording of 35 s that begins again when it is over.
config() {
    printf '[station]\nfolder=%s\narchive=%s\n[page]\nlisten=127.0.0.1:%d\n' "$1" "${3:-$1/archive.db}" $port
    for ((receiver = 0; receiver < ${2:-1}; receiver++)); do
        printf '[receiver evening%d]\nfile=%s/data/samples/evening.flac\nrepeat=1\nsave=no\n' $receiver "$PWD"
    done
}

if wanted killed; then
    echo "== killed $rounds times"
    config "$work/killed" >"$work/killed.ini"
    for ((i = 0; i < rounds; i++)); do
        start "$work/killed.ini" "$work/killed.log"
        pause "$((RANDOM % 3)).$((RANDOM % 10))"
        kill -9 "$station"
        wait "$station" 2>/dev/null || true
    done
    start "$work/killed.ini" "$work/killed.log"
    await 'GOOD EVENING' "$work/killed.log" $(($(count 'GOOD EVENING' "$work/killed.log") + 1))
    stop
    compare "$work/killed/archive.db" "$work/killed.log"
fi

if wanted away; then
    echo "== an archive that is away for an hour of signal"
    config "$work/away" 4 "$work/server/archive.db" >"$work/away.ini"
    start "$work/away.ini" "$work/away.log"
    await 'are kept and sent later' "$work/away.log"
    await 'GOOD EVENING' "$work/away.log" 103
    status
    echo "kept on disk: $(du -sk "$work/away/unsent" | cut -f 1) kB"
    mkdir "$work/server"
    await 'works again' "$work/away.log"
    stop
    compare "$work/server/archive.db" "$work/away.log"
    # In the order in which they were received.
    rows "$work/server/archive.db" | grep '"receiver":"evening0"' | grep -oP '"(id|start)":"?\K[^",]*' | paste - - |
        sort -n | cut -f 2 >"$work/begins"
    sort -c "$work/begins" || bad "not in their order"
fi

if wanted clock && command -v faketime >/dev/null; then
    echo "== a clock that steps: an hour back, two days on, back again"
    config "$work/clock" >"$work/clock.ini"
    sed -i 's/save=no/save=yes/' "$work/clock.ini"
    echo '+0' >"$work/now"
    library=$(find /usr/lib -name 'libfaketime.so.1' | head -n 1)
    start "$work/clock.ini" "$work/clock.log" env LD_PRELOAD="$library" FAKETIME_TIMESTAMP_FILE="$work/now" \
        FAKETIME_NO_CACHE=1 FAKETIME_DONT_FAKE_MONOTONIC=1 DONT_FAKE_MONOTONIC=1
    for step in +0 -1h +2d +0; do
        echo $step >"$work/now"
        await 'GOOD EVENING' "$work/clock.log" $(($(count 'GOOD EVENING' "$work/clock.log") + 3))
        folder=$work/clock/files/$(FAKETIME=$step LD_PRELOAD=$library date -u +%F)
        until [ -d "$folder" ]; do pause; done
    done
    status
    stop
    compare "$work/clock/archive.db" "$work/clock.log"
    days=$(find "$work/clock/files" -mindepth 1 -maxdepth 1 | wc -l)
    echo "folders of days: $days"
    [ "$days" -ge 2 ] || bad "the clock did not step"
fi

if wanted readers; then
    echo "== 200 readers, 50 of which never read; bad and slow requests; a receiver that sends rubbish"
    config "$work/readers" >"$work/readers.ini"
    printf '[receiver noise]\ncommand="head -c 100000000 /dev/urandom"\nstall=0\nsave=no\n' >>"$work/readers.ini"
    start "$work/readers.ini" "$work/readers.log"
    await 'page:' "$work/readers.log"
    status
    cat >"$work/readers.py" <<'PYTHON'
import json, selectors, socket, sys, time
port, seconds = int(sys.argv[1]), float(sys.argv[2])
SLOW = 100
def connect(request):
    one = socket.socket()
    one.connect(("127.0.0.1", port))
    one.sendall(request)
    return one
def answer(request):
    with connect(request) as one:
        one.settimeout(30)
        return one.recv(65536)[:12]
loop = selectors.DefaultSelector()
idle, got = [], {}
for number in range(200):
    one = connect(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n")
    if number < 50:
        idle.append(one)
    else:
        one.setblocking(False)
        got[one] = b""
        loop.register(one, selectors.EVENT_READ)
slow = [connect(b"GET / HTTP/1.1\r\nHost: loc") for _ in range(SLOW)]
bad = [b"\x16\x03\x01\r\n\r\n", b"GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n",
       b"GET /../../etc/passwd HTTP/1.1\r\nHost: localhost\r\n\r\n", b"GET /" + b"x" * 100000,
       b"POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 99999999\r\n\r\n"]
end = time.monotonic() + seconds
ended = refused = good = longest = 0
while time.monotonic() < end:
    for key, _ in loop.select(1):
        data = key.fileobj.recv(1 << 20)
        got[key.fileobj] += data
        if not data:
            ended += 1
            loop.unregister(key.fileobj)
    try:
        refused += answer(bad[(refused + good) % len(bad)])[9:10] == b"4"
    except ConnectionError:
        refused += 1
    begin = time.monotonic()
    good += answer(b"GET / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n") == b"HTTP/1.1 200"
    longest = max(longest, time.monotonic() - begin)
def is_closed(one):
    one.settimeout(0.01)
    try:
        return not one.recv(1)
    except TimeoutError:
        return False
    except ConnectionError:
        return True
closed = sum(map(is_closed, slow))
# What everybody must have: the transmissions between the last one that connected and the end.
keys = [[json.loads(event.split(b"data: ", 1)[1])["key"] for event in bytes.split(b"\n\n")[:-1]
         if event.startswith(b"event: transmission\n")] for bytes in got.values()]
most = max(keys, key=len)
same = sum(one == most[len(most) - len(one):] or one == most[:len(one)] or one == most[1:1 + len(one)] for one in keys)
print("readers %d: ended %d, transmissions %d to %d, alike %d" % (len(got), ended, min(map(len, keys)), len(most), same))
print("slow requests closed %d of %d, bad requests refused %d, good ones answered %d, the slowest after %.1f s" %
      (closed, SLOW, refused, good, longest))
sys.exit(0 if ended == 0 and keys and min(map(len, keys)) >= len(most) - 2 > 0 and same == len(got)
         and closed == SLOW and refused > 0 and good > 0 else 1)
PYTHON
    python3 "$work/readers.py" $port "${READ_SECONDS:-60}" || bad "not all were served"
    status
    grep -P 'noise: (running|down)' "$work/readers.log" | tail -n 1 | cut -c 1-120
    stop
    compare "$work/readers/archive.db" "$work/readers.log"
fi

if wanted disk && [ "$(id -u)" -eq 0 ]; then
    echo "== a full disk, then room"
    mkdir "$work/small"
    mount -t tmpfs -o size=8m none "$work/small"
    config "$work/small/kept" >"$work/small.ini"
    start "$work/small.ini" "$work/small.log"
    await 'GOOD EVENING' "$work/small.log" 3
    dd if=/dev/zero of="$work/small/filling" bs=4k 2>/dev/null || true
    await 'kept in memory' "$work/small.log"
    await 'GOOD EVENING' "$work/small.log" $(($(count 'GOOD EVENING' "$work/small.log") + 5))
    rm "$work/small/filling"
    await 'takes transmissions again' "$work/small.log"
    stop
    compare "$work/small/kept/archive.db" "$work/small.log"
fi
[ $failed -eq 0 ]
