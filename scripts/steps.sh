# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# For .ci/run and scripts/night.sh: runs a command as a step, and prints at the end what each step took
# by the clock and of the processor, and which failed.
set -uo pipefail

steps=
failed=0
times_file=$(mktemp)
trap 'rm -f "$times_file"' EXIT

# Sets processor_s to what all ended children have taken. A subshell would have its own children, none,
# so `times` writes to a file.
processor_s=0
measure() {
    times >"$times_file"
    processor_s=$(tail -n 1 "$times_file" |
        awk '{ gsub("m", " "); gsub("s", ""); printf "%.0f", $1 * 60 + $2 + $3 * 60 + $4 }')
}

step() {
    local begin=$SECONDS before status=0
    measure
    before=$processor_s
    echo "== $*"
    "$@" || status=$?
    measure
    steps+=$'\n'"$(printf '%8d %9d  %s' $((SECONDS - begin)) $((processor_s - before)) "$*")"
    [ $status -eq 0 ] || { steps+=" (failed)" && failed=1; }
}

report_steps() {
    measure
    echo "   clock processor  (seconds)$steps"
    printf '%8d %9d  in all\n' "$SECONDS" "$processor_s"
    exit $failed
}
