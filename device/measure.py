# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Measures a device in a virtual machine: its start and its memory, by how the window is drawn, the
part of its disk that is ours, and what a save writes.

The clock inside counts instructions, so that other work here changes little. Its seconds are no
real device's: what counts is the ratio to a window with nothing in it.
"""
import os
import re
import shlex
import subprocess

from tests.support.files import SOURCES

from .journeys import FIRST, SECOND, Journeys
from .machine import KERNEL, RUN, Machine, clear
from .window import WORKING_COPY, Window

TOOLS = os.path.join(RUN, "tools.tar")
EMPTY = "/opt/lab/empty_window"
PROGRAM = "/usr/bin/zor-network-manager"
# A variable that is set, if to nothing, keeps the program from its own choice.
DEFAULT = "GDK_DEBUG="
CAIRO = "GDK_DEBUG=gl-disable GSK_RENDERER=cairo"
# The first row is what the others are compared with.
ROWS = {"an empty window, cairo": (EMPTY, CAIRO),
        "the program, as it is": (PROGRAM, ""),
        "an empty window, by default": (EMPTY, DEFAULT),
        "the program, by default": (PROGRAM, DEFAULT)}
COLUMNS = ("first, s", "again, s", "CPU, s", "PSS, MiB")


def build_tools():
    """The second disk of a machine: an empty window, what ends a program at its first frame, and
    libraries that the device does without and the toolkit's own choice does not."""
    flags = subprocess.run(["pkg-config", "--cflags", "--libs", "gtkmm-4.0"], capture_output=True,
                           text=True, check=True).stdout.split()
    for name, *options in ("empty_window",), ("first_frame", "-shared", "-fPIC"):
        subprocess.run(["c++", "-std=c++20", "-O2", "-s", *options, "-o", os.path.join(RUN, name),
                        os.path.join(SOURCES, "bench", name + ".cc"), *flags], check=True)
    subprocess.run(["tar", "-chf", TOOLS, "-C", RUN, "empty_window", "first_frame",
                    "-C", "/usr/lib/x86_64-linux-gnu", "libGL.so.1", "libGLX.so.0"], check=True)


def proportional(machine, files):
    """MiB of processes, what they share with others in proportion."""
    return sum(map(int, re.findall(r"(?m)^Pss: +(\d+)", machine.run("cat " + files)))) / 1024


def at_rest(machine):
    """Prints what stands in memory and on the disk."""
    machine.at_rest()
    window = proportional(
        machine, "/proc/$(systemctl show -P MainPID zor-network-manager)/smaps_rollup")
    session = proportional(machine, "$(find /proc -maxdepth 2 -user zor -name smaps_rollup)")
    every, ours = (int(machine.run(command).split()[0]) for command in (
        "du -xsk /", "du -ck $(find $(dpkg -L zor-network-manager) "
        "/usr/*/zor-network-permissions-handler -maxdepth 0 -type f) | tail -n 1"))
    print(f"PSS of the session {session:.1f} MiB, of the window {window:.1f} MiB; "
          f"on the disk {every / 1024:.0f} MiB, of which ours are {ours} KiB", flush=True)


def measure(machine, program, environment):
    """To the first frame: seconds, then seconds, CPU seconds and MiB of another time."""
    command = ("TIMEFORMAT='%R %U %S'; time setpriv --reuid=zor --regid=zor --init-groups "
               f"env $(systemctl show -P Environment zor-network-manager) {environment} "
               f"ZOR_NETWORKMANAGER_DEBUG_PATH={WORKING_COPY} FIRST_FRAME_MEMORY=/home/zor/memory "
               "LD_LIBRARY_PATH=/opt/lab LD_PRELOAD=/opt/lab/first_frame "
               f"{program} 1 >/dev/null 2>&1")
    (first, *_), (again, *cpu) = (
        map(float, machine.run(f"bash -c {shlex.quote(command)}").split()) for _ in range(2))
    return first, again, sum(cpu), proportional(machine, "/home/zor/memory")


def starts(machine):
    """Prints a row for each way to draw."""
    machine.run("mkdir /opt/lab; tar -xf /dev/vdb -C /opt/lab; systemctl stop zor-network-manager")
    print(f"\n{'to the first frame':<32}" + "".join(f"{name:>10}{'':6}" for name in COLUMNS))
    floor = None
    for name, what in ROWS.items():
        found = measure(machine, *what)
        floor = floor or found
        print(f"{name:<32}" + "".join(f"{number:>10.2f}{number / least:>6.2f}"
                                      for number, least in zip(found, floor)), flush=True)
    machine.run("systemctl start zor-network-manager")


def written(machine):
    """KiB that went to the disk since the start."""
    return int(machine.run("sync; cat /sys/block/vda/stat").split()[6]) / 2


def save(machine):
    """Prints what another address has the disk write, the privileged program's part included."""
    journeys = Journeys(machine, Window(machine))
    journeys.window.wait()
    journeys.static(FIRST)
    journeys.fill_static(SECOND)
    old, before, began = journeys.installed("ethernet"), written(machine), machine.clock()
    journeys.save("ethernet")
    after, took = written(machine), machine.clock() - began
    lines = [line for line in journeys.installed("ethernet").splitlines() if line not in old]
    machine.pause(took)
    print(f"\na save that changes {len(lines)} lines of {sum(map(len, lines))} bytes writes "
          f"{after - before:.0f} KiB; as long without one, {written(machine) - after:.0f} KiB")


def main():
    clear(RUN)
    os.makedirs(RUN)
    build_tools()
    # A file system that is new goes on making its tables, for minutes, unless told otherwise.
    with Machine(RUN, arguments=["-append", KERNEL + " rootflags=noinit_itable", "-drive",
                                 f"file={TOOLS},if=virtio,format=raw,readonly=on"]) as machine:
        Window(machine).wait()
        print(f"from power to window {machine.clock():.1f} s")
        at_rest(machine)
        starts(machine)
        save(machine)


main()
