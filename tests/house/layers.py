#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Who includes whom: the headers in quotes that each source includes, against the last column of the
# table "Where a thing lives" in docs/architecture.md. Prints what breaks the rule.
import re
import sys

from ourfiles import ROOT, paths
from tables import names, rows

PAGE = "docs/architecture.md"
# What holds no sound and no picture in memory, but files; and Qt, which turning sound into codes goes
# without.
FILES = r"Q\w*(File|Dir)\w*|QTextStream|fstream|filesystem|cstdio|fcntl\.h|unistd\.h"
NOT_OF_THE_SYSTEM = {"signal/": rf"Q.*|{FILES}", "station/picture/": FILES}


def rules():
    """For each folder, or file, that has a row: the names that it may include, or None for any; and
    those whose row says so itself."""
    found, stated = {}, set()
    for row in rows(PAGE, "Where a thing lives", 0):
        for name in names(row[0]):
            if row[2] == "everything":
                found[name] = None
            elif row[2]:
                found[name] = set() if row[2] == "nothing" else set(names(row[2]))
                stated.add(name)
            else:  # the same as the folder around it
                around = max((other for other in found if name.startswith(other)), key=len, default=name)
                found[name] = found.get(around, set())
    return found, stated


def may_include(allowed, header):
    folder = header.rpartition("/")[0] + "/"
    return any(name in (header, folder) or (name.endswith("/*") and folder.startswith(name[:-1]))
               for name in allowed)


def main():
    allowed_for, stated = rules()
    looked_at, is_fine = set(), True
    for path in paths():
        if path.suffix not in {".h", ".cpp"}:
            continue
        file, folder = str(path), f"{path.parent}/"
        place = next((name for name in (file, folder) if name in allowed_for), None)
        if place is None and path.parts[0] == "tests":
            continue
        if place is None:
            print(f"{file}: {PAGE} says nothing about {folder}")
            is_fine = False
            continue
        looked_at.add(place)
        allowed = allowed_for[place]
        for number, line in enumerate((ROOT / path).read_text().splitlines(), 1):
            own = re.match(r'#include "(?:morsehandler/)?([^"]+)"', line)
            if own and allowed is not None:
                header = own.group(1)
                is_own = place == folder and header.startswith(folder) and "/" not in header[len(folder):]
                if not is_own and not may_include(allowed, header):
                    print(f"{file}:{number}: {place} may not include {header}")
                    is_fine = False
            system = re.match(r"#include <(.+)>", line)
            for start, names_of_system in NOT_OF_THE_SYSTEM.items():
                if system and file.startswith(start) and re.fullmatch(names_of_system, system.group(1)):
                    print(f"{file}:{number}: {start} may not include <{system.group(1)}>")
                    is_fine = False
    for place in sorted(stated - looked_at):
        print(f"{PAGE}: {place} holds no source to look at")
        is_fine = False
    sys.exit(not is_fine)


if __name__ == "__main__":
    main()
