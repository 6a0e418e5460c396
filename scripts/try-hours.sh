#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# HOURS (default: 24) of a band through a station, as fast as they are decoded and at most SPEED times
# (default: 8) as fast as they sound, and a recording in a loop beside it. In the band more than a
# hundred overs are sent in a minute, then nobody sends for two. MINUTES ends it after so long by the
# clock, however much has been sent (default: never). Ends with status 0 only when all that was sent
# was heard and no sample was lost, each transmission that was reported is in the archive, once, and
# neither the station nor the decoder of the band grows: in memory, and in descriptors besides those
# of the files of the signals that are there. Needs sox, and a build; `try-hours.sh HOURS BUILD` takes
# that one (default: build/dev).
set -euo pipefail
cd "$(dirname "$0")/.."

hours=${1:-24}
build=$(realpath "${2:-build/dev}")
speed=${SPEED:-8}
minutes=${MINUTES:-1000000}
work=$(mktemp -d)
station=
finish() {
    [ -z "$station" ] || kill -9 "$station" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT

sox data/samples/bands/contest.flac -t raw -r 8000 -e signed -b 16 -c 1 "$work/overs.raw"
# About the noise of the overs.
sox -R -n -t raw -r 8000 -e signed -b 16 -c 1 "$work/noise.raw" synth 120 whitenoise vol 0.0004
cat "$work/overs.raw" "$work/noise.raw" >"$work/band.raw"
cat >"$work/feed.py" <<'PYTHON'
import array, fcntl, os, sys, termios, time
folder = sys.argv[1]
hours, speed, minutes = map(float, sys.argv[2:])
end = time.monotonic() + minutes * 60
with open(folder + "/band.raw", "rb") as file:
    sound = file.read()
PIECE = 8000 # bytes of half a second
MOST_WAITING = 48 * 1024 # of the 64 KiB that a pipe holds; what it does not hold waits in the station
sent = 0
def waiting():
    """Bytes in the pipe between the station and the decoder."""
    with open(folder + "/decoder") as file:
        decoder = file.read().strip()
    try:
        pipe = os.open("/proc/%s/fd/0" % decoder, os.O_RDONLY | os.O_NONBLOCK)
    except OSError: # with each day another one begins
        return 0
    bytes = array.array("i", [0])
    fcntl.ioctl(pipe, termios.FIONREAD, bytes)
    os.close(pipe)
    return bytes[0]
while not os.path.exists(folder + "/decoder"):
    time.sleep(0.2)
while sent < hours * 3600 * 16000 and time.monotonic() < end:
    place = sent % (len(sound) - len(sound) % PIECE)
    sys.stdout.buffer.write(sound[place:place + PIECE])
    sys.stdout.buffer.flush()
    sent += PIECE
    time.sleep(PIECE / 16000 / speed)
    # A station waits for nobody; what its decoder does not take in time is lost.
    while waiting() > MOST_WAITING:
        time.sleep(0.02)
with open(folder + "/fed.new", "w") as file:
    file.write("%d" % (sent / 16000))
os.rename(folder + "/fed.new", folder + "/fed")
time.sleep(1000000)
PYTHON
# A line a second until all is fed: of the station memory and descriptors; of the latest decoder of
# the band memory, descriptors without those of its signals' files, and how many of these are open
# beyond the four of each signal that the page says is there.
cat >"$work/watch.py" <<'PYTHON'
import http.client, json, os, sys, threading, time
folder, station, port = sys.argv[1:]
FILES = folder + "/kept/files/"
OF_A_SIGNAL = 4 # the files of its codes and its text, each written and watched
present = set()
lost = 0
def follow():
    global present, lost
    connection = http.client.HTTPConnection("127.0.0.1", int(port))
    connection.request("GET", "/events", headers={"Host": "localhost"})
    kind = b""
    for line in connection.getresponse():
        if line.startswith(b"event: "):
            kind = line[7:].strip()
        if not line.startswith(b"data: ") or kind not in (b"state", b"signals", b"receiver"):
            continue
        data = json.loads(line[6:])
        for one in data["receivers"] if kind == b"state" else [data]:
            if one.get("name", one.get("receiver")) != "band":
                continue
            lost = one.get("bytes_lost", lost)
            if one.get("problem"):
                print("the band: " + one["problem"], file=sys.stderr)
                os._exit(1)
            present = (present - set(one.get("gone", []))) | {of["number"] for of in one.get("present", [])}
    os._exit(1) # what follows would be compared with signals of long ago
threading.Thread(target=follow, daemon=True).start()
def resident(process):
    with open("/proc/%s/status" % process) as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))
def opened(process):
    for one in os.scandir("/proc/%s/fd" % process):
        try:
            yield os.readlink(one.path)
        except FileNotFoundError:
            pass
def latest_decoder():
    """Of the station's children, whose numbers may begin again with 1."""
    with open("/proc/%s/task/%s/children" % (station, station)) as file:
        children = file.read().split()
    def is_band(child):
        with open("/proc/%s/cmdline" % child) as file:
            return file.read().split("\0")[1:2] == ["band"]
    def begin(child):
        with open("/proc/%s/stat" % child) as file:
            return int(file.read().rsplit(")", 1)[1].split()[19])
    return max(filter(is_band, children), key=begin)
