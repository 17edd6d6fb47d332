# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program while each of its system calls fails once, and is its last one."""
import collections
import itertools
import os
import shutil
import signal
import socket
import stat
import subprocess
import unittest

from tests.support.files import read
from tests.support.limit import SAMPLE, wait_until

from . import device, device_case
from .device import (ETHERNET, HANDLER, INSTALLED, READERS, RUN, SOCKET, STATE, USER, WIFI,
                     WORKING_COPY, as_user, write)
from .device_case import (CLIENT, DYNAMIC, DeviceCase, NEIGHBOUR, NOTES, OUTCOMES, PUBLISHED,
                          STATIC, STRANGER)

# Those of the process that becomes nmcli are left out: when they fail, it is nmcli that has failed.
# The error that a call has, where it is not EIO.
ERRORS = {"clone": "EAGAIN", "flock": "ENOLCK", "fremovexattr": "EPERM",
          "memfd_create": "ENFILE", "mkdir": "ENOSPC", "mkdirat": "ENOSPC", "mmap": "ENOMEM",
          "openat": "EMFILE", "prlimit64": "EPERM", "renameat2": "EXDEV", "wait4": "ECHILD",
          "write": "ENOSPC"}
CANNOT_FAIL = {"alarm", "brk", "execve", "exit_group", "futex", "geteuid", "getpid", "getuid",
               "munmap", "rt_sigaction", "rt_sigprocmask", "umask"}
# A kill there is like one at the call behind it.
CHANGES_NOTHING = {"chdir", "close", "close_range", "connect", "fcntl", "fsync", "getdents64",
                   "getsockopt", "lseek", "memfd_create", "mmap", "newfstatat", "prlimit64", "read",
                   "shutdown", "socket"}
FIRST_CALL = 'openat(AT_FDCWD, "/dev/null", O_RDWR)'  # those before are the loader's
OLD, NEW = (DYNAMIC, CLIENT), (STATIC, CLIENT)


def has_shell(process):
    """Whether a shell is among the children of a process."""
    try:
        children = read(f"/proc/{process}/task/{process}/children").decode().split()
        return any(read(f"/proc/{child}/comm") == b"sh\n" for child in children)
    except ProcessLookupError:  # one of them has just gone
        return False


TRACER = ("strace", "-qq", "-s0", "-e", "signal=none", "-o", "/tmp/trace")


@unittest.skipUnless(shutil.which("strace"), "no strace")
class FaultCase(DeviceCase):
    """However a request ends, files are whole and for their readers only, and the next one works."""

    killed = (-signal.SIGKILL, 128 + signal.SIGKILL)

    def traced(self, request, overtaken, *options):
        """A request under a tracer, called before others that overtake it: its end, its calls."""
        process = self.start(*request, stdin=subprocess.PIPE, wrapper=(
            *TRACER, *options, "/bin/sh", "-c", 'read -r go; exec "$0" "$@"'))
        wait_until(lambda: has_shell(process.pid), "the call")
        for other in overtaken:
            self.request(*other)
        end = self.finish(process)  # which lets it go
        return end, read("/tmp/trace").decode().splitlines()

    def calls(self, request, overtaken):
        """The names of a request's calls, each with its number among those of that name."""
        _, trace = self.traced(request, overtaken)
        counts = collections.Counter()
        calls = []
        is_ours = False
        for line in trace:
            name = line.partition("(")[0]
            counts[name] += 1
            is_ours |= line.startswith(FIRST_CALL)
            if is_ours and name.isidentifier() and name not in CANNOT_FAIL:
                calls.append((name, counts[name]))
        return calls

    def check_access(self):
        """Nobody can read a file that is not for him."""
        for top in (os.path.dirname(WORKING_COPY), STATE, RUN):
            for folder, _, files in os.walk(top):
                for path in (os.path.join(folder, name) for name in files):
                    status = os.lstat(path)
                    if not path.startswith((STRANGER, PUBLISHED, OUTCOMES)):
                        self.assertFalse(status.st_mode & stat.S_IRWXO, path)
                    if status.st_mode & stat.S_IRWXG and \
                            not path.startswith((PUBLISHED, OUTCOMES)):
                        self.assertEqual(status.st_gid, READERS, path)
                    if path.startswith(INSTALLED):
                        self.assertEqual((status.st_uid, status.st_mode & 0o777), (0, 0o600), path)

    def check_next(self, action, states):
        """The files are as in one of some states, and the next request works."""
        ethernet, wifi = read(INSTALLED, ETHERNET), read(INSTALLED, WIFI)
        self.assertIn((ethernet, wifi), states)
        self.assertLessEqual(set(os.listdir(INSTALLED)),
                             {ETHERNET, ETHERNET + "~", WIFI, os.path.basename(NEIGHBOUR)})
        # A folder that is there for an installed file that could not be read is not set aside.
        status, errors = self.ask(action)
        self.assertEqual(status, 0, errors)
        self.assertRegex(errors, r"\A(\S+ not set aside: \S+ is no plain file\n)?\Z")
        self.assert_copy(action == "rollback", ethernet=ethernet, wifi=wifi)

    def examine(self, request, prepare, check, states=(OLD,), overtaken=()):
        """Lets each call of a request fail once, and the request be killed there once."""
        def begin():
            write(DYNAMIC, INSTALLED, ETHERNET)
            write(CLIENT, INSTALLED, WIFI)
            write(b"", NOTES, "calls")
            self.request("unlock")
            prepare()

        begin()
        calls = self.calls(request, overtaken)
        self.assertGreater(len(calls), 20)
        sample = SAMPLE
        if b"__asan_init" in read(HANDLER):  # slow, and some calls are its runtime's own
            calls = [call for call in calls if call[0] not in ("mmap", "write")]
            sample = 8
        actions = itertools.cycle(["unlock", "rollback", "rollback", "unlock"])
        for name, number in calls[::sample]:
            for fault in "error=" + ERRORS.get(name, "EIO"), "signal=KILL":
                if fault == "signal=KILL" and name in CHANGES_NOTHING:
                    continue
                begin()
                (status, errors), trace = self.traced(
                    request, overtaken, "-e", f"inject={name}:{fault}:when={number}")
                with self.subTest(f"{name} {number} {fault}"):
                    if fault == "signal=KILL":
                        self.assertIn(status, self.killed)
                    else:
                        self.assertIn("(INJECTED)", "".join(trace))
                        self.assertIn(status, (0, 1))
                        # Only what keeps it from being said need not be.
                        self.assertTrue(status == 0 or errors or name == "write")
                        if status == 0:
                            check()
                    self.check_access()
                    self.check_next(next(actions), states)

    def check_locked(self):
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def check_activated(self):
        self.assert_installed(STATIC, CLIENT)
        self.assert_activated()


