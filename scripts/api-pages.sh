#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Writes pages of the public headers into build/api-pages/html. Fails where a header does not say
# what it offers.
set -euo pipefail
cd "$(dirname "$0")/.."

mkdir -p build
doxygen docs/Doxyfile
echo "build/api-pages/html/index.html"
