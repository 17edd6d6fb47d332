#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Measures everything in one go, prints tables, and writes the numbers to BUILD/bench.json.

usage: bench.py BUILD

All contenders take turns within rounds of a few milliseconds, in several processes one after the
other, since where the loader places a program matters too. A ratio is the median over the rounds of
the ratio to the raw floor in the same round. The noise of a ratio is half the distance between its
quartiles over all rounds, or half of that between the medians of the processes that are furthest
apart, whichever is more.
"""
import collections
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import tempfile

import callgrind
import start

PROCESSES = 5
SECONDS = 0.7  # for each kind of work in each process
COUNTED_LINES = 1000  # callgrind is fifty times slower; beyond this the counts grow in proportion
FLOOR = "raw"
SMALL_HEAP = 2048

# Goals for ours: (what, kind of work, lines, at most).
TIME_GOALS = [
    ("read the first key", "read first", 26, 1.15),
    ("read the last key", "read last", 26, 1.35),
    ("read the last key", "read last", 1000, 3),
    ("read the last key", "read last", 100000, 2),
    ("write, other length", "write other", 26, 1.4),
    ("write, same length", "write same", 26, 2.4),
    ("write, unchanged", "write unchanged", 26, 1.4),
    ("write, other length", "write other", 1000, 4),
    ("write, other length", "write other", 100000, 4),
]
CALL_GOALS = [
    ("system calls of a read", "read last", 26, 3),
    ("system calls of a write, other length", "write other", 26, 15),
    ("system calls of a write, same length", "write same", 26, 9),
    ("system calls of a write, unchanged", "write unchanged", 26, 3),
]
START_GOAL = 1.02


def measure_time(measure, folder, output):
    """Returns {(work, lines): {contender: [process: [round: nanoseconds]]}}."""
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    for process in range(PROCESSES):
        print(f"    CPU time, process {process + 1} of {PROCESSES}", flush=True)
        subprocess.run([measure, "time", folder, output, str(SECONDS)], check=True)
        for work, lines, contender, numbers in rows(output):
            times[work, lines][contender].append([float(number) for number in numbers.split()])
    return times


def rows(path):
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            work, size, contender, rest = line.rstrip("\n").split("\t")
            yield work, int(size), contender, rest


def compare(times):
    """Adds up the rounds: {contender: {"ns", "ratio", "noise"}}."""
    result = {}
    for contender, processes in times.items():
        ratios = [[own / floor for own, floor in zip(rounds, floors)]
                  for rounds, floors in zip(processes, times[FLOOR])]
        flat = sorted(ratio for rounds in ratios for ratio in rounds)
        quartiles = statistics.quantiles(flat, n=4)
        medians = [statistics.median(rounds) for rounds in ratios]
        result[contender] = {
            "ns": statistics.median(value for rounds in processes for value in rounds),
            "ratio": statistics.median(flat),
            "noise": max(quartiles[2] - quartiles[0], max(medians) - min(medians)) / 2,
        }
    return result


def count_system_calls(measure, folder, output):
    """Returns {(work, lines, contender): {name of the call: number}}."""
    trace = output + ".strace"
    subprocess.run(["strace", "-f", "-qq", "-o", trace, measure, "once", folder, output], check=True)
    counts = {}
    current = None
    with open(trace, encoding="utf-8", errors="replace") as lines:
        for line in lines:
            mark = re.search(r'access\("mark:(.*?)", F_OK\)', line)
            call = re.match(r"\d+ +(\w+)\(", line)
            if mark and mark.group(1) == "end":
                current = None
            elif mark:
                work, size, contender = mark.group(1).split("\\t")
                current = counts.setdefault((work, int(size), contender), collections.Counter())
            elif call and current is not None:
                current[call.group(1)] += 1
    os.remove(trace)
    return counts


def count_instructions(measure, folder, output):
    command = [measure, "once", folder, output, str(COUNTED_LINES)]
    counts = {}
    for label, profile in callgrind.profiles(command):
        if label is not None:
            work, size, contender = label.split("\t")
            counts[work, int(size), contender] = callgrind.total(profile)
    return counts


def measure_flush(measure, build):
    """Returns {save: (median seconds of its writes, median seconds of the flush)}, on a disk."""
    with tempfile.TemporaryDirectory(prefix="bench-", dir=build) as folder:
        output = os.path.join(folder, "output")
        subprocess.run([measure, "flush", folder, output], check=True)
        result = {}
        for work, _, _, numbers in rows(output):
            seconds = [float(number) for number in numbers.split()]
            result[work] = statistics.median(seconds[::2]), statistics.median(seconds[1::2])
        return result


def measure_all(build):
    measure = os.path.join(build, "bench", "measure")
    # A file system in memory: a disk's mood is no part of the comparison.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="bench-", dir=memory) as folder:
        output = os.path.join(folder, "output")
        step("Checking that every contender gives right answers")
        if subprocess.run([measure, "check", folder, output]).returncode != 0:
            sys.exit("".join(f"wrong: {row}\n" for row in rows(output)))
        step("Measuring CPU time")
        times = measure_time(measure, folder, output)
        step("Counting system calls")
        calls = count_system_calls(measure, folder, output)
        step("Counting heap calls")
        subprocess.run([measure + "-heap", "once", folder, output], check=True)
        heap = {(work, lines, contender): [int(number) for number in numbers.split()]
                for work, lines, contender, numbers in rows(output)}
        step("Counting instructions")
        instructions = count_instructions(measure, folder, output)
    step("Measuring the flush to the disk")
    flush = measure_flush(measure, build)
    step("Measuring the start of the program")
    begin = start.measure(build)

    works = []
    for (work, lines), contenders in times.items():
        entry = {"work": work, "lines": lines, "contenders": compare(contenders)}
        for contender, numbers in entry["contenders"].items():
            key = work, lines, contender
            numbers["instructions"] = instructions.get(key)
            numbers["system calls"] = dict(calls[key])
            numbers["heap calls"], numbers["unit heap calls"], numbers["peak heap"] = heap[key]
        works.append(entry)
    return {"machine": machine(), "processes": PROCESSES, "works": works, "start": begin,
            "flush": flush}


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        model = next((line.partition(":")[2].strip() for line in lines
                      if line.startswith("model name")), platform.machine())
    return f"{model}, {os.cpu_count()} cores, Linux {platform.release()}"


def step(text):
    print(f"  - {text}", flush=True)


def print_table(title, works, cell):
    """One row for each kind of work; its size is in lines, in rows of a save, or in files."""
    contenders = list(works[0]["contenders"])
    print(f"\n{title}\n")
    print(" " * 22 + "size".rjust(7) + "".join(name.rjust(14) for name in contenders))
    for entry in works:
        cells = [cell(entry["contenders"][name]) if name in entry["contenders"] else None
                 for name in contenders]
        if any(text is not None for text in cells):
            print(entry["work"].ljust(22) + str(entry["lines"]).rjust(7) +
                  "".join((text or "-").rjust(14) for text in cells))


def ratio_cell(numbers):
    digits = 2 if numbers["ratio"] < 10 else 0
    return f"{numbers['ratio']:.{digits}f} ±{numbers['noise']:.{digits}f}"


def print_tables(result):
    works = result["works"]
    print(f"\n{result['machine']}")
    print_table("Nanoseconds of CPU time, median", works, lambda numbers: f"{numbers['ns']:.0f}")
    print_table("CPU time against the raw floor", works, ratio_cell)
    print_table("Instructions", works, lambda numbers: numbers["instructions"] and
                str(numbers["instructions"]))
    print_table("System calls", works, lambda numbers: str(sum(numbers["system calls"].values())))
    print_table("Heap calls, and those not made by the C library", works,
                lambda numbers: f"{numbers['heap calls']} {numbers['unit heap calls']}")
    print_table("Peak heap, bytes", works, lambda numbers: str(numbers["peak heap"]))
    print("\nMilliseconds on the disk, median: a save without its pause, and the flush that ends it")
    for work, (saved, flushed) in result["flush"].items():
        print(f"{work:22}{1e3 * saved:10.2f}{1e3 * flushed:10.2f}")
    print_start(result["start"])


def print_start(begin):
    print(f"\n{'From exec to the first painted frame':38}{'ours':>13}{'bare window':>13}"
          f"{'ratio':>8}{'noise':>8}")
    for what, key, digits, scale in [("instructions, million", "instructions", 2, 1e-6),
                                     ("CPU time, ms", "cpu", 2, 1e3)]:
        ours, bare = begin["ours"][key], begin["bare"][key]
        ratios = [own / floor for own, floor in zip(ours, bare)]
        noise = (max(ratios) - min(ratios)) / 2
        if len(ratios) > 4:
            quartiles = statistics.quantiles(ratios, n=4)
            noise = (quartiles[2] - quartiles[0]) / 2
        print(f"{what:38}{statistics.median(ours) * scale:13.{digits}f}"
              f"{statistics.median(bare) * scale:13.{digits}f}"
              f"{statistics.median(ratios):8.3f}{noise:8.3f}")
    for what, key in [("peak memory, KiB", "memory"), ("files opened", "files")]:
        ours, bare = begin["ours"][key], begin["bare"][key]
        print(f"{what:38}{ours:13.0f}{bare:13.0f}{ours / bare:8.3f}")
    own = statistics.median(begin["ours"]["own"])
    everything = statistics.median(begin["ours"]["instructions"])
    print(f"{'instructions in our own code':38}{own:13.0f}{100 * own / everything:12.2f} % of all")
    for function, cost in begin["ours"]["own functions"].items():
        print(f"    {cost:9}  {function[:100]}")
    print("instructions more than the bare window's, by library")
    for place, cost in sorted(begin["more than bare"].items(), key=lambda item: -abs(item[1])):
        print(f"    {cost:9}  {place}")
    print("files that only ours opens: " + ", ".join(begin["ours"]["only ours opens"]))


def verdicts(result):
    """Yields (what, goal, ours, noise, met)."""
    ours = {(entry["work"], entry["lines"]): entry["contenders"]["ours"] for entry in result["works"]}
    for what, work, lines, goal in TIME_GOALS:
        numbers = ours[work, lines]
        yield f"{what}, {lines} lines", goal, numbers["ratio"], numbers["noise"]
    for what, work, lines, goal in CALL_GOALS:
        yield what, goal, sum(ours[work, lines]["system calls"].values()), 0
    units = [(work, lines) for work, lines in ours if work.startswith(("read", "write"))]
    yield "heap calls of the unit itself", 0, max(ours[key]["unit heap calls"] for key in units), 0
    peaks = [ours[key]["peak heap"] for key in units]
    yield "peak heap at any length, bytes", SMALL_HEAP, max(peaks), 0
    lengths = {work: {ours[key]["peak heap"] for key in units if key[0] == work} for work, _ in units}
    yield "different peaks for one work", 1, max(map(len, lengths.values())), 0
    ratios = [own / bare for own, bare in zip(result["start"]["ours"]["instructions"],
                                              result["start"]["bare"]["instructions"])]
    yield ("instructions of the start", START_GOAL, statistics.median(ratios),
           (max(ratios) - min(ratios)) / 2)


def print_verdicts(result):
    print(f"\n{'Target':46}{'goal':>8}{'ours':>10}{'noise':>8}   verdict")
    for what, goal, value, noise in verdicts(result):
        # A goal is met when the number is, whatever the noise; the noise says how surely.
        verdict = "met" if value <= goal else "NOT MET"
        if abs(value - goal) < noise:
            verdict += ", within the noise"
        print(f"{what:46}{goal:8g}{value:10.5g}{noise:8.2g}   {verdict}")


def main(build):
    result = measure_all(os.path.abspath(build))
    path = os.path.join(build, "bench.json")
    with open(path, "w", encoding="utf-8") as file:
        json.dump(result, file, indent=1)
    print_tables(result)
    print_verdicts(result)
    print(f"\nAll numbers are in {path}.")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
