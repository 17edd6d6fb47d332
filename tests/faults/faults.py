# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What a save leaves on the disk when a system call of it fails, or is the last one.

usage: [--table | --sample N] PROGRAM PRESS DISCOVER [SCENARIO...]

The real program saves in debug mode, again and again, traced. In each run exactly one of the system
calls that the save makes fails with an error, or the program is killed in its place; besides, whole
runs take place on a full or read-only file system. Then the bytes on the disk are looked up among
those that the rules of writing allow at that point; what is not among them is LOST. Reports each
scenario as a test (TAP), with one error for each call, in turn (--sample: only every N-th of these
runs); with --table it takes every error and prints (call, errors, what is on disk, verdict).
"""
import argparse
import itertools
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import traceback

from tests.faults.power_cut import Disk
from tests.faults.runner import Runner, described, errors_in, kind_of, name_of
from tests.faults.saves import SCENARIOS
from tests.ini import model
from tests.support import isolation, tap
from tests.support.files import SOURCES, read
from tests.support.limit import SAMPLE

KINDS = ("faults", "kills")
WORKERS = 2 * len(os.sched_getaffinity(0))  # a save sleeps for a part of its time

# What can go wrong with a call on a file that has been in use all along.
ERRORS = {
    "read": ["EIO", "EINTR"], "pread64": ["EIO", "EINTR"],
    "write": ["ENOSPC", "EIO", "EINTR"], "pwrite64": ["ENOSPC", "EIO", "EINTR"],
    "open": ["EIO", "EACCES", "EMFILE", "EINTR"],
    "create": ["ENOSPC", "EIO", "EACCES", "EROFS", "EMFILE", "EINTR"],
    "close": ["EIO", "ENOSPC", "EINTR"], "fsync": ["EIO", "ENOSPC"],
    "ftruncate": ["EIO", "ENOSPC", "EINTR"], "lseek": ["EIO"], "fcntl": ["EIO"],
    "newfstatat": ["EIO"], "fstat": ["EIO"], "fchmod": ["EIO", "EACCES", "EROFS"],
    "access": ["EIO", "EACCES", "EROFS"],
    "unlink": ["EIO", "EACCES", "EROFS"], "unlinkat": ["EIO", "EACCES", "EROFS"],
    "rename": ["EIO", "EACCES", "EROFS", "ENOSPC"],
    "execve": ["ENOENT", "EACCES", "EIO", "ENOMEM"], "clone": ["EAGAIN", "ENOMEM"]}

# ---- Verdicts

def judge_flow(runner, status, identity=None):
    """What was wrong with the flow after the fault: the save ends as if there had been none."""
    scenario = runner.scenario
    if identity is None:
        identity = scenario.values[0][2] if scenario.values else b""
    allowed = {*runner.expected_errors, "Error: Unable to create the file.",
               f"Failed to create new Wi-Fi connection file at: {runner.keyfile}"}
    problems = [line for line in errors_in(runner) if line not in allowed]
    if status != 0:
        problems.append(f"ended with {status}")
    request = [f"finalize_{scenario.kind}", *([identity.decode()] if identity else [])]
    requests = runner.recorder.calls()
    if requests != [request]:
        problems.append(f"requests: {requests}")
    return problems


def judge_fault(runner, status):
    """What is on the disk after a fault, and what is wrong."""
    problems = judge_flow(runner, status)
    keyfile_now = read(runner.keyfile)
    disk = runner.scenario.after_fault().get(keyfile_now, "LOST")
    if os.path.exists(runner.temporary):
        disk += ", and a temporary file"
        problems.append("a temporary file")
    return disk, problems + ([repr(keyfile_now)] if disk == "LOST" else [])


def judge_kill(runner, status):
    """What is on the disk after a kill, and what is wrong."""
    labels = runner.scenario.after_kill()
    keyfile_now, temporary = read(runner.keyfile), read(runner.temporary)
    disk = labels.get(keyfile_now, "LOST")
    place = runner.scenario.name
    if keyfile_now is None and temporary and runner.scenario.values:
        # Between the removal of the old file and the move of the new one.
        disk = "in the temporary file: " + labels.get(temporary, "LOST")
    elif temporary is not None:
        disk += "; temporary file: " + (labels.get(temporary, "LOST") if temporary else "empty")
    elif not keyfile_now:
        place = ""
    problems = []
    if status not in (-signal.SIGKILL, 128 + signal.SIGKILL):
        problems.append(f"ended with {status}")
    found = runner.found()
    # Where both files are whole, either may be found.
    if found != place and not (temporary and found == os.path.basename(runner.temporary)):
        problems.append(f"the next start finds {found!r}")
    if "LOST" in disk:
        problems.append(f"{keyfile_now!r} {temporary!r}")
    return disk, problems


# ---- Cases

def run_call(runner, name, number, line, error):
    """One call fails, or is the last one."""
    runner.prepare()
    effect = "signal=KILL" if error == "KILL" else f"error={error}"
    status, trace = runner.run(f"inject={name}:{effect}:when={number}")
    if error == "KILL":
        disk, problems = judge_kill(runner, status)
        hit = [call for call in trace if call.endswith("= ?")]
    else:
        disk, problems = judge_fault(runner, status)
        hit = [call for call in trace if call.endswith("(INJECTED)")][:1]
    if [described(call.partition(" ")[2].strip()) for call in hit] != [described(line)]:
        problems.append(f"hit {hit} and not {line}")
    return disk, problems


def run_short_write(runner, number, writes):
    """One write takes half of the bytes."""
    runner.prepare()
    status, trace = runner.run(short_write=str(number))
    disk, problems = judge_fault(runner, status)
    if sum(is_direct_write(call.partition(" ")[2].strip()) for call in trace) <= writes:
        problems.append("no write was short")
    return disk, problems


def is_direct_write(call):
    """Whether a call is a write of our own, and not one of the C library's streams."""
    return kind_of(call) in ("pwrite64", "write") and "/out>" not in call


