#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A station with a database and a broker of its own, both of which are killed and started again in the
# middle, and its page in a browser: ends with status 0 only when each transmission that the station
# reported is in the archive, once, was reported to the broker, and the page shows what it must. Its
# receivers are a recording in a loop, a command, a band, a teleprinter and a command that fails. Needs the
# packages of `setup.sh night`, and a build; `try-station.sh BUILD` takes that one (default: build/dev).
# PICTURE names a file for a screenshot of the page.
set -euo pipefail
cd "$(dirname "$0")/.."

build=$(realpath "${1:-build/dev}")
server=$(dirname "$(find /usr/lib/postgresql -name initdb | sort | tail -n 1)")
work=$(mktemp -d)
chmod 755 "$work"
station=
broker=
listener=
finish() {
    for process in $station $broker $listener; do kill "$process" 2>/dev/null || true; done
    database stop -m immediate >/dev/null 2>&1 || true
    rm -rf "$work"
}
trap finish EXIT

# The server refuses to run as root.
as_server() {
    if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}
database() {
    as_server "$server/pg_ctl" -D "$work/database/data" -w -t 120 -l "$work/database/log" "$@"
}
pause() { read -rt 0.2 <> <(:) || true; }
# await TEXT WORDS...: until the command's output holds the text; five minutes at most.
await() {
    local text=$1 end=$((SECONDS + 300))
    shift
    until "$@" 2>/dev/null | grep -q -- "$text"; do
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$text'"; cat "$work/station.log"; exit 1; }
        pause
    done
}

mkdir "$work/database"
[ "$(id -u)" -ne 0 ] || chown postgres "$work/database"
as_server "$server/initdb" -D "$work/database/data" -A trust -U radio --locale=C.UTF-8 >/dev/null
port=$((20000 + RANDOM % 20000))
echo "listen_addresses = '127.0.0.1'
port = $port
unix_socket_directories = '$work/database'" >>"$work/database/data/postgresql.conf"
database start >/dev/null
url=postgresql://radio@127.0.0.1:$port/postgres

echo "The archive's tests, in the database:"
MORSEHANDLER_TEST_POSTGRESQL=$url "$build/bin/tst_archive" >"$work/tests.log" || { cat "$work/tests.log" && exit 1; }
grep '^Totals' "$work/tests.log"

# A broker, and one that listens to it. Returns when both are there.
brokerPort=$((port + 1))
broker() {
    printf 'listener %d 127.0.0.1\nallow_anonymous true\n' $brokerPort >"$work/broker.conf"
    PATH=/usr/sbin:$PATH mosquitto -c "$work/broker.conf" >/dev/null 2>&1 &
    broker=$!
    until mosquitto_pub -h 127.0.0.1 -p $brokerPort -t ready -m 1 2>/dev/null; do pause; done
    stdbuf -oL mosquitto_sub -q 1 -h 127.0.0.1 -p $brokerPort -t ready -t 'radio/try/receiver/+/transmission' \
        >"$work/sent$1" &
    listener=$!
    until grep -q ready "$work/sent$1"; do
        mosquitto_pub -h 127.0.0.1 -p $brokerPort -t ready -m ready
        pause
    done
}
broker 1

# A teleprinter; each time it is heard at another moment.
echo 'THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG RYRYRYRY' |
    minimodem --tx --file "$work/teleprinter.wav" --samplerate 8000 rtty

pagePort=$((port + 2))
cat >"$work/station.ini" <<INI
[station]
name=try
folder=$work/kept
archive=$url
[page]
listen=127.0.0.1:$pagePort
[mqtt]
url=mqtt://127.0.0.1:$brokerPort/radio
[receiver evening]
file=$PWD/data/samples/evening.flac
repeat=2
pictures=true
[receiver overs]
command="sox $PWD/data/samples/three-overs.flac -t raw -r 8000 -e signed -b 16 -c 1 - && sleep 3600"
[receiver contest]
file=$PWD/data/samples/bands/contest.flac
decoder=band
repeat=20
[receiver teleprinter]
file=$work/teleprinter.wav
decoder=Baudot
repeat=5
[receiver broken]
command=exit 3
INI
"$build/bin/morsehost" station --check "$work/station.ini"
"$build/bin/morsehost" station "$work/station.ini" 2>"$work/station.log" &
station=$!
search() { "$build/bin/morsehost" search --archive "$url" --limit 1000000 "$@"; }
await 'GOOD EVENING' search
await '73 DE OK2XYZ' cat "$work/station.log"
await 'QUICK BROWN' search --receiver teleprinter
await ' ' search --receiver contest
PATH=/usr/bin:$PATH scripts/see-page.py --open 'GOOD EVENING' "http://127.0.0.1:$pagePort/" "${PICTURE:-$work/page.png}" live running \
    'the command ended with status 3' 'GOOD EVENING' 'QUICK BROWN' && echo "The page shows what it must"

reported() {
    grep -cP '^\S+ (evening|overs|contest|teleprinter): (?!starting|running|down|ended)' "$work/station.log" || true
}
sent() { grep -c '"key"' "$work/sent$1" || true; }
# Both are killed when nothing is on its way between station and listener: what a broker has taken and
# not yet given, it alone can lose.
database stop -m immediate >/dev/null
while kill -STOP "$station" && [ "$(reported)" -ne "$(sent 1)" ]; do
    kill -CONT "$station"
    pause
done
kill -9 "$broker" "$listener"
kill -CONT "$station"
await 'are kept and sent later' cat "$work/station.log"
before=$(reported)
until [ "$(reported)" -gt $((before + 5)) ]; do pause; done
database start >/dev/null
await 'works again' cat "$work/station.log"
# Nothing is sent before somebody listens.
kill -STOP "$station"
broker 2
kill -CONT "$station"
await 'mqtt: connected.*mqtt: connected' sh -c "grep mqtt: '$work/station.log' | tr '\n' ' '"
await 'broken: down: the command ended with status 3' cat "$work/station.log"
kill "$station"
wait "$station"
station=

search --json >"$work/archived"
cat "$work"/sent[12] >"$work/sent"
python3 - "$work" <<'PYTHON'
import json, re, sys
from collections import Counter
work = sys.argv[1]
line = re.compile(r"\S+ (evening|overs|contest|teleprinter):(?! (?:starting|running|down|ended)\b) ?(.*)")
reported = Counter()
for text in open(work + "/station.log", encoding="utf-8"):
    if match := line.match(text.rstrip("\n")):
        reported[match.groups()] += 1
def objects(name):
    return [json.loads(text) for text in open(work + "/" + name, encoding="utf-8") if text.startswith("{")]
def shown(one):
    return one["receiver"], " ".join((one["text"]).split())
def identity(one):
    return one["receiver"], one["number"], one["start"], one["text"]
archived = Counter(map(shown, objects("archived")))
twice = [key for key, count in Counter(map(identity, objects("archived"))).items() if count > 1]
sent = objects("sent")
missing = reported - archived
added = archived - reported
keys = {one["key"] for one in sent}
same = {identity(one) for one in objects("archived")} ^ {identity(one) for one in sent}
print("reported %d, archived %d, missing %d, there twice %d" %
      (sum(reported.values()), sum(archived.values()), sum(missing.values()), len(twice)))
print("sent to the broker %d, of these again %d" % (len(sent), len(sent) - len(keys)))
for what, found in (("missing", missing), ("not reported", added), ("twice", twice), ("archived or sent alone", same)):
    for one in list(found)[:5]:
        print("BAD: %s: %s" % (what, one))
sys.exit(0 if reported and not missing and not added and not twice and not same else 1)
PYTHON
