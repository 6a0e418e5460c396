# SPDX-License-Identifier: MIT
# Reads a list of known exceptions: lines that name one each, and below one or several of them the
# indented reason. A line that begins with "#" is a remark.


def read(path):
    """The reason of each exception."""
    reasons, unexplained = {}, []
    for line in path.read_text().splitlines():
        text = line.strip()
        if not text:
            unexplained = []
        elif line.startswith(" "):
            for name in unexplained:
                reasons[name] = f"{reasons[name]} {text}".strip()
        elif not line.startswith("#"):
            unexplained = [name for name in unexplained if not reasons[name]] + [text]
            reasons[text] = ""
    for name, reason in reasons.items():
        if not reason:
            raise SystemExit(f"{path}: no reason for: {name}")
    return reasons