class Faults(FaultCase):

    def test_unlock(self):
        self.examine(("unlock",), self.save_static,
                     lambda: self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT))

    def test_rollback(self):
        self.examine(("rollback",), self.save_static, self.check_locked)

    def test_rollback_of_a_mount_point(self):
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", WORKING_COPY], check=True)
        self.addCleanup(device.uncover, WORKING_COPY)
        self.examine(("rollback",), self.save_static, self.check_locked)

    def test_rollback_of_nothing(self):
        def prepare():
            for name in (ETHERNET, WIFI):
                os.remove(os.path.join(INSTALLED, name))
            self.request("unlock")
            write(b"", WORKING_COPY, "other", owner=USER)

        self.examine(("rollback",), prepare, lambda: self.assert_copy(True), [(None, None)])

    def test_finalize(self):
        self.examine(("finalize_ethernet", "x"), self.save_static, self.check_activated,
                     (OLD, NEW))

    def test_finalize_after_a_rollback(self):
        self.examine(("finalize_ethernet", "x"), self.save_static, self.check_activated,
                     (OLD, NEW), overtaken=(("rollback",),))

    def test_finalize_of_what_the_daemon_refuses(self):
        write(b"method=manual", NOTES, "refuses")
        self.examine(("finalize_ethernet", "x"), self.save_static,
                     lambda: self.fail("it was not refused"), (OLD, NEW))

    def test_removal(self):
        self.examine(("finalize_wifi",), lambda: os.remove(f"{WORKING_COPY}/{WIFI}"),
                     lambda: self.assert_installed(DYNAMIC, None), (OLD, (DYNAMIC, None)))

    def test_installed_file_is_flushed_before_and_after_it_gets_its_name(self):
        self.request("unlock")
        self.save_static()
        _, trace = self.traced(("finalize_ethernet", "x"), (), "-e", "trace=fsync,renameat")
        self.assertEqual([line.partition("(")[0] for line in trace],
                         # the first: the record before; the last two: the record, the outcome
                         ["renameat", "fsync", "renameat", "fsync", "renameat", "renameat"])

    def test_flush_that_is_interrupted_is_tried_again(self):
        for number in (1, 2):
            self.request("unlock")
            self.put_into_copy(STATIC if number == 1 else DYNAMIC, ETHERNET)
            (status, errors), trace = self.traced(
                ("finalize_ethernet", "x"), (), "-e", f"inject=fsync:error=EINTR:when={number}")
            self.assertIn("(INJECTED)", "".join(trace))
            self.assertEqual(status, 0, errors)


class FaultsOfTheService(FaultCase):
    """The client tells that there is no answer, if there is none."""

    killed = (1,)

    def traced(self, request, overtaken, *options):
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(SOCKET)
            os.chown(SOCKET, USER, USER)
            listener.listen()
            client = subprocess.Popen(as_user(USER, device.CLIENT, *request), text=True,
                                      stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            connection = listener.accept()[0]
        os.remove(SOCKET)  # it finds nobody when it asks again
        with connection:
            for other in overtaken:
                self.request(*other)
            subprocess.run([*TRACER, *options, HANDLER], stdin=connection, check=False,
                           env={"ASAN_OPTIONS": "detect_leaks=0"}, stderr=subprocess.DEVNULL)
        return self.finish(client), read("/tmp/trace").decode().splitlines()

    def test_unlock(self):
        self.examine(("unlock",), self.save_static,
                     lambda: self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT))

    def test_finalize_after_a_rollback(self):
        self.examine(("finalize_ethernet", "x"), self.save_static, self.check_activated,
                     (OLD, NEW), overtaken=(("rollback",),))


device_case.main()
