#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What is too slow for every change, for a night: every static check on every file, all tests under the
# sanitizers, threads, coverage, ten minutes of every fuzz target and the lines that it reaches, mutants, a
# station and a cluster with faults, a day of signal, hours of a band, the packages on a bare machine (root).
# Goes on after a step that fails. NIGHT names a folder for what the steps print
# (default: build/night).
cd "$(dirname "$0")/.." || exit
. scripts/steps.sh

night=${NIGHT:-build/night}
mkdir -p "$night"
# shellcheck disable=SC2317 # step calls it
logged() { # NAME COMMAND...
    "${@:2}" >"$night/$1.log" 2>&1 || { tail -n 40 "$night/$1.log" && return 1; }
}

step scripts/setup.sh night
step logged check scripts/check.sh
step logged asan scripts/test.sh asan
step logged threads scripts/test-threads.sh
step logged coverage scripts/coverage.sh
step logged fuzz scripts/fuzz.sh 600
step logged fuzz-coverage scripts/fuzz-coverage.sh
step logged mutants-library scripts/mutate.py library --seed "$(date +%j)"
step logged mutants-host scripts/mutate.py host --seed "$(date +%j)"
# Of the demodulator, by the tests of its stages: the others take seconds for each mutant.
step logged mutants-signal scripts/mutate.py signal --file signal/morse/ --count 200 --seed "$(date +%j)" \
    --tests '^signal/(?!demodulator|reception|recordings|band|teleprinter|acquisition|tracking|framing)'
step logged station scripts/try-station.sh build/asan
step logged faults scripts/try-faults.sh build/asan
step logged cluster scripts/try-cluster.sh build/asan
step logged long-run scripts/long-run.sh 24
step logged hours scripts/try-hours.sh 2
step logged packages scripts/package.sh
step logged try-packages scripts/try-packages.sh "$night/machine"
report_steps
