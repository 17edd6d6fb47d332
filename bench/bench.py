#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Measures everything in one go and prints tables.

usage: bench.py MEASURE PROGRAM EMPTY_WINDOW FIRST_FRAME, on a display of its own

All contenders take turns within rounds of a few milliseconds, in several processes one after the
other, since where the loader places a program matters too. A ratio is the median over the rounds of
the ratio to the raw floor in the same round. The noise of a ratio is half the distance between its
quartiles over all rounds, or half of that between the medians of the processes that are furthest
apart, whichever is more.
"""
import collections
import os
import platform
import re
import statistics
import subprocess
import sys
import tempfile

import callgrind

PROCESSES = 5
SECONDS = 0.7  # for each row in each process
STARTS = 40
SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tests/keyfiles/samples")
FLOORS = ("raw", "stdio")  # do as little as will do; all others but ours are libraries
# What ours may take: against the raw floor, and system calls.
GOALS = {"read first, 26 lines": (1.15, 3),
         "read last, 26 lines": (1.25, 3),
         "write other, 26 lines": (1.25, 15),
         "write same, 26 lines": (2.2, 9),
         "write unchanged, 26 lines": (1.3, 3),
         "read last, 1000 lines": (4.5, None),
         "write other, 1000 lines": (4.5, None),
         "read last, 100000 lines": (4.5, None),
         "write other, 100000 lines": (5.5, None)}


def say(text):
    print("  - " + text, file=sys.stderr, flush=True)


def measure_time(measure, folder):
    """{row: {contender: [process: [round: nanoseconds]]}}"""
    times = collections.defaultdict(lambda: collections.defaultdict(list))
    for process in range(PROCESSES):
        say(f"CPU time, process {process + 1} of {PROCESSES}")
        done = subprocess.run([measure, "time", folder, str(SECONDS)], check=True, text=True,
                              stdout=subprocess.PIPE)
        for line in done.stdout.splitlines():
            row, contender, *numbers = line.split("\t")
            times[row][contender].append([float(number) for number in numbers])
    return times


def compare(times):
    """{contender: {"ns", "ratio", "noise"}} of one row."""
    result = {}
    for contender, processes in times.items():
        ratios = [[own / floor for own, floor in zip(rounds, floors)]
                  for rounds, floors in zip(processes, times["raw"])]
        flat = [ratio for rounds in ratios for ratio in rounds]
        quartiles = statistics.quantiles(flat, n=4)
        medians = [statistics.median(rounds) for rounds in ratios]
        result[contender] = {
            "ns": statistics.median(value for rounds in processes for value in rounds),
            "ratio": statistics.median(flat),
            "noise": max(quartiles[2] - quartiles[0], max(medians) - min(medians)) / 2,
        }
    return result


def count_system_calls(measure, folder):
    """{row: {contender: number}}"""
    trace = os.path.join(folder, "strace")
    subprocess.run(["strace", "-f", "-qq", "-o", trace, measure, "once", folder], check=True)
    counts = collections.defaultdict(collections.Counter)
    row = contender = None
    with open(trace, encoding="utf-8", errors="replace") as lines:
        for line in lines:
            if mark := re.search(r'access\("mark:(.*?)(?:\\t(.*?))?", F_OK\)', line):
                row, contender = mark.groups()
            elif contender and re.match(r"\d+ +\w+\(", line):
                counts[row][contender] += 1
    return counts


def run(command, environment):
    """The CPU time in seconds and the peak memory in KiB of one run."""
    child = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    assert child.returncode == 0, f"{command[0]} ended with {child.returncode}"
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss


def measure_start(program, empty_window, first_frame):
    """From exec to the first painted frame: {who: {"ms", "KiB", "PSS", "instructions", "own"}}."""
    display = {**os.environ, "LD_PRELOAD": first_frame, "ZOR_NETWORKMANAGER_DEBUG_PATH": SAMPLES}
    # The display's environment chooses how to draw; ours does so itself unless one of these is set.
    ours = {name: value for name, value in display.items()
            if name not in ("GSK_RENDERER", "GDK_DEBUG", "GDK_DISABLE")}
    commands = {"ours": ([program, "1"], ours),
                "drawn as by default": ([program, "1"], {**ours, "GDK_DEBUG": ""}),
                "empty window": ([empty_window], display)}
    runs = collections.defaultdict(list)
    for _ in range(STARTS):
        for who, what in commands.items():
            runs[who].append(run(*what))
    result = {}
    for who, what in commands.items():
        seconds, memory = zip(*runs[who])
        result[who] = {"ms": 1e3 * statistics.median(seconds), "KiB": statistics.median(memory),
                       "PSS": proportional_memory(*what)}
        if who != "drawn as by default":  # a driver that compiles takes minutes there
            result[who]["own"], result[who]["instructions"] = callgrind.count(*what)[None]
    return result


def proportional_memory(command, environment):
    """What a run takes of the machine's memory at its first frame, in KiB."""
    with tempfile.NamedTemporaryFile(mode="r", prefix="bench-") as report:
        run(command, {**environment, "FIRST_FRAME_MEMORY": report.name})
        return int(re.search(r"(?m)^Pss: +(\d+) kB", report.read()).group(1))


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as lines:
        model = next((line.partition(":")[2].strip() for line in lines
                      if line.startswith("model name")), platform.machine())
    return f"{model}, {os.cpu_count()} cores, Linux {platform.release()}"


