#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What ggmorse copies from a recording: ggmorse.sh WAVE [TONE_Hz WPM]
# Needs its program ggmorse-from-file, which works without a sound card.
set -euo pipefail

known=()
[ $# -lt 3 ] || known=("-f$2" "-w$3")
# A character that it does not know is a question mark, as is one that was sent.
ggmorse-from-file "$1" "${known[@]}" |
    sed -n '/^\[+\] Decoding:/,/^\[+\] Done/ { /^\[+\]/! p }'
