#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Fails when an operation takes more instructions than it used to; prints TAP.

usage: counts.py [--renew] COMPILER PROGRAM

Each operation has two numbers: the instructions in our own code, and all of them, with those that
the C and C++ libraries execute for us (a seek too many, say, shows only there). Both repeat exactly
on one machine. Between machines the first depends on the compiler and the second on the libraries
too, so both are compared within a tolerance and only for the compiler that the kept numbers are from;
that the C library has other code for other processors is switched off.

--renew keeps the numbers of this machine from now on.
"""
import json
import os
import sys
import tempfile

import callgrind

KEPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "instruction_counts.json")
TOLERANCE = 0.10


def count(program):
    with tempfile.TemporaryDirectory(prefix="counts-") as folder:
        # The same length of path everywhere: it is copied and compared byte by byte.
        return {label: {"own": callgrind.within(profile, program), "all": callgrind.total(profile)}
                for label, profile in callgrind.profiles([program, folder]) if label is not None}


def judge(kind, now, kept):
    """Returns what is wrong with a number, or remarkable in it, as text."""
    if now > kept * (1 + TOLERANCE):
        return f"{kind}: {now} instructions, {100 * now / kept - 100:.0f} % more than the {kept} kept"
    if now < kept * (1 - TOLERANCE):
        return f"{kind}: {now} instructions, fewer than the {kept} kept; renew them"
    return ""


def compare(counts, kept):
    print(f"1..{len(kept)}")
    for number, (operation, before) in enumerate(kept.items(), 1):
        now = counts.get(operation, {"own": float("inf"), "all": float("inf")})
        remarks = [judge(kind, now[kind], before[kind]) for kind in ("own", "all")]
        worse = any(now[kind] > before[kind] * (1 + TOLERANCE) for kind in ("own", "all"))
        print(f"{'not ok' if worse else 'ok'} {number} - {operation}: {now['own']} {now['all']}")
        for remark in filter(None, remarks):
            print(f"# {remark}")


def main(arguments):
    renew = arguments[:1] == ["--renew"]
    compiler, program = arguments[1:] if renew else arguments
    if renew:
        with open(KEPT, "w", encoding="utf-8") as file:
            json.dump({"compiler": compiler, "counts": count(program)}, file, indent=1)
            file.write("\n")
        return
    with open(KEPT, encoding="utf-8") as file:
        kept = json.load(file)
    if kept["compiler"] != compiler:
        print(f"1..0 # SKIP the kept numbers are those of {kept['compiler']}, this is {compiler}")
        return
    compare(count(program), kept["counts"])


if __name__ == "__main__":
    main(sys.argv[1:])
