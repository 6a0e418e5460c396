#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The libraries export what the lists beside this script say, and nothing is built at load time but
# the constants of the sources listed.
set -euo pipefail
here=$SOURCE/tests/install
# shellcheck source=tests/install/interface.sh
source "$here/interface.sh"

[ "$(uname -m)" = x86_64 ] || exit 77 # the lists are of this machine's kind
status=0
for library in libmorsehandler libhoststandin; do
    diff -u "$here/$library.symbols" <(exported_symbols "$STAGE/$LIBDIR/$library.so.0") || status=1
done
diff -u "$here/libmorsehandler.initialisers" \
    <(initialisers "$STAGE/$LIBDIR/libmorsehandler.so.0") || status=1
[ $status -eq 0 ] || echo "See 'The binary interface' in CONTRIBUTING.md."
exit $status
