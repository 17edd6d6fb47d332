# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program against a user who means harm, a full hand of requests, and kills.

For root. A recorder takes the place of nmcli.
"""
import contextlib
import fcntl
import os
import pwd
import resource
import shutil
import signal
import socket
import stat
import struct
import subprocess
import sys
import unittest

from tests.support import isolation, tap
from tests.support.desktop import wait_until
from tests.support.files import SOURCES, expected, read

from . import device
from .device import (DESK, ETHERNET, EXAMPLE, HANDLER, HERE, INSTALLED, OLD_DESKS, READERS, RUN,
                     SET_ASIDE, STATE, USER, WIFI, write)

RECORD = "/tmp/ethernetUpdateSettings"
PUBLISHED = RUN + "/ethernet-settings"
NOTES = "/run/nmcli"
# What nobody has asked the program to touch: a neighbour of the installed files, and a stranger's.
NEIGHBOUR = INSTALLED + "/office-vpn.nmconnection"
STRANGER = "/etc/NetworkManager/canary"  # where hard links can be made to

STATIC, DYNAMIC = expected("ethernet-static"), expected("ethernet-dynamic")
CLIENT, ACCESS_POINT = expected("client"), expected("access-point")
STATIC_RECORD = b"00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 "
DYNAMIC_RECORD = b"01 " + 12 * b"00 "
# Always twenty more, and on into the last of them; on a file system in memory, not too many at once.
MAKE_FOLDERS = """
import os, sys, time
os.chdir(sys.argv[1])
while True:
    for number in range(20):
        os.mkdir(str(number))
    os.chdir("19")
    while (status := os.statvfs(".")).f_files - status.f_ffree > 20000:
        time.sleep(0.0005)
