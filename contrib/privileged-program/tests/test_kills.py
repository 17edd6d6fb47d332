# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program, killed at any moment: what it leaves are whole files."""
import contextlib
import os
import shutil
import signal
import unittest

from tests.support.files import read

from . import device_case
from .device import DESK, ETHERNET, INSTALLED, USER, WIFI, write
from .device_case import CLIENT, DYNAMIC, DeviceCase, NEIGHBOUR, STATIC

TRACED = ("openat", "write", "fsync", "fchown", "fchmod", "renameat", "renameat2", "mkdirat",
          "unlinkat", "flock")


@unittest.skipUnless(shutil.which("strace"), "no strace")
class Kills(DeviceCase):
    """A request that is killed at any moment leaves whole files; the next one puts all right."""

    def killed(self, call, count, words):
        """Runs a request that is killed at a call. Returns whether it came to that."""
        status, _ = self.ask(*words, wrapper=(
            "strace", "-qq", "-o", "/dev/null", "-e", f"trace={call}",
            "-e", f"inject={call}:signal=KILL:when={count}"))
        return status in (-signal.SIGKILL, 128 + signal.SIGKILL)

    def kill_everywhere(self, prepare, words, check):
        kills = 0
        for call in TRACED:
            count = 1
            while True:
                prepare()
                hit = self.killed(call, count, words)
                with self.subTest(f"{call} {count}"):
                    check()
                if not hit:
                    break
                count += 1
            kills += count - 1
        self.assertGreater(kills, len(TRACED))

    def prepare_save(self):
        write(DYNAMIC, INSTALLED, ETHERNET)
        self.request("unlock")
        self.save_static()

    def check_whole(self):
        found = read(INSTALLED, ETHERNET)
        self.assertIn(found, (DYNAMIC, STATIC))
        self.request("rollback")
        self.assert_desk(True, ethernet=found, wifi=CLIENT)
        self.assertLessEqual(set(os.listdir(INSTALLED)),
                             {ETHERNET, ETHERNET + "~", WIFI, os.path.basename(NEIGHBOUR)})

    def test_killed_finalize_leaves_whole_files(self):
        self.kill_everywhere(self.prepare_save, ("finalize_ethernet", "x"), self.check_whole)

    def test_killed_rollback_leaves_whole_files(self):
        def check():
            self.check_whole()
            self.assertEqual(read(INSTALLED, ETHERNET), DYNAMIC)

        self.kill_everywhere(self.prepare_save, ("rollback",), check)

    def test_killed_unlock_is_put_right_by_the_next(self):
        def check():
            self.request("unlock")
            self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)

        self.kill_everywhere(self.prepare_save, ("unlock",), check)

    def test_installed_file_is_flushed_before_and_after_it_gets_its_name(self):
        self.prepare_save()
        self.request("finalize_ethernet", "x", wrapper=(
            "strace", "-qq", "-o", "/tmp/calls", "-e", "trace=fsync,renameat"))
        calls = [line.split("(")[0] for line in read("/tmp/calls").decode().splitlines()]
        self.assertEqual([call for call in calls if call in ("fsync", "renameat")],
                         ["fsync", "renameat", "fsync", "renameat"])  # the last: the record

    def test_killed_rollback_of_nothing_leaves_an_empty_desk(self):
        def prepare():
            for name in (ETHERNET, WIFI):
                with contextlib.suppress(FileNotFoundError):
                    os.remove(os.path.join(INSTALLED, name))
            self.request("unlock")
            write(b"", DESK, "other", owner=USER)

        def check():
            self.request("rollback")
            self.assert_desk(True)

        self.kill_everywhere(prepare, ("rollback",), check)

    def test_killed_removal_leaves_all_or_nothing(self):
        def prepare():
            write(CLIENT, INSTALLED, WIFI)
            self.request("unlock")
            os.remove(f"{DESK}/{WIFI}")

        def check():
            found = read(INSTALLED, WIFI)
            self.assertIn(found, (CLIENT, None))
            self.request("rollback")
            self.assert_desk(True, ethernet=DYNAMIC, wifi=found)

        self.kill_everywhere(prepare, ("finalize_wifi",), check)


device_case.main()
