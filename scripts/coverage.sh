#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Counts which lines and branches of the library and the stand-in host their tests reach, by folder,
# and fails where a folder has too few. build/coverage/report/index.html shows which are missing.
set -euo pipefail
cd "$(dirname "$0")/.."

least_lines=100
least_branches=95
folders=(host files morse charmap session)

scripts/setup.sh all
cmake --preset coverage >/dev/null
cmake --build --preset coverage --target "${folders[@]/#/tests_}"
find build/coverage -name '*.gcda' -delete
any=$(IFS="|" && echo "${folders[*]}")
ctest --preset coverage -L "^($any)\$"

# Branches that only an exception takes are the compiler's, one behind nearly every call.
report=build/coverage/report
mkdir -p $report
gcovr --root . --filter "($any)/" build/coverage -j 2 \
    --exclude-throw-branches --exclude-unreachable-branches \
    --csv $report/files.csv --html-details $report/index.html

awk -F, -v wanted="${folders[*]}" -v least_lines=$least_lines -v least_branches=$least_branches '
    NR > 1 {
        sub("/[^/]*$", "", $1)
        lines[$1] += $2; linesRun[$1] += $3
        branches[$1] += $5; branchesRun[$1] += $6
    }
    function share(run, all) { return all ? 100 * run / all : 100 }
    END {
        printf "%-14s %18s %18s\n", "", "lines", "branches"
        for (folder in lines) {
            ofLines = share(linesRun[folder], lines[folder])
            ofBranches = share(branchesRun[folder], branches[folder])
            isLow = ofLines < least_lines || ofBranches < least_branches
            low = low || isLow
            printf "%-14s %4d/%-4d %6.2f %% %4d/%-4d %6.2f %%%s\n", folder,
                linesRun[folder], lines[folder], ofLines,
                branchesRun[folder], branches[folder], ofBranches, isLow ? "  too few" : "" | "sort"
        }
        close("sort")
        count = split(wanted, names, " ")
        for (i = 1; i <= count; ++i) {
            if (!lines[names[i]]) {
                print names[i] ": nothing was counted"
                low = 1
            }
        }
        exit low
    }' $report/files.csv
