#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The same stranger, without CMake.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export PKG_CONFIG_PATH=$STAGE/$LIBDIR/pkgconfig
[ "$(pkg-config --modversion morsehandler)" = "$VERSION" ]
flags=$(pkg-config --cflags --libs morsehandler morsehandler-hoststandin)
# shellcheck disable=SC2086 # several flags
"$CXX" -std=c++17 -fPIC "$SOURCE/tests/install/consumer/main.cpp" -o "$work/consumer" $flags
text=$(LD_LIBRARY_PATH=$STAGE/$LIBDIR "$work/consumer")
[ "$text" = SOS ] || { echo "said '$text'"; exit 1; }
