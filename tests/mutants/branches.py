# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Shows which code and which side of a condition the unit tests do not reach in what computes.

  python3 -m tests.mutants.branches BUILD_FOLDER

The build has clang's coverage in it. Its counters are mapped into memory, so that those of forked,
killed and unprivileged processes count. What is in unreached.txt, with its reason, need not be
reached; main.cc is left to the tests of the program.
"""
import json
import os
import pathlib
import subprocess
import sys

from tests.mutants.lists import compare

ROOT = pathlib.Path(__file__).resolve().parents[2]
SUITES = ("base", "ini", "settings", "app")
LONG = ("ini-model", "settings-exhaustive")  # which reach nothing more
UNREACHED = pathlib.Path(__file__).with_name("unreached.txt")


def run_tests(build, profiles):
    """Runs the unit tests; returns their programs."""
    profiles.mkdir(exist_ok=True)
    for old in profiles.iterdir():
        old.unlink()
    tests = json.loads((build / "meson-info" / "intro-tests.json").read_text())
    tests = [test for test in tests if test["suite"][0].split(":")[1] in SUITES
             and test["name"] not in LONG]
    subprocess.run(["meson", "test", "-C", build, *(test["name"] for test in tests)], check=True,
                   env={**os.environ, "LLVM_PROFILE_FILE": f"{profiles}/%p%c.profraw"})
    return {test["cmd"][0] for test in tests}


def coverage(build, profiles, programs):
    """What clang's tool tells of each source."""
    merged = build / "merged.profdata"
    subprocess.run(["llvm-profdata", "merge", "-o", merged, *profiles.iterdir()], check=True)
    objects = [word for program in sorted(programs) for word in ("-object", program)]
    output = subprocess.run(["llvm-cov", "export", "-instr-profile", merged, *objects],
                            check=True, capture_output=True).stdout
    files = json.loads(output)["data"][0]["files"]
    return [file for file in files if path_of(file).startswith("src/")]


def path_of(file):
    """The path of a source below the project."""
    return os.path.relpath(os.path.realpath(file["filename"]), ROOT)


def unreached(file):
    """The places of a source that no test reaches, as they stand in the list."""
    path = path_of(file)
    lines = (ROOT / path).read_text().splitlines()
    for line, column, count, counted, entered, gap in file["segments"]:
        if counted and entered and not gap and count == 0:
            yield f"{path}: never: {lines[line - 1][column - 1:].strip()}"
    sums = {}  # over the instances of a template
    for *span, yes, no, _, _, _ in file["branches"]:
        before = sums.get(tuple(span), (0, 0))
        sums[tuple(span)] = before[0] + yes, before[1] + no
    for (line, column, last, end), (yes, no) in sums.items():
        condition = " ".join(lines[line - 1:last])[column - 1:]
        condition = condition[:end - column] if line == last else condition
        for count, side in (yes, "true"), (no, "false"):
            if count == 0:
                yield f"{path}: never {side}: {condition} in: {lines[line - 1].strip()}"


def main():
    """Tells how much is reached, and what is not."""
    build = pathlib.Path(sys.argv[1]).resolve()
    profiles = build / "profiles"
    files = coverage(build, profiles, run_tests(build, profiles))
    missing = {place for file in files for place in unreached(file)}
    for what in "lines", "branches":
        sums = [file["summary"][what] for file in files]
        covered, count = (sum(each[part] for each in sums) for part in ("covered", "count"))
        print(f"{covered} of {count} {what} reached")
    sys.exit(0 if compare(UNREACHED, missing) else 1)


if __name__ == "__main__":
    main()
