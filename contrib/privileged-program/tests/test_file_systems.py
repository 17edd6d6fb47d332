# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program on file systems that are full, read-only, or put together."""
import contextlib
import errno
import os
import shutil
import subprocess
import unittest

from tests.support.files import read

from . import device, device_case
from .device import ETHERNET, INSTALLED, OLD_COPIES, READERS, USER, WIFI, WORKING_COPY, write
from .device_case import (CLIENT, DYNAMIC, DeviceCase, STATIC, STRANGER, USER_MAY_WRITE,
                          access_of)

PARENT = os.path.dirname(WORKING_COPY)


def remount(options):
    """Changes the file system of the working copy, which is in memory."""
    subprocess.run(["mount", "-o", "remount," + options, PARENT], check=True)


@contextlib.contextmanager
def until_full():
    """Goes on until there is no room."""
    try:
        yield
    except OSError as error:
        if error.errno != errno.ENOSPC:
            raise


def fill_with_bytes(folder):
    """One file of the user's that takes all the room."""
    with open(write(b"", folder, "large", owner=USER), "wb", buffering=0) as file, until_full():
        while True:
            file.write(4096 * b"x")


def fill_with_names(folder):
    """Files and folders of the user's, up to the last one that there can be."""
    with until_full():
        for number in range(100000):
            os.mkdir(f"{folder}/{number}")
            os.chown(f"{folder}/{number}", USER, USER)
            write(b"", folder, f"{number}/file", owner=USER)


class Full(DeviceCase):
    """The file system of the working copy has no room left."""

    def setUp(self):
        remount("size=1m,nr_inodes=1000")
        super().setUp()

    def assert_nothing_left(self):
        self.assertEqual(os.listdir(OLD_COPIES), [])
        self.assertLessEqual(set(os.listdir(PARENT)),
                             {os.path.basename(name) for name in (WORKING_COPY, OLD_COPIES)}
                             | {"canary", "filler"})

    def fill_from_elsewhere(self):
        folder = PARENT + "/filler"
        os.mkdir(folder)
        self.addCleanup(os.rmdir, folder)
        fill_with_bytes(folder)
        self.addCleanup(os.remove, folder + "/large")

    def test_working_copy_that_its_user_has_filled_locks_nobody_out(self):
        for fill in (fill_with_bytes, fill_with_names):
            with self.subTest(fill.__name__):
                self.request("unlock")
                fill(WORKING_COPY)
                self.request("rollback")
                self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
                self.assert_nothing_left()
                self.request("unlock", user=USER - 1)
                fill(WORKING_COPY)
                self.request("unlock")
                self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
                fill(WORKING_COPY)
                self.assertEqual(self.ask("rollback", user=None)[0], 0)  # as at the start
                self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
                self.assert_nothing_left()

    def test_room_of_names_is_had_with_their_folder(self):
        # As on ext4, where it is not had before.
        for action in ("rollback", "unlock"):
            self.request("unlock")
            fill_with_bytes(WORKING_COPY)
            held = os.open(WORKING_COPY, os.O_RDONLY)
            self.addCleanup(os.close, held)
            self.request(action)
            self.assert_copy(action == "rollback", ethernet=DYNAMIC, wifi=CLIENT)
            self.assertNotEqual(os.stat(WORKING_COPY).st_ino, os.stat(held).st_ino)
            self.assert_nothing_left()

    def test_room_of_files_that_are_held_open_is_had_when_their_process_ends(self):
        self.request("unlock")
        for name in (ETHERNET, WIFI):
            os.remove(os.path.join(WORKING_COPY, name))
        fill_with_bytes(WORKING_COPY)
        with open(f"{WORKING_COPY}/large", "rb"):
            for action in ("rollback", "unlock"):
                self.refused(action, because="No space left")
                self.assertEqual(access_of(WORKING_COPY), (0, READERS, "0o750"))
        self.request("unlock")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.assert_nothing_left()

    def test_working_copy_needs_no_more_room_than_it_had(self):
        self.fill_from_elsewhere()
        self.request("unlock")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assert_nothing_left()

    def test_file_is_taken_over_whatever_room_the_working_copy_has(self):
        self.request("unlock")
        self.save_static()
        sudo = self.call_sudo()
        self.request("rollback")
        self.fill_from_elsewhere()
        self.request("finalize_ethernet", "ethernet", sudo=sudo)
        self.assert_installed(STATIC, CLIENT)
        self.assert_activated()

    def test_failure_leaves_nothing_behind(self):
        for name in (ETHERNET, WIFI):
            os.remove(os.path.join(WORKING_COPY, name))
        self.fill_from_elsewhere()
        for action in ("unlock", "unlock", "rollback"):
            self.refused(action, because="No space left")
            self.assert_nothing_left()
        self.doCleanups()
        self.request("unlock")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)


