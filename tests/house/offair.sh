#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# `reception offair` scores what its list names: offair.sh RECEPTION LIST, with a recording made here
# in place of one off the air. The list of the project itself is read as well.
set -euo pipefail

reception=$1
list=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$*"
    exit 1
}

# entry KEY VALUE: the entry with another value for a key; an empty one leaves the line out.
entry() {
    local key value
    echo "[a contact]"
    while read -r key value; do
        [ "$key" != "$1:" ] || value=$2
        [ -z "$value" ] || echo "$key $value"
    done < "$work/entry"
}

# refuses STATUS MESSAGE ARGUMENT…
refuses() {
    local status=0 said
    said=$("$reception" offair "${@:3}" 2>&1 >/dev/null) || status=$?
    [ "$status" = "$1" ] || fail "status $status, not $1, of: ${*:3}"
    [[ $said == *"$2"* ]] || fail "'$2' is not in: $said"
}

mkdir "$work/there" "$work/empty"
"$reception" make --only clean20 --kind contact --length 60 "$work"
mv "$work/clean20.contact.tune-1.wav" "$work/there/contact.wav"
cat > "$work/entry" <<END
file: contact.wav
address: https://example.org/contact.wav
licence: CC0 1.0
sha256: $(sha256sum < "$work/there/contact.wav" | cut -d ' ' -f 1)
from: 0
to: 20
tone: 700
wpm: 20
text: $(cat "$work/clean20.contact.tune-1.txt")
written: by who made it
END

# All of it is read, and half of the text as half.
length=$(($(stat -c %s "$work/there/contact.wav") / 2 / 8000))
entry to "$length" > "$work/list"
entry file elsewhere.wav >> "$work/list"
said=$("$reception" offair "$work/list" "$work/there" 'nothing=true' 'given=echo {tone} {wpm}' 2>"$work/missing")
grep -qE '^\| a contact \| [0-9]+ \| 0\.0 \| 100\.0 \| [0-9]+\.[0-9] \|$' <<< "$said" || fail "$said"
grep -q 'elsewhere.wav, from https://example.org/contact.wav (CC0 1.0)' "$work/missing" || fail "$(cat "$work/missing")"
entry to "$((length / 2))" > "$work/half"
"$reception" offair "$work/half" "$work/there" | grep -qE '^\| a contact \| [0-9]+ \| [3-6][0-9]\.[0-9] \|$' ||
    fail "half of a recording is not read as half"

refuses 2 "needs a list and a folder" "$work/list"
refuses 1 "no list of recordings" "$work/none" "$work/there"
refuses 1 "no folder" "$work/list" "$work/none"
refuses 1 "none of the recordings is here" "$work/list" "$work/empty"
refuses 2 "is not NAME=COMMAND" "$work/list" "$work/there" nonsense
refuses 2 "cannot run" "$work/half" "$work/there" 'none=no-such-program {}'
# wrong MESSAGE KEY VALUE
wrong() {
    entry "$2" "$3" > "$work/wrong"
    refuses 1 "$1" "$work/wrong" "$work/there"
}
wrong "another recording" sha256 0123
wrong "ends before 9999 s" to 9999
wrong "ends before it begins" to 0
wrong "'tone' of 'a contact' cannot be 'high'" tone high
wrong "'to' of 'a contact' cannot be '1e300'" to 1e300
wrong "has no 'text'" text ""
wrong "has no 'licence'" licence ""
wrong "is a path, not a name" file ../contact.wav
echo "what is this" > "$work/wrong"
refuses 1 "wrong:1: 'what is this' is neither" "$work/wrong" "$work/there"

refuses 1 "none of the recordings is here" "$list" "$work/empty"
