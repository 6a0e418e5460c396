#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Judges gcovr's report in JSON, as scripts/coverage.sh has it written: `judge.py report.json folder...`
# prints lines and branches reached by folder, and fails where a folder has too few or where a branch
# was never taken that untaken.txt does not explain. What untaken.txt explains without need is told.
import collections
import json
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
UNTAKEN = ROOT / "tests/coverage/untaken.txt"
sys.path.append(str(ROOT / "tests/support"))
import reasons

LEAST_LINES, LEAST_BRANCHES = 100, 95  # per cent


class Count:
    def __init__(self):
        self.reached = self.all = 0

    def add(self, is_reached):
        self.reached += is_reached
        self.all += 1

    @property
    def share(self):
        return 100 * self.reached / self.all if self.all else 100.0

    def __str__(self):
        return f"{self.reached:4}/{self.all:<4} {self.share:6.2f} %"


def known():
    """How many branches of a line may be left, by file and text of the line: it may move."""
    counts = {}
    for entry in reasons.read(UNTAKEN):
        number, file, text = entry.split(" ", 2)
        counts[file.rstrip(":"), text] = int(number)
    return counts


def entry(number, key):
    return f"{number} {key[0]}: {key[1]}"


def main():
    report, folders = json.loads(pathlib.Path(sys.argv[1]).read_text()), sys.argv[2:]
    lines = collections.defaultdict(Count)
    branches = collections.defaultdict(Count)
    untaken = collections.Counter()
    for file in report["files"]:
        path = file["file"]
        folder = str(pathlib.Path(path).parent)
        source = (ROOT / path).read_text().splitlines()
        for line in file["lines"]:
            if line["gcovr/noncode"]:
                continue
            lines[folder].add(line["count"] > 0)
            for branch in line["branches"]:
                branches[folder].add(branch["count"] > 0)
                if not branch["count"]:
                    untaken[path, source[line["line_number"] - 1].strip()] += 1

    is_fine = True
    print(f"{'':14}{'lines':>19}{'branches':>19}")
    for folder in sorted(lines):
        is_low = lines[folder].share < LEAST_LINES or branches[folder].share < LEAST_BRANCHES
        is_fine = is_fine and not is_low
        print(f"{folder:14} {lines[folder]} {branches[folder]}{'  too few' if is_low else ''}")
    for folder in set(folders) - set(lines):
        is_fine = False
        print(f"{folder}: nothing was counted")

    explained = known()
    for key in sorted(set(untaken) | set(explained)):
        if untaken[key] > explained.get(key, 0):
            is_fine = False
            print(f"never taken, and not explained in {UNTAKEN.name}: {entry(untaken[key], key)}")
        elif untaken[key] < explained[key]:
            print(f"{UNTAKEN.name} explains more than is left: {entry(explained[key], key)}"
                  f" (left: {untaken[key]})")
    print(f"{untaken.total()} branches were never taken")
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
