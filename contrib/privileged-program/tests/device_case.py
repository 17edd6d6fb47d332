# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the tests of the example privileged program share: a device, requests, comparisons.

For root. A recorder takes the place of nmcli.
"""
import contextlib
import os
import shlex
import shutil
import socket
import stat
import struct
import subprocess
import sys
import time
import unittest

from tests.support import isolation, tap
from tests.support.files import SOURCES, UPDATE_RECORD, expected, read

from . import device
from .device import (ETHERNET, HANDLER, HERE, INSTALLED, READERS, RUN, USER, WIFI, WORKING_COPY,
                     write)

PUBLISHED = RUN + "/ethernet-settings"
OUTCOMES = RUN + "/outcome"
NOTES = "/run/nmcli"
# What nobody has asked the program to touch: a neighbour of the installed files, and a stranger's.
NEIGHBOUR = INSTALLED + "/office-vpn.nmconnection"
STRANGER = "/etc/NetworkManager/canary"  # where hard links can be made to
# In the place of a sudo that takes its time: runs the command that it is told in a line.
SLOW_SUDO = "/tmp/sudo"

STATIC, DYNAMIC = expected("ethernet-static"), expected("ethernet-dynamic")
CLIENT, ACCESS_POINT = expected("client"), expected("access-point")
STATIC_RECORD = b"00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 "
DYNAMIC_RECORD = b"01 " + 12 * b"00 "

# An access list, as its attribute holds it.
USER_MAY_WRITE = struct.pack("<I" + 5 * "HHI", 2, 1, 7, 0xffffffff, 2, 7, USER,
                             4, 5, 0xffffffff, 16, 7, 0xffffffff, 32, 5, 0xffffffff)


def snapshot(*folders):
    """All that can be seen of the files below some folders, but for when they were read."""
    found = {}
    for folder in folders:
        for parent, folders_within, files in os.walk(folder):
            for name in [".", *folders_within, *files]:
                path = os.path.join(parent, name)
                status = os.lstat(path)
                found[path] = (status.st_mode, status.st_uid, status.st_gid, status.st_mtime_ns,
                               read(path) if stat.S_ISREG(status.st_mode) else None)
    return found


def empty(folder):
    """Removes all that a folder holds."""
    for entry in os.scandir(folder):
        if entry.is_dir(follow_symlinks=False):
            shutil.rmtree(entry.path)
        else:
            os.remove(entry.path)


def access_of(*path):
    """Owner, group and mode."""
    status = os.lstat(os.path.join(*path))
    return status.st_uid, status.st_gid, oct(stat.S_IMODE(status.st_mode))


def nmcli_calls():
    return (read(NOTES, "calls") or b"").decode().splitlines()


@contextlib.contextmanager
def unread_log():
    """The system's log, with no room for one more message."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
        log.bind("/dev/log")
        count = -1
        while count:  # each socket can send so much
            with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as other:
                other.connect("/dev/log")
                other.setblocking(False)
                count = 0
                with contextlib.suppress(BlockingIOError):
                    while True:
                        count += other.send(b"x")
        try:
            yield log
        finally:
            os.remove("/dev/log")


def locks_of(name, kind=": "):
    """How many locks there are of a file of the program's."""
    number = os.stat(os.path.join(RUN, name)).st_ino
    return sum(kind in line and f":{number} " in line
               for line in read("/proc/locks").decode().splitlines())


def is_waited_for():
    """Whether a request waits for its turn."""
    return locks_of("lock", " -> ") > 0


