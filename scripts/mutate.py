#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# Tests the tests: makes small mistakes in a copy of the code, one at a time, and sees whether a test
# fails. `scripts/mutate.py --help` says how; needs Debian's python3-clang-14 (scripts/setup.sh all).
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import pickle
import re
import resource
import shlex
import signal
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path += [str(ROOT / "tests/mutation"), str(ROOT / "tests/support")]
import mutants as mutation
import reasons

EQUIVALENT = ROOT / "tests/mutation/equivalent.txt"
PARTS = {"library": ["charmap", "tables", "morse", "session"], "host": ["host"], "signal": ["signal"]}
BLOCK = 1000  # numbers are given out in blocks of so many
MEMORY_LIMIT = 4 << 30


def options():
    parser = argparse.ArgumentParser(
        description="Makes small mistakes in a copy of the code and counts how many the tests of "
        "its own part catch. Nothing outside the build folder is changed.")
    parser.add_argument("part", nargs="?", choices=PARTS, default="library",
                        help="whose code: the library's (default), the stand-in host's, or that "
                        "which turns sound into codes")
    parser.add_argument("--count", type=int, default=320,
                        help="how many mutants, spread over the files in proportion to what can be "
                        "mutated there; 0 for all (default: %(default)s)")
    parser.add_argument("--seed", default="1", help="chooses other mutants (default: %(default)s)")
    parser.add_argument("--file", default="",
                        help="only in files whose path begins so")
    parser.add_argument("--tests", default="",
                        help="run only tests whose name, such as signal/trellis, has a match of this "
                        "regular expression; builds less, and finds more survivors than there are")
    parser.add_argument("--survivors", action="store_true",
                        help="only those that survived the last run with these options")
    parser.add_argument("--list", action="store_true", help="show the mutants, run nothing")
    parser.add_argument("--jobs", type=int, default=2, help="tests at a time (default: %(default)s)")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/mutants",
                        help="build folder (default: build/mutants); each part has one of its own "
                        "in it")
    return parser.parse_args()


# The copy.

def write_if_changed(path, content):
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_bytes() != content:
        path.write_bytes(content)


def tracked_files():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, check=True, capture_output=True).stdout.decode()
    return sorted(f for f in listed.split("\0") if f and (ROOT / f).is_file())


def is_mutated(path, folders):
    return path.endswith((".cpp", ".h")) and path.split("/")[0] in folders


def configure(copy, build):
    subprocess.run(["cmake", "-S", copy, "-B", build, "-G", "Ninja", "-DMORSEHANDLER_DEVELOPER=ON",
                    "-DMORSEHANDLER_BENCHMARKS=OFF", "-DCMAKE_BUILD_TYPE=None",
                    "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DCMAKE_CXX_FLAGS=-O1 -w -Wno-narrowing"],
                   check=True, stdout=subprocess.DEVNULL)


def compiler_arguments(commands, copy, path):
    """How this file is compiled; a header like a source file of its folder."""
    folder = "host/standin" if path.startswith("host/") else path.split("/")[0]
    command = next((c for c in commands if c["file"] == f"{copy}/{path}"),
                   next(c for c in commands if c["file"].startswith(f"{copy}/{folder}/")))
    words = shlex.split(command["command"])
    kept = []
    for word, following in zip(words, words[1:] + [""]):
        if word == f"-I{copy}":
            kept += [f"-I{ROOT}", word]
        elif word.startswith(("-I", "-D", "-std")):
            kept.append(word)
        elif word == "-isystem":
            kept += [word, following]
    return kept


