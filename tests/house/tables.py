# SPDX-License-Identifier: MIT
# Tables of the pages, for the checks that hold the tree against them.
import re

from ourfiles import ROOT


def rows(page, heading, place):
    """The cells of each row of the table in this place below a heading."""
    text = (ROOT / page).read_text().split(f"## {heading}\n", 1)[1]
    table = re.findall(r"(?:^\|.*\n)+", text, re.MULTILINE)[place]
    return [[cell.strip() for cell in row.split("|")[1:-1]] for row in table.splitlines()[2:]]


def names(cell):
    """What stands in backticks."""
    return re.findall(r"`([^`]+)`", cell)
