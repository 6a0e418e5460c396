#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs what several threads may share, the decoder modules table and the traces, under the thread
# sanitizer. Not part of every run: Qt is not built for that sanitizer, and a container that it
# shares implicitly can be taken for a race.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target tst_decodermodulescenter tst_trace
ctest --preset tsan -R '^(charmap/decodermodulescenter|host/trace)$'
