#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A stranger's CMake project finds the installed package, builds and runs.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$SOURCE/tests/install/consumer" "$work/project"
configure() {
    cmake -S "$work/project" -B "$work/$1" -DCMAKE_PREFIX_PATH="$STAGE" \
        -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "${@:2}" >"$work/log" 2>&1
}

configure build || { cat "$work/log"; exit 1; }
cmake --build "$work/build" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
text=$("$work/build/consumer")
[ "$text" = SOS ] || { echo "said '$text'"; exit 1; }
if grep -E "(-I|-isystem )$SOURCE(/build/[a-z]+)?[ \"]" "$work/build/compile_commands.json"; then
    echo "It was built with headers of the source tree."
    exit 1
fi

# Another major version is another binary interface.
if configure other -DWANTED_VERSION=1.0; then
    echo "Version 1.0 was wanted, and $VERSION taken."
    exit 1
fi
grep -q "morsehandlerConfig.cmake, version: $VERSION" "$work/log" || { cat "$work/log"; exit 1; }