def run_power_cut(runner):
    """The power is cut at each call of the save, or when the privileged program is started."""
    runner.prepare()
    disk = Disk(runner.connections)
    _, trace = runner.run(strings=1 << 20)
    labels = runner.scenario.after_kill()
    problems = {}
    for line in itertools.takewhile(lambda line: name_of(line) != "execve", trace):
        disk.apply(line)
        for files in disk.after_power_cut(runner.keyfile, runner.temporary):
            # One of them is whole, and the other one nothing that could be taken for a keyfile.
            whole = [file for file in files if file or not runner.scenario.values]
            if not whole or any(file not in labels for file in whole):
                problems.setdefault(f"LOST: {files} after {line}", files)
    saved = disk.after_power_cut(runner.keyfile)
    if saved != {(read(runner.keyfile),)}:
        problems[f"not what was saved: {saved}"] = saved
    return "LOST" if problems else "new at the end, whole before", list(problems)


def run_on(runner, medium):
    """A whole run on a file system that is full or read-only from the start."""
    def mount(*arguments):
        subprocess.run(["mount", *arguments, runner.connections], check=True)

    # A page is the least that it can hold, and what the keyfile takes.
    mount("-t", "tmpfs", "-o", f"size={os.sysconf('SC_PAGE_SIZE')},mode=0700", "tmpfs")
    try:
        runner.prepare()
        if medium == "read-only":
            mount("-o", "remount,ro")
        status, _ = runner.run()
        keyfile_now = read(runner.keyfile)
        identity = b""
        if keyfile_now and runner.scenario.values:
            identity = model.gets(keyfile_now, b"connection", b"id", b"", 100)
        problems = judge_flow(runner, status, identity=identity)
        if medium == "read-only" and keyfile_now == runner.scenario.old:
            disk = "old"
        elif not runner.scenario.values and keyfile_now is None:
            disk = "new (removed)"
        elif keyfile_now == runner.scenario.on_full_disk():
            disk = "default, new where it fits" if runner.scenario.changes_mode \
                else "old, new where it fits"
        else:
            disk = "LOST"
            problems.append(repr(keyfile_now))
        if os.path.exists(runner.temporary):
            problems.append("a temporary file")
        return disk, problems
    finally:
        subprocess.run(["umount", runner.connections], check=True)


def cases(runner, every):
    """All runs to make: kind, call, error, and what runs it."""
    calls = runner.calls()
    result = []
    for turn, (name, number, line) in enumerate(calls):
        errors = ERRORS[kind_of(line)]
        for error in errors if every else [errors[turn % len(errors)]]:
            result.append(("faults", described(line), error,
                           lambda *call: run_call(runner, *call), (name, number, line, error)))
    for error in ERRORS["clone"]:
        result.append(("faults", "clone", error,
                       lambda *call: run_call(runner, *call), ("clone", 1, "clone(", error)))
    writes = [line for _, _, line in calls if is_direct_write(line)]
    for number, line in enumerate(writes, 1):
        result.append(("faults", described(line), "short",
                       lambda *call: run_short_write(runner, *call), (number, len(writes))))
    result.append(("faults", "each call, start of the privileged program", "power cut",
                   lambda: run_power_cut(runner), ()))
    for medium in ("full", "read-only"):
        result.append(("faults", "whole run", medium,
                       lambda *call: run_on(runner, *call), (medium,)))
    for name, number, line in calls:
        if name != "execve":  # which is another process
            result.append(("kills", described(line), "KILL",
                           lambda *call: run_call(runner, *call), (name, number, line, "KILL")))
    return result


