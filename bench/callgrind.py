# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Instruction counts by valgrind's callgrind. They do not depend on how busy a machine is."""
import collections
import glob
import os
import re
import subprocess
import tempfile

# Parts of the C library exist once for each kind of processor; these counts are those of the plainest
# kind, which every x86-64 has.
PLAIN_PROCESSOR = {"GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX,-AVX2,-AVX_Fast_Unaligned_Load,-BMI2,-ERMS,"
                                    "-FSRM,-SSE4_2,-SSSE3"}


def profiles(command, environment=None):
    """Runs a command and yields (label, profile) for each of its dumps, in their order.

    The label is what the program gave to CALLGRIND_DUMP_STATS_AT, or None for the dump at its end. A
    profile maps (object, function) to the instructions executed in the function itself. The environment
    is empty unless one is given: a locale, or what a test runner sets, would be counted too.
    """
    environment = {**(environment or {"PATH": os.environ["PATH"]}), **PLAIN_PROCESSOR}
    with tempfile.TemporaryDirectory(prefix="callgrind-") as folder:
        out = os.path.join(folder, "out")
        subprocess.run(["valgrind", "-q", "--tool=callgrind", "--callgrind-out-file=" + out, *command],
                       check=True, env=environment, stdout=subprocess.DEVNULL)
        # The dumps of the marks are out.1, out.2 ...; out is what came after the last of them.
        marks = sorted(glob.glob(out + ".*"), key=lambda name: int(name.rpartition(".")[2]))
        for dump in [*marks, out]:
            if os.path.exists(dump):
                with open(dump, encoding="utf-8", errors="replace") as lines:
                    yield _parse(lines)


def _parse(lines):
    label = None
    costs = collections.Counter()
    names = {"ob": {}, "fn": {}}
    current = {"ob": "", "fn": ""}
    skip = False
    for line in lines:
        if line[0] in "0123456789+-*":
            if not skip:
                costs[current["ob"], current["fn"]] += int(line.split()[1])
            skip = False
        elif line.startswith("calls="):
            skip = True  # the next line is the cost of what was called, which counts there
        elif line.startswith("desc: Trigger: Client Request: "):
            label = line.rstrip("\n").partition("Client Request: ")[2]
        elif match := re.match(r"(c?)(ob|fn)=\((\d+)\)(?: (.*))?$", line):
            called, kind, number, name = match.groups()
            if name is not None:
                names[kind][number] = name
            if not called:
                current[kind] = names[kind][number]
    return label, costs


def total(profile):
    return sum(profile.values())


def within(profile, program):
    """The instructions in the program's own code, without the libraries."""
    program = os.path.realpath(program)
    return sum(cost for (where, _), cost in profile.items()
               if where and os.path.realpath(where) == program)
