#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Stands in for arecord, rtl_fm and nc, by whose name it is called, when the examples of the pages
# are run: the sample recording as raw samples, at the rate that was asked for. As with the real
# ones, other samples than signed 16 bits come where those are not asked for.
set -euo pipefail

words=" $* "
value_of() { # the word behind an option
    local value=${words#* "$1" }
    [ "$value" != "$words" ] && echo "${value%% *}"
}

bits=16
case ${0##*/} in
arecord)
    rate=$(value_of -r) || rate=8000
    [[ $words == *" -t raw "* && $words == *" -f S16_LE "* ]] || bits=8
    ;;
rtl_fm)
    rate=$(value_of -s) || rate=24k
    rate=${rate/k/000}
    ;;
nc)
    rate=48000
    ;;
esac
sox data/samples/evening.flac -t raw -r "$rate" -e signed -b "$bits" -c 1 -
