# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Runs a save of the real program, traced, with one system call that fails."""
import collections
import os
import re
import subprocess
import tempfile

from tests.support.files import UPDATE_RECORD, read
from tests.support.recorder import Recorder

LIMIT = 30 * float(os.environ.get("MESON_TEST_TIMEOUT_MULTIPLIER", "1"))
FILE_CALLS = ("access,openat,read,write,close,lseek,fcntl,?fstat,newfstatat,?unlink,unlinkat,"
              "?rename,?renameat,fsync,?fchmod,pread64,pwrite64,ftruncate,execve")


class Runner:
    """Runs the program in a folder of its own, under a tracer that makes calls fail."""

    def __init__(self, scenario, program, press, discover):
        self.scenario = scenario
        self.program, self.press, self.discover = program, press, discover
        self.folder = tempfile.mkdtemp(prefix="zor-faults-")
        self.connections = self.path("connections")
        self.keyfile = os.path.join(self.connections, scenario.name)
        self.temporary = self.keyfile[:-1] + "~"
        self.recorder = Recorder(self.folder)
        os.mkdir(self.connections)
        self.environment = {
            **os.environ, "PATH": self.recorder.bin + ":" + os.environ["PATH"],
            "ZOR_NETWORKMANAGER_DEBUG_PATH": self.connections,
            # The tracer allows no leak check, and the runtime does not come first.
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "")
                            + ":verify_asan_link_order=0:detect_leaks=0"}

    def path(self, *names):
        """A path in the folder."""
        return os.path.join(self.folder, *names)

    def prepare(self):
        """Makes everything as it is before a save."""
        names = [os.path.join(self.connections, name) for name in os.listdir(self.connections)]
        for path in (*names, UPDATE_RECORD):
            if os.path.exists(path):
                os.remove(path)
        self.recorder.forget()
        with open(self.keyfile, "wb") as file:
            file.write(self.scenario.old)
        os.chmod(self.keyfile, 0o600)

    def run(self, injection=None, short_write=None, strings=0):
        """Saves once. Returns the status and the trace from the start of the save on."""
        paths = [self.keyfile, self.temporary, self.connections, UPDATE_RECORD, self.path("out"),
                 self.recorder.path]
        calls = FILE_CALLS
        if injection and injection.startswith("inject=clone"):
            paths, calls = [], "access,clone"  # which names no file
        given = {"LD_PRELOAD": self.press, "ZOR_PRESS": "\n".join(self.scenario.actions),
                 "ZOR_PRESS_MARK": self.keyfile}
        if short_write:
            given["ZOR_SHORT_WRITE"] = short_write
        options = ["-f", "-qq", "-y", "-s", str(strings), "-o", self.path("trace"),
                   "-e", "signal=none", "-e", f"trace={calls}"]
        options += [word for path in paths for word in ("-P", path)]
        options += [word for item in given.items() for word in ("-E", "=".join(item))]
        options += ["-e", injection] if injection else []
        if not injection or ":signal=" not in injection:  # a signal needs the slower way
            options.append("--seccomp-bpf")  # stops at no call but these
        with open(self.path("out"), "wb") as out, open(self.path("err"), "wb") as err:
            status = subprocess.run(
                ["strace", *options, self.program, "1"], stdin=subprocess.DEVNULL, stdout=out,
                stderr=err, env=self.environment, check=False, timeout=LIMIT).returncode
        trace = (read(self.path("trace")) or b"").decode().splitlines()
        started = [" access(" in line for line in trace]
        assert any(started), f"no save: {status} {read(self.path('err'))} {trace}"
        start = started.index(True) + 1
        self.before = trace[:start]
        return status, trace[start:]

    def calls(self):
        """The calls of an undisturbed save: name, its number among those of its name, its line."""
        self.prepare()
        status, trace = self.run()
        assert status == 0, read(self.path("err"))
        self.expected_errors = errors_in(self)
        main = self.before[0].split()[0]
        counts = collections.Counter(
            name_of(line) for line in self.before if line.split()[0] == main)
        calls = []
        for line in trace:
            process, _, call = line.partition(" ")
            name = name_of(line)
            if process != main and name == "execve":
                calls.append((name, 1, call.strip()))
            elif process == main and name.isalnum():
                counts[name] += 1
                calls.append((name, counts[name], call.strip()))
        return calls

    def found(self):
        """The keyfile that the next start finds."""
        result = subprocess.run([self.discover], env=self.environment, capture_output=True,
                                check=True, text=True)
        title = {"ethernet": "Ethernet", "wifi": "Wifi"}[self.scenario.kind]
        path = re.search(rf"^{title} Connection Path: (.*)$", result.stdout, re.M)[1]
        return os.path.basename(path)


def errors_in(runner):
    """What the program wrote on standard error, as lines."""
    return read(runner.path("err")).decode().splitlines()


def name_of(line):
    """The name of the call in a line of a trace."""
    return line.partition(" ")[2].strip().partition("(")[0]


def kind_of(call):
    """The key of ERRORS for a call."""
    name = call.partition("(")[0]
    if name != "openat":
        return name
    return "create" if re.search("O_CREAT|O_RDWR|O_WRONLY", call) else "open"


def described(call):
    """A call as a row shows it: its name and its files."""
    paths = re.findall(r'[<"](/[^>"]*)[>"]', call.partition(" = ")[0])
    names = [os.path.basename(path) for path in paths if path != os.getcwd()]
    kind = {"open": "open to read", "create": "open to write"}.get(kind_of(call), kind_of(call))
    return " ".join([kind, *names])