def print_table(title, rows, cell):
    contenders = list(rows[next(iter(rows))])
    print(f"\n{title}\n\n{'':26}" + "".join(name.rjust(13) for name in contenders))
    for row, numbers in rows.items():
        print(row.ljust(26) + "".join((cell(numbers[name]) if name in numbers else "-").rjust(13)
                                      for name in contenders))


def ratio_cell(numbers):
    digits = 2 if numbers["ratio"] < 10 else 0
    return f"{numbers['ratio']:.{digits}f} ±{numbers['noise']:.{digits}f}"


def print_goals(rows, calls):
    """Ours beside what it may take, and beside the best library."""
    print(f"\n{'Target':26}{'at most':>9}{'ours':>9}{'noise':>9}{'libraries':>11}{'calls':>7}"
          f"{'at most':>9}")
    for row, (goal, most) in GOALS.items():
        ours = rows[row]["ours"]
        best = min(numbers["ratio"] for name, numbers in rows[row].items()
                   if name not in (*FLOORS, "ours"))
        # A goal is met when the number is, whatever the noise; the noise says how surely.
        met = (ours["ratio"] <= goal and ours["ratio"] < best
               and (most is None or calls[row]["ours"] <= most))
        print(f"{row:26}{goal:9.2f}{ours['ratio']:9.3f}{ours['noise']:9.3f}{best:11.2f}"
              f"{calls[row]['ours']:7}{most or '':>9}   {'met' if met else 'NOT MET'}")


def print_start(start):
    print("\nFrom exec to the first painted frame\n")
    for who, numbers in start.items():
        print(f"{who:26}{numbers['ms']:8.1f} ms of CPU time{numbers['KiB']:9.0f} KiB at most"
              f"{numbers['PSS']:9.0f} KiB at the end (PSS)"
              + (f"{numbers['instructions'] / 1e6:8.1f} million instructions"
                 f"{numbers['own']:8} of them in its own code" if "own" in numbers else ""))


def main(measure, program, empty_window, first_frame):
    # A file system in memory: a disk's mood is no part of the comparison.
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(prefix="bench-", dir=memory) as folder:
        say("checking that every contender gives right answers")
        subprocess.run([measure, "check", folder], check=True)
        rows = {row: compare(times) for row, times in measure_time(measure, folder).items()}
        say("system calls")
        calls = count_system_calls(measure, folder)
    say("the start of the program")
    start = measure_start(program, empty_window, first_frame)

    print(machine())
    print_table("CPU time in microseconds, median", rows, lambda cell: f"{cell['ns'] / 1e3:.1f}")
    print_table("CPU time against the raw floor", rows, ratio_cell)
    print_table("System calls", calls, str)
    print_goals(rows, calls)
    print_start(start)


if __name__ == "__main__":
    main(*sys.argv[1:])
