#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds both libraries in build/dev and stores their binary interface again. CONTRIBUTING.md says
# when that is allowed. Look at the difference, and commit it by itself with the reason.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tests/install/interface.sh
source tests/install/interface.sh

cmake --preset dev >/dev/null
cmake --build --preset dev # all that is installed, so that nothing old is stored
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
cmake --install build/dev --prefix "$stage" >/dev/null
headers=$stage/include/morsehandler
stored=tests/install
version=$(sed -n 's/^project(morsehandler VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
for library in libmorsehandler libhoststandin; do
    file=build/dev/lib/$library.so.0
    exports=cmake/debian/${library}0.symbols
    renewed=$(exported_symbols "$file" "${library}0" "$version" "$exports")
    echo "$renewed" >"$exports"
    binary_interface "$file" "$headers" "$stored/types.suppr" "$stored/$library.abi"
done
(cd "$headers" && find . -name '*.h' | sed 's|^\./||' | LC_ALL=C sort) >"$stored/headers.list"
git --no-pager diff --stat -- "$stored" cmake/debian
