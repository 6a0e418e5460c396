#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# `judge.py summary.json`: prints lines and branches reached by folder, from gcovr's summary in JSON,
# and fails where a folder has less than stands in floors.txt, or where one of the two is missing.
import collections
import json
import pathlib
import sys

FLOORS = pathlib.Path(__file__).with_name("floors.txt")


def share(reached, total):
    return 100 * reached / total if total else 100.0


def main():
    counts = collections.defaultdict(collections.Counter)
    for file in json.loads(pathlib.Path(sys.argv[1]).read_text())["files"]:
        folder = str(pathlib.PurePath(file["filename"]).parent)
        for key in ("line_covered", "line_total", "branch_covered", "branch_total"):
            counts[folder][key] += file[key]

    is_fine = True
    for row in FLOORS.read_text().splitlines():
        if not row or row.startswith("#"):
            continue
        folder, *floors = row.split()
        count = counts.get(folder)
        if not count:
            print(f"{folder}: nothing was counted")
            is_fine = False
            continue
        text = f"{folder:18}"
        for what, floor in zip(("line", "branch"), map(float, floors)):
            reached, total = count[what + "_covered"], count[what + "_total"]
            is_low = share(reached, total) < floor
            is_fine = is_fine and not is_low
            text += f"  {what} {reached:4} of {total:4} {share(reached, total):6.2f} %"
            text += f" (floor: {floor:g})" if is_low else ""
        print(text)
        del counts[folder]
    for folder in sorted(counts):
        print(f"{folder}: has no floor")
    sys.exit(not is_fine or len(counts) > 0)


if __name__ == "__main__":
    main()