@unittest.skipUnless(shutil.which("strace"), "no strace")
class AccessLists(DeviceCase):
    """A file system without room to remove an access list, also one that is not there."""

    def ask_without_room(self, action, when):
        return self.ask(action, wrapper=(
            "strace", "-qq", "-o", "/tmp/trace", "-e", "trace=fremovexattr", "-e",
            "inject=fremovexattr:error=ENOSPC" + when))

    def test_where_there_is_none_nothing_fails(self):
        for action in ("unlock", "rollback"):
            self.assertEqual(self.ask_without_room(action, ""), (0, ""))
            self.assert_copy(action == "rollback", ethernet=DYNAMIC, wifi=CLIENT)

    def test_one_is_removed_when_there_is_room(self):
        for when in (":when=1", ":when=1..2", ":when=1..3"):
            self.request("unlock")
            os.makedirs(f"{WORKING_COPY}/folder/within")
            for path in (WORKING_COPY, WORKING_COPY + "/folder"):
                os.setxattr(path, "system.posix_acl_access", USER_MAY_WRITE)
            self.assertEqual(self.ask_without_room("rollback", when), (0, ""))
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
            self.assertEqual(os.listxattr(WORKING_COPY), [])
            self.request("rollback")
            self.assertEqual(os.listdir(OLD_COPIES), [])


@unittest.skipUnless(shutil.which("strace"), "no strace")
@unittest.skipUnless(os.uname().machine == "x86_64", "every rename is that call")
class NoExchange(DeviceCase):
    """As NFS, and some file systems of flash: two folders cannot change their names at once."""

    def test_working_copy_is_emptied_and_filled(self):
        wrapper = ("strace", "-qq", "-o", "/tmp/trace", "-e", "trace=renameat2",
                   "-e", "inject=renameat2:error=EINVAL")
        for action in ("unlock", "rollback", "unlock", "rollback"):
            self.request(action, wrapper=wrapper)
            self.assert_copy(action == "rollback", ethernet=DYNAMIC, wifi=CLIENT)
            self.assertNotIn(".zor-network-new", os.listdir(PARENT))
            self.assertEqual(os.listdir(OLD_COPIES), [])


@unittest.skipUnless(shutil.which("strace"), "no strace")
@unittest.skipUnless(os.uname().machine == "x86_64", "every rename is that call")
class FullOfFolders(DeviceCase):
    """As on ext3, where a folder can hold 65,000 others, or on ext4 without room for a name."""

    def test_folders_that_cannot_move_up_are_removed_where_they_are(self):
        for error in ("EMLINK", "ENOSPC"):
            # The first two are the working copy itself, before and after it is replaced.
            wrapper = ("strace", "-qq", "-o", "/tmp/trace", "-P", OLD_COPIES,
                       "-e", "trace=renameat", "-e", f"inject=renameat:error={error}:when=3+")
            self.request("unlock")
            for name in ("one", "other"):
                os.makedirs(f"{WORKING_COPY}/{name}/1/2/3/4/5")
                write(b"", WORKING_COPY, name, "1/2/3/file", owner=USER)
            self.request("rollback", wrapper=wrapper)
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
            self.assertEqual(os.listdir(OLD_COPIES), [])


class ReadOnly(DeviceCase):
    """Nothing can be changed on the file system of the working copy."""

    def test_copy_that_fails_is_a_complaint_only(self):
        self.request("unlock")
        self.save_static()
        sudo = self.call_sudo()
        self.request("rollback")
        remount("ro")
        self.addCleanup(remount, "rw")
        status, errors = self.ask("finalize_ethernet", "ethernet", sudo=sudo)
        self.assertIn("the working copy is not a copy", errors)
        self.assertEqual(status, 0)
        self.assert_installed(STATIC, CLIENT)
        self.assert_activated()
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        remount("rw")
        self.request("rollback")
        self.assert_copy(True, ethernet=STATIC, wifi=CLIENT)


