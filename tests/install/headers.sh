#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The installed headers are those that a host may use. (scripts/check.sh includes each by itself.)
set -euo pipefail

headers=$STAGE/include/morsehandler
found=$(cd "$headers" && find . -name '*.h' | sed 's|^\./||' | LC_ALL=C sort)
diff -u "$SOURCE/tests/install/headers.list" <(echo "$found") ||
    { echo "Other headers are installed than headers.list says."; exit 1; }
if grep -rn "No API" "$headers"; then
    echo "These say that they are no API, and are installed."
    exit 1
fi

# They include each other below morsehandler/, where no header of somebody else can be.
if grep -rn '#include "' "$headers" | grep -v '#include "morsehandler/'; then
    echo "These include from elsewhere."
    exit 1
fi

# The examples, and sources of the stand-in that a host may take over, include nothing else.
examples=$STAGE/share/doc/libmorsehandler-dev/examples
included=$(grep -rhoP '^#include "\K[^"]+' "$examples" | sort -u)
[ -n "$included" ] || { echo "Where are the examples?"; exit 1; }
status=0
for file in $included; do
    [ -e "$STAGE/include/$file" ] || [ -e "$examples/$file" ] || { echo "not installed: $file"; status=1; }
done
exit $status
