#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# fuzz.sh [SECONDS [ENTRY...]]: builds the fuzz targets with clang and runs each of them, or those
# of the entries that are named, for SECONDS (60), JOBS (2) at a time. It begins with the seeds and
# with what earlier runs found interesting (build/fuzz/corpus). Fails on any find, which it leaves in
# build/fuzz/finds.
set -euo pipefail
cd "$(dirname "$0")/.."

export SECONDS_EACH=${1:-60}
shift || true
export BUILD=build/asan
export KEPT=build/fuzz

scripts/setup.sh all
cmake --preset asan >/dev/null
cmake --build --preset asan --target tests_fuzz

entries=("$@")
if [ ${#entries[@]} -eq 0 ]; then
    for seeds in "$BUILD"/fuzz/*.seeds; do
        entries+=("$(basename "$seeds" .seeds)")
    done
fi
mkdir -p "$KEPT/finds"

# Where the targets write files: in memory if there is such a place.
shm=/dev/shm
[ -w $shm ] || shm=${TMPDIR:-/tmp}
TMPDIR=$(mktemp -d "$shm/morsehandler-fuzz.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

export ASAN_OPTIONS=malloc_context_size=8:quarantine_size_mb=32
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

fuzz() {
    local entry=$1 log=$KEPT/finds/$1.log dictionary=fuzz/dictionaries/$1.dict seeds options=()
    mapfile -t seeds <"$BUILD/fuzz/$entry.seeds"
    mkdir -p "$KEPT/corpus/$entry"
    [ ! -e "$dictionary" ] || options+=("-dict=$dictionary")
    if "$BUILD/bin/fuzz_$entry" "-max_total_time=$SECONDS_EACH" -timeout=60 -report_slow_units=60 \
        -rss_limit_mb=4096 -print_final_stats=1 "-artifact_prefix=$KEPT/finds/$entry-" "${options[@]}" \
        "$KEPT/corpus/$entry" "${seeds[@]}" >"$log" 2>&1; then
        times >"$log.times"
        echo "$entry: $(grep -o 'number_of_executed_units:.*' "$log" | tr -s ' ')," \
            "processor time $(tail -n 1 "$log.times")," \
            "coverage $(grep -o 'INITED cov: [0-9]*' "$log" | grep -o '[0-9]*$') with the seeds," \
            "$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | grep -o '[0-9]*$') at the end"
    else
        tail -n 60 "$log"
        echo "$entry: a find. Once more: $BUILD/bin/fuzz_$entry" "$KEPT/finds/$entry-"*
        return 1
    fi
}
export -f fuzz

printf '%s\n' "${entries[@]}" | xargs -P "${JOBS:-2}" -I{} bash -c 'fuzz {}'
