#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs every static check and prints what they find as file:line; fails if any of them complains.
# `check.sh tidy spelling` runs only those named. `check.sh changed` leaves out clazy, and looks with
# clang-tidy, cppcheck and at public headers only where something changed since BASE (default: where
# this left main, on main the commit before). Needs `scripts/setup.sh all`.
set -euo pipefail
cd "$(dirname "$0")/.."

build=build/dev
check=build/check
jobs=$(nproc)

# sources PATTERN…: tracked and new files, deleted ones left out.
sources() {
    git ls-files --cached --others --exclude-standard -- "$@" | sort -u | while read -r file; do
        [ ! -e "$file" ] || echo "$file"
    done
}

changed() {
    local base=${BASE:-$(git merge-base HEAD main 2>/dev/null || true)}
    if [ -z "$base" ] || [ "$base" = "$(git rev-parse HEAD)" ]; then
        base=HEAD~1
    fi
    git diff --name-only "$base" -- && git ls-files --others --exclude-standard
}

# among FILE…: those of them that changed, or all; of a header that changed also its source.
is_partial=
among() {
    if [ -z "$is_partial" ]; then
        printf '%s\n' "$@"
        return
    fi
    changed | sed 'p; s/\.h$/.cpp/' | grep -xFf - <(printf '%s\n' "$@") || true
}

# The sources that changed or include a header that did, or all.
concerned() {
    if [ -z "$is_partial" ]; then
        sources '*.cpp'
        return
    fi
    local headers
    headers=$(changed | sed -nE 's/^((tests|bench)\/)?(.*\.h)$/#include "\3"/p')
    { changed && sources '*.cpp' | xargs grep -lF "${headers:-no header}"; } |
        grep -xFf - <(sources '*.cpp') || true
}

# The compile commands for clang: each source by itself and once, without gcc's warnings. What is
# generated is there already, in the build.
compile_commands() {
    cmake --preset dev >/dev/null
    cmake --build --preset dev --target autogen >/dev/null
    cmake --preset dev -B "$check/single" -DCMAKE_UNITY_BUILD=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON >/dev/null
    python3 - "$PWD" "$check" "$build" <<'PYTHON'
import json, re, sys
root, check, build = sys.argv[1:]
commands = {}
for entry in json.load(open(f"{check}/single/compile_commands.json")):
    command = re.sub(r" -W[\w=+-]+", "", entry["command"])
    entry["command"] = command.replace(f"{root}/{check}/single", f"{root}/{build}")
    commands.setdefault(entry["file"], entry)
json.dump(list(commands.values()), open(f"{check}/compile_commands.json", "w"), indent=1)
PYTHON
}

# The given sources that the build compiles; others, such as example projects, have no command.
compiled() {
    sources "$@" | while read -r file; do
        ! grep -qF "\"$PWD/$file\"" "$check/compile_commands.json" || echo "$file"
    done
}

# Findings alone, with paths from the root: once each, though several sources include the header.
findings() {
    { grep -E '(warning|error):|Stack dump|No such file' || true; } | sed "s|$PWD/||" | sort -u
}

# Not for tests, which Qt Test's headers make slow, and where it found nothing when it was tried.
check_tidy() {
    local files
    mapfile -t files < <(compiled '*.cpp' ':!bench/*' ':!tests/*')
    among "${files[@]}" |
        xargs -r -P "$jobs" -n 1 clang-tidy -p "$check" --quiet 2>&1 | findings
}

# Not for tests, where nothing is gained by sparing a copy. The library's few constants are built at
# load, once, as required.
check_clazy() {
    compiled '*.cpp' ':!bench/*' ':!tests/*' |
        xargs -P "$jobs" -n 4 clazy-standalone -p "$check" --checks=level1,no-non-pod-global-static \
            --header-filter="$PWD/(host|tables|morse|charmap|session|signal|station|app|fuzz)/" 2>&1 | findings
}

# What is passed by value because an interface demands it is left to clang-tidy, which knows of it.
check_cppcheck() {
    concerned | xargs -r cppcheck -q -j "$jobs" --std=c++17 --library=qt --library=posix \
        --enable=warning,performance,portability --suppress=passedByValue --inline-suppr \
        --error-exitcode=1 -I. -I"$build" -Itests \
        --template='{file}:{line}: {severity}: {message} [{id}]' 2>&1
}

# Tables and test data are in other languages; "catched" is a text that hosts filter by.
check_spelling() {
    sources ':!data/alphabets/*.mal' ':!data/maps/*' ':!tests/data/*' ':!fuzz/seeds/*' '*' |
        xargs codespell --ignore-words-list=atleast,bloc,catched,dedented,nd,ontext,statics,te,upto
}

# Each public header can be included by itself.
check_headers() {
    local headers qt
    mapfile -t headers < <(sed '/^morsehandler_export/d' tests/install/headers.list)
    read -ra qt < <(pkg-config --cflags Qt5Core)
    cmake --preset dev >/dev/null
    among "${headers[@]}" | xargs -r -P "$jobs" -I{} g++ -std=c++17 -fPIC -fsyntax-only -I. \
        -I"$build" "${qt[@]}" -include {} -x c++ /dev/null 2>&1
}

check_layers() {
    tests/house/layers.py
}

check_format() {
    scripts/format.sh --check 2>&1 | findings
}

check_scripts() {
    sources '*.sh' .ci/run | xargs shellcheck --format=gcc &&
        sources '*.py' | xargs pyflakes3 2>&1
}

check_xml() {
    sources '*.xsd' '*.xml' | xargs xmllint --noout 2>&1 &&
        sources 'tests/data/golden/*.xml' |
        xargs xmllint --noout --schema data/schema/tavikresultdata.xsd 2>&1 |
            sed '/ validates$/d'
}

[ "${1:-}" != changed ] || { is_partial=1 && set -- layers format spelling scripts xml cppcheck headers tidy; }
[ $# -gt 0 ] || set -- layers format spelling scripts xml cppcheck headers clazy tidy
[[ " $* " != *" tidy "* && " $* " != *" clazy "* ]] || compile_commands
failed=()
for name in "$@"; do
    SECONDS=0
    status=0
    found=$("check_$name") || status=$?
    if [ $status -eq 0 ] && [ -z "$found" ]; then
        echo "$name: clean ($SECONDS s)"
    else
        echo "$name: complains (status $status, $SECONDS s)"
        echo "$found"
        failed+=("$name")
    fi
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "Not clean: ${failed[*]}"
    exit 1
fi
