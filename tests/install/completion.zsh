# SPDX-License-Identifier: MIT
# As the .zshrc of an interactive zsh: writes what it offers after each line of the file $ASKED into the
# file $OFFERED, "LINE<tab>WORD", and ends.
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
    # With these the completion system looks words up for itself.
    if [[ ${argv[(i)-[OAD]]} -le $#argv ]]; then
        builtin compadd "$@"
        return
    fi
    local -a words
    builtin compadd -A words "$@"
    (( $#words )) && print -r -l -- ${words/#/$asked_line$'\t'} >>$OFFERED
    builtin compadd "$@"
}
zle -C offer list-choices _main_complete
zle-line-init() {
    local asked_line
    while IFS= read -r asked_line; do
        BUFFER=$asked_line
        CURSOR=$#BUFFER
        zle offer
    done <$ASKED
    exit 0
}
zle -N zle-line-init