class DeviceCase(unittest.TestCase):
    """Each test begins with two installed files, a locked working copy, and nothing in /run."""

    maxDiff = None

    def setUp(self):
        for folder in WORKING_COPY, INSTALLED, NOTES, STRANGER:
            empty(folder)
        shutil.rmtree(RUN, ignore_errors=True)
        with contextlib.suppress(FileNotFoundError):
            os.remove(UPDATE_RECORD)
        write(DYNAMIC, INSTALLED, ETHERNET)
        write(CLIENT, INSTALLED, WIFI)
        write(b"[connection]\nid=vpn\n", NEIGHBOUR)
        write(b"secret of root\n", STRANGER, "root")
        write(b"secret of another\n", STRANGER, "another", owner=USER - 1)
        os.chown(WORKING_COPY, 0, 0)  # else there would be something to set aside
        self.request("rollback")
        self.strangers = self.look_at_strangers()

    def tearDown(self):
        self.assertEqual(self.look_at_strangers(), self.strangers, "what is not ours was touched")

    @staticmethod
    def look_at_strangers():
        return snapshot(STRANGER), read(NEIGHBOUR), access_of(NEIGHBOUR), access_of("/tmp")

    # Requests as sudo passes them on.

    @staticmethod
    def environment(user):
        environment = {"PATH": "/tmp/evil", "EVIL": "1"}
        if user is not None:
            environment["SUDO_UID"] = str(user)
        return environment

    def call_sudo(self, user=USER, pause=0.03):
        """Calls a sudo that will pass a request on later, so that others can overtake it."""
        process = subprocess.Popen(
            [SLOW_SUDO], env=self.environment(user), text=True, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(pause)  # the time at which a process began is told in hundredths of a second
        return process

    def start(self, *arguments, user=USER, wrapper=(), sudo=None, **options):
        if sudo:
            sudo.stdin.write(shlex.join([HANDLER, *arguments]) + "\n")
            sudo.stdin.flush()
            return sudo
        environment = self.environment(user)
        if wrapper:
            environment["ASAN_OPTIONS"] = "detect_leaks=0"  # which a tracer would prevent
        wrapper = [shutil.which(wrapper[0]), *wrapper[1:]] if wrapper else ()
        return subprocess.Popen([*wrapper, HANDLER, *arguments], env=environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

    def finish(self, process):
        """The exit status, and what was complained about."""
        output, errors = process.communicate(timeout=60)
        self.assertEqual(output, "")
        return process.returncode, errors

    def ask(self, *arguments, **options):
        return self.finish(self.start(*arguments, **options))

    def request(self, *arguments, **options):
        """A request that must succeed."""
        self.assertEqual(self.ask(*arguments, **options), (0, ""))

    def refused(self, *arguments, because="", **options):
        """A request that must fail."""
        status, errors = self.ask(*arguments, **options)
        self.assertEqual(status, 1, errors)
        self.assertIn(because or "\n", errors)  # it says at least something

    # What the user does.

    def put_into_copy(self, content, name):
        write(content, WORKING_COPY, name, owner=USER)

    def save_static(self):
        """What the window leaves behind when a static address is saved."""
        self.put_into_copy(STATIC, ETHERNET)
        write(STATIC_RECORD, UPDATE_RECORD, owner=USER)

    # What has to be.

    def assert_installed(self, ethernet, wifi):
        self.assertEqual(read(INSTALLED, ETHERNET), ethernet)
        self.assertEqual(read(INSTALLED, WIFI), wifi)
        for name in os.listdir(INSTALLED):
            self.assertEqual(access_of(INSTALLED, name), (0, 0, "0o600"))

    def assert_activated(self):
        """Something was."""
        self.assertTrue([call for call in nmcli_calls() if "connection up" in call])

    def assert_user_cannot_remove(self, name, folder):
        """Nor by a folder that he had opened before."""
        child = os.fork()
        if not child:
            os.setgroups([READERS])
            os.setresuid(USER, USER, USER)
            try:
                os.remove(name, dir_fd=folder)
            except PermissionError:
                os._exit(0)
            os._exit(1)
        self.assertEqual(os.waitpid(child, 0)[1], 0)

    def assert_copy(self, locked, **contents):
        """The working copy holds these files and nothing else."""
        expected = {ETHERNET: contents.get("ethernet"), WIFI: contents.get("wifi")}
        self.assertEqual({name: read(WORKING_COPY, name) for name in os.listdir(WORKING_COPY)},
                         {name: content for name, content in expected.items() if content})
        owner = 0 if locked else USER
        self.assertEqual(access_of(WORKING_COPY), (owner, READERS, "0o750" if locked else "0o700"))
        for name in os.listdir(WORKING_COPY):
            self.assertEqual(access_of(WORKING_COPY, name),
                             (owner, READERS, "0o640" if locked else "0o600"))


def set_up(program):
    """The device, with the recorder in the place of nmcli."""
    device.install(program)
    device.cover_run()
    device.lay_over("/dev")  # for /dev/log
    for folder in (NOTES, STRANGER):
        os.mkdir(folder)
    with open("/tmp/real-nmcli", "wb"):
        pass
    device.cover("/tmp/real-nmcli", "/usr/bin/nmcli")
    device.cover("/usr/bin/nmcli", os.path.join(HERE, "nmcli"))
    write(b'#!/bin/sh\nread -r command && eval "$command"\n', SLOW_SUDO, mode=0o755)


def main():
    """Runs the tests of the calling file, or says why not: PROGRAM WRITE_KEYFILE [TEST...]."""
    program, DeviceCase.write_keyfile = map(os.path.realpath, sys.argv[1:3])
    reason = None
    if os.geteuid() != 0:
        reason = "only root can be asked"
    elif not shutil.which("nmcli"):
        reason = "not installed: nmcli"
    reason = reason or isolation.enter(
        SOURCES, os.path.dirname(program), os.path.dirname(DeviceCase.write_keyfile))
    tap.require_nothing(reason)
    del sys.argv[1:3]
    os.umask(0o022)
    set_up(program)
    tap.main()
