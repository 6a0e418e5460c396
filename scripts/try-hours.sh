#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# HOURS (default: 24) of a band of more than a hundred signals through a station, as fast as they are decoded
# and at most SPEED times (default: 8) as fast as they sound, and a recording in a loop beside it: ends with status 0 only when the memory and
# the descriptors of the station and of the band's decoder do not grow, all was heard and no sample lost,
# and each transmission that was reported is in the archive, once. Needs sox, and a build; `try-hours.sh HOURS BUILD`
# takes that one (default: build/dev).
set -euo pipefail
cd "$(dirname "$0")/.."

hours=${1:-24}
build=$(realpath "${2:-build/dev}")
speed=${SPEED:-8}
# What the second half of a run may take more than the first.
growth_kB=2048
growth_descriptors=2
work=$(mktemp -d)
station=
finish() {
    [ -z "$station" ] || kill -9 "$station" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT

sox data/samples/bands/contest.flac -t raw -r 8000 -e signed -b 16 -c 1 "$work/band.raw"
cat >"$work/feed.py" <<'PYTHON'
import os, sys, time
folder, seconds, speed = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
with open(folder + "/band.raw", "rb") as file:
    sound = file.read()
PIECE = 8000 # bytes of half a second
MOST_AHEAD = 40 * PIECE
decoder, sent, before = "", 0, 0
def taken():
    """Bytes that the decoders have read; the few of their own files do no harm."""
    global decoder, before
    with open(folder + "/decoder") as file:
        now = file.read().strip()
    if now != decoder: # with each day another one begins
        decoder, before = now, sent
    try:
        with open("/proc/%s/io" % decoder) as file:
            return before + int(file.readline().split()[1])
    except FileNotFoundError:
        return sent
while not os.path.exists(folder + "/decoder"):
    time.sleep(0.2)
while sent < seconds * 16000:
    place = sent % (len(sound) - len(sound) % PIECE)
    sys.stdout.buffer.write(sound[place:place + PIECE])
    sys.stdout.buffer.flush()
    sent += PIECE
    time.sleep(PIECE / 16000 / speed)
    # A station waits for nobody; what its decoder does not take in time is lost.
    while sent - taken() > MOST_AHEAD:
        time.sleep(0.05)
with open(folder + "/fed", "w"):
    pass
time.sleep(3600)
PYTHON
cat >"$work/station.ini" <<INI
[station]
name=hours
folder=$work/kept
[page]
listen=127.0.0.1:0
[receiver band]
command=python3 $work/feed.py $work $(awk -v h="$hours" 'BEGIN { print h * 3600 }') $speed
decoder=band
rate=8000
stall=600
[receiver evening]
file=$PWD/data/samples/evening.flac
repeat=10
pictures=true
INI
"$build/bin/morsehost" station "$work/station.ini" 2>"$work/log" &
station=$!
begin=$SECONDS
resident() { awk '/^VmRSS/ { print $2 }' "/proc/$1/status" 2>/dev/null || echo 0; }
descriptors() { find "/proc/$1/fd" -mindepth 1 2>/dev/null | wc -l; }
band=
# The latest one, for the feeder to see how far it is.
find_decoder() {
    local now
    now=$(pgrep -n -P "$station" -f 'morsehost band' || true)
    [ "$now" != "$band" ] || return 0
    band=$now
    echo "$band" >"$work/decoder.new" && mv "$work/decoder.new" "$work/decoder"
}
# Seconds of signal between the begin of the first and the end of the last transmission of the band.
heard() {
    "$build/bin/morsehost" search --archive "$work/kept/archive.db" --receiver band --limit 100000000 --csv |
        python3 -c 'import csv, datetime, sys
rows = list(csv.DictReader(sys.stdin))
time = lambda text: datetime.datetime.fromisoformat(text.replace("Z", "+00:00"))
print(int((max(time(row["stop"]) for row in rows) - min(time(row["start"]) for row in rows)).total_seconds()) if rows else 0)'
}
# The last minute is of signals that have not ended.
is_heard() { awk -v h="$hours" -v s="$(heard)" 'BEGIN { exit s < h * 3600 - 60 }'; }
patience=120
while [ ! -e "$work/fed" ] || { ! is_heard && [ $((patience--)) -gt 0 ]; }; do
    read -rt 1 <> <(:) || true
    [ -d "/proc/$station" ] || break
    find_decoder
    [ -n "$band" ] || continue
    echo "$(resident "$station") $(descriptors "$station") $(resident "$band") $(descriptors "$band")"
done >"$work/watched"
port=$(grep -oP 'page: http://127.0.0.1:\K\d+' "$work/log")
lost=$(timeout 2 bash -c "exec 3<>/dev/tcp/127.0.0.1/$port; printf 'GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n' >&3; cat <&3" |
    grep -oP '"bytes_lost":\K\d+' | sort -n | tail -n 1 || true)
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
# The first fifth is for settling; a document or a picture takes a moment.
samples=$(wc -l <"$work/watched")
tail -n $((samples * 4 / 5)) "$work/watched" >"$work/settled"
samples=$(wc -l <"$work/settled")
names=("" "station, kB" "station, descriptors" "decoder, kB" "decoder, descriptors")
most() { cut -d ' ' -f "$1" | sort -n | tail -n 1; }
for column in 1 2 3 4; do
    first=$(head -n $((samples / 2)) "$work/settled" | most "$column")
    second=$(tail -n $((samples - samples / 2)) "$work/settled" | most "$column")
    echo "${names[$column]}: at most $first, then $second"
    [ $((column % 2)) -eq 1 ] && allowed=$growth_kB || allowed=$growth_descriptors
    [ $((second - first)) -le "$allowed" ] || bad "it grows"
done
echo "seconds of the band heard: $heard"
is_heard || bad "not all was heard"
echo "bytes lost: ${lost:-unknown}"
[ "${lost:-1}" -eq 0 ] || bad "samples were lost"
"$build/bin/morsehost" search --archive "$work/kept/archive.db" --limit 100000000 --json >"$work/rows"
reported=$(grep -cP '^\S+ (band|evening):(?! (starting|running|down|ended)\b)' "$work/log")
archived=$(wc -l <"$work/rows")
twice=$(grep -oP '"(number|receiver|start|text)":\K("[^"]*"|\d+)' "$work/rows" | paste - - - - | sort | uniq -d | wc -l)
echo "$hours h of signal in $lasted s: reported $reported, archived $archived, twice $twice"
[ "$reported" -eq "$archived" ] || bad "not what was reported"
[ "$reported" -gt 0 ] || bad "nothing was heard"
[ "$twice" -eq 0 ] || bad "something is there twice"
[ $failed -eq 0 ]
