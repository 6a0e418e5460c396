# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# For .ci/run and scripts/night.sh: runs a command as a step, and prints at the end what each step took
# by the clock and of the processor, and which failed.
set -uo pipefail

steps=
failed=0
processor_s() { # what all ended children have taken
    local seconds
    seconds=$(times | tail -n 1 | awk '{ gsub("m", " "); gsub("s", ""); print $1 * 60 + $2 + $3 * 60 + $4 }')
    printf '%.0f' "$seconds"
}

step() {
    local begin=$SECONDS before status=0
    before=$(processor_s)
    echo "== $*"
    "$@" || status=$?
    steps+=$'\n'"$(printf '%8d %9d  %s' $((SECONDS - begin)) $(($(processor_s) - before)) "$*")"
    [ $status -eq 0 ] || { steps+=" (failed)" && failed=1; }
}

report_steps() {
    echo "   clock processor  (seconds)$steps"
    printf '%8d %9d  in all\n' "$SECONDS" "$(processor_s)"
    exit $failed
}
