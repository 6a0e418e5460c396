#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A station with a database and a broker of its own, both of which are killed and started again in the
# middle, and its page in a browser: ends with status 0 only when each transmission that the station
# reported is in the archive, once, was reported to the broker, and the page shows what it must. Needs the
# packages postgresql, mosquitto, chromium and python3-websocket, and a build; `try-station.sh BUILD` takes
# that one (default: build/dev). PICTURE names a file for a screenshot of the page.
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
# await TEXT WORDS...: until the command's output holds the text; two minutes at most.
await() {
    local text=$1 end=$((SECONDS + 120))
    shift
    until "$@" 2>/dev/null | grep -q -- "$text"; do
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$text'"; cat "$work/station.log"; exit 1; }
        read -rt 0.2 <> <(:) || true
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
MORSEHANDLER_TEST_POSTGRESQL=$url "$build/bin/tst_archive" | tail -n 2 | head -n 1

# A broker, and one that listens to it. Returns when both are there.
brokerPort=$((port + 1))
broker() {
    printf 'listener %d 127.0.0.1\nallow_anonymous true\n' $brokerPort >"$work/broker.conf"
    PATH=/usr/sbin:$PATH mosquitto -c "$work/broker.conf" >/dev/null 2>&1 &
    broker=$!
    until mosquitto_pub -h 127.0.0.1 -p $brokerPort -t ready -m 1 2>/dev/null; do read -rt 0.2 <> <(:) || true; done
    mosquitto_sub -h 127.0.0.1 -p $brokerPort -t ready -t 'radio/try/receiver/+/transmission' >"$work/sent$1" &
    listener=$!
    until grep -q ready "$work/sent$1"; do
        mosquitto_pub -h 127.0.0.1 -p $brokerPort -t ready -m ready
        read -rt 0.2 <> <(:) || true
    done
}
broker 1

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
[receiver overs]
command="sox $PWD/data/samples/three-overs.flac -t raw -r 8000 -e signed -b 16 -c 1 - && sleep 3600"
[receiver broken]
command=exit 3
INI
"$build/bin/morsehost" station "$work/station.ini" 2>"$work/station.log" &
station=$!
search() { "$build/bin/morsehost" search --archive "$url" --limit 100000 "$@"; }
await 'GOOD EVENING' search
await '73 DE OK2XYZ' cat "$work/station.log"
PATH=/usr/bin:$PATH scripts/see-page.py "http://127.0.0.1:$pagePort/" "${PICTURE:-$work/page.png}" live running \
    'the command ended with status 3' 'GOOD EVENING' && echo "The page shows what it must"
database stop -m immediate >/dev/null
kill -9 "$broker" "$listener"
await 'are kept and sent later' cat "$work/station.log"
before=$(grep -c 'GOOD EVENING' "$work/station.log")
until [ "$(grep -c 'GOOD EVENING' "$work/station.log")" -gt $((before + 1)) ]; do
    read -rt 0.2 <> <(:) || true
done
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

grep -oP '(evening|overs): \K[A-Z0-9= ]+$' "$work/station.log" | sort >"$work/reported"
search --json | grep -oP '"text":"\K[^"]*' | sort >"$work/archived"
search --json | grep -oP '"(receiver|start)":"\K[^"]*' | paste - - | sort | uniq -d >"$work/twice"
identities() { grep -oP '"(receiver|start)":"\K[^"]*' | paste - - | sort -u; }
search --json | identities >"$work/archived-ones"
cat "$work"/sent[12] | identities >"$work/sent-ones"
diff "$work/archived-ones" "$work/sent-ones" && echo "sent to the broker $(wc -l <"$work/sent-ones")"
echo "reported $(wc -l <"$work/reported"), archived $(wc -l <"$work/archived"), twice $(wc -l <"$work/twice")"
diff "$work/reported" "$work/archived" && [ ! -s "$work/twice" ] && [ -s "$work/reported" ]
