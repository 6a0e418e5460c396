#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# The comments of signal/*/parameters.h name the rows of the benches that show when a value is wrong.
# Prints the rows that no bench has, where each is the beginning of a text in its source, and the values
# that no comment names a row for: neither their own, nor the one above them, nor that of their struct.
# "(row: none)" says that other values were tried and no row showed it.
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


def without_row(text):
    """The declarations that no comment gives a row."""
    above, of_struct, comment = "", "", []
    for line in map(str.strip, text.splitlines()):
        if line.startswith("//"):
            comment.append(line)
            continue
        if comment:
            above = " ".join(comment)
            comment = []
        if line.startswith("struct "):
            of_struct, above = above, ""
        elif not line:
            above = ""
        elif re.match(r"(double|float|int|unsigned|std::array<.*>) \w+( =|;|$)", line):
            own = line.partition("//")[2]
            if not any(re.search(r"\brows?: ", c, re.IGNORECASE) for c in (own, above, of_struct)):
                yield line


def main():
    is_fine = True
    for part, bench in PART_OF.items():
        texts = "".join(file.read_text() for file in sorted((ROOT / bench).glob("*.cpp")))
        parameters = (ROOT / part / "parameters.h").read_text()
        for line in without_row(parameters):
            print(f"{part}/parameters.h names no row for: {line}")
            is_fine = False
        for name in sorted(set(named(parameters)) - {"none"}):
            if not re.search(rf'"{re.escape(name)}[" ]', texts):
                print(f"{part}/parameters.h names the row {name}, which {bench} does not have")
                is_fine = False
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
