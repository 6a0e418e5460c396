#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the build tree into an empty folder, for the tests beside this one.
set -euo pipefail

rm -rf "$STAGE"
cmake --install "$BUILD" --prefix "$STAGE" >/dev/null
for file in bin/morsehost "$LIBDIR/libmorsehandler.so.0" "$LIBDIR/libhoststandin.so.0" \
    "$LIBDIR/cmake/morsehandler/morsehandlerConfig.cmake" "$LIBDIR/pkgconfig/morsehandler.pc" \
    share/man/man1/morsehost.1.gz share/bash-completion/completions/morsehost \
    share/zsh/vendor-completions/_morsehost share/fish/vendor_completions.d/morsehost.fish \
    share/morsehandler/alphabets/International.mal share/doc/morsehandler/LICENSE; do
    [ -e "$STAGE/$file" ] || { echo "not installed: $file"; exit 1; }
done

# It works from where it lies, and would from anywhere else.
for where in "$STAGE" "$STAGE.moved"; do
    [ -e "$where" ] || mv "$STAGE" "$where"
    text=$("$where/bin/morsehost" decode "$where/share/morsehandler/samples/evening.flac")
    alphabets=$("$where/bin/morsehost" alphabets | wc -l)
    [ -e "$STAGE" ] || mv "$where" "$STAGE"
    [[ $text == *"GOOD EVENING FROM THE NORTH SEA"* ]] || { echo "decoded: $text"; exit 1; }
    [ "$alphabets" -gt 10 ] || { echo "alphabets found: $alphabets"; exit 1; }
done
