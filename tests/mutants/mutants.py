# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Changes the sources in one place at a time, and asks the tests whether they see it.

  python3 -m tests.mutants.mutants [--quick] [PATH...]

What was found is kept in build-mutants, so that an interrupted run goes on: a killed mutant until
its source changes, a survivor until any source or any of these tests does. Remove the folder to
begin anew.
"""
import argparse
import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import queue
import resource
import shutil
import signal
import subprocess
import sys
import threading

from tests.mutants.lists import compare, reasons
from tests.mutants.places import Mutant, mutants

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "build-mutants"
RESULTS = FOLDER / "results.jsonl"
SURVIVORS = pathlib.Path(__file__).with_name("survivors.txt")
LEAST_KILLED = 0.97

# For each layer: whose tests see it, and which that take longer, for what is still alive then.
SUITES = {
    "base": ("base", "ini", "settings", "app"),
    "ini": ("ini", "app"),
    "settings": ("settings", "app"),
    "app": ("app",),
}
LONG = {
    "base": ("ini-model", "load-saves", "keyfiles", "program-ethernet", "program-wifi", "faults"),
    "ini": ("ini-model", "load-saves", "load-ini", "keyfiles", "program-wifi", "faults"),
    "settings": ("settings-exhaustive", "load-saves", "keyfiles", "program-ethernet",
                 "program-wifi", "program-odd-keyfiles", "faults"),
    "app": ("load-discovery", "program-handler", "program-production", "program-debug", "faults"),
}
# Where all of these come from.
JUDGES = ("meson.build", "src", *(f"tests/{suite}" for suite in
                                  (*SUITES, "faults", "keyfiles", "load", "program", "support")))
LATER = ("ini-stack", "ini-system-calls")  # with every source compiled once more, and optimised
# What eats memory or disk, or does not come to an end, is killed. No short test takes 15 seconds,
# and the one that makes a larger file, which is hollow, asks for that. Seconds are those of the
# processor, which a busy machine does not make more; by the clock it may be three times as many.
MEMORY, FILE = 4 << 30, 2 << 30
SHORT_LIMIT, LONG_LIMIT = 20, 500


def tracked(*paths):
    """The files under version control, and those that are new."""
    command = ["git", "ls-files", "-z", "-co", "--exclude-standard", *paths]
    output = subprocess.run(command, cwd=ROOT, check=True, capture_output=True).stdout
    return [name.decode() for name in output.split(b"\0") if (ROOT / name.decode()).is_file()]


@functools.cache
def digest(*paths):
    """A number for the content of files, as it was when it was first asked for."""
    result = hashlib.sha256()
    for path in paths:
        result.update(path.encode() + b"\0" + (ROOT / path).read_bytes())
    return result.hexdigest()


class Tree:
    """A copy of the project, with a build of its own, in which one source is changed."""

    def __init__(self, number):
        self.folder = FOLDER / str(number)
        self.source, self.build = self.folder / "source", self.folder / "build"
        for path in tracked():
            self._write(path, (ROOT / path).read_bytes())
            shutil.copymode(ROOT / path, self.source / path)
        self.changed, self.original = path, (ROOT / path).read_bytes()
        if not (self.build / "build.ninja").exists():
            subprocess.run(["meson", "setup", self.build, self.source, "-Doptimization=0",
                            "-Ddebug=false"], check=True, stdout=subprocess.DEVNULL)
        # A list of tests that changed is read only after the build has taken it in.
        subprocess.run(["ninja", "build.ninja"], cwd=self.build, check=True,
                       stdout=subprocess.DEVNULL)
        self.tests = {test["name"]: test for test in self._introspected("tests")}
        self.programs = {target["id"]: os.path.relpath(target["filename"][0], self.build)
                         for target in self._introspected("targets")}

    def _introspected(self, subject):
        return json.loads((self.build / "meson-info" / f"intro-{subject}.json").read_text())

    def _write(self, path, content):
        target = self.source / path
        if not target.is_file() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)

    def put(self, path, text):
        """Changes a source, and takes back what was changed before."""
        if path != self.changed:
            self._write(self.changed, self.original)
            self.changed, self.original = path, (self.source / path).read_bytes()
        self._write(path, text.encode())

    def _succeeds(self, command, folder=None, limit=None):
        def bound():
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, resource.RLIM_INFINITY))
            if limit:
                resource.setrlimit(resource.RLIMIT_CPU, (limit, limit))

        temporary = self.folder / "tmp"
        temporary.mkdir(exist_ok=True)
        temporary.chmod(0o1777)  # some tests drop root's rights
        process = subprocess.Popen(
            command, cwd=folder or self.build, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, preexec_fn=bound, start_new_session=True,
            env={**os.environ, "TMPDIR": str(temporary), "GTEST_FAIL_FAST": "1",
                 "MALLOC_PERTURB_": "165"})  # what was not set is not zero by luck
        try:
            return process.wait(limit and 3 * limit) == 0
        except subprocess.TimeoutExpired:
            return False
        finally:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
            shutil.rmtree(temporary, ignore_errors=True)

    def _order(self, path, quick):
        """The names of the tests that can see a source: those made for it, others, long ones."""
        layer = path.split("/")[1]
        own = f"{layer}-{pathlib.Path(path).stem.replace('_', '-')}"
        names = [name for suite in SUITES[layer] for name, test in self.tests.items()
                 if test["suite"][0].endswith(f":{suite}")]
        names.sort(key=lambda name: (name != own, name in LATER))
        short = [name for name in names if name not in ("settings-exhaustive", "ini-model")]
        return short + ([] if quick else list(LONG[layer]))

    def judge(self, path, text, quick):
        """What becomes of a change: "killed by ...", "survived", or "invalid" to a compiler."""
        self.put(path, text)
        if not self._succeeds(["ninja", "libcore.a"]):
            return "invalid"
        for name in self._order(path, quick):
            test = self.tests[name]
            limit = LONG_LIMIT if name in LONG[path.split("/")[1]] else SHORT_LIMIT
            programs = [self.programs[target] for target in test["depends"]]
            if not (self._succeeds(["ninja", *programs]) and
                    self._succeeds(test["cmd"], test["workdir"], limit)):
                return f"killed by {name}"
        return "survived"


class Results:
    """What is known of mutants."""

    def __init__(self, quick):
        self.everything = digest(*tracked(*JUDGES)) + str(quick)
        self.known = {}
        self.lock = threading.Lock()
        if RESULTS.exists():
            for line in RESULTS.read_text().splitlines():
                name, outcome, state = json.loads(line)
                self.known[name] = outcome, state

    def _state(self, outcome, path):
        return self.everything if outcome == "survived" else digest(path)

    def get(self, name, path):
        """An outcome that still holds, or None."""
        outcome, state = self.known.get(name, (None, None))
        return outcome if outcome and state == self._state(outcome, path) else None

    def put(self, name, path, outcome):
        """Keeps an outcome."""
        state = self._state(outcome, path)
        with self.lock, RESULTS.open("a") as file:
            file.write(json.dumps([name, outcome, state]) + "\n")
        self.known[name] = outcome, state


def run(todo, results, quick):
    """Judges mutants, with as many trees as there are processors."""
    trees = queue.SimpleQueue()
    for number in range(min(os.cpu_count(), len(todo))):
        trees.put(Tree(number))

    def judge(path, mutant):
        tree = trees.get()
        try:
            outcome = tree.judge(path, mutant.text, quick)
        finally:
            trees.put(tree)
        results.put(mutant.name, path, outcome)
        print(f"{outcome}: {mutant.name}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(trees.qsize()) as pool:
        jobs = [pool.submit(judge, *one) for one in todo]
        try:
            for job in concurrent.futures.as_completed(jobs):
                job.result()
        except BaseException:
            pool.shutdown(cancel_futures=True)
            raise


def report(outcomes):
    """Compares the survivors with the list. Returns whether all is as it should be."""
    survivors = {name for name, outcome in outcomes.items() if outcome == "survived"}
    valid = [name for name, outcome in outcomes.items() if outcome != "invalid"]
    as_listed = compare(SURVIVORS, survivors, {name.split(":")[0] for name in outcomes})
    listed = reasons(SURVIVORS)
    equal = [name for name in survivors if listed.get(name, "").startswith("Equal")]
    killed = 1 - len(survivors) / max(len(valid), 1)
    print(f"\n{len(valid)} mutants, {len(survivors)} survivors: {killed:.1%} killed; "
          f"{len(equal)} of the survivors do the same as the source")
    return as_listed and killed >= LEAST_KILLED


def main():
    """Runs what is not known yet of the sources that are asked for."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--quick", action="store_true", help="leave out the long tests")
    parser.add_argument("paths", nargs="*", default=[f"src/{layer}" for layer in SUITES])
    arguments = parser.parse_args()
    FOLDER.mkdir(exist_ok=True)
    results = Results(arguments.quick)
    sources = [path for path in tracked(*arguments.paths)
               if path.endswith((".cc", ".h")) and path.split("/")[1] in SUITES
               and path != "src/app/main.cc"]
    every = []
    for path in sources:
        text = (ROOT / path).read_text()
        every += [(path, mutant) for mutant in mutants(path, text)]
    todo = [one for one in every if not results.get(one[1].name, one[0])]
    for layer in sorted({path.split("/")[1] for path, _ in todo}):
        path = next(path for path, _ in todo if path.split("/")[1] == layer)
        unchanged = Mutant(f"{layer}: unchanged", 0, (ROOT / path).read_text())
        if results.get(unchanged.name, path) != "survived":
            run([(path, unchanged)], results, arguments.quick)
        if results.get(unchanged.name, path) != "survived":
            sys.exit("Without a change the tests fail, too")
    if todo:
        run(todo, results, arguments.quick)
    outcomes = {mutant.name: results.get(mutant.name, path) for path, mutant in every}
    sys.exit(0 if report(outcomes) else 1)


if __name__ == "__main__":
    main()
