#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# The folders on disk are those that docs/architecture.md names under "Where a thing lives", and the
# files of signal/morse those in the first column of the tables under "The chain" in
# docs/demodulator.md. Prints what differs.
import sys

from ourfiles import paths
from tables import names, rows

LEVELS = 2  # folders deeper than that are their parent's own business


def compare(page, on_page, on_disk):
    for name in sorted(on_disk - on_page):
        print(f"{page} does not name {name}")
    for name in sorted(on_page - on_disk):
        print(f"{page} names {name}, which does not exist")
    return on_page == on_disk and on_disk


def main():
    files = paths()
    folders = {f"{'/'.join(file.parts[:depth])}/" for file in files
               for depth in range(1, min(LEVELS, len(file.parts) - 1) + 1)}
    page = "docs/architecture.md"
    shown = {name for place in (0, 1) for row in rows(page, "Where a thing lives", place)
             for name in names(row[0]) if name.endswith("/")}
    # Folders within one are compared where the page names any of them.
    parents = {name.split("/", 1)[0] for name in shown if name.count("/") > 1}
    parents -= {"tests"}
    # The tests of a folder need no row of their own.
    tests = {f"tests/{folder}" for folder in folders if folder.count("/") == 1}
    on_disk = {folder for folder in folders
               if folder.count("/") == 1 or folder.split("/")[0] in parents
               or folder.startswith("tests/") and (folder not in tests or folder in shown)}
    is_fine = compare(page, shown, on_disk)

    stages = {file.stem for file in files if file.parts[:2] == ("signal", "morse")}
    page = "docs/demodulator.md"
    shown = {name for place in (0, 1) for row in rows(page, "The chain", place) for name in names(row[0])}
    shown = {name for name in shown if not name.startswith("samples/")}
    is_fine = compare(page, shown, stages) and is_fine
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
