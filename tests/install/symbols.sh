#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The libraries export what the lists in their packages say; nothing is built at load time but the
# objects of the list; and signals are connected by their texts.
set -euo pipefail
here=$SOURCE/tests/install
# shellcheck source=tests/install/interface.sh
source "$here/interface.sh"

[ "$(uname -m)" = x86_64 ] || exit 77 # the lists are of this machine's kind
status=0
for library in libmorsehandler libhoststandin; do
    stored=$SOURCE/cmake/debian/${library}0.symbols
    diff -u "$stored" <(exported_symbols "$STAGE/$LIBDIR/$library.so.0" "${library}0" "$VERSION" "$stored") |
        c++filt || status=1
done
diff -u "$here/libmorsehandler.loadtime" \
    <(objects_at_load "$STAGE/$LIBDIR/libmorsehandler.so.0") || status=1
for text in '2SetFilename(const QString &)' '1SetXmlFileName(const QString &)' \
    '2GetXmlTunerDemodulatorSettings()' '1GetXmlTunerDemodulatorSettings()'; do
    grep -aqF "$text" "$STAGE/$LIBDIR/libmorsehandler.so.0" ||
        { echo "no connection by '$text'"; status=1; }
done
[ $status -eq 0 ] || echo "See 'The binary interface' in CONTRIBUTING.md."
exit $status
