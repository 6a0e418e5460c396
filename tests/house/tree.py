#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# The folders on disk are those that docs/architecture.md names under "Where a thing lives", and the
# files of signal/morse those of the table in docs/demodulator.md. Prints what differs.
import re
import sys

from ourfiles import ROOT, paths

LEVELS = 2  # folders deeper than that are their parent's own business


def rows(page, heading, place):
    """The first cells of a table below a heading."""
    text = (ROOT / page).read_text().split(f"## {heading}\n", 1)[1]
    table = re.findall(r"(?:^\|.*\n)+", text, re.MULTILINE)[place]
    return [row.split("|")[1] for row in table.splitlines()[2:]]


def named(cells):
    return {name for cell in cells for name in re.findall(r"`([^`]+)`", cell)}


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
    shown = named(rows(page, "Where a thing lives", 0) + rows(page, "Where a thing lives", 1))
    shown = {name for name in shown if name.endswith("/")}
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
    text = (ROOT / page).read_text()
    named_stages = {name for name in re.findall(r"`([a-z]+)`", text) if name in stages}
    linked = set(re.findall(r"signal/morse/([a-z]+)\.(?:h|cpp)", text))
    is_fine = compare(page, (named_stages | linked) & stages, stages) and is_fine
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
