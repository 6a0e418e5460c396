#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds and runs every test. `test.sh PRESET` does the same in another
# preset of CMakePresets.json, `test.sh PRESET FOLDER...` only for those folders of tests/ and fuzz.
# `test.sh asan` is under the address and undefined behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-dev}
folders=("${@:2}")
scripts/setup.sh "$([ "$preset" = dev ] && echo test || echo all)"
cmake --preset "$preset" >/dev/null
if [ ${#folders[@]} -eq 0 ]; then
    cmake --build --preset "$preset"
    ctest --preset "$preset"
else
    cmake --build --preset "$preset" --target "${folders[@]/#/tests_}"
    ctest --preset "$preset" -L "^($(IFS="|" && echo "${folders[*]}"))\$"
fi
