#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds the program, and decodes a recording that ships with the project:
# through a pipe, as from a receiver, but eight times as fast. DEMO_PACE=fast reads the file itself.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build
echo "Building into build/release, which takes some minutes the first time." >&2
cmake --preset release >/dev/null
cmake --build --preset release --target morsehost

sample=data/samples/evening.flac
program=build/release/bin/morsehost
echo >&2
if [ "${DEMO_PACE:-live}" = fast ]; then
    echo "\$ morsehost decode $sample" >&2
    "$program" decode "$sample"
else
    sound=$(mktemp)
    trap 'rm -f "$sound"' EXIT
    flac --silent --decode --force --force-raw-format --endian=little --sign=signed \
        --output-name="$sound" "$sample"
    size=$(stat -c %s "$sound")
    echo "\$ ... | morsehost decode --rate 8000 -    # $sample, eight times as fast" >&2
    piece=1600 # a tenth of a second
    for ((at = 0; at < size; at += piece)); do
        head -c "$piece"
        sleep 0.0125
    done <"$sound" | "$program" decode --rate 8000 -
fi
echo >&2
echo "Your own recordings: $program decode FILE" >&2
echo "From a receiver, and all else: $program help decode" >&2
