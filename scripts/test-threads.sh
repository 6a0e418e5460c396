#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs what works in several threads under the thread sanitizer. Not part of every run: Qt is not
# built for that sanitizer, and a container that it shares implicitly can be taken for a race.
set -euo pipefail
cd "$(dirname "$0")/.."

# What two threads may call of the library, the workers of a band, recordings heard beside each other,
# and threads of a station: archive, broker, page and all of them together.
tests=(charmap/decodermodulescenter host/trace signal/workers station/soundjob
    station/archivewriter station/mqtt station/page station/service)
# Signals that begin, end, stand close to each other and are handed to teleprinters. What else a band
# may hold is shared by the workers in the same way, and takes half an hour.
bands=(readsSignalsSideBySide neitherThreadsNorPiecesChangeAnything
    eachStationOnAFrequencyHasATransmissionOfItsOwn teleprintersAreGivenAsSuchAndNeverAsMorse)

scripts/setup.sh all
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target "${tests[@]/#*\//tst_}" tst_bandreceiver
any=$(IFS="|" && echo "${tests[*]}")
ctest --preset tsan -R "^($any)\$"
QTEST_FUNCTION_TIMEOUT=3600000 TSAN_OPTIONS=suppressions=tests/support/tsan.supp \
    build/tsan/bin/tst_bandreceiver "${bands[@]}"
