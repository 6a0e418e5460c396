#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Nothing that a compiled host relies on has changed since the interface was stored: sizes, fields,
# tables of virtual operations, arguments.
set -euo pipefail
here=$SOURCE/tests/install
# shellcheck source=tests/install/interface.sh
source "$here/interface.sh"

[ "$(uname -m)" = x86_64 ] || exit 77 # what is stored is of this machine's kind
command -v abidw >/dev/null || { echo "abidw is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
for library in libmorsehandler libhoststandin; do
    binary_interface "$STAGE/$LIBDIR/$library.so.0" "$STAGE/include/morsehandler" \
        "$here/types.suppr" "$work/$library.abi"
    abidiff --harmless "$here/$library.abi" "$work/$library.abi" || status=1
done
[ $status -eq 0 ] || echo "See 'The binary interface' in CONTRIBUTING.md."
exit $status
