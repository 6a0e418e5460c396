#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Prints each use of a word of words.txt in documents, code, comments and messages, and fails if there
# is one. Left out are the languages of tables, test data and what is stored of a run.
import pathlib
import re
import sys

from ourfiles import ROOT, paths

LEFT_OUT = ("data/alphabets/", "data/maps/", "fuzz/seeds/", "tests/data/", "tests/house/words.txt", "LICENSE")
SUFFIXES = {".c", ".cmake", ".cpp", ".h", ".in", ".json", ".md", ".py", ".sh", ".svg", ".txt", ".xsd", ""}


def words():
    rows = pathlib.Path(__file__).with_name("words.txt").read_text().splitlines()
    return dict(row.split(maxsplit=1) for row in rows if row and not row.startswith("#"))


def files():
    for path in paths():
        if not str(path).startswith(LEFT_OUT) and path.suffix in SUFFIXES:
            yield path


def main():
    usual = words()
    # Within a name a word begins with a capital: "retold" has none of these words.
    any_word = re.compile("(?<![a-z])(%s)(?![a-z])|(%s)(?![a-z])" % (
        "|".join(map(re.escape, usual)), "|".join(re.escape(word.capitalize()) for word in usual)))
    looked_at = found = 0
    for path in files():
        looked_at += 1
        for number, line in enumerate((ROOT / path).read_text(errors="replace").splitlines(), 1):
            for match in any_word.finditer(line):
                word = match.group()
                found += 1
                print(f"{path}:{number}: '{word}' (write: {usual[word.lower()]})")
    if looked_at < 100:
        sys.exit(f"only {looked_at} files were looked at")
    sys.exit(found > 0)


if __name__ == "__main__":
    main()
