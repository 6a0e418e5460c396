#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Sends HOURS (default: 24) of signal through one `morsehost decode --save` as fast as it goes,
# watches its memory and descriptors, and then looks for every character that it wrote to standard
# output in the text files, in the result documents and, decoded again, in the code files. Takes the
# programs from BIN (default: builds them).
#
#     scripts/long-run.sh [HOURS [BIN]]
set -euo pipefail
cd "$(dirname "$0")/.."

hours=${1:-24}
bin=${2:-build/dev/bin}
if [ $# -lt 2 ]; then
    cmake --preset dev >/dev/null
    cmake --build --preset dev --target morsehost longsignal >/dev/null
fi
# What the second half of a run may take more than the first. Descriptors: a document being written.
growth_kB=1024
growth_descriptors=2
pause_s=$(awk -v hours="$hours" 'BEGIN { print hours < 1 ? 0.1 : 1 }')

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
saved=$work/saved
export TZ=UTC LC_ALL=C

# --- The run ---------------------------------------------------------------------------------
mkfifo "$work/pipe"
"$bin/longsignal" "$hours" "$work/sent" >"$work/pipe" &
signal=$!
"$bin/morsehost" decode --save "$saved" - <"$work/pipe" >"$work/shown" &
program=$!
begin=$(date +%s)
while sleep "$pause_s"; resident=$(awk '/^VmRSS/ { print $2 }' "/proc/$program/status" 2>/dev/null) &&
    [ -n "$resident" ]; do
    open=$(find "/proc/$program/fd" -mindepth 1 2>/dev/null | wc -l) || true
    echo "$resident $open $(wc -l <"$work/shown")"
done >"$work/watched"
wait "$program"
wait "$signal"
took=$(($(date +%s) - begin))

# --- What was shown, and where it has to be found again ----------------------------------------
# One line a transmission, without the marks of timing errors, which documents do not hold.
plain='s/\[(DOT_TOO_SHORT|DASH_TOO_LONG|PAUSE_TOO_SHORT)\]//g; s/ *$//'
sed -E "$plain" "$work/shown" >"$work/shown.lines"
# The files are wrapped; the two time marks between transmissions stand on lines of their own.
cat "$saved"/*__International.txt |
    sed 's/^\[Stop Time:  [^]]*\]$/\x01/; s/^\[Start Time:  [^]]*\]$//' |
    tr -d '\n' | tr '\1' '\n' | awk 1 | sed -E "$plain" >"$work/texts.lines"
for document in "$saved"/*.xml; do
    xmllint --xpath '//Frame' "$document" | tr -d '\n' |
        sed -E 's/<[^>]*>//g; s/&lt;/</g; s/&gt;/>/g; s/&quot;/"/g; s/&amp;/\&/g'
    echo
done | sed -E "$plain" >"$work/documents.lines"
# A code file knows no words and no lines.
tr -d ' \n' <"$work/shown.lines" | awk 1 >"$work/shown.characters"
cat "$saved"/*_MO__.txt | tr -d '\n' |
    sed -E 's/\[[A-Z_]*\]//g; s/ /3\n/g; s/\./0 /g; s/-/1 /g' >"$work/codes"
"$bin/morsehost" symbols "$work/codes" >"$work/codes.characters"

failed=0
fail() {
    echo "FAILED: $1"
    failed=1
}
same() {
    cmp -s "$work/$1" "$work/$2" || fail "what the $3 hold is not what was shown"
}
same shown.lines texts.lines "text files"
same shown.lines documents.lines "result documents"
same shown.characters codes.characters "code files"
xmllint --noout --schema data/schema/tavikresultdata.xsd "$saved"/*.xml 2>"$work/schema" ||
    fail "a document is not valid: $(grep -v validates "$work/schema" | head -n 1)"
sent=$(wc -l <"$work/sent")
[ "$(wc -l <"$work/shown")" -eq "$sent" ] || fail "not one line a transmission was shown"
[ "$(find "$saved" -name '*.xml' | wc -l)" -eq "$sent" ] || fail "not one document a transmission"

# --- Memory and descriptors: the first tenth of the run, and two transmissions, are for settling ---
awk -v all="$(wc -l <"$work/watched")" 'NR > all / 10 && $3 >= 2' "$work/watched" >"$work/settled"
samples=$(wc -l <"$work/settled")
[ "$samples" -ge 4 ] || fail "too short to be watched"
statistics() { # of column $1: least, median, most
    sort -n -k "$1,$1" "$work/settled" | awk -v c="$1" '
        { v[NR] = $c } END { printf "min %d, median %d, max %d", v[1], v[int((NR + 1) / 2)], v[NR] }'
}
most() { cut -d ' ' -f "$1" | sort -n | tail -n 1; }
for column in 1 2; do
    first=$(head -n $((samples / 2)) "$work/settled" | most $column)
    second=$(tail -n $((samples - samples / 2)) "$work/settled" | most $column)
    [ $column = 1 ] && allowed=$growth_kB || allowed=$growth_descriptors
    [ $((second - first)) -le "$allowed" ] ||
        fail "column $column of what was watched grew from $first to $second"
done

exact=$(sed 's/ *$//' "$work/shown" | comm -12 <(sort "$work/sent") <(sort -) | wc -l)
half=$(awk -v n="$sent" '$3 * 2 >= n { print NR; exit }' "$work/watched")
cat <<END
$hours h of signal in $took s: $sent transmissions, $exact read without an error,
$(wc -m <"$work/shown.characters") characters, $(find "$saved" -type f | wc -l) files
resident kB: $(statistics 1)
descriptors: $(statistics 2)
half of the transmissions after ${half:-?} of $(wc -l <"$work/watched") looks
END
exit $failed
