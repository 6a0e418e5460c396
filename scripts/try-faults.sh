#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What a station withstands, in figures: killed without warning at random moments (ROUNDS, default:
# 100); an archive that is away for an hour of signal; a clock that steps (with the package faketime);
# 200 readers of its page of which 50 never read, requests that are bad or never end, a receiver that
# sends rubbish; a full disk and room again (where this runs as root). Ends with status 0 only when no
# transmission that was reported is missing, and none is there twice. How fast the machine is makes no
# difference: what does not come within an hour is taken to hang. Needs a build; `try-faults.sh BUILD`
# takes that one (default: build/dev). FAULTS names some of: killed away clock readers disk (default:
# all).
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
    touch "$2"
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
HANGS_s=3600
# await TEXT FILE [COUNT]: until the file holds it so often.
await() {
    local end=$((SECONDS + HANGS_s))
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
descriptors() { find "/proc/$station/fd" -mindepth 1 2>/dev/null | wc -l; }
status() {
    echo "memory $(awk '/VmRSS/ { print $2 }' "/proc/$station/status") kB, descriptors $(descriptors)"
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
    await 'GOOD EVENING' "$work/readers.log"
    status
    before=$(descriptors)
    cat >"$work/readers.py" <<'PYTHON'
import json, selectors, socket, sys, threading, time
port, rounds, HANGS_s = map(int, sys.argv[1:])
SLOW = 100
TRANSMISSIONS = 20
BAD = [b"\x16\x03\x01\r\n\r\n", b"GET / HTTP/1.1\r\nHost: evil.example\r\n\r\n",
       b"GET /../../etc/passwd HTTP/1.1\r\nHost: localhost\r\n\r\n", b"GET /" + b"x" * 100000,
       b"POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 99999999\r\n\r\n"]
GOOD = b"GET / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n"
def connect(request):
    one = socket.create_connection(("127.0.0.1", port), timeout=HANGS_s)
    one.sendall(request)
    return one
def answer(request):
    with connect(request) as one:
        return one.recv(65536)
def refusal(request):
    try:
        return answer(request)
    except ConnectionError:
        return b"HTTP/1.1 4xx" # closed before all of it was sent

class Reader:
    def __init__(self):
        self.socket = connect(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self.rest = b""
        self.keys = [] # of the transmissions
        self.is_dropped = False
    def read(self):
        data = self.socket.recv(1 << 20)
        self.is_dropped = not data
        *events, self.rest = (self.rest + data).split(b"\n\n")
        self.keys += [json.loads(event.split(b"data: ", 1)[1])["key"] for event in events
                      if event.startswith(b"event: transmission\n")]
    def keys_to(self, last):
        return self.keys[:self.keys.index(last) + 1] if last in self.keys else []
idle = [connect(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n") for _ in range(50)]
readers = [Reader() for _ in range(150)]
last = None
def have_all():
    return last and all(last in one.keys for one in readers)
def read():
    """Beside the requests, or who waits for their answers would be dropped as one that never reads."""
    loop = selectors.DefaultSelector()
    for one in readers:
        loop.register(one.socket, selectors.EVENT_READ, one)
    while not have_all() and not any(one.is_dropped for one in readers):
        for ready, _ in loop.select(0.5):
            ready.data.read()
thread = threading.Thread(target=read)
thread.start()
slow = [connect(b"GET / HTTP/1.1\r\nHost: loc") for _ in range(SLOW)]
answers, longest = 0, 0.0
wrong = []
while thread.is_alive() and not wrong and (answers < rounds or len(readers[-1].keys) < TRANSMISSIONS):
    request = BAD[answers % len(BAD)]
    if not refusal(request).startswith(b"HTTP/1.1 4"):
        wrong.append(request[:60])
    begin = time.monotonic()
    if not answer(GOOD).startswith(b"HTTP/1.1 200"):
        wrong.append(GOOD)
    longest = max(longest, time.monotonic() - begin)
    answers += 1
    time.sleep(0.05)
def is_closed(one):
    try:
        return not one.recv(1)
    except TimeoutError:
        return False
    except ConnectionError:
        return True
closed = sum(map(is_closed, slow))
# Everybody has what the one that came last has had, up to a transmission that all have to get.
last = (readers[-1].keys or [""])[-1]
thread.join()
expected = readers[-1].keys_to(last)
dropped = sum(one.is_dropped for one in readers)
alike = sum(one.keys_to(last)[-len(expected):] == expected for one in readers)
print("readers %d: dropped %d, with the same %d transmissions %d" % (len(readers), dropped, len(expected), alike))
print("slow requests closed %d of %d; bad requests refused and good ones answered %d each, the slowest after %.1f s" %
      (closed, SLOW, answers, longest))
for request in wrong:
    print("wrong answer to %r" % request)
sys.exit(0 if dropped == 0 and alike == len(readers) and expected and closed == SLOW and not wrong else 1)
PYTHON
    python3 "$work/readers.py" $port 200 $HANGS_s || bad "not all were served"
    # Those who left are noticed when the next is sent to them. Decoders that are changed take some.
    end=$((SECONDS + HANGS_s))
    until [ "$(descriptors)" -le $((before + 10)) ] || [ $SECONDS -gt $end ]; do pause; done
    [ $SECONDS -le $end ] || bad "connections stay"
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
