#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# HOURS (default: 24) of a band of more than a hundred signals through a station, SPEED times (default: 4)
# as fast as they sound, and a recording in a loop beside it: ends with status 0 only when the memory and
# the descriptors of the station and of the band's decoder do not grow, all was heard and no sample lost,
# and each transmission that was reported is in the archive, once. Needs sox, and a build; `try-hours.sh HOURS BUILD`
# takes that one (default: build/dev).
set -euo pipefail
cd "$(dirname "$0")/.."

hours=${1:-24}
build=$(realpath "${2:-build/dev}")
speed=${SPEED:-4}
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
import sys, time
path, seconds, speed = sys.argv[1], float(sys.argv[2]), float(sys.argv[3])
with open(path, "rb") as file:
    sound = file.read()
PIECE = 8000 # bytes of half a second
begin, sent = time.monotonic(), 0
while sent < seconds * 16000:
    place = sent % (len(sound) - len(sound) % PIECE)
    sys.stdout.buffer.write(sound[place:place + PIECE])
    sys.stdout.buffer.flush()
    sent += PIECE
    time.sleep(max(0.0, begin + sent / 16000 / speed - time.monotonic()))
time.sleep(3600)
PYTHON
cat >"$work/station.ini" <<INI
[station]
name=hours
folder=$work/kept
[page]
listen=127.0.0.1:0
[receiver band]
command=python3 $work/feed.py $work/band.raw $(awk -v h="$hours" 'BEGIN { print h * 3600 }') $speed
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
wanted=$(awk -v h="$hours" -v s="$speed" 'BEGIN { printf "%d", h * 3600 / s }')
resident() { awk '/^VmRSS/ { print $2 }' "/proc/$1/status" 2>/dev/null || echo 0; }
descriptors() { find "/proc/$1/fd" -mindepth 1 2>/dev/null | wc -l; }
decoder() { pgrep -P "$station" -f 'morsehost band' || true; }
until [ -n "$(decoder)" ]; do read -rt 0.2 <> <(:) || true; done
band=$(decoder)
# Seconds of signal between the begin of the first and the end of the last transmission of the band.
heard() {
    "$build/bin/morsehost" search --archive "$work/kept/archive.db" --receiver band --limit 100000000 --csv |
        python3 -c 'import csv, datetime, sys
rows = list(csv.DictReader(sys.stdin))
time = lambda text: datetime.datetime.fromisoformat(text.replace("Z", "+00:00"))
print(int((max(time(row["stop"]) for row in rows) - min(time(row["start"]) for row in rows)).total_seconds()) if rows else 0)'
}
# A busy machine may be behind; the last minute is of signals that have not ended.
behind=600
while [ $((SECONDS - begin)) -lt "$wanted" ] ||
    { [ $((SECONDS - begin)) -lt $((wanted + behind)) ] && awk -v h="$hours" -v s="$(heard)" 'BEGIN { exit s >= h * 3600 - 60 }'; }; do
    read -rt $((wanted > 600 ? 5 : 1)) <> <(:) || true
    echo "$(resident "$station") $(descriptors "$station") $(resident "$band") $(descriptors "$band")"
done >"$work/watched"
port=$(grep -oP 'page: http://127.0.0.1:\K\d+' "$work/log")
lost=$(timeout 2 bash -c "exec 3<>/dev/tcp/127.0.0.1/$port; printf 'GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n' >&3; cat <&3" |
    grep -oP '"bytes_lost":\K\d+' | sort -n | tail -n 1 || true)
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
awk -v h="$hours" -v s="$heard" 'BEGIN { exit s < h * 3600 - 60 }' || bad "not all was heard"
echo "bytes lost: ${lost:-unknown}"
[ "${lost:-1}" -eq 0 ] || bad "samples were lost"
"$build/bin/morsehost" search --archive "$work/kept/archive.db" --limit 100000000 --json >"$work/rows"
reported=$(grep -cP '^\S+ (band|evening):(?! (starting|running|down|ended)\b)' "$work/log")
archived=$(wc -l <"$work/rows")
twice=$(grep -oP '"(number|receiver|start|text)":\K("[^"]*"|\d+)' "$work/rows" | paste - - - - | sort | uniq -d | wc -l)
echo "$hours h of signal in $((SECONDS - begin)) s: reported $reported, archived $archived, twice $twice"
[ "$reported" -eq "$archived" ] || bad "not what was reported"
[ "$reported" -gt 0 ] || bad "nothing was heard"
[ "$twice" -eq 0 ] || bad "something is there twice"
[ $failed -eq 0 ]
