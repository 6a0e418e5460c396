#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Writes pages of the public headers into FOLDER/html (default: build/api-pages). Fails where a header
# does not say what it offers.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=${1:-build/api-pages}
rm -rf "$folder"
mkdir -p "$folder"
folder=$(realpath "$folder")
# Named as a host includes them: "morsehandler/host/values.h".
ln -s "$PWD" "$folder/morsehandler"
{
    cat docs/Doxyfile
    echo "OUTPUT_DIRECTORY = \"$folder\""
    echo "STRIP_FROM_PATH = \"$folder\" \"$PWD\""
    echo "STRIP_FROM_INC_PATH = \"$folder\""
    echo "INPUT = docs/api-pages.md"
    sed -n "s|^.*/.*|INPUT += \"$folder/morsehandler/&\"|p" tests/install/headers.list
} | doxygen -
rm "$folder/morsehandler"
echo "$folder/html/index.html"
