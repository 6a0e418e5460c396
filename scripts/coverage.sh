#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Counts which lines and branches of what is shipped its tests reach, by folder, and fails where a folder
# has less than tests/coverage/floors.txt says. Takes half an hour. build/coverage/report/index.html shows
# where.
set -euo pipefail
cd "$(dirname "$0")/.."

folders=(tables host morse charmap session signal station app)

scripts/setup.sh all
cmake --preset coverage >/dev/null
cmake --build --preset coverage --target "${folders[@]/#/tests_}"
find build/coverage -name '*.gcda' -delete
any=$(IFS="|" && echo "${folders[*]}")
ctest --preset coverage -L "^($any)\$"

# Branches that only an exception takes are the compiler's, one behind nearly every call.
report=build/coverage/report
mkdir -p $report
# Where threads count at once a count may come out negative; such a line is left out.
gcovr --root . --filter "($any)/" build/coverage -j 2 --gcov-ignore-parse-errors \
    --exclude-throw-branches --exclude-unreachable-branches \
    --json-summary $report/summary.json --html-details $report/index.html
tests/coverage/judge.py $report/summary.json