class Build:
    """A copy of the tree with every mutant in it that compiles, and its test programs."""

    def __init__(self, folder, code_folders, file, tests):
        self.copy, self.folder = folder / "source", folder / "build"
        files = tracked_files()
        self.sources = [f for f in files if is_mutated(f, code_folders) and f.startswith(file)]
        for path in files:
            if path not in self.sources or not (self.copy / path).exists():
                write_if_changed(self.copy / path, (ROOT / path).read_bytes())
        write_if_changed(self.copy / "mutation.h", mutation.PRELUDE.encode())
        configure(self.copy, self.folder)
        self.tests = self.find_tests(code_folders, tests)
        self.mutants = self.cached(folder / "mutants.pickle")

    def cached(self, path):
        """To find the mutants takes longer than to build without a change."""
        digest = hashlib.sha256(pathlib.Path(mutation.__file__).read_bytes())
        for source in self.sources:
            digest.update(source.encode() + (ROOT / source).read_bytes())
        if path.exists():
            state, mutants = pickle.loads(path.read_bytes())
            if state == digest.digest():
                self.compile()
                return mutants
        mutants = self.make()
        path.write_bytes(pickle.dumps((digest.digest(), mutants)))
        return mutants

    def make(self):
        commands = json.loads((self.folder / "compile_commands.json").read_text())
        mutated, precompiled, first = {}, {}, 1
        for path in self.sources:
            arguments = tuple(compiler_arguments(commands, self.copy, path))
            if arguments not in precompiled:
                precompiled[arguments] = mutation.precompile(
                    arguments, self.folder / f"qtcore{len(precompiled)}.h")
            arguments = precompiled[arguments]
            found = mutation.find(ROOT, path, arguments)
            # Each file has numbers of its own, so a change in one leaves the others as they are.
            for number, mutant in enumerate(found, first):
                mutant.number = number
            first += BLOCK * (len(found) // BLOCK + 1)
            if first > mutation.LIMIT:
                sys.exit("more mutants than there are numbers: see --file")
            print(f"{path}: {len(found)}", flush=True)
            if found:
                mutated[path] = mutation.compilable(ROOT, path, arguments, found)
        while True:
            for path in self.sources:
                content = bytes(mutated[path].out) if path in mutated else (ROOT / path).read_bytes()
                write_if_changed(self.copy / path, content)
            errors = self.compile()
            if not errors:
                return [m for source in mutated.values() for m in source.mutants]
            # What only shows once a template is used.
            refused = set()
            for path, line, column in errors:
                refused.update(mutated[path].blame(line, column))
            for path in {m.file for m in refused}:
                left = [m for m in mutated[path].mutants if m not in refused]
                mutated[path] = mutation.MutatedSource((ROOT / path).read_bytes(), left)

    def compile(self):
        """Where the compiler found errors in mutated files; ends the program for any other."""
        made = subprocess.run(["cmake", "--build", self.folder, "--target",
                               *(t.program for t in self.tests), "--", "-k", "0"],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if made.returncode == 0:
            return []
        # Some compiler caches make paths relative to the build folder.
        errors = [(os.path.relpath(self.folder / path, self.copy), line, column)
                  for path, line, column in re.findall(
                      r"^(\S+?):(\d+):(\d+): (?:fatal )?error", made.stdout, re.MULTILINE)]
        if not errors or any(path not in self.sources for path, _, _ in errors):
            sys.exit(made.stdout)
        return [(path, int(line), int(column)) for path, line, column in errors]

    def find_tests(self, folders, wanted):
        listed = subprocess.run(["ctest", "--test-dir", self.folder, "--show-only=json-v1"],
                                check=True, capture_output=True).stdout
        names = [t["name"] for t in json.loads(listed)["tests"]]
        return [Test(name, self.folder / "bin") for name in names
                if name.split("/")[0] in folders and re.search(wanted, name)]


class Test:
    def __init__(self, name, folder):
        self.folder, self.stem = name.split("/")
        self.program = f"tst_{self.stem}"
        self.path = folder / self.program
        self.seconds = self.cpu_seconds = 0.0
        self.reached = set()  # numbers of mutants

    def run(self, environment, cpu_limit=None, timeout=600):
        """The seconds of processor time when it passed, None when it failed. A test that needs far
        more time than usual, or memory, has failed."""
        def limit():
            os.nice(10)
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
            if cpu_limit:
                resource.setrlimit(resource.RLIMIT_CPU, (cpu_limit, cpu_limit))

        with tempfile.TemporaryDirectory(prefix="mutation", ignore_cleanup_errors=True) as scratch:
            process = subprocess.Popen(
                [self.path], cwd=scratch, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                env={**os.environ, **environment, "TMPDIR": scratch}, preexec_fn=limit,
                start_new_session=True)
            timer = threading.Timer(timeout, os.killpg, (process.pid, signal.SIGKILL))
            timer.start()
            for line in process.stdout:
                if line.startswith(b"FAIL!"):  # no need to run the rest
                    os.killpg(process.pid, signal.SIGKILL)
                    break
            process.stdout.close()
            _, status, used = os.wait4(process.pid, 0)
            process.returncode = status
            timer.cancel()
            return used.ru_utime + used.ru_stime if status == 0 else None


# Runs.

def learn(test, log):
    """How long a test takes, and which mutants it reaches."""
    log.write_bytes(bytes(mutation.LIMIT))
    begin = time.monotonic()
    cpu_seconds = test.run({"MUTATION_LOG": str(log)})
    if cpu_seconds is None:
        sys.exit(f"{test.program} fails without a mutant")
    test.seconds, test.cpu_seconds = time.monotonic() - begin, cpu_seconds
    test.reached = {number for number, byte in enumerate(log.read_bytes()) if byte}


def catching_test(mutant, tests):
    """The first test that fails: those of the mutant's own file and folder come first."""
    stem, folder = pathlib.Path(mutant.file).stem, mutant.file.split("/")[0]
    reaching = sorted((t for t in tests if mutant.number in t.reached),
                      key=lambda t: (t.stem != stem, t.folder != folder, t.cpu_seconds))
    for test in reaching:
        if test.run({"MUTATION": str(mutant.number)}, cpu_limit=int(3 + 2 * test.cpu_seconds),
                    timeout=60 + 10 * test.seconds) is None:
            return test
    return None


def chosen(mutants, count, seed):
    """The same ones each time. A mutant keeps its rank when others come and go."""
    def rank(mutant):
        return hashlib.sha256(f"{seed} {mutant.key}".encode()).digest()

    if not count or count >= len(mutants):
        return mutants
    by_file = {}
    for mutant in sorted(mutants, key=rank):
        by_file.setdefault(mutant.file, []).append(mutant)
    shares = {path: len(of_file) * count / len(mutants) for path, of_file in by_file.items()}
    sizes = {path: int(share) for path, share in shares.items()}
    for path in sorted(shares, key=lambda p: sizes[p] - shares[p])[: count - sum(sizes.values())]:
        sizes[path] += 1
    return sorted((m for path, of_file in by_file.items() for m in of_file[: sizes[path]]),
                  key=lambda m: m.number)


def report(results, equivalent):
    rows = {}
    for mutant, test in results:
        folder = str(pathlib.Path(mutant.file).parent)
        row = rows.setdefault(folder, [0, 0, 0, 0])
        row[0] += 1
        row[1 if test else 2 if mutant.name in equivalent else 3] += 1
    print(f"\n{'folder':14}{'mutants':>9}{'caught':>9}{'equivalent':>12}{'survived':>10}")
    rows["all"] = [sum(column) for column in zip(*rows.values())]
    for folder, row in rows.items():
        print(f"{folder:14}{row[0]:9}{row[1]:9}{row[2]:12}{row[3]:10}")
    for mutant, test in results:
        if test and mutant.name in equivalent:
            print(f"caught, though listed as equivalent: {mutant.name}")


def main():
    arguments = options()
    os.environ["LC_ALL"] = "C.UTF-8"
    build = Build(arguments.build.resolve() / arguments.part, PARTS[arguments.part],
                  arguments.file, arguments.tests)
    equivalent = reasons.read(EQUIVALENT)
    for key in sorted(set(equivalent) - {m.name for m in build.mutants}):
        if key.split("/")[0] in PARTS[arguments.part] and key.startswith(arguments.file):
            print(f"no such mutant any more: {key}")

    selected = chosen(build.mutants, arguments.count, arguments.seed)
    survivors = build.folder.parent / "survivors.txt"
    if arguments.survivors:
        wanted = set(survivors.read_text().splitlines())
        selected = [m for m in selected if m.name in wanted]
    print(f"{len(selected)} of {len(build.mutants)} mutants", flush=True)
    if arguments.list:
        for mutant in selected:
            print(f"{mutant.line}: {mutant.name}")
        return

    results = []
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for _ in pool.map(lambda t: learn(t, build.folder / f"{t.program}.log"), build.tests):
            pass
        tests = pool.map(lambda m: catching_test(m, build.tests), selected)
        for mutant, test in zip(selected, tests):
            results.append((mutant, test))
            if not test and mutant.name not in equivalent:
                unreached = "" if any(mutant.number in t.reached for t in build.tests) else "(unreached) "
                print(f"survived: {unreached}{mutant.file}:{mutant.line}\n    {mutant.name}", flush=True)
    survivors.write_text("".join(f"{m.name}\n" for m, test in results if not test))
    report(results, equivalent)
    sys.exit(any(not test and m.name not in equivalent for m, test in results))


if __name__ == "__main__":
    main()
