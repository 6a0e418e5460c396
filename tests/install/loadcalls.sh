#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What loading the library asks of the system: the loader opens and maps shared libraries, and
# nothing else names a file, opens a connection, or starts a thread or a process.
set -euo pipefail

command -v strace >/dev/null || { echo "strace is not installed"; exit 77; }
strace true 2>/dev/null || { echo "processes may not be traced here"; exit 77; }
calls=$(mktemp)
trap 'rm -f "$calls"' EXIT
# The leak sanitizer refuses to be traced.
ASAN_OPTIONS=detect_leaks=0 strace -f -qq -e trace=%file,%process,%network -o "$calls" "$1"

# PID, then the call.
during=$(sed -n '/"\/loading-begins"/,/"\/loading-ends"/s/^[0-9]* *//p' "$calls")
[[ $during == *'libmorsehandler.so.0", '* ]] || { echo "not seen to be loaded:"; cat "$calls"; exit 1; }
loader='^openat\(AT_FDCWD, "[^"]*(\.so[.0-9]*|/ld\.so\.cache)", O_RDONLY\|O_CLOEXEC\)|^(new)?fstatat(64)?\([0-9]+, "", '
others=$(grep -vE "\"/loading-(begins|ends)\"|$loader" <<<"$during" || true)
[ -z "$others" ] || { echo "loading calls:"; echo "$others"; exit 1; }
