#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Whether every value of signal/*/parameters.h has one line in the parameters.cpp beside it, by which
# sweeps set it. Prints the values without one, and the lines that are none of a value. The line makes
# the name out of the member itself, so that no name can lead to another member.
import re
import sys
from collections import Counter

from ourfiles import ROOT

PARTS = {"signal/morse": "Parameters", "signal/band": "BandParameters", "signal/teleprinter": "Parameters"}
NUMBER = r"(?:double|float|int|unsigned)"


def structs(header):
    """Of each struct by its name: its members as (type, name). One may stand within another."""
    found, inside = {}, []
    for line in (line.partition("//")[0].strip() for line in header.splitlines()):
        opened = re.fullmatch(r"struct (\w+)", line)
        member = re.match(r"([A-Za-z][\w:]*(?:<.*>)?) (\w+)(?: =|;|,|$)", line)
        if opened:
            inside.append(found.setdefault(opened[1], []))
        elif line == "};":
            inside.pop()
        elif member and inside and member[1] != "using":
            inside[-1].append(member.groups())
    return found


def names(of, struct, prefix=""):
    """Its values, as "part.member"; those of a struct that stands in another header are set there."""
    for kind, name in of[struct]:
        array = re.fullmatch(rf"std::array<{NUMBER}, (\d+)>", kind)
        if re.fullmatch(NUMBER, kind):
            yield prefix + name
        elif array:
            yield from (f"{prefix}{name}[{i}]" for i in range(int(array[1])))
        elif kind in of:
            yield from names(of, kind, f"{prefix}{name}.")
        elif not (struct == "BandParameters" and kind == "Parameters"):
            sys.exit(f"{struct} has a member of a type that cannot be set: {kind} {name}")


def main():
    is_fine = True
    for part, struct in PARTS.items():
        values = Counter(names(structs((ROOT / part / "parameters.h").read_text()), struct))
        table = re.search(r"\n    return \{\n(.*?)\n    \};", (ROOT / part / "parameters.cpp").read_text(), re.DOTALL)
        lines = Counter()
        for line in table[1].splitlines():
            row = re.fullmatch(r" *PARAMETER_ROW\(([\w.\[\]]+)\),", line)
            lines[row[1] if row else line.strip()] += 1
        for name in values - lines:
            print(f"{part}/parameters.cpp has no line for {name}")
        for line in lines - values:
            print(f"{part}/parameters.cpp has a line too many: {line}")
        is_fine = is_fine and bool(values) and values == lines
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
