# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The start, from exec to the first painted frame, beside a bare window of the same widgets."""
import collections
import contextlib
import functools
import operator
import os
import re
import shutil
import statistics
import subprocess
import tempfile

import callgrind

ROUNDS = 40
FEW = 3  # of what hardly differs from run to run
SAMPLES = os.path.join(os.path.dirname(__file__), "..", "tests", "keyfiles", "samples")


@contextlib.contextmanager
def x_server():
    """The environment of a private display on which nothing else of the machine takes part."""
    with tempfile.TemporaryDirectory(prefix="first-frame-") as home:
        read, write = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x1024x24",
                                   "-nolisten", "tcp"], pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        number = b""
        while not number.endswith(b"\n"):
            number += os.read(read, 16) or b"\n"
        samples = os.path.join(home, "samples")
        shutil.copytree(SAMPLES, samples)
        try:
            yield {"PATH": os.environ["PATH"], "HOME": home, "XDG_RUNTIME_DIR": home,
                   "LANG": "C.UTF-8", "DISPLAY": ":" + number.decode().strip(),
                   "GDK_BACKEND": "x11", "GSK_RENDERER": "cairo", "GDK_DEBUG": "gl-disable",
                   "GTK_A11Y": "none", "GSETTINGS_BACKEND": "memory",
                   "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                   "ZOR_NETWORKMANAGER_DEBUG_PATH": samples}
        finally:
            server.terminate()
            server.wait()
            os.close(read)


def run(command, environment):
    """Returns the CPU time in seconds and the peak memory in KiB of one run."""
    with open(os.devnull, "wb") as nowhere:
        child = subprocess.Popen(command, env=environment, stdout=nowhere)
        _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    assert child.returncode == 0, f"{command[0]} ended with {child.returncode}"
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss


def files_opened(command, environment):
    """Counts how often each file is opened."""
    with tempfile.NamedTemporaryFile("r", suffix=".strace") as trace:
        preload = environment["LD_PRELOAD"]
        plain = {key: value for key, value in environment.items() if key != "LD_PRELOAD"}
        subprocess.run(["strace", "-f", "-qq", "-e", "trace=open,openat", "-E",
                        "LD_PRELOAD=" + preload, "-o", trace.name, *command], env=plain, check=True,
                       stdout=subprocess.DEVNULL)
        opened = re.findall(r'open(?:at)?\([^"]*"([^"]*)".*\) = \d', trace.read())
    return collections.Counter(opened)


def always_more(some, others):
    """What all of some counters have and none of the others.

    The toolkit reads its fonts in a thread, which does not always come to the same files.
    """
    return functools.reduce(operator.and_, some) - functools.reduce(operator.or_, others)


def widget_tree(command, environment, folder):
    name = os.path.join(folder, "tree")
    run(command, {**environment, "FIRST_FRAME_TREE": name})
    with open(name, encoding="utf-8") as tree:
        return tree.read()


def measure(build):
    """Returns what each of the two programs costs, and of ours, where its own instructions go."""
    program = os.path.join(build, "zor-network-manager")
    commands = {"ours": [program, "1"], "bare": [os.path.join(build, "bench", "bare-window")]}
    with x_server() as environment:
        environment["LD_PRELOAD"] = os.path.join(build, "bench", "libfirst-frame.so")
        trees = {name: widget_tree(command, environment, environment["HOME"])
                 for name, command in commands.items()}
        assert trees["ours"] == trees["bare"], "the bare window is not the same as ours any more"

        cpu = {name: [] for name in commands}
        memory = {name: [] for name in commands}
        for _ in range(ROUNDS):
            for name, command in commands.items():
                seconds, kibibytes = run(command, environment)
                cpu[name].append(seconds)
                memory[name].append(kibibytes)
        opened = {name: [files_opened(command, environment) for _ in range(FEW)]
                  for name, command in commands.items()}
        profiles = {name: [] for name in commands}
        for _ in range(FEW):
            for name, command in commands.items():
                profiles[name] += [profile for _, profile in
                                   callgrind.profiles(command, environment)]

    result = {}
    for name, command in commands.items():
        result[name] = {
            "cpu": cpu[name],
            "memory": statistics.median(memory[name]),
            "files": statistics.median(run_files.total() for run_files in opened[name]),
            "instructions": [callgrind.total(profile) for profile in profiles[name]],
            "own": [callgrind.within(profile, command[0]) for profile in profiles[name]],
        }
    result["ours"]["only ours opens"] = sorted(
        os.path.basename(file)
        for file in always_more(opened["ours"], opened["bare"]).elements())
    where = {function: cost for (place, function), cost in profiles["ours"][0].items()
             if place and os.path.realpath(place) == os.path.realpath(program)}
    result["ours"]["own functions"] = dict(sorted(where.items(), key=lambda item: -item[1])[:10])
    libraries = {name: collections.Counter() for name in commands}
    for name in commands:
        for (place, _), cost in profiles[name][0].items():
            libraries[name][os.path.basename(place)] += cost
    result["more than bare"] = {
        place: libraries["ours"][place] - libraries["bare"][place]
        for place in libraries["ours"]
        if abs(libraries["ours"][place] - libraries["bare"][place]) > 10000}
    return result
