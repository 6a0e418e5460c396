#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What multimon-ng copies from a recording: multimon-ng.sh WAVE [TONE_Hz WPM]
# It takes everything that it is given for the signal, so that a band-pass stands before it: one as
# wide as tones may lie apart or, where tone and speed are known, one that fits both. Needs multimon-ng, sox.
set -euo pipefail

wave=$1
if [ $# -ge 3 ]; then
    band="$(($2 - $3))-$(($2 + $3))"
    taps=(-n 8191) # narrow filters need long ones
    known=(-d $((1200 / $3)) -g $((1200 / $3)))
else
    band=450-950
    taps=()
    known=()
fi
# A character that it does not know is one wrong character, however it is written.
sox "$wave" -t raw -r 22050 -e signed -b 16 -c 1 - sinc "${taps[@]}" "$band" norm -3 2>/dev/null |
    multimon-ng -q -c -a MORSE_CW -t raw "${known[@]}" - |
    sed -E 's/<[^>]*>/*/g; s/[^ -~]/*/g'
