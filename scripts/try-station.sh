#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Two stations that share a database and a broker, both of which are killed and started again in the
# middle, and their pages in a browser: ends with status 0 only when each transmission that a station
# reported is in the archive, once, was reported to the broker, what both have heard stands together, and
# the pages show what they must. The receivers of the first are a recording in a loop, a command, a band, a
# teleprinter and a command that fails; the second hears two of its recordings in noise, and its page has a
# certificate and a password. Needs the packages of `setup.sh night`, and a build; `try-station.sh BUILD`
# takes that one (default: build/dev). PICTURES names a folder for screenshots of the pages.
set -euo pipefail
cd "$(dirname "$0")/.."

build=$(realpath "${1:-build/dev}")
server=$(dirname "$(find /usr/lib/postgresql -name initdb | sort | tail -n 1)")
work=$(mktemp -d)
chmod 755 "$work"
pictures=${PICTURES:-$work/pictures}
mkdir -p "$pictures"
stations=()
follower=
broker=
listener=
finish() {
    for process in "${stations[@]}" $broker $listener $follower; do kill "$process" 2>/dev/null || true; done
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
        [ $SECONDS -lt $end ] || { echo "waited in vain for '$text'"; tail -n 20 "$work"/{north,south}.log; exit 1; }
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
    stdbuf -oL mosquitto_sub -q 1 -h 127.0.0.1 -p $brokerPort -t ready -t 'radio/+/receiver/+/transmission' \
        >"$work/sent$1" &
    listener=$!
    until grep -qs ready "$work/sent$1"; do
        mosquitto_pub -h 127.0.0.1 -p $brokerPort -t ready -m ready
        pause
    done
}
broker 1

# A teleprinter; each time it is heard at another moment.
echo 'THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG RYRYRYRY' |
    minimodem --tx --file "$work/teleprinter.wav" --samplerate 8000 rtty

# What both stations hear, and how it arrives at the second.
echo 'VVV DE SP5ABC TWO OF US HEAR THIS = 73' | (cd "$work" && HOME=$work ebook2cw -p -O -s 8000 -c - -w 20 -o both >/dev/null)
weaker() {
    sox "$1" -r 8000 -c 1 -p | sox -R -m -v 0.3 -p -v 0.7 "|sox -R -r 8000 -n -c 1 -p synth $(soxi -D "$1") whitenoise vol 0.2" "$2"
}
weaker "$work/both.ogg" "$work/both-weaker.wav"
weaker data/samples/evening.flac "$work/evening-weaker.wav"

# Whom the second page's reader trusts.
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj /CN=try \
    -keyout "$work/ca.key" -out "$work/ca.pem" 2>/dev/null
openssl req -new -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -subj /CN=localhost \
    -keyout "$work/key.pem" -out "$work/request.pem" 2>/dev/null
echo subjectAltName=IP:127.0.0.1 >"$work/names"
openssl x509 -req -in "$work/request.pem" -CA "$work/ca.pem" -CAkey "$work/ca.key" -CAcreateserial \
    -extfile "$work/names" -out "$work/certificate.pem" 2>/dev/null

# common NAME PORT: what the two have in common.
common() {
    cat <<INI
[station]
name=$1
folder=$work/$1
archive=$url
[mqtt]
url=mqtt://127.0.0.1:$brokerPort/radio
[page]
listen=127.0.0.1:$2
INI
}
northPort=$((port + 2))
southPort=$((port + 3))
{
    common north $northPort
    cat <<INI
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
pictures=true
[receiver teleprinter]
file=$work/teleprinter.wav
decoder=Baudot
repeat=5
pictures=true
[receiver broken]
command=exit 3
[receiver both]
file=$work/both.ogg
frequency=7025000
INI
} >"$work/north.ini"
{
    common south $southPort
    cat <<INI
password=$(echo beacon | "$build/bin/morsehost" password)
certificate=$work/certificate.pem
key=$work/key.pem
[receiver evening]
file=$work/evening-weaker.wav
repeat=5
[receiver both]
file=$work/both-weaker.wav
frequency=7025300
INI
} >"$work/south.ini"
# At the same moment, or what both hear would be two transmissions.
for name in north south; do
    "$build/bin/morsehost" station --check "$work/$name.ini"
    "$build/bin/morsehost" station "$work/$name.ini" 2>"$work/$name.log" &
    stations+=($!)
done
log() { cat "$work"/{north,south}.log; }
search() { "$build/bin/morsehost" search --archive "$url" --limit 1000000 "$@"; }
await 'GOOD EVENING' search
await '73 DE OK2XYZ' log
await 'QUICK BROWN' search --receiver teleprinter
await ' ' search --receiver contest
await ' ' search --receiver both --station north
await ' ' search --receiver both --station south
await ' ' search --receiver evening --station south

echo "What both have heard:"
search SP5ABC
search SP5ABC --json >"$work/both"
python3 - "$work/both" <<'PYTHON'
import json, sys
found = [json.loads(line) for line in open(sys.argv[1], encoding="utf-8")]
assert [one["station"] for one in found] == ["north", "south"], found
better, other = found
assert "copy_of" not in better and other["copy_of"] == better["id"], found
assert better["snr_dB"] > other["snr_dB"], found
PYTHON

