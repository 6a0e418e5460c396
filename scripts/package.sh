#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing and makes the Debian packages, in build/package/packages; those of debug
# information end in .ddeb.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh package
cmake --preset package >/dev/null
cmake --build --preset package
cd build/package
rm -rf packages # those of an earlier version
cpack -G DEB
