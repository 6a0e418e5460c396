#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# The rows that the comments of signal/*/parameters.h name for tuning are rows of the benches: each is
# the beginning of a text in a bench's source. Prints those that are not.
import re
import sys

from ourfiles import ROOT

PART_OF = {"signal/morse": "bench/reception", "signal/band": "bench/band",
           "signal/teleprinter": "bench/teleprinter"}


def named(text):
    """The names in "(rows: a, b; anything)", "Rows: a for too strict, b for too lax." and the like."""
    comments = " ".join(re.findall(r"//+<? ?(.*)", text))
    for group in re.findall(r"\(rows?: ([^);]*)", comments):
        for name in re.split(r",\s*", group):
            yield re.sub(r"^and ", "", name.strip())


def main():
    is_fine = True
    for part, bench in PART_OF.items():
        texts = "".join(file.read_text() for file in sorted((ROOT / bench).glob("*.cpp")))
        names = set(named((ROOT / part / "parameters.h").read_text()))
        for name in sorted(names):
            if not re.search(rf'"{re.escape(name)}[" ]', texts):
                print(f"{part}/parameters.h names the row {name}, which {bench} does not have")
                is_fine = False
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
