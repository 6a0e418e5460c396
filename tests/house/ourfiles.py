# SPDX-License-Identifier: MIT
# The files of the project: those of the repository and new ones, or, in a copy without a repository,
# all but what is built.
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def paths():
    """Relative to the root, sorted."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, capture_output=True)
    if listed.returncode == 0:
        names = {pathlib.PurePath(name) for name in listed.stdout.decode().split("\0") if name}
    else:
        names = {path.relative_to(ROOT) for path in ROOT.rglob("*")}
    return sorted(name for name in names if name.parts[0] != "build" and (ROOT / name).is_file())
