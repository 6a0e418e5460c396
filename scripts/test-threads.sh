#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs all that works in several threads under the thread sanitizer. Not part of every run: Qt is not
# built for that sanitizer, and a container that it shares implicitly can be taken for a race.
set -euo pipefail
cd "$(dirname "$0")/.."

# What two threads may call of the library, the workers of a band, recordings heard beside each other,
# and the threads of a station: archive, page, broker.
tests=(charmap/decodermodulescenter host/trace signal/workers signal/bandreceiver station/soundjob
    station/archivewriter station/page station/mqtt)

scripts/setup.sh all
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target "${tests[@]/#*\//tst_}"
any=$(IFS="|" && echo "${tests[*]}")
ctest --preset tsan -R "^($any)\$"
