# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# How the binary interface is read from a library: for the tests that compare it with what is
# stored, and for scripts/renew-interface.sh, which stores it.

# exported_symbols LIBRARY PACKAGE VERSION STORED: what the library exports, in the form that Debian
# packages have: STORED as it has to be, with VERSION where it does not have a symbol yet.
exported_symbols() {
    local folder
    folder=$(mktemp -d)
    mkdir "$folder/debian"
    printf 'Source: morsehandler\n\nPackage: %s\nArchitecture: any\n' "$2" >"$folder/debian/control"
    (
        library=$(realpath "$1") stored=$(realpath "$4")
        cd "$folder" || exit
        dpkg-gensymbols -c0 -q -P. -p"$2" -v"$3" -e"$library" -I"$stored" -Oall >/dev/null
    )
    grep -v '^#MISSING' "$folder/all"
    rm -r "$folder"
}

# objects_at_load LIBRARY: the objects outside functions that are not constant from the start. What
# a function holds is built by its first call, behind a guard.
objects_at_load() {
    local objects
    objects=$(nm --demangle --defined-only "$1" | sed -n 's/^[0-9a-f]* [bB] //p' |
        grep -vE '^(completed|__)')
    grep -vxFf <(sed -n 's/^guard variable for //p' <<<"$objects") <<<"$objects" |
        grep -v '^guard variable for ' | LC_ALL=C sort
}

# binary_interface LIBRARY HEADERS SUPPRESSIONS OUTPUT: types and functions, as abidw sees them.
binary_interface() {
    abidw --headers-dir "$2" --suppressions "$3" --drop-private-types --exported-interfaces-only \
        --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names \
        --out-file "$4" "$1"
}
