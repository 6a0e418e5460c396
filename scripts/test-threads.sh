#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs what works in several threads under the thread sanitizer. Not part of every run: Qt is not
# built for that sanitizer, and a container that it shares implicitly can be taken for a race.
set -euo pipefail
cd "$(dirname "$0")/.."

# What two threads may call of the library, the workers of a band, recordings heard beside each other,
# and threads of a station: archive and broker.
tests=(charmap/decodermodulescenter host/trace signal/workers station/soundjob
    station/archivewriter station/mqtt)

scripts/setup.sh all
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target "${tests[@]/#*\//tst_}"
any=$(IFS="|" && echo "${tests[*]}")
ctest --preset tsan -R "^($any)\$"
