#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The installed headers are those that a host may use. (That each can be included by itself, the
# build has found out.)
set -euo pipefail

headers=$STAGE/include/morsehandler
found=$(cd "$headers" && find . -name '*.h' | sed 's|^\./||' | LC_ALL=C sort)
diff -u "$SOURCE/tests/install/headers.list" <(echo "$found") ||
    { echo "Other headers are installed than headers.list says."; exit 1; }
if grep -rn "No API" "$headers"; then
    echo "These say that they are no API, and are installed."
    exit 1
fi
