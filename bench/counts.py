#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Fails when an operation takes more instructions than it used to; prints TAP.

usage: counts.py [--renew] KEPT COMPILER PROGRAM

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

TOLERANCE = 0.10


def count(program):
    """{operation: [own, all]}, without what the environment would have the libraries do."""
    with tempfile.TemporaryDirectory(prefix="counts-") as folder:
        counts = callgrind.count([program, "once", folder], {"PATH": os.environ["PATH"]})
    return {label.partition("\t")[0]: list(numbers) for label, numbers in counts.items() if label}


def compare(counts, kept):
    print(f"1..{len(kept)}")
    for number, (operation, before) in enumerate(kept.items(), 1):
        now = counts.get(operation, [float("inf")] * 2)
        changes = [new / old - 1 for new, old in zip(now, before)]
        print(f"{'not ok' if max(changes) > TOLERANCE else 'ok'} {number} - {operation}: "
              f"own {now[0]} ({changes[0]:+.1%}), all {now[1]} ({changes[1]:+.1%})")
        if min(changes) < -TOLERANCE:
            print("# fewer than the numbers kept; renew them")


def main(kept_file, compiler, program, renew):
    if renew:
        lines = [f" {json.dumps(name)}: {json.dumps(value)}"
                 for name, value in {"compiler": compiler, **count(program)}.items()]
        with open(kept_file, "w", encoding="utf-8") as file:
            file.write("{\n" + ",\n".join(lines) + "\n}\n")
        return
    with open(kept_file, encoding="utf-8") as file:
        kept = json.load(file)
    kept_compiler = kept.pop("compiler")
    if kept_compiler != compiler:
        print(f"1..0 # SKIP left out: the kept numbers are those of {kept_compiler}, "
              f"this is {compiler}")
        return
    compare(count(program), kept)


if __name__ == "__main__":
    main(*sys.argv[-3:], renew="--renew" in sys.argv)
