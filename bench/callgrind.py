# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Instruction counts by valgrind's callgrind. They do not depend on how busy a machine is."""
import glob
import os
import re
import subprocess
import tempfile

# Parts of the C library exist once for each kind of processor; these counts are those of the plainest
# kind, which every x86-64 has.
PLAIN_PROCESSOR = {"GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX,-AVX2,-AVX_Fast_Unaligned_Load,-BMI2,-ERMS,"
                                    "-FSRM,-SSE4_2,-SSSE3"}


def count(command, environment):
    """Runs a command and returns {label: (instructions in the program's own code, all)}.

    A label is what the program gave to CALLGRIND_DUMP_STATS_AT, or None for what came after the last.
    """
    program = os.path.realpath(command[0])
    with tempfile.TemporaryDirectory(prefix="callgrind-") as folder:
        out = os.path.join(folder, "out")
        subprocess.run(["valgrind", "-q", "--tool=callgrind", "--callgrind-out-file=" + out, *command],
                       check=True, env={**environment, **PLAIN_PROCESSOR}, stdout=subprocess.DEVNULL)
        counts = {}
        for dump in sorted(glob.glob(out + "*"), key=lambda name: (len(name), name)):
            with open(dump, encoding="utf-8", errors="replace") as lines:
                label, costs = _parse(lines)
            own = sum(cost for place, cost in costs.items() if os.path.realpath(place) == program)
            counts[label] = own, sum(costs.values())
        return counts


def _parse(lines):
    """The label of a dump, and {object: instructions executed in it}."""
    label, names, costs, place = None, {}, {}, ""
    called = False
    for line in lines:
        if line[0] in "0123456789+-*":
            if not called:  # else it is the cost of what was called, which counts there
                costs[place] = costs.get(place, 0) + int(line.split()[1])
            called = False
        elif line.startswith("calls="):
            called = True
        elif line.startswith("desc: Trigger: Client Request: "):
            label = line.rstrip("\n").partition("Client Request: ")[2]
        elif match := re.match(r"(c?)ob=\((\d+)\)(?: (.*))?$", line):
            names.setdefault(match[2], match[3])
            if not match[1]:
                place = names[match[2]]
    return label, costs
