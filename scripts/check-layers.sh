#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Who may include whom. Data flows one way, and the library knows nothing of the host behind the
# contract. Prints each include that breaks the rule.
set -euo pipefail
cd "$(dirname "$0")/.."

# check FOLDER PATTERN: what the sources directly in FOLDER include, by quotes, matches PATTERN.
status=0
check() {
    local bad
    if [ -z "$(find "$1" -maxdepth "${3:-1}" \( -name '*.h' -o -name '*.cpp' \))" ]; then
        echo "$1 holds no source to look at"
        status=1
    fi
    bad=$(find "$1" -maxdepth "${3:-1}" \( -name '*.h' -o -name '*.cpp' \) -exec \
        grep -HnE '^#include "' {} + | grep -vE "\"($2)\"" || true)
    if [ -n "$bad" ]; then
        echo "$1 includes what it may not:"
        echo "$bad"
        status=1
    fi
}

contract='host/[a-z]+\.h'
check host "$contract"
check host/standin "$contract|host/standin/.*|tables/[a-z]+\.h"
check tables 'tables/[a-z]+\.h'
check tables/lint 'tables/.*'
check signal 'signal/.*|morse/symbolcodes\.h' 2
# Sound in general knows no keying; Morse and teleprinters do not know each other, nor the band.
common='signal/[a-z]+\.h|signal/samples/.*'
check signal/samples "$common"
check signal/morse "$common|signal/morse/.*|morse/symbolcodes\.h"
check signal/teleprinter "$common|signal/teleprinter/.*"
check morse "$contract|tables/[a-z]+\.h|morse/.*|morsehandler_export\.h|charmap/ialphabethandler\.h"
check charmap "$contract|tables/[a-z]+\.h|charmap/.*|morsehandler_export\.h"
check session "$contract|tables/[a-z]+\.h|morse/.*|session/.*|morsehandler_export\.h"
check station '(charmap|host|morse|session|signal|station)/.*|tables/[a-z]+\.h' 2
check station/io 'station/io/.*'
check station/audio 'signal/.*|station/(audio|io)/.*|tables/literal\.h'
check station/archive 'station/[a-z]+\.h|station/(archive|io)/.*'
check station/picture 'signal/.*|station/picture/.*|morse/symbolcodes\.h'
check examples 'morsehandler/(charmap|host|host/standin|morse|session)/[a-z]+\.h'
check app '(app|charmap|host|morse|session|signal|station|tables)/.*' 3

# A service puts all of a station together; nothing in the station knows it.
if grep -rnE '^#include "station/service/' station | grep -v '^station/service/'; then
    echo "station knows nothing of station/service"
    status=1
fi

# The one interface that morse shares with charmap stands alone.
if grep -nE '^#include "' charmap/ialphabethandler.h | grep -v morsehandler_export; then
    echo "charmap/ialphabethandler.h includes what it may not"
    status=1
fi

# So does the table of codes that the demodulator and the library share.
if grep -nE '^#include' morse/symbolcodes.h; then
    echo "morse/symbolcodes.h includes what it may not"
    status=1
fi
# What the demodulator saw and how that is drawn is reported in memory, not in files.
if grep -nE '^#include <(Q[A-Za-z]*(File|Dir)[A-Za-z]*|QTextStream|fstream|filesystem|cstdio|fcntl\.h|unistd\.h)>' \
    signal/*/*.{h,cpp} station/picture/*.{h,cpp}; then
    echo "signal and station/picture know no files"
    status=1
fi
# Sound to symbol codes goes without Qt.
if grep -nE '^#include <Q' signal/*.{h,cpp} signal/*/*.{h,cpp}; then
    echo "signal knows no Qt"
    status=1
fi
exit $status
