# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program: what each request does, however it is called."""
import contextlib
import fcntl
import os
import pwd
import resource
import shutil
import signal
import socket
import subprocess
import unittest

from tests.support.desktop import wait_until
from tests.support.files import expected, read

from . import device, device_case
from .device import (DESK, EXAMPLE, ETHERNET, HANDLER, INSTALLED, READERS, RUN, SET_ASIDE, USER,
                     WIFI, write)
from .device_case import (ACCESS_POINT, CLIENT, DYNAMIC, DYNAMIC_RECORD, DeviceCase, NOTES,
                          PUBLISHED, RECORD, STATIC, STATIC_RECORD, access_of, nmcli_calls)

class Requests(DeviceCase):

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


class Calls(DeviceCase):

    def test_wrong_calls(self):
        self.request("unlock")
        self.save_static()
        for arguments in ((), ("",), ("Unlock",), ("--help",), ("finalize",), ("unlock", "x"),
                          ("rollback", ""), ("finalize_ethernet", "a", "b"), ("unlock;id",)):
            with self.subTest(arguments):
                status, errors = self.ask(*arguments)
                self.assertEqual(status, 2)
                self.assertIn("usage: unlock | ", errors)
        self.assertEqual(read(DESK, ETHERNET), STATIC)
        self.assert_installed(DYNAMIC, CLIENT)

    def test_the_longest_texts_are_those_that_the_window_reads_whole(self):
        # Both programs have this limit, and neither could ask the other one.
        taken = []
        for length in range(97, 103):
            text = length * "x"
            self.request("unlock")
            self.put_on_desk(expected("client", psk=text), WIFI)
            window = subprocess.run(
                [self.write_keyfile, "read", os.path.join(DESK, WIFI), "wifi-security", "psk"],
                capture_output=True, text=True, check=True,
                env={"ZOR_NETWORKMANAGER_DEBUG_PATH": DESK})
            as_value, _ = self.ask("finalize_wifi", "ZOR")
            as_id, _ = self.ask("finalize_wifi", text)
            taken.append((window.stdout.endswith(f"\n{text}\n"), as_value == 0, as_id != 2))
        self.assertEqual(taken, [(whole, whole, whole) for whole, _, _ in taken])
        self.assertEqual([whole for whole, _, _ in (taken[0], taken[-1])], [True, False])

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


class Record(DeviceCase):

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


class Packaging(DeviceCase):

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


device_case.main()