class InPlace(DeviceCase):
    """What neither a folder of an image nor a mount point allows: to be replaced by a new one."""

    def on_each(self, check):
        for mount in self.over_an_image, self.as_a_mount_point:
            with self.subTest(mount.__name__):
                self.setUp()
                mount()
                try:
                    check()
                finally:
                    self.doCleanups()

    def mount(self, target, *arguments):
        subprocess.run(["mount", *arguments, target], check=True)
        self.addCleanup(device.uncover, target)

    def over_an_image(self):
        image = "/tmp/image"
        shutil.rmtree(image, ignore_errors=True)
        for folder in ("upper", "work"):
            os.makedirs(os.path.join(image, folder))
        shutil.copytree(PARENT, os.path.join(image, "lower"))
        self.mount(PARENT, "-t", "overlay", "overlay", "-o",
                   f"lowerdir={image}/lower,upperdir={image}/upper,workdir={image}/work")

    def as_a_mount_point(self):
        self.mount(WORKING_COPY, "-t", "tmpfs", "tmpfs")

    def assert_nothing_left(self):
        self.assertEqual(os.listdir(OLD_COPIES), [])
        self.assertEqual(sorted(os.listdir(PARENT)), sorted(
            os.path.basename(name) for name in (WORKING_COPY, OLD_COPIES, STRANGER)))

    def test_requests_do_what_they_do_elsewhere(self):
        def check():
            self.request("rollback")
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
            self.request("unlock")
            self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
            self.save_static()
            sudo = self.call_sudo()
            self.request("rollback")
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
            self.request("finalize_ethernet", "ethernet", sudo=sudo)
            self.assert_installed(STATIC, CLIENT)
            self.assert_copy(True, ethernet=STATIC, wifi=CLIENT)
            self.assert_nothing_left()

        self.on_each(check)

    def test_folder_that_belongs_to_the_user_is_known_without_what_stood_beside_it(self):
        # As after a power cut, where only the mount point is on a disk.
        def check():
            for is_saved in (False, True):
                self.request("unlock")
                if is_saved:
                    self.save_static()
                os.rmdir(OLD_COPIES)
                self.request("rollback")
                self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

        self.on_each(check)

    def test_locked_folder_is_known_without_what_stood_beside_it(self):
        # As after a restart, once an administrator has changed an installed file, or when the last
        # request was killed.
        def check():
            self.request("rollback")
            write(STATIC, INSTALLED, ETHERNET)
            os.remove(os.path.join(INSTALLED, WIFI))
            os.rmdir(OLD_COPIES)
            self.request("unlock")
            self.assert_copy(False, ethernet=STATIC)
            os.chown(WORKING_COPY, 0, READERS)
            write(DYNAMIC, WORKING_COPY, WIFI + "~")
            os.makedirs(WORKING_COPY + "/folder/within")
            os.rmdir(OLD_COPIES)
            self.request("rollback")
            self.assert_copy(True, ethernet=STATIC)

        self.on_each(check)

    def test_leftovers_are_removed(self):
        def check():
            self.request("unlock")
            for name in (ETHERNET, WIFI):
                os.remove(f"{WORKING_COPY}/{name}")
                os.makedirs(f"{WORKING_COPY}/{name}~/" + 300 * "d/")
            os.mkdir(f"{WORKING_COPY}/{WIFI}")
            os.symlink(STRANGER + "/root", f"{WORKING_COPY}/{ETHERNET}")
            os.symlink(STRANGER, f"{WORKING_COPY}/link")
            self.ask("rollback")
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
            self.assert_nothing_left()

        self.on_each(check)

    def unmount_within(self):
        for line in reversed(read("/proc/mounts").decode().splitlines()):
            path = line.split()[1]
            if path.startswith(WORKING_COPY + "/"):
                device.uncover(path)

    def test_what_stays_there_keeps_no_name(self):
        # As what ten seconds do not suffice for.
        def check():
            self.request("unlock")
            self.addCleanup(self.unmount_within)
            for name in (ETHERNET, WIFI):
                os.remove(os.path.join(WORKING_COPY, name))
                # The last one is what the window writes to before it has a keyfile's name.
                for taken in (name, name + "~", name[:-1] + "~"):
                    within = os.path.join(WORKING_COPY, taken, "within")
                    os.makedirs(within)
                    subprocess.run(["mount", "-t", "tmpfs", "tmpfs", within], check=True)
            for action in ("rollback", "unlock"):
                status, errors = self.ask(action)
                self.assertEqual(status, 0, errors)
                self.assertEqual((read(WORKING_COPY, ETHERNET), read(WORKING_COPY, WIFI)),
                                 (DYNAMIC, CLIENT))
            self.save_static()
            self.request("finalize_ethernet", "ethernet")

        self.on_each(check)

    def test_folder_that_is_held_open_is_of_no_use(self):
        def check():
            self.request("unlock")
            held = os.open(WORKING_COPY, os.O_RDONLY)
            try:
                self.request("rollback")
                self.assert_user_cannot_remove(ETHERNET, held)
            finally:
                os.close(held)
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

        self.on_each(check)

    def test_start_of_the_system_tells(self):
        def check():
            status, errors = self.ask("rollback", user=None)
            self.assertEqual(status, 0)
            self.assertIn("no new folder can take the place of " + WORKING_COPY, errors)
            self.request("rollback")

        self.request("rollback", user=None)
        self.on_each(check)


device_case.main()