"""
TRACED = ("openat", "write", "fsync", "fchown", "fchmod", "renameat", "renameat2", "mkdirat",
          "unlinkat", "flock")


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


class Device(unittest.TestCase):
    """Each test begins with two installed files, a locked desk, and nothing in /run."""

    maxDiff = None

    def setUp(self):
        for folder in DESK, INSTALLED, NOTES, STRANGER:
            empty(folder)
        shutil.rmtree(RUN, ignore_errors=True)
        with contextlib.suppress(FileNotFoundError):
            os.remove(RECORD)
        write(DYNAMIC, INSTALLED, ETHERNET)
        write(CLIENT, INSTALLED, WIFI)
        write(b"[connection]\nid=vpn\n", NEIGHBOUR)
        write(b"secret of root\n", STRANGER, "root")
        write(b"secret of another\n", STRANGER, "another", owner=USER - 1)
        os.chown(DESK, 0, 0)  # else there would be something to set aside
        self.request("rollback")
        self.strangers = self.look_at_strangers()

    def tearDown(self):
        self.assertEqual(self.look_at_strangers(), self.strangers, "what is not ours was touched")

    @staticmethod
    def look_at_strangers():
        return snapshot(STRANGER), read(NEIGHBOUR), access_of(NEIGHBOUR), access_of("/tmp")

    # Requests as sudo passes them on.

    def start(self, *arguments, user=USER, wrapper=(), **options):
        environment = {"PATH": "/tmp/evil", "EVIL": "1"}
        if user is not None:
            environment["SUDO_UID"] = str(user)
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
        self.assertIn(because, errors)

    # What the user does.

    def put_on_desk(self, content, name):
        write(content, DESK, name, owner=USER)

    def save_static(self):
        """What the window leaves behind when a static address is saved."""
        self.put_on_desk(STATIC, ETHERNET)
        write(STATIC_RECORD, RECORD, owner=USER)

    # What has to be.

    def assert_installed(self, ethernet, wifi):
        self.assertEqual(read(INSTALLED, ETHERNET), ethernet)
        self.assertEqual(read(INSTALLED, WIFI), wifi)
        for name in os.listdir(INSTALLED):
            self.assertEqual(access_of(INSTALLED, name), (0, 0, "0o600"))

    def assert_desk(self, locked, **contents):
        """The desk holds these files and nothing else."""
        expected = {ETHERNET: contents.get("ethernet"), WIFI: contents.get("wifi")}
        self.assertEqual({name: read(DESK, name) for name in os.listdir(DESK)},
                         {name: content for name, content in expected.items() if content})
        owner = 0 if locked else USER
        self.assertEqual(access_of(DESK), (owner, READERS, "0o750" if locked else "0o700"))
        for name in os.listdir(DESK):
            self.assertEqual(access_of(DESK, name),
                             (owner, READERS, "0o640" if locked else "0o600"))


class Requests(Device):

    def test_unlock_gives_a_copy_and_rollback_takes_it_back(self):
        self.request("unlock")
        self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.put_on_desk(b"half a fi", ETHERNET)
        self.put_on_desk(b"", WIFI)
        self.request("rollback")
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback")
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(nmcli_calls(), [], "the running network was touched")

    def test_unlock_puts_right_what_a_killed_window_has_left(self):
        self.request("unlock")
        os.rename(f"{DESK}/{ETHERNET}", f"{DESK}/ethernet.nmconnectio~")
        self.put_on_desk(b"[connection]\ntype=ethernet\n", "a")
        self.request("unlock")
        self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)

    def test_finalize_installs_and_activates(self):
        self.request("unlock")
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_installed(STATIC, CLIENT)
        self.assertEqual(nmcli_calls(), [
            "--offline connection modify connection.autoconnect yes",
            "connection reload", "-t -f UUID,FILENAME connection show",
            "--wait 60 connection up uuid 11111111-2222-3333-4444-ethernet"])
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        self.assertEqual(access_of(PUBLISHED), (0, 0, "0o644"))
        self.request("rollback")
        self.assert_desk(True, ethernet=STATIC, wifi=CLIENT)

    def test_a_rollback_that_comes_first_takes_nothing_away(self):
        self.request("unlock")
        self.save_static()
        self.put_on_desk(b"another page, left half done", WIFI)
        self.request("rollback")
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback")
        self.request("finalize_ethernet", "ethernet")
        self.assert_installed(STATIC, CLIENT)
        self.assert_desk(True, ethernet=STATIC, wifi=CLIENT)
        self.assertEqual(access_of(SET_ASIDE), (0, 0, "0o700"))
        self.request("unlock")
        self.assertEqual(os.listdir(SET_ASIDE), [], "an old save could be taken for a new one")

    def test_requests_at_the_same_time(self):
        for count in range(10):
            ethernet, wifi = ((STATIC, ACCESS_POINT), (DYNAMIC, CLIENT))[count % 2]
            self.request("unlock")
            self.put_on_desk(ethernet, ETHERNET)
            self.put_on_desk(wifi, WIFI)
            write(DYNAMIC_RECORD if count % 2 else STATIC_RECORD, RECORD, owner=USER)
            requests = [self.start(*words) for words in (
                ("rollback",), ("finalize_ethernet", "x"), ("finalize_wifi", "y"), ("rollback",))]
            for process in requests:
                self.assertEqual(self.finish(process), (0, ""))
            self.assert_installed(ethernet, wifi)
            self.assert_desk(True, ethernet=ethernet, wifi=wifi)

    def test_a_request_waits_for_the_one_before(self):
        self.request("unlock")
        with open(RUN + "/lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = self.start("rollback")
            waiting = f"-> FLOCK  ADVISORY  WRITE {process.pid} "
            wait_until(lambda: waiting.encode() in read("/proc/locks"), "the request to wait")
            self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_all_that_the_window_writes_is_taken(self):
        for kind in ("ethernet-default", "ethernet-dynamic-address-left", "ethernet-static"):
            self.request("unlock")
            self.put_on_desk(expected(kind), ETHERNET)
            self.ask("finalize_ethernet", "x")
            self.assert_installed(expected(kind), CLIENT)
        for kind in ("access-point", "client", "wifi-default"):
            self.request("unlock")
            self.put_on_desk(expected(kind), WIFI)
            self.request("finalize_wifi", "x")
            self.assertEqual(read(INSTALLED, WIFI), expected(kind))

    def test_wifi_is_removed_when_its_file_is_gone_and_no_id_is_told(self):
        for rollback_first in (False, True):
            self.setUp()
            self.request("unlock")
            os.remove(f"{DESK}/{WIFI}")
            if rollback_first:
                self.request("rollback")
            self.refused("finalize_wifi", "ZOR", because="there is no file")
            self.assert_installed(DYNAMIC, CLIENT)
            self.request("finalize_wifi")
            self.assert_installed(DYNAMIC, None)
            self.assertEqual(nmcli_calls()[0], "connection reload")
            self.request("finalize_wifi")
            self.request("rollback")
            self.assert_desk(True, ethernet=DYNAMIC, wifi=None)

    def test_the_last_connection_can_be_removed_too(self):
        os.remove(os.path.join(INSTALLED, ETHERNET))
        self.request("unlock")
        os.remove(os.path.join(DESK, WIFI))
        self.request("rollback")
        self.request("finalize_wifi")
        self.assert_installed(None, None)
        self.assertIn("connection reload", nmcli_calls())
        self.assert_desk(True)
        self.request("unlock")
        self.assert_desk(False)

    def test_ethernet_is_never_removed(self):
        self.request("unlock")
        os.remove(f"{DESK}/{ETHERNET}")
        self.refused("finalize_ethernet", because="there is no file")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_nothing_is_taken_over_without_an_unlock(self):
        self.refused("finalize_ethernet", "ethernet", because="nothing was unlocked")
        self.refused("finalize_wifi", because="nothing was unlocked")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_what_the_daemon_refuses_is_taken_back(self):
        for before in (DYNAMIC, None):
            if before is None:
                os.remove(f"{INSTALLED}/{ETHERNET}")
            for rollback_first in (False, True):
                self.request("unlock")
                self.save_static()
                if rollback_first:
                    self.request("rollback")
                write(b"method=manual", NOTES, "refuses")
                self.refused("finalize_ethernet", "ethernet", because="the one before is back")
                self.assert_installed(before, CLIENT)
                self.assertEqual(nmcli_calls()[-2], "connection reload")
                self.assertFalse(os.path.exists(PUBLISHED))
                if rollback_first:
                    self.assert_desk(True, ethernet=before, wifi=CLIENT)

    def test_a_file_stays_when_it_cannot_be_activated(self):
        for trouble in ("is-deaf", "cannot-activate"):
            self.setUp()
            write(b"", NOTES, trouble)
            self.request("unlock")
            self.save_static()
            self.refused("finalize_ethernet", "ethernet")
            self.assert_installed(STATIC, CLIENT)

    def test_a_question_that_is_not_answered_is_given_up(self):
        self.request("unlock")
        self.save_static()
        write(b"", NOTES, "hangs")
        self.refused("finalize_ethernet", "ethernet", because="cannot read it")
        self.assert_installed(DYNAMIC, CLIENT)


class Calls(Device):

    def test_wrong_calls(self):
        self.request("unlock")
        self.save_static()
        for arguments in ((), ("",), ("Unlock",), ("--help",), ("finalize",), ("unlock", "x"),
                          ("rollback", ""), ("finalize_ethernet", "a", "b"), ("unlock;id",),
                          ("finalize_ethernet", 100 * "x")):
            with self.subTest(arguments):
                status, errors = self.ask(*arguments)
                self.assertEqual(status, 2)
                self.assertIn("usage: unlock | ", errors)
        self.assertEqual(read(DESK, ETHERNET), STATIC)
        self.assert_installed(DYNAMIC, CLIENT)

    def test_only_sudo_from_a_user(self):
        for user in (None, 0, "", "-1", "4294967295", "4294967296", "65534x", " 65534", "root"):
            with self.subTest(user):
                self.refused("unlock", user=user, because="no user has asked")
                self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback", user=None)  # as at the start of the system
        self.refused("rollback", because="only root", wrapper=(
            "setpriv", "--reuid", str(USER), "--regid", str(USER), "--clear-groups"))

    def test_a_session_is_its_users_own(self):
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet", user=USER - 1, because="another user")
        self.request("rollback")
        self.refused("finalize_ethernet", "ethernet", user=USER - 1, because="nothing was unlocked")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_nothing_is_removed_for_who_has_not_unlocked(self):
        self.request("unlock")
        os.remove(os.path.join(DESK, WIFI))
        self.request("rollback")
        self.refused("finalize_wifi", user=USER - 1, because="nothing was unlocked")
        self.assert_installed(DYNAMIC, CLIENT)
        self.request("finalize_wifi")
        self.assert_installed(DYNAMIC, None)

    def test_what_a_caller_hands_down_has_no_effect(self):
        def be_nasty():
            os.umask(0)
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, resource.RLIM_INFINITY))
            most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
            resource.setrlimit(resource.RLIMIT_NOFILE, (7, most))
            os.closerange(0, 3)

        self.request("unlock", preexec_fn=lambda: os.umask(0))
        self.save_static()
        self.request("finalize_ethernet", "ethernet", preexec_fn=be_nasty)
        self.assert_installed(STATIC, CLIENT)
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        self.assertNotIn(b"EVIL", read(NOTES, "environment"))
        self.assertIn(b"PATH=/usr/bin:/bin\n", read(NOTES, "environment"))

    def test_a_message_is_not_written_to_a_file_that_has_its_streams_number(self):
        self.request("unlock")
        self.save_static()
        os.remove(RECORD)  # of which there is a message while the lock is open
        self.request("finalize_ethernet", "ethernet", preexec_fn=lambda: os.closerange(1, 3))
        self.assertEqual(read(RUN, "lock"), b"")

    def test_a_terminal_that_goes_does_not_stop_a_request(self):
        self.request("unlock")
        with open(RUN + "/lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = self.start("rollback", preexec_fn=lambda: signal.pthread_sigmask(
                signal.SIG_BLOCK, {signal.SIGALRM}))
            wait_until(lambda: f" {process.pid} ".encode() in read("/proc/locks"), "it to wait")
            # Not even the time limit can be kept away.
            self.assertIn(b"SigBlk:\t0000000000000000\n", read(f"/proc/{process.pid}/status"))
            for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGTSTP):
                process.send_signal(number)
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_the_log_tells_what_was_done_and_no_secret(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
            log.bind("/dev/log")
            self.addCleanup(os.remove, "/dev/log")
            self.request("unlock")
            self.put_on_desk(ACCESS_POINT, WIFI)
            self.request("finalize_wifi", 'Hotspot"\n\x1b[2J\u00e9')
            self.put_on_desk(ACCESS_POINT + b"psk=correct horse_1\n", WIFI)
            self.refused("finalize_wifi", "Hotspot")
            self.request("rollback")
            log.setblocking(False)
            messages = []
            with contextlib.suppress(BlockingIOError):
                while True:
                    messages.append(log.recv(4096).decode().rpartition("]: ")[2])
        self.assertEqual(messages, [
            f"unlocked for user {USER}",
            r'installed wlan0.nmconnection, id "Hotspot\x22\x0a\x1b[2J\xc3\xa9"',
            "activated wlan0.nmconnection",
            "finalize_wifi: wlan0.nmconnection: line 24: a setting that is not allowed",
            "locked"])


class HostileFiles(Device):

    def assert_refused(self, *words, because):
        """The file on the desk is refused, and so when a rollback comes first."""
        with self.subTest("finalize first"):
            self.refused(*words, because=because)
        with self.subTest("rollback first"):
            self.ask("rollback")
            self.refused(*words)
        self.assert_installed(DYNAMIC, CLIENT)
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assertNotIn("connection reload", nmcli_calls())

    def test_what_is_no_plain_file_of_the_users(self):
        path = f"{DESK}/{ETHERNET}"

        def link():
            os.symlink(write(STATIC, "/tmp/mine", owner=USER), path)

        def second_name():
            os.link(write(STATIC, DESK, "mine", owner=USER), path)

        def folder():
            os.makedirs(path + "/deep/deeper")

        def listening():
            with socket.socket(socket.AF_UNIX) as server:
                server.bind(path)

        cases = {
            "is a link": link,
            "has another name": second_name,
            "is no plain file": lambda: os.mkfifo(path, 0o666),
            "is no plain file ": folder,
            "is a link ": listening,
            "has another owner": lambda: write(STATIC, path, owner=USER - 1),
            "has another owner ": lambda: write(STATIC, path, owner=0),
            "is too large": lambda: write(b"#" + 65537 * b"\n", path, owner=USER),
        }
        for reason, make in cases.items():
            with self.subTest(reason):
                self.request("unlock")
                os.remove(path)
                make()
                self.assert_refused("finalize_ethernet", "ethernet", because=reason.strip())

    def test_ethernet_settings_that_are_not_on_the_list(self):
        replace = STATIC.replace
        cases = {
            "NUL": replace(b"id=ethernet", b"id=ether\0net"),
            "carriage return": replace(b"\n", b"\r\n"),
            "escape": STATIC + b"#\x1b[2J\n",
            "unknown section": STATIC + b"[vpn]\n",
            "unknown section that does nothing": STATIC + b"[tc]\n",
            "a script's section": STATIC + b"[user]\nx=y\n",
            "a section of Wi-Fi's": STATIC + b"[wifi]\nssid=x\n",
            "section behind blanks": STATIC + b" [vpn]\n",
            "section before blanks": replace(b"[ipv4]", b"[ipv4] "),
            "section without an end": replace(b"[ipv4]", b"[ipv4"),
            "two sections": STATIC + b"[ipv4]\n",
            "unknown key": replace(b"[proxy]", b"[proxy]\npac-script=/etc/shadow"),
            "certificate": STATIC + b"[802-1x]\neap=tls;\nca-cert=/etc/shadow\n",
            "master": replace(b"id=ethernet", b"id=ethernet\nmaster=br0"),
            "secondaries": replace(b"id=ethernet", b"id=ethernet\nsecondaries=vpn;"),
            "colon": replace(b"method=manual", b"method: manual"),
            "blank before the sign": replace(b"id=ethernet", b"id =ethernet"),
            "semicolon comment": STATIC + b"; a comment\n",
            "translated key": replace(b"id=ethernet", b"id=ethernet\nid[de]=x"),
            "second key": replace(b"method=manual", b"method=manual\nmethod=auto"),
            "key before any section": b"id=x\n" + STATIC,
            "shared network": replace(b"method=manual", b"method=shared"),
            "other type": replace(b"type=ethernet", b"type=vpn"),
            "type of Wi-Fi": replace(b"type=ethernet", b"type=wifi"),
            "no type": replace(b"type=ethernet\n", b""),
            "other interface": replace(b"eth0", b"eth1"),
            "interface of Wi-Fi": replace(b"eth0", b"wlan0"),
            "no interface": replace(b"interface-name=eth0\n", b""),
            "UUID of another": replace(b"id=ethernet", b"id=ethernet\nuuid=" + 4 * b"11111111-"),
            "long value": replace(b"id=ethernet", b"id=" + 100 * b"x"),
            "address missing": replace(b"192.168.1.10/24,192.168.1.1", b""),
            "address with zeros": replace(b"192.168.1.10/", b"192.168.01.10/"),
            "nothing": b"",
        }
        for name, content in cases.items():
            with self.subTest(name):
                self.assertNotEqual(content, STATIC)
                self.request("unlock")
                self.put_on_desk(content, ETHERNET)
                empty(NOTES)
                self.assert_refused("finalize_ethernet", "ethernet", because=ETHERNET + ": ")
                # For all else the list is enough.
                self.assertEqual(nmcli_calls() != [], name.startswith("address"))

    def test_wifi_settings_that_are_not_on_the_list(self):
        replace = ACCESS_POINT.replace
        cases = {
            "other interface": replace(b"wlan0", b"wlan1"),
            "ethernet": replace(b"type=wifi", b"type=ethernet"),
            "enterprise": replace(b"wpa-psk", b"wpa-eap"),
            "flags": replace(b"psk=", b"psk-flags=1\npsk="),
            "mode": replace(b"mode=ap", b"mode=mesh"),
            "long name": replace(b"ssid=Halvorik AP", b"ssid=" + 33 * b"x"),
            "free id": replace(b"id=Hotspot", b"id=Hotspot\\nlisted as done"),
            "permissions": replace(b"id=Hotspot", b"id=Hotspot\npermissions=user:nobody:;"),
            "shared by a client": replace(b"mode=ap", b"mode=infrastructure"),
            "open access point": replace(b"key-mgmt=wpa-psk\n", b""),
        }
        for name, content in cases.items():
            with self.subTest(name):
                self.request("unlock")
                self.put_on_desk(content, WIFI)
                self.assert_refused("finalize_wifi", "Hotspot", because=WIFI + ": ")

    def test_the_installed_uuid_may_stay(self):
        uuid = b"uuid=1b4e28ba-2fa1-11d2-883f-0016d3cca427\n"
        write(DYNAMIC.replace(b"type=", uuid + b"type="), INSTALLED, ETHERNET)
        with_uuid = STATIC.replace(b"type=", uuid + b"type=")
        self.request("unlock")
        self.put_on_desk(with_uuid, ETHERNET)
        self.ask("finalize_ethernet", "ethernet")
        self.assert_installed(with_uuid, CLIENT)

    def test_a_file_that_changes_afterwards(self):
        self.request("unlock")
        self.save_static()
        with open(f"{DESK}/{ETHERNET}", "r+b") as held:  # what a process of the user's keeps open
            self.request("rollback")
            held.write(b"[vpn]\n")
            held.flush()
            self.request("finalize_ethernet", "ethernet")
        self.assert_installed(STATIC, CLIENT)
        self.assert_desk(True, ethernet=STATIC, wifi=CLIENT)

    def test_a_folder_that_is_held_open(self):
        self.request("unlock")
        held = os.open(DESK, os.O_RDONLY)
        self.addCleanup(os.close, held)
        self.request("rollback")
        child = os.fork()
        if not child:
            os.setgroups([READERS])
            os.setresuid(USER, USER, USER)
            try:
                os.remove(ETHERNET, dir_fd=held)
            except PermissionError:
                os._exit(0)
            os._exit(1)
        self.assertEqual(os.waitpid(child, 0)[1], 0)

    def test_leftovers_of_every_kind_are_removed_from_the_desk(self):
        for user_again in ("unlock", "rollback"):
            with self.subTest(user_again):
                self.request("unlock")
                for name in (ETHERNET, WIFI):
                    os.remove(f"{DESK}/{name}")
                os.symlink(STRANGER + "/root", f"{DESK}/{ETHERNET}")
                os.symlink(STRANGER + "/root", f"{DESK}/{ETHERNET}~")
                os.symlink(STRANGER, f"{DESK}/link")
                os.makedirs(f"{DESK}/{WIFI}~/a/b")
                os.symlink(STRANGER, f"{DESK}/{WIFI}~/a/link")
                os.mkfifo(f"{DESK}/{WIFI}")
                os.link(STRANGER + "/another", f"{DESK}/.hidden")
                self.ask(user_again)
                self.assert_desk(user_again == "rollback", ethernet=DYNAMIC, wifi=CLIENT)

    def test_folders_of_any_depth_are_removed_from_the_desk(self):
        self.request("unlock")
        os.remove(f"{DESK}/{ETHERNET}")
        for folder in (ETHERNET, "moved.2", "other"):
            os.makedirs(f"{DESK}/{folder}/" + 900 * "d/")
            write(b"", DESK, folder, "moved.1", owner=USER)
        self.assertEqual(self.ask("rollback")[0], 0)
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_each_desk_is_a_new_folder(self):
        seen = [os.stat(DESK).st_ino]
        held = [os.open(DESK, os.O_RDONLY)]  # else a number could be given out again
        self.addCleanup(lambda: [os.close(folder) for folder in held])
        for action in ("unlock", "unlock", "rollback"):
            self.request(action)
            self.assertNotIn(os.stat(DESK).st_ino, seen)
            seen.append(os.stat(DESK).st_ino)
            held.append(os.open(DESK, os.O_RDONLY))
        self.assertEqual(os.listdir(OLD_DESKS), [])
        self.assertEqual(access_of(OLD_DESKS), (0, 0, "0o700"))

    def test_a_process_that_goes_on_making_folders_holds_nobody_up(self):
        self.request("unlock")
        os.mkdir(os.path.join(DESK, "folder"))
        os.chown(os.path.join(DESK, "folder"), USER, USER)
        busy = subprocess.Popen([sys.executable, "-c", MAKE_FOLDERS, os.path.join(DESK, "folder")],
                                user=USER, group=USER, extra_groups=[])
        self.addCleanup(busy.wait)
        self.addCleanup(busy.kill)
        wait_until(lambda: os.path.exists(os.path.join(DESK, "folder", "19")), "the first folders")
        self.request("rollback")
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("unlock", user=USER - 1)
        self.assertIsNone(busy.poll())

    def test_the_names_for_what_is_moved_may_be_taken(self):
        self.request("unlock")
        write(b"", DESK, "moved.1")
        os.makedirs(f"{DESK}/folder/folder")  # listed before the older file
        self.request("rollback")
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_access_lists_are_taken_away(self):
        user_may_write = struct.pack("<I" + 5 * "HHI", 2, 1, 7, 0xffffffff, 2, 7, USER,
                                     4, 5, 0xffffffff, 16, 7, 0xffffffff, 32, 5, 0xffffffff)
        self.request("unlock")
        for name in ("system.posix_acl_access", "system.posix_acl_default"):
            os.setxattr(DESK, name, user_may_write)
        self.request("rollback")
        for path in (DESK, f"{DESK}/{ETHERNET}"):
            self.assertEqual(os.listxattr(path), [])
        self.assert_desk(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_the_desk_must_be_a_folder(self):
        moved = DESK + ".moved"
        os.rename(DESK, moved)
        self.addCleanup(os.rename, moved, DESK)
        os.symlink(STRANGER, DESK)
        self.addCleanup(os.remove, DESK)
        for action in ("unlock", "rollback", "finalize_ethernet"):
            self.refused(action, because="Not a directory")

    def test_files_that_were_never_installed_stay(self):
        for name in (ETHERNET, WIFI):
            os.remove(os.path.join(INSTALLED, name))
        write(DYNAMIC, DESK, ETHERNET)
        write(CLIENT, DESK, "office.nmconnection")
        os.chown(DESK, 0, 0)  # as it was before the first request of all
        for action in ("unlock", "rollback"):
            self.refused(action, because="nothing is installed")
        self.assertIn("office.nmconnection", os.listdir(DESK))
        os.rename(INSTALLED, INSTALLED + ".moved")
        self.refused("rollback", because="No such file")
        os.rename(INSTALLED + ".moved", INSTALLED)

    def test_what_cannot_be_set_aside_is_not_taken_for_removed(self):
        self.request("unlock")
        os.link(os.path.join(DESK, WIFI), os.path.join(DESK, "link"))
        self.ask("rollback")
        self.assert_refused("finalize_wifi", because="nothing was unlocked")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_folders_that_others_can_write_are_not_trusted(self):
        for folder in (STATE, INSTALLED):
            mode = stat.S_IMODE(os.stat(folder).st_mode)
            os.chmod(folder, mode | stat.S_IWGRP)
            self.refused("unlock", because="can be written by others")
            os.chmod(folder, mode)


class Record(Device):

    def finalize(self, make):
        self.request("unlock")
        self.save_static()
        write(b"old", PUBLISHED, mode=0o644)
        make()
        status, errors = self.ask("finalize_ethernet", "ethernet")
        self.assertEqual(status, 0, errors)
        self.assert_installed(STATIC, CLIENT)
        return errors

    def test_a_record_that_is_not_the_users_or_not_true_is_not_handed_on(self):
        def become(make):
            def change():
                os.remove(RECORD)
                make()
            return change

        cases = {
            "missing": become(lambda: None),
            "link": become(lambda: os.symlink(write(STATIC_RECORD, "/tmp/r", owner=USER), RECORD)),
            "FIFO": become(lambda: os.mkfifo(RECORD)),
            "other owner": lambda: os.chown(RECORD, USER - 1, 0),
            "root's": lambda: os.chown(RECORD, 0, 0),
            "mode": lambda: write(DYNAMIC_RECORD, RECORD, owner=USER),
            "address": lambda: write(STATIC_RECORD.replace(b"0A", b"0B"), RECORD, owner=USER),
            "mask": lambda: write(STATIC_RECORD.replace(b"FF 00", b"00 00"), RECORD, owner=USER),
            "lower case": lambda: write(STATIC_RECORD.lower(), RECORD, owner=USER),
            "short": lambda: write(STATIC_RECORD[:-1], RECORD, owner=USER),
            "long": lambda: write(STATIC_RECORD + b"\n", RECORD, owner=USER),
        }
        for name, make in cases.items():
            with self.subTest(name):
                self.assertIn("update record is not handed on", self.finalize(make))
                self.assertFalse(os.path.lexists(PUBLISHED), "an older record is taken for this")

    def test_a_true_record_is_handed_on(self):
        self.assertEqual(self.finalize(lambda: None), "")
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        self.request("unlock")
        self.put_on_desk(DYNAMIC, ETHERNET)
        write(DYNAMIC_RECORD, RECORD, owner=USER)
        self.request("finalize_ethernet", "ethernet")
        self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)

    def test_masks(self):
        for prefix, mask in ((0, "00 00 00 00"), (1, "80 00 00 00"), (8, "FF 00 00 00"),
                             (20, "FF FF F0 00"), (32, "FF FF FF FF")):
            self.request("unlock")
            self.put_on_desk(STATIC.replace(b"/24,", b"/%d," % prefix), ETHERNET)
            record = STATIC_RECORD.replace(b"FF FF FF 00", mask.encode())
            write(record, RECORD, owner=USER)
            status, errors = self.ask("finalize_ethernet", "ethernet")
            self.assertEqual((status, errors, read(PUBLISHED)), (0, "", record))


@unittest.skipUnless(shutil.which("strace"), "no strace")
class Kills(Device):
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

    def test_finalize(self):
        self.kill_everywhere(self.prepare_save, ("finalize_ethernet", "x"), self.check_whole)

    def test_rollback(self):
        def check():
            self.check_whole()
            self.assertEqual(read(INSTALLED, ETHERNET), DYNAMIC)

        self.kill_everywhere(self.prepare_save, ("rollback",), check)

    def test_unlock(self):
        def check():
            self.request("unlock")
            self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)

        self.kill_everywhere(self.prepare_save, ("unlock",), check)

    def test_an_installed_file_is_flushed_before_and_after_it_gets_its_name(self):
        self.prepare_save()
        self.request("finalize_ethernet", "x", wrapper=(
            "strace", "-qq", "-o", "/tmp/calls", "-e", "trace=fsync,renameat"))
        calls = [line.split("(")[0] for line in read("/tmp/calls").decode().splitlines()]
        self.assertEqual([call for call in calls if call in ("fsync", "renameat")],
                         ["fsync", "renameat", "fsync", "renameat"])  # the last: the record

    def test_rollback_with_nothing_installed(self):
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

    def test_removal(self):
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


class Packaging(Device):

    def check(self, *command):
        if not shutil.which(command[0]):
            self.skipTest(f"no {command[0]}")
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(done.stderr, "")

    def test_rule(self):
        self.check("visudo", "-c", "-f", os.path.join(EXAMPLE, "sudoers"))

    def test_unit(self):
        self.check("systemd-analyze", "verify", "--man=no",
                   os.path.join(EXAMPLE, "zor-network-restore.service"))

    @unittest.skipUnless(shutil.which("sudo"), "no sudo")
    def test_members_of_the_group_get_through_and_others_do_not(self):
        user = pwd.getpwuid(USER)
        groups = write(b"", "/tmp/group", mode=0o644)
        for target, source in (("/etc/group", groups), (
                "/etc/sudoers", write(read(EXAMPLE, "sudoers"), "/tmp/sudoers", mode=0o440))):
            device.cover(target, source)
            self.addCleanup(device.uncover, target)
        # The folder of the source need not be open to others.
        wrapper = write(read(EXAMPLE, os.path.basename(HANDLER)), "/tmp/wrapper", mode=0o755)
        for member, status in (("", 1), (user.pw_name, 0)):
            with open(groups, "w", encoding="ascii") as file:
                file.write(f"root:x:0:\nzor-network:x:{READERS}:{member}\n")
            done = subprocess.run(
                [shutil.which("setpriv"), "--reuid", str(USER), "--regid", str(user.pw_gid),
                 "--clear-groups", wrapper, "unlock"],
                capture_output=True, text=True, check=False)
            self.assertEqual(done.returncode, status, done.stderr)
        self.assert_desk(False, ethernet=DYNAMIC, wifi=CLIENT)


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


def main():
    """Runs the tests, or says why not."""
    program = os.path.realpath(sys.argv[1])
    reason = None
    if os.geteuid() != 0:
        reason = "only root can be asked"
    elif not shutil.which("nmcli"):
        reason = "not installed: nmcli"
    reason = reason or isolation.enter(SOURCES, os.path.dirname(program))
    tap.require_nothing(reason)
    del sys.argv[1]
    os.umask(0o022)
    set_up(program)
    tap.main()


main()