def work(part, parts, sample, title, *programs):
    """A worker: runs every so many-th case of a scenario; prints a row for each."""
    scenario = next(one for one in SCENARIOS if one.title == title)
    runner = Runner(scenario, *programs)
    chosen = cases(runner, sample == 0)[::sample or 1]
    for index, (kind, call, error, run, arguments) in enumerate(chosen):
        if index % parts != part:
            continue
        try:
            disk, problems = run(*arguments)
        except (AssertionError, OSError, subprocess.SubprocessError):
            disk, problems = "unknown", [traceback.format_exc()]
        verdict = "LOST" if "LOST" in disk else "wrong" if problems else "kept"
        print(json.dumps([index, kind, call, error, disk, verdict, problems]), flush=True)
    shutil.rmtree(runner.folder)


# ---- All of them

def run_scenario(scenario, sample, programs):
    """The rows of a scenario, in the order of its calls; sample 0 takes every error."""
    workers = [subprocess.Popen(
        [sys.executable, "-m", __spec__.name, "--worker", str(part), str(WORKERS), str(sample),
         scenario.title, *programs], stdout=subprocess.PIPE, text=True)
        for part in range(WORKERS)]
    rows = sorted(json.loads(line) for worker in workers for line in worker.stdout)
    statuses = [worker.wait() for worker in workers]
    assert not any(statuses), f"workers ended with {statuses}"
    assert [row[0] for row in rows] == list(range(len(rows))), "a row is missing"
    return [row[1:] for row in rows]


def print_table(scenario, rows):
    """One line for all runs that have call, outcome and verdict in common."""
    for kind in KINDS:
        groups = {}
        for row_kind, call, error, disk, verdict, problems in rows:
            if row_kind == kind:
                disk = re.sub(r"\d+ of", "some of", disk)
                errors = groups.setdefault((call, disk, verdict, *problems), [])
                errors.append(error)
        print(f"\n{scenario.title}: {kind}\n")
        print(f"{'call':51} {'error':37} {'runs':>4}  {'verdict':7}  on disk")
        for (call, disk, verdict, *problems), errors in groups.items():
            kinds = " ".join(dict.fromkeys(errors))
            print(f"{call:51} {kinds:37} {len(errors):4}  {verdict:7}  {disk}", *problems)
    sys.stdout.flush()


def report_point(number, title, rows):
    """A point of the Test Anything Protocol."""
    bad = [row for row in rows if row[4] != "kept"]
    for row in bad:
        print("\n".join(f"# {text}" for text in str(row).splitlines()))
    print(f"{'not ok' if bad or not rows else 'ok'} {number} - {title}", flush=True)
    return bool(bad)


def main():
    """Runs the scenarios, each with as many workers as the machine can do with."""
    if sys.argv[1] == "--worker":
        part, parts, sample, title, *programs = sys.argv[2:]
        # Of the temporary folders these are needed in the private one.
        kept = [os.environ["HOME"], os.environ.get("XAUTHORITY", "/x")]
        reason = isolation.enter(SOURCES, *map(os.path.dirname, programs),
                                 *map(os.path.dirname, kept))
        if reason:
            sys.exit(reason)
        work(int(part), int(parts), int(sample), title, *programs)
        return

    parser = argparse.ArgumentParser()
    parser.add_argument("--table", action="store_true")
    parser.add_argument("--sample", type=int, default=SAMPLE)
    parser.add_argument("programs", nargs=3, type=os.path.realpath)
    parser.add_argument("scenarios", nargs="*")
    arguments = parser.parse_args()
    tap.require_nothing(None if shutil.which("strace") else "strace")
    points, failed = 0, False
    for scenario in SCENARIOS:
        if arguments.scenarios and scenario.title not in arguments.scenarios:
            continue
        rows = run_scenario(scenario, 0 if arguments.table else arguments.sample,
                            arguments.programs)
        if arguments.table:
            print_table(scenario, rows)
            failed |= any(row[4] != "kept" for row in rows)
            continue
        for kind in KINDS:
            points += 1
            some = [row for row in rows if row[0] == kind]
            failed |= report_point(points, f"{scenario.title}: {len(some)} {kind}", some)
    if not arguments.table:
        print(f"1..{points}")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
