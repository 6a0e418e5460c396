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

# Below /usr, where the linker looks anyway, no folder is named.
cmake -S "$SOURCE" -B "$work/system" -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_CXX_COMPILER="$CXX" \
    >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
folders=$(PKG_CONFIG_PATH=$work/system pkg-config --libs-only-L morsehandler morsehandler-hoststandin)
[ -z "$folders" ] || { echo "needless: $folders"; exit 1; }