# Follows the archive over what becomes of it.
"$build/bin/morsehost" search --archive "$url" --follow --json >"$work/followed" 2>"$work/follower.log" &
follower=$!
await '"event"' grep -m 1 event "$work/followed"

see() { PATH=/usr/bin:$PATH scripts/see-page.py "$@"; }
north=http://127.0.0.1:$northPort/
south=https://127.0.0.1:$southPort/
see --open 'GOOD EVENING' $north "$pictures/page.png" north live running 'the command ended with status 3' 'GOOD EVENING' \
    'QUICK BROWN' 'south evening' && echo "The page shows what it must"
see --open 'QUICK BROWN' $north "$pictures/teleprinter.png" north live && see --open TEST $north "$pictures/band.png" north live &&
    echo "pictures of a teleprinter and of a band included"
see --telephone --search SP5ABC $north "$pictures/telephone.png" live running 'GOOD EVENING' '2 found' 'south both' &&
    echo "so it does on a telephone, what the other station has heard included"
see --ca "$work/ca.pem" --password beacon --search SP5ABC $south "$pictures/tls.png" south live running '2 found' 'north both' &&
    echo "and the other page, with a certificate and a password"
! see $south "$pictures/untrusted.png" live >/dev/null || { echo "BAD: a certificate that nobody trusts is taken" && exit 1; }

reported() {
    log | grep -cP '^\S+ (evening|overs|contest|teleprinter|both): (?!starting|running|down|ended)' || true
}
sent() { grep -c '"key"' "$work/sent$1" || true; }
all() { kill "-$1" "${stations[@]}"; }
# Both are killed when nothing is on its way between stations and listener: what a broker has taken and
# not yet given, it alone can lose.
database stop -m immediate >/dev/null
while all STOP && [ "$(reported)" -ne "$(sent 1)" ]; do
    all CONT
    pause
done
kill -9 "$broker" "$listener"
all CONT
for name in north south; do
    await 'archive: .* are kept and sent later' cat "$work/$name.log"
done
before=$(reported)
until [ "$(reported)" -gt $((before + 5)) ]; do pause; done
database start >/dev/null
for name in north south; do
    await 'works again' cat "$work/$name.log"
done
# Nothing is sent before somebody listens.
all STOP
broker 2
all CONT
for name in north south; do
    await 'mqtt: connected.*mqtt: connected' sh -c "grep mqtt: '$work/$name.log' | tr '\n' ' '"
done
await 'broken: down: the command ended with status 3' log
all TERM
for one in "${stations[@]}"; do wait "$one"; done
stations=()

search --json >"$work/archived"
latest=$(grep -oP '"id":\K\d+' "$work/archived" | sort -n | tail -n 1)
await '"event"' grep -m 1 "\"id\":${latest}[,}]" "$work/followed"
kill "$follower"
wait "$follower" || { echo "BAD: who follows ended with status $?" && exit 1; }
follower=
cat "$work"/sent[12] >"$work/sent"
python3 - "$work" <<'PYTHON'
import json, re, sys
from collections import Counter
work = sys.argv[1]
line = re.compile(r"\S+ (evening|overs|contest|teleprinter|both):(?! (?:starting|running|down|ended)\b) ?(.*)")
reported = Counter()
for station in ("north", "south"):
    for text in open(work + "/" + station + ".log", encoding="utf-8"):
        if match := line.match(text.rstrip("\n")):
            reported[(station,) + match.groups()] += 1
def objects(name):
    return [json.loads(text) for text in open(work + "/" + name, encoding="utf-8") if text.startswith("{")]
def shown(one):
    return one["station"], one["receiver"], " ".join((one["text"]).split())
def identity(one):
    return one["station"], one["receiver"], one["number"], one["start"], one["text"]
archived = Counter(map(shown, objects("archived")))
twice = [key for key, count in Counter(map(identity, objects("archived"))).items() if count > 1]
sent = objects("sent")
missing = reported - archived
added = archived - reported
keys = {one["key"] for one in sent}
same = {identity(one) for one in objects("archived")} ^ {identity(one) for one in sent}
print("reported %d, archived %d, missing %d, there twice %d" %
      (sum(reported.values()), sum(archived.values()), sum(missing.values()), len(twice)))
followed = [one["id"] for one in objects("followed")]
expected = sorted(one["id"] for one in objects("archived") if one["id"] >= followed[0])
print("followed %d of %d" % (len(followed), len(expected)))
print("sent to the broker %d, of these again %d" % (len(sent), len(sent) - len(keys)))
for what, found in (("missing", missing), ("not reported", added), ("twice", twice), ("archived or sent alone", same)):
    for one in list(found)[:5]:
        print("BAD: %s: %s" % (what, one))
sys.exit(0 if reported and not missing and not added and not twice and not same and sorted(followed) == expected else 1)
PYTHON
