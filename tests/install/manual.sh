#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The manual page is well formed, and describes every command and option as the program's help does.
set -euo pipefail

page=$STAGE/share/man/man1/morsehost.1.gz
program=$STAGE/bin/morsehost
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
plain=$work/morsehost.1
gunzip -c "$page" >"$plain"

checked=0
if command -v mandoc >/dev/null; then
    mandoc -T lint -W style "$plain"
    checked=1
fi
if command -v man >/dev/null && man --version 2>/dev/null | grep -q '^man '; then
    complaints=$(MANWIDTH=80 LC_ALL=C.UTF-8 man --warnings -l "$plain" 2>&1 >/dev/null)
    [ -z "$complaints" ] || { echo "$complaints"; exit 1; }
    checked=1
fi
[ $checked -eq 1 ] || { echo "neither mandoc nor man is installed"; exit 77; }

# In one line, as a person reads it.
text=$(mandoc -T utf8 -O width=1000 "$plain" 2>/dev/null | col -bx | tr -s ' \n' '  ')
[ -n "$text" ] || exit 77
commands=$("$program" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ "$(echo "$commands" | wc -l)" -ge 7 ] || { echo "commands: $commands"; exit 1; }
status=0
for command in $commands; do
    while read -r word rest; do
        case $rest in
            [A-Z]*\ *) wanted="$word ${rest%% *} $(echo "${rest#* }" | tr -s ' ')" ;;
            *) wanted="$word $rest" ;;
        esac
        wanted=$(echo "$wanted" | tr -s ' ')
        [[ $text == *"$wanted"* ]] || { echo "$command: the page lacks '$wanted'"; status=1; }
    done < <("$program" "$command" --help | sed -n '/^Options:/,/^$/s/^  -/-/p')
    [[ $text == *"morsehost $command [OPTION...]"* ]] || { echo "no synopsis of $command"; status=1; }
done
exit $status
