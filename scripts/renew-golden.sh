#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Writes the golden files of the saved session and of the teleprinters, and the picture of
# docs/inspect.md, again with the program as it is built in build/dev. Look at the difference, and
# commit it by itself with the reason.
set -euo pipefail
cd "$(dirname "$0")/.."

saved=$(mktemp -d)
trap 'rm -rf "$saved"' EXIT
TZ=UTC build/dev/bin/morsehost decode --save "$saved" --frequency 7025000 \
    --start 2026-05-12T10:15:00Z tests/data/recordings/three-overs.flac >/dev/null
golden=tests/data/golden/three-overs
LC_ALL=C # "….xml" stands before "…_2.xml"
mkdir -p "$golden"
cp "$saved"/*_MO__7_025MHz.txt "$golden/code.txt"
cp "$saved"/*__International.txt "$golden/text.txt"
number=0
for document in "$saved"/*.xml; do
    number=$((number + 1))
    cp "$document" "$golden/document$number.xml"
done

# As in tests/app/tst_teleprinters.cpp.
teleprinters=tests/data/teleprinters
while read -r name decoder map; do
    mkdir "$saved/$name"
    TZ=UTC build/dev/bin/morsehost decode --save "$saved/$name" --decoder "${decoder//_/ }" \
        --map "$map" "$teleprinters/$name.flac" >/dev/null
    cat "$saved/$name"/*.txt >"$teleprinters/$name.txt"
    cat "$saved/$name"/*.raw >"$teleprinters/$name.raw"
done <<'ROWS'
minimodem-ita2 Baudot Russian
minimodem-ascii ASCII_RTTY Greek
hf-weather Baudot Default
navtex Sitor-B Default
ROWS

# As in tests/docs/tst_images.cpp.
build/dev/bin/reception make --only snr-3 --kind groups --set tune "$saved"
mv "$saved/snr-3.groups.tune-1.wav" "$saved/weak.wav"
picture=docs/images/inspect.svg
build/dev/bin/morsehost inspect "$saved/weak.wav" --from 196 --length 10 -o "$picture"
git --no-pager diff --stat -- "$golden" "$teleprinters" "$picture"
