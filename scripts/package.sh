#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing and makes the Debian packages, in build/package/packages.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build
cmake --preset package >/dev/null
cmake --build --preset package
cd build/package
rm -rf packages # those of an earlier version
cpack -G DEB
