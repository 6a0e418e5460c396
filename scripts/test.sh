#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds and runs every test. `test.sh asan` does the same under the
# address and undefined behaviour sanitizers; see CMakePresets.json for the other presets.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-dev}
scripts/setup.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset"
