#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds and runs every test. `test.sh PRESET` does the same in another
# preset of CMakePresets.json, `test.sh PRESET WHAT...` only for folders of tests/ and fuzz (`session`)
# and for single tests (`app/map`). `test.sh asan` is under the address and undefined behaviour
# sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-dev}
scripts/setup.sh "$([ "$preset" = dev ] && echo test || echo all)"
cmake --preset "$preset" >/dev/null
if [ $# -lt 2 ]; then
    cmake --build --preset "$preset"
    ctest --preset "$preset"
else
    targets=()
    names=
    for what in "${@:2}"; do
        case $what in
            install* | longrun*) targets+=(all) ;;
            fuzz/*) targets+=("fuzz_${what#*/}") ;;
            house/*) targets+=(tests_house) ;;
            */*) targets+=("tst_${what#*/}") ;;
            *) targets+=("tests_$what") ;;
        esac
        case $what in
            */*) names+="|$what\$" ;;
            *) names+="|$what/" ;;
        esac
    done
    cmake --build --preset "$preset" --target "${targets[@]}"
    ctest --preset "$preset" -R "^(${names#|})" --no-tests=error
fi
