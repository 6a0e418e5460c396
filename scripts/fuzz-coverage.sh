#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Counts which lines of the library and the stand-in host the fuzz targets reach, by folder: with the
# seeds and with what scripts/fuzz.sh has collected in build/fuzz/corpus.
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=build/fuzz-coverage
scripts/setup.sh all
cmake --preset coverage -B $BUILD >/dev/null
entries=()
for seeds in fuzz/seeds/*/; do
    entries+=("$(basename "$seeds")")
done
cmake --build $BUILD --target "${entries[@]/#/fuzz_}"
find $BUILD -name '*.gcda' -delete
ctest --test-dir $BUILD -L '^fuzz$' --output-on-failure
for entry in "${entries[@]}"; do
    # Not demodulator's, of which each input takes a second.
    if [ "$entry" != demodulator ] && [ -d "build/fuzz/corpus/$entry" ]; then
        $BUILD/bin/fuzz_"$entry" "build/fuzz/corpus/$entry" >/dev/null
    fi
done

mkdir -p $BUILD/report
gcovr --root . --filter '(tables|host|morse|charmap|session)/' $BUILD -j 2 \
    --json-summary $BUILD/report/summary.json --html-details $BUILD/report/index.html
python3 - $BUILD/report/summary.json <<'END'
import collections, json, os, sys
lines = collections.defaultdict(lambda: [0, 0])
for file in json.load(open(sys.argv[1]))["files"]:
    folder = lines[os.path.dirname(file["filename"])]
    folder[0] += file["line_covered"]
    folder[1] += file["line_total"]
for folder, (covered, total) in sorted(lines.items()):
    print(f"{folder}: {covered} of {total} lines, {100 * covered / total:.1f} %")
END
