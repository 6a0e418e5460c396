# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# How the binary interface is read from a library: for the tests that compare it with what is
# stored, and for scripts/renew-interface.sh, which stores it.

# exported_symbols LIBRARY: as the linker spells them, each with its readable form.
exported_symbols() {
    local rows
    rows=$(nm --dynamic --defined-only --format=posix "$1" | cut -d ' ' -f 1,2 | LC_ALL=C sort)
    paste -d ' ' <(echo "$rows") <(echo "$rows" | cut -d ' ' -f 1 | c++filt)
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
