#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What fldigi copies from a recording: fldigi.sh WAVE TONE_Hz [WPM]
# fldigi cannot look for a signal by itself, so it is always given the tone, as by a click into its
# waterfall. With WPM it is also given the speed and filters to fit it. Further lines for its
# settings may stand in FLDIGI_SETTINGS. Needs fldigi, xvfb, curl and a C compiler.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
# What was started ends with this script, however that ends.
trap 'jobs -p | xargs -r kill 2>/dev/null || true; wait 2>/dev/null; rm -rf "$work"' EXIT
export SOUND_FILE=$1 SOUND_GO=$work/go SOUND_DONE=$work/done
tone=$2
speed=${3:-}
port=$((20000 + $$ % 20000))

cc -shared -fPIC -O1 -Wl,-soname,libpulse-simple.so.0 \
    -Wl,--version-script=<(echo 'PULSE_0 { global: pa_simple_*; };') \
    -o "$work/libpulse-simple.so.0" "$here/soundserver.c"
{
    echo "<FLDIGI_DEFS><MYCALL>N0CALL</MYCALL><AUDIOIO>2</AUDIOIO>"
    [ -z "$speed" ] || echo "<CWSPEED>$speed</CWSPEED><CWMFILT>1</CWMFILT>"
    echo "${FLDIGI_SETTINGS:-}</FLDIGI_DEFS>"
} > "$work/fldigi_def.xml"

call() { # METHOD [TYPE VALUE]...
    local method=$1 parameters=
    shift
    while [ $# -gt 1 ]; do
        parameters+="<param><value><$1>$2</$1></value></param>"
        shift 2
    done
    curl -sf "http://127.0.0.1:$port/RPC2" -H 'Content-Type: text/xml' -d \
        "<?xml version='1.0'?><methodCall><methodName>$method</methodName><params>$parameters</params></methodCall>"
}

# Not by xvfb-run, which leaves its screen behind when it is killed.
mkfifo "$work/display"
Xvfb -displayfd 3 3>"$work/display" >/dev/null 2>&1 &
read -r display <"$work/display"
LD_LIBRARY_PATH=$work DISPLAY=:$display fldigi --config-dir "$work" --home-dir "$work" \
    --xmlrpc-server-port "$port" >/dev/null 2>&1 &
for _ in $(seq 900); do
    call modem.get_name >/dev/null 2>&1 && break
    sleep 0.2
done
call modem.set_by_name string CW >/dev/null
sleep 0.5
call modem.set_carrier int "$tone" >/dev/null
call main.set_squelch boolean "${FLDIGI_SQUELCH:-0}" >/dev/null
sleep 0.5
call text.clear_rx >/dev/null
touch "$SOUND_GO"
for _ in $(seq 6000); do
    [ ! -e "$SOUND_DONE" ] || break
    sleep 0.2
done
sleep 1
length=$(call text.get_rx_length | sed -nE 's/.*<(i4|int)>([0-9]+)<.*/\2/p')
call text.get_rx int 0 int "$length" | tr -d '\n' | sed -nE 's/.*<base64>(.*)<\/base64>.*/\1/p' |
    base64 -d | sed -E 's/<BT>/=/g; s/<AR>/+/g; s/<KN>/(/g; s/<[A-Z]+>/*/g'
call fldigi.terminate int 0 >/dev/null || true
sleep 0.5
