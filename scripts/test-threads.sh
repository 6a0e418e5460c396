#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs what several threads may share, the decoder modules table, under the thread sanitizer. Not
# part of every run: Qt is not built for that sanitizer, and memory that Qt frees and hands to
# another thread is now and then taken for a race.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset tsan >/dev/null
cmake --build --preset tsan --target tst_decodermodulescenter
ctest --preset tsan -R '^charmap/decodermodulescenter$'
