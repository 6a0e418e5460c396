#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What bash, zsh and fish offer after each kind of word.
set -euo pipefail

PATH=$STAGE/bin:$PATH
# shellcheck source=/dev/null
source "$STAGE/share/bash-completion/completions/morsehost"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir "a folder"
touch recording.flac old.svg LOUD.SVG new.png
mkdir mine
printf 'A\t.-\n\n' >mine/Own.mal

# offered WORD...: what may stand in the place of the last word, a line each.
offered() {
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _morsehost || true
    printf '%s\n' "${COMPREPLY[@]}"
}
status=0
expect() { # WANTED|WANTED... WORD..., in any order
    local got wanted
    got=$(offered "${@:2}" | sort)
    wanted=$(echo "$1" | tr '|' '\n' | sort)
    [ "$got" = "$wanted" ] || { echo "after '${*:2}': '$got', not '$wanted'"; status=1; }
}

commands=$(morsehost --help | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
expect "$(echo "$commands" | tr '\n' '|')help|--help|--version" morsehost ""
expect symbols morsehost sy
expect "$(echo "$commands" | paste -sd '|')" morsehost help ""
expect translate morsehost --help tr
expect "" morsehost help decode ""
expect "--version" morsehost --v
for command in $commands; do
    options=$(morsehost "$command" --help | sed -n '/^Options:/,/^$/s/^  \(-[-a-z]*\) .*/\1/p')
    expect "$(echo "$options" | paste -sd '|')" morsehost "$command" -
done
expect "--alphabet|--alphabets" morsehost decode --al
expect "a folder|mine" morsehost decode --save ""
expect "a folder|mine" morsehost decode --save = ""
expect "a folder|mine|recording.flac|old.svg|LOUD.SVG|new.png" morsehost decode ""
expect "a folder|mine|old.svg|LOUD.SVG|new.png" morsehost inspect recording.flac -o ""
expect "old.svg" morsehost inspect -o ol
expect "recording.flac" morsehost lint rec
expect "" morsehost alphabets ""
expect "" morsehost decode --tone ""
expect "" morsehost nonsense ""
# Names come from the program itself, quoted for the shell.
expect "Greek" morsehost symbols --alphabet Gr
expect 'ASCII\ RTTY' morsehost map --decoder AS
expect 'Baudot|Baudot\ F7B' morsehost maps --decoder = Bau
expect 'Greek\ -\ ASCII|Greek-CCITT\ -\ ASCII' morsehost translate --map Greek
expect 'Greek\ -\ ASCII' morsehost translate --map 'Greek\ -'
# They come from the folder that is named before.
expect "Default|Own" morsehost decode --alphabets mine --alphabet ""
expect "Own" morsehost decode --alphabets = mine --alphabet = O
expect "Default" morsehost decode --alphabets "'a folder'" --alphabet ""
# What was typed is never run.
# shellcheck disable=SC2016 # that is the point
offered morsehost translate --map '$(touch run)' >/dev/null
# shellcheck disable=SC2016
offered morsehost translate --maps '$(touch run)' --map "" >/dev/null
[ ! -e run ] || { echo "a typed command was run"; status=1; }

complete -p morsehost >/dev/null || status=1

# The other two offer the same words, each in its own way of writing them.
asked=()
wanted=()
ask() { # WANTED|WANTED... LINE
    asked+=("$2")
    wanted+=("$(echo "$1" | tr '|' '\n' | sort -u)")
}
ask "--help|--version" "morsehost --"
for command in $commands; do
    ask "$(grep "^$command" <<<"$commands" | paste -sd '|')" "morsehost $command"
    options=$(morsehost "$command" --help | sed -n '/^Options:/,/^$/s/^  \(-[-a-z]*\) .*/\1/p')
    ask "$(echo "$options" | grep -e -- | paste -sd '|')" "morsehost $command --"
done
ask "a folder|mine" "morsehost decode --save "
ask "a folder|mine|recording.flac|old.svg|LOUD.SVG|new.png" "morsehost decode "
ask "a folder|mine|old.svg|LOUD.SVG|new.png" "morsehost inspect recording.flac -o "
ask "" "morsehost alphabets x"
ask "" "morsehost decode --tone "
ask Greek "morsehost symbols --alphabet Gr"
ask "ASCII RTTY" "morsehost map --decoder AS"
ask "Greek - ASCII|Greek-CCITT - ASCII" "morsehost translate --map Greek"
ask "Default|Own" "morsehost decode --alphabets mine --alphabet "
ask Own "morsehost decode --alphabets mine --alphabet O"
expect_asked() { # SHELL PLACE GOT
    [ "$3" = "${wanted[$2]}" ] || { echo "$1, after '${asked[$2]}': '$3', not '${wanted[$2]}'"; status=1; }
}

# Alike on every machine, and where there is no terminal.
export HOME=$work TERM=vt100
mkdir zsh
cp "$SOURCE/tests/install/completion.zsh" zsh/.zshrc
printf '%s\n' "${asked[@]}" >zsh/asked
touch zsh/offered
# It completes on a terminal only.
mkdir place && mv "a folder" mine ./*.* place
(cd place && ASKED=$work/zsh/asked OFFERED=$work/zsh/offered ZDOTDIR=$work/zsh \
    COMPLETIONS=$STAGE/share/zsh/vendor-completions script -qec "zsh -d -i" /dev/null </dev/null >../zsh/log)
for at in "${!asked[@]}"; do
    got=$(awk -F '\t' -v line="${asked[at]}" '$1 == line { print $2 }' zsh/offered | sed 's/\\//g' | sort -u)
    expect_asked zsh "$at" "$got"
done

for at in "${!asked[@]}"; do
    # shellcheck disable=SC2016 # for fish
    got=$(cd place && fish --no-config --command \
        'source $argv[1]; complete --do-complete $argv[2]' \
        "$STAGE/share/fish/vendor_completions.d/morsehost.fish" "${asked[at]}" |
        cut -f 1 | sed 's|/$||; s|\\||g' | sort -u)
    expect_asked fish "$at" "$got"
done
exit $status