band = ""
while not os.path.exists(folder + "/fed"):
    time.sleep(1)
    try:
        now = latest_decoder()
        if now != band: # the feeder sees how far it is
            band = now
            with open(folder + "/decoder.new", "w") as file:
                file.write(band)
            os.rename(folder + "/decoder.new", folder + "/decoder")
        files = [path.startswith(FILES) for path in opened(band)]
        print(resident(station), len(list(opened(station))), resident(band), files.count(False),
              files.count(True) - OF_A_SIGNAL * len(present), len(present), flush=True)
    except (FileNotFoundError, ProcessLookupError, ValueError, StopIteration):
        if not os.path.exists("/proc/" + station):
            sys.exit("the station has ended")
        continue # between two decoders
time.sleep(1)
print(lost, file=open(folder + "/lost", "w"))
PYTHON
cat >"$work/station.ini" <<INI
[station]
name=hours
folder=$work/kept
[page]
listen=127.0.0.1:0
[receiver band]
command=python3 $work/feed.py $work $hours $speed $minutes
decoder=band
rate=8000
stall=600
pictures=true
[receiver evening]
file=$PWD/data/samples/evening.flac
repeat=10
pictures=true
INI
"$build/bin/morsehost" station "$work/station.ini" 2>"$work/log" &
station=$!
begin=$SECONDS
until port=$(grep -oP 'page: http://127.0.0.1:\K\d+' "$work/log"); do
    [ -d "/proc/$station" ] || { cat "$work/log" && exit 1; }
    read -rt 0.2 <> <(:) || true
done
python3 "$work/watch.py" "$work" $station "$port" >"$work/watched"
# Seconds of signal between the begin of the first and the end of the last transmission of the band.
heard() {
    "$build/bin/morsehost" search --archive "$work/kept/archive.db" --receiver band --limit 100000000 --csv |
        python3 -c 'import csv, datetime, sys
rows = list(csv.DictReader(sys.stdin))
time = lambda text: datetime.datetime.fromisoformat(text.replace("Z", "+00:00"))
print(int((max(time(row["stop"]) for row in rows) - min(time(row["start"]) for row in rows)).total_seconds()) if rows else 0)'
}
# Of the last minutes are signals that have not ended, or nobody sent.
is_heard() { [ "$(heard)" -ge $(($(cat "$work/fed") - 180)) ]; }
end=$((SECONDS + 600))
until is_heard || [ $SECONDS -gt $end ]; do read -rt 5 <> <(:) || true; done
lasted=$((SECONDS - begin))
heard=$(heard)
kill "$station"
wait "$station"
station=

failed=0
bad() {
    echo "BAD: $1"
    failed=1
}
# The first fifth is for settling. The page knows of a signal a moment after its decoder, and files
# that are open for a moment come on top of what the station keeps open, so of these the median counts.
python3 - "$work/watched" <<'PYTHON' || failed=1
import statistics, sys
with open(sys.argv[1]) as file:
    rows = [list(map(int, line.split())) for line in file]
rows = rows[len(rows) // 5:]
failed = len(rows) < 20
def compare(name, column, of, allowed):
    global failed
    first, second = (of([row[column] for row in half]) for half in (rows[:len(rows) // 2], rows[len(rows) // 2:]))
    print("%s: first half %d, second half %d" % (name, first, second))
    if allowed is not None and second - first > allowed:
        failed = True
        print("BAD: it grows")
compare("station, kB at most", 0, max, 2048)
compare("station, descriptors, median", 1, statistics.median, 2)
compare("station, descriptors at most", 1, max, None)
compare("decoder, kB at most", 2, max, 2048)
compare("decoder, descriptors without files of signals, at most", 3, max, 2)
compare("decoder, open files beyond those of signals that are there, median", 4, statistics.median, 2)
compare("signals at a time, median", 5, statistics.median, None)
compare("signals at a time, at most", 5, max, None)
sys.exit(failed)
PYTHON
echo "seconds of the band heard: $heard"
is_heard || bad "not all was heard"
echo "bytes lost: $(cat "$work/lost")"
[ "$(cat "$work/lost")" -eq 0 ] || bad "samples were lost"
"$build/bin/morsehost" search --archive "$work/kept/archive.db" --limit 100000000 --json >"$work/rows"
reported=$(grep -cP '^\S+ (band|evening):(?! (starting|running|down|ended)\b)' "$work/log")
archived=$(wc -l <"$work/rows")
twice=$(grep -oP '"(number|receiver|start|text)":\K("[^"]*"|\d+)' "$work/rows" | paste - - - - | sort | uniq -d | wc -l)
echo "$(awk '{ printf "%.1f", $1 / 3600 }' "$work/fed") h of signal in $lasted s: reported $reported, archived $archived, twice $twice"
[ "$reported" -eq "$archived" ] || bad "not what was reported"
[ "$reported" -gt 0 ] || bad "nothing was heard"
[ "$twice" -eq 0 ] || bad "something is there twice"
[ $failed -eq 0 ]
