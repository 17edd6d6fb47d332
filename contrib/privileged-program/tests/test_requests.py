# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program: what each request does, and the record that it hands on."""
import calendar
import fcntl
import os
import re
import shutil
import subprocess
import time
import unittest

from tests.support.files import UPDATE_RECORD, expected, read
from tests.support.limit import wait_until

from . import device, device_case
from .device import (ETHERNET, INSTALLED, OLD_COPIES, READERS, RUN, SET_ASIDE, USER, WIFI,
                     WORKING_COPY, write)
from .device_case import (ACCESS_POINT, CLIENT, DYNAMIC, DYNAMIC_RECORD, DeviceCase, NEIGHBOUR,
                          NOTES, OUTCOMES, PUBLISHED, STATIC, STATIC_RECORD, access_of,
                          is_waited_for, nmcli_calls)


class Requests(DeviceCase):

    def test_unlock_gives_a_copy_and_rollback_takes_it_back(self):
        self.request("unlock")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.put_into_copy(b"half a fi", ETHERNET)
        self.put_into_copy(b"", WIFI)
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(nmcli_calls(), [], "the running network was touched")

    def test_unlock_puts_right_what_a_killed_window_has_left(self):
        self.request("unlock")
        os.rename(f"{WORKING_COPY}/{ETHERNET}", f"{WORKING_COPY}/ethernet.nmconnectio~")
        self.put_into_copy(b"[connection]\ntype=ethernet\n", "a")
        self.request("unlock")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)

    def test_finalize_installs_and_activates(self):
        self.request("unlock")
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_installed(STATIC, CLIENT)
        self.assertEqual(nmcli_calls(), [
            "--offline connection modify connection.autoconnect yes",
            "connection reload", "-t -f FILENAME,UUID connection show",
            "--wait 60 connection up uuid 11111111-2222-3333-4444-ethernet",
            "-g IP4.ADDRESS connection show uuid 11111111-2222-3333-4444-ethernet"])
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        self.assertEqual(access_of(PUBLISHED), (0, 0, "0o644"))
        self.request("rollback")
        self.assert_copy(True, ethernet=STATIC, wifi=CLIENT)

    def test_rollback_that_comes_first_takes_nothing_away(self):
        self.request("unlock")
        self.save_static()
        self.put_into_copy(b"another page, left half done", WIFI)
        sudo = self.call_sudo()
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback")
        self.request("finalize_ethernet", "ethernet", sudo=sudo)
        self.assert_installed(STATIC, CLIENT)
        self.assert_copy(True, ethernet=STATIC, wifi=CLIENT)
        self.assertEqual(access_of(SET_ASIDE), (0, 0, "0o700"))
        self.request("unlock")
        self.assertEqual(os.listdir(SET_ASIDE), [], "an old save could be taken for a new one")

    def test_what_was_asked_for_before_its_unlock_was_done_is_refused(self):
        # So a sudo that takes long while the window is already open: it saves into a locked folder.
        ethernet, wifi = self.call_sudo(), self.call_sudo()
        self.request("unlock")
        for words in (("finalize_ethernet", "ethernet", ethernet), ("finalize_wifi", "ZOR", wifi)):
            self.refused(*words[:2], sudo=words[2], because="before the working copy was unlocked")
        self.assertEqual(nmcli_calls(), [])
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_installed(STATIC, CLIENT)

    def test_what_was_asked_for_before_any_session_is_refused(self):
        self.request("unlock")
        self.save_static()
        shutil.rmtree(RUN)  # the system was started anew
        self.refused("finalize_ethernet", "ethernet", because="nothing was unlocked before")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_what_was_asked_for_after_its_session_is_refused(self):
        self.request("unlock")
        self.save_static()
        self.put_into_copy(ACCESS_POINT, WIFI)
        self.request("rollback")  # left without saving
        time.sleep(0.03)
        for words in (("finalize_ethernet", "ethernet"), ("finalize_wifi", "Hotspot")):
            self.refused(*words, because="after the working copy was locked")
        # Nor by a window whose unlock is still waiting.
        unlock, finalize = self.call_sudo(), self.call_sudo()
        self.refused("finalize_wifi", "Hotspot", sudo=finalize,
                     because="after the working copy was locked")
        self.request("unlock", sudo=unlock)
        self.assertEqual(nmcli_calls(), [])
        self.assert_installed(DYNAMIC, CLIENT)

    def test_file_that_cannot_be_set_aside_keeps_no_other_from_it(self):
        self.request("unlock")
        self.save_static()
        os.remove(f"{WORKING_COPY}/{WIFI}")
        os.symlink(f"{INSTALLED}/{WIFI}", f"{WORKING_COPY}/{WIFI}")
        ethernet, wifi, removal = (self.call_sudo() for _ in range(3))
        status, errors = self.ask("rollback")
        self.assertEqual(status, 0)
        self.assertIn("not set aside: " + WIFI, errors)
        self.request("finalize_ethernet", "ethernet", sudo=ethernet)
        self.refused("finalize_wifi", "ZOR", sudo=wifi)
        self.refused("finalize_wifi", sudo=removal)
        self.assert_installed(STATIC, CLIENT)

    def test_rollback_that_was_called_before_the_session_takes_nothing_away(self):
        rollback = self.call_sudo()
        self.request("unlock")
        self.save_static()
        finalize = self.call_sudo()
        self.request("rollback", sudo=rollback)
        time.sleep(0.03)
        self.refused("finalize_ethernet", because="after the working copy was locked")
        self.request("finalize_ethernet", "ethernet", sudo=finalize)
        self.assert_installed(STATIC, CLIENT)

    def called_at_once(self, *users):
        """Calls that began in the same hundredth of a second."""
        while True:
            calls = [self.call_sudo(user, pause=0) for user in users]
            times = {read(f"/proc/{call.pid}/stat").rsplit(b")", 1)[1].split()[19]
                     for call in calls}
            if len(times) == 1:
                return calls
            for call in calls:
                call.communicate("true\n")

    def test_rollback_of_another_user_at_the_same_time_is_taken_for_an_earlier_one(self):
        for user in USER, USER - 1:
            self.request("unlock")
            self.save_static()
            rollback, finalize = self.called_at_once(user, USER)
            self.request("rollback", sudo=rollback)
            # Whether the file was set aside before that save, or after it, cannot be told.
            if user == USER:
                self.request("finalize_ethernet", "ethernet", sudo=finalize)
            else:
                self.refused("finalize_ethernet", "ethernet", sudo=finalize,
                             because="after the working copy was locked")

    def test_unlock_that_fails_leaves_nothing_open(self):
        for name in ("unlocked-at", "set-aside"):
            with self.subTest(name):
                self.setUp()
                shutil.rmtree(f"{RUN}/{name}", ignore_errors=True)
                if name == "set-aside":
                    write(b"", RUN, name)
                else:
                    os.mkdir(f"{RUN}/{name}")
                self.refused("unlock")
                self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_requests_at_the_same_time_agree(self):
        for count in range(10):
            ethernet, wifi = ((STATIC, ACCESS_POINT), (DYNAMIC, CLIENT))[count % 2]
            self.request("unlock")
            self.put_into_copy(ethernet, ETHERNET)
            self.put_into_copy(wifi, WIFI)
            write(DYNAMIC_RECORD if count % 2 else STATIC_RECORD, UPDATE_RECORD, owner=USER)
            requests = [self.start(*words) for words in (
                ("finalize_ethernet", "x"), ("finalize_wifi", "y"), ("rollback",), ("rollback",))]
            for process in requests:
                self.assertEqual(self.finish(process), (0, ""))
            self.assert_installed(ethernet, wifi)
            self.assert_copy(True, ethernet=ethernet, wifi=wifi)

    def test_request_waits_for_the_one_before(self):
        self.request("unlock")
        with open(RUN + "/lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = self.start("rollback")
            wait_until(is_waited_for, "the request to wait")
            self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_all_that_the_window_writes_is_taken(self):
        for kind in ("ethernet-dynamic-address-left", "ethernet-static"):
            self.request("unlock")
            self.put_into_copy(expected(kind), ETHERNET)
            self.ask("finalize_ethernet", "x")
            self.assert_installed(expected(kind), CLIENT)
        for kind in ("access-point", "client"):
            self.request("unlock")
            self.put_into_copy(expected(kind), WIFI)
            self.request("finalize_wifi", "x")
            self.assertEqual(read(INSTALLED, WIFI), expected(kind))

    def test_default_file_of_a_save_that_found_no_room_for_values_is_refused(self):
        self.request("unlock")
        for kind, name, words in (
                ("ethernet-default", ETHERNET, ("finalize_ethernet", "new_ethernet_connection")),
                ("wifi-default", WIFI, ("finalize_wifi", "new_wifi_connection"))):
            self.put_into_copy(expected(kind), name)
            self.refused(*words, because="line 2: a value that is not allowed")
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(nmcli_calls(), [])

    def test_wifi_of_a_save_that_found_room_for_some_values_only_is_refused(self):
        begun = expected("wifi-default").replace(b"new_wifi_connection", b"ZOR")
        self.request("unlock")
        self.put_into_copy(begun, WIFI)
        self.refused("finalize_wifi", "ZOR", because="a network without wifi.mode")
        for content in (CLIENT, ACCESS_POINT):
            for line, name in ((b"mode=.*", "wifi.mode"), (b"psk=.*", "wifi-security.psk"),
                               (b"key-mgmt=.*", "wifi-security.key-mgmt")):
                self.put_into_copy(re.sub(b"\n" + line, b"", content), WIFI)
                self.refused("finalize_wifi", "x", because="a network without " + name)
        for name in ("wifi.channel", "wifi-security.group", "wifi-security.pairwise",
                     "wifi-security.proto", "ipv4.address1"):
            key = name.split(".")[1].encode()
            self.put_into_copy(re.sub(b"\n" + key + b"=.*", b"", ACCESS_POINT), WIFI)
            self.refused("finalize_wifi", "x", because="a network without " + name)
        self.put_into_copy(ACCESS_POINT.replace(b"=shared", b"=auto"), WIFI)
        self.refused("finalize_wifi", "x", because="an access point whose network is not shared")
        for content in (CLIENT, ACCESS_POINT):
            self.put_into_copy(re.sub(b"ssid=.*", b"ssid=my_new_wifi", content), WIFI)
            self.refused("finalize_wifi", "x", because="a network without a name of its own")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_static_address_of_a_save_that_found_no_room_for_the_name_server_is_refused(self):
        self.request("unlock")
        self.save_static()
        self.put_into_copy(STATIC.replace(b"dns=192.168.1.2\n", b""), ETHERNET)
        self.refused("finalize_ethernet", "ethernet", because="a static address without ipv4.dns")
        self.assert_installed(DYNAMIC, CLIENT)
        self.put_into_copy(STATIC.replace(b"dns=192.168.1.2", b"dns="), ETHERNET)  # none is wanted
        self.request("finalize_ethernet", "ethernet")

    def test_wifi_is_removed_when_its_file_is_gone_and_no_id_is_told(self):
        for rollback_first in (False, True):
            self.setUp()
            self.request("unlock")
            os.remove(f"{WORKING_COPY}/{WIFI}")
            first, second, third = (self.call_sudo() for _ in range(3))
            if rollback_first:
                self.request("rollback")
            self.refused("finalize_wifi", "ZOR", sudo=first, because="there is no file")
            self.assert_installed(DYNAMIC, CLIENT)
            self.request("finalize_wifi", sudo=second)
            self.assert_installed(DYNAMIC, None)
            self.assertEqual(nmcli_calls()[0], "connection reload")
            # As where the window could not make a first file: a person is told.
            status, errors = self.ask("finalize_wifi", sudo=third)
            self.assertEqual(status, 0, errors)
            self.assertIn(f"there was no {WIFI} to remove", errors)
            self.assertIn(b"\nwhy=there was no ", read(OUTCOMES, "finalize_wifi"))
            self.request("rollback")
            self.assert_copy(True, ethernet=DYNAMIC, wifi=None)

    def fail_to_disable(self, change, because):
        for rollback_first in (False, True):
            self.request("unlock")
            self.put_into_copy(ACCESS_POINT, WIFI)
            change()
            sudo = self.call_sudo()
            if rollback_first:
                self.assertEqual(self.ask("rollback")[0], 0)
            self.refused("finalize_wifi", sudo=sudo, because="" if rollback_first else because)
            self.assert_installed(DYNAMIC, CLIENT)
            self.assertNotIn("connection reload", nmcli_calls())

    def test_wifi_that_could_not_be_disabled_stays_as_it_was(self):
        self.fail_to_disable(lambda: None, "no id was told")

    def test_wifi_of_a_save_that_was_not_finished_is_not_removed(self):
        copy = f"{WORKING_COPY}/{WIFI}"
        self.fail_to_disable(lambda: os.rename(copy, copy[:-1] + "~"), "was not saved to the end")

    def test_save_into_what_a_killed_window_has_left_is_not_told_as_done(self):
        # Of two files of a type the window takes the first one, in the order of the folder.
        self.request("unlock")
        self.put_into_copy(ACCESS_POINT, WIFI[:-1] + "~")
        self.refused("finalize_wifi", "Hotspot", because="was not saved to the end")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_installed_file_of_the_other_type_is_not_handed_out(self):
        # As a user may add one through NetworkManager. The window goes by the types, not the names.
        for name, content in ((WIFI, STATIC), (ETHERNET, ACCESS_POINT)):
            self.setUp()
            write(content, INSTALLED, name)
            status, errors = self.ask("unlock")
            self.assertEqual(status, 0)
            self.assertIn(name + " is of another type", errors)
            self.assertNotIn(name, os.listdir(WORKING_COPY))
        self.save_static()
        self.request("finalize_ethernet", "x")
        self.assert_installed(STATIC, CLIENT)

    def test_installed_file_that_cannot_be_copied_locks_nobody_out(self):
        installed, elsewhere = f"{INSTALLED}/{WIFI}", f"{INSTALLED}/elsewhere"

        def replace_by_link():
            os.rename(installed, elsewhere)
            os.symlink(elsewhere, installed)

        for because, make in (
                ("too large", lambda: write(65537 * b"#", installed)),
                ("is a link", replace_by_link),
                ("another name as well", lambda: os.link(installed, elsewhere)),
                ("another owner", lambda: os.chown(installed, 1, 1))):
            with self.subTest(because):
                self.setUp()
                self.request("unlock")
                make()
                for action in ("rollback", "unlock"):
                    status, errors = self.ask(action)
                    self.assertEqual(status, 0)
                    self.assertIn(because, errors)
                    self.assert_copy(action == "rollback", ethernet=DYNAMIC)
                self.save_static()
                self.ask("finalize_ethernet", "ethernet")
                self.assertEqual(read(INSTALLED, ETHERNET), STATIC)
                self.refused("finalize_wifi", because=because)

    def test_last_connection_can_be_removed_too(self):
        os.remove(os.path.join(INSTALLED, ETHERNET))
        self.request("unlock")
        os.remove(os.path.join(WORKING_COPY, WIFI))
        sudo = self.call_sudo()
        self.request("rollback")
        self.request("finalize_wifi", sudo=sudo)
        self.assert_installed(None, None)
        self.assertIn("connection reload", nmcli_calls())
        self.assert_copy(True)
        self.request("unlock")
        self.assert_copy(False)

    def test_folder_that_it_has_not_made_keeps_the_files_of_others(self):
        shutil.rmtree(OLD_COPIES, ignore_errors=True)  # it was never here
        stranger = os.path.join(WORKING_COPY, "office.nmconnection")
        for make in (lambda: write(b"", stranger), lambda: os.symlink(NEIGHBOUR, stranger)):
            make()
            for user, group in ((USER, 0), (0, READERS), (0, 0)):
                os.chown(WORKING_COPY, user, group)
                self.refused("rollback", because="there are files that are not installed")
                self.refused("finalize_wifi", because="nothing was unlocked before")
                self.assertTrue(os.path.exists(stranger))
            os.remove(stranger)
        self.assert_installed(DYNAMIC, CLIENT)

    def test_ethernet_is_never_removed(self):
        self.request("unlock")
        os.remove(f"{WORKING_COPY}/{ETHERNET}")
        self.refused("finalize_ethernet", because="there is no file")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_file_of_another_connection_is_not_taken_for_ours(self):
        # NetworkManager names it after the connection's id, which any user may choose.
        other = write(DYNAMIC, INSTALLED, ETHERNET + "\nother.nmconnection")
        self.addCleanup(os.remove, other)
        write(b"method=manual", NOTES, "refuses")
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet", because="NetworkManager does not take it")
        self.assertEqual(read(INSTALLED, ETHERNET), DYNAMIC)

    def test_what_the_daemon_refuses_is_taken_back(self):
        for before in (DYNAMIC, None):
            if before is None:
                os.remove(f"{INSTALLED}/{ETHERNET}")
            for rollback_first in (False, True):
                self.request("unlock")
                self.save_static()
                write(DYNAMIC_RECORD, PUBLISHED, mode=0o644)
                sudo = self.call_sudo()
                if rollback_first:
                    self.request("rollback")
                write(b"method=manual", NOTES, "refuses")
                self.refused("finalize_ethernet", "ethernet", sudo=sudo,
                             because="the one before is back")
                self.assert_installed(before, CLIENT)
                self.assertEqual(nmcli_calls()[-1], "connection reload")
                self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)
                self.assertEqual(access_of(PUBLISHED), (0, 0, "0o644"))
                if rollback_first:
                    self.assert_copy(True, ethernet=before, wifi=CLIENT)

    def test_what_the_daemon_is_not_told_is_taken_back(self):
        for trouble, because, *requests in (
                ("is-deaf", "installed again, but NetworkManager has not read it",
                 ("finalize_ethernet", "ethernet"), ("finalize_wifi",)),
                ("is-dumb", "the one before is back", ("finalize_ethernet", "ethernet"))):
            self.setUp()
            write(b"", NOTES, trouble)
            self.request("unlock")
            self.save_static()
            os.remove(f"{WORKING_COPY}/{WIFI}")
            for words in requests:
                self.refused(*words, because=because)
                self.assert_installed(DYNAMIC, CLIENT)
                self.assertEqual(nmcli_calls()[-1], "connection reload")
            self.request("rollback")
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_file_stays_when_it_cannot_be_activated(self):
        write(b"", NOTES, "cannot-activate")
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet", because="cannot be activated now")
        self.assert_installed(STATIC, CLIENT)

    def test_question_that_is_not_answered_is_given_up(self):
        self.request("unlock")
        self.save_static()
        write(b"", NOTES, "hangs")
        self.refused("finalize_ethernet", "ethernet", because="nmcli does not answer")
        self.assertIn(b"result=failed", read(OUTCOMES, "finalize_ethernet"))
        self.assert_installed(DYNAMIC, CLIENT)

    def test_program_that_is_missing_refuses_nothing(self):
        self.request("unlock")
        self.save_static()
        device.cover("/usr/bin/nmcli", "/dev/null")
        try:
            self.refused("finalize_ethernet", "ethernet", because="nmcli does not answer")
        finally:
            device.uncover("/usr/bin/nmcli")
        self.assertIn(b"result=failed", read(OUTCOMES, "finalize_ethernet"))
        self.assert_installed(DYNAMIC, CLIENT)


@unittest.skipUnless(shutil.which("strace"), "no strace")
class FailingCalls(DeviceCase):

    def test_installed_file_that_is_replaced_while_it_is_read_is_not_missing(self):
        process = self.start("unlock", wrapper=(
            "strace", "-qq", "-o", "/tmp/trace", "-P", WIFI, "-e", "trace=openat",
            "-e", "inject=openat:delay_exit=200000"))
        while process.poll() is None:  # as NetworkManager does it
            os.rename(write(CLIENT, INSTALLED, WIFI + "~"), f"{INSTALLED}/{WIFI}")
            time.sleep(0.01)
        self.assertIn(b"DELAYED", read("/tmp/trace"))
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_copy(locked=False, ethernet=DYNAMIC, wifi=CLIENT)

    def test_installed_file_that_cannot_be_read_is_neither_removed_nor_replaced(self):
        copy, installed = f"{WORKING_COPY}/{WIFI}", f"{INSTALLED}/{WIFI}"
        for call, path, error in (("read", installed, "EIO"),  # a bad block
                                  ("openat", WIFI, "ESTALE"), ("openat", WIFI, "EINTR")):
            def fault(number):
                when = f":when={number}" if path == WIFI else ""
                return {"wrapper": ("strace", "-qq", "-o", "/tmp/trace", "-P", path, "-e",
                                    f"trace={call}", "-e", f"inject={call}:error={error}{when}")}

            with self.subTest(error):
                self.setUp()
                self.refused("rollback", **fault(1), because="not in the working copy: " + WIFI)
                self.refused("unlock", **fault(1), because="not in the working copy: " + WIFI)
                self.assertEqual(sorted(os.listdir(WORKING_COPY)), [ETHERNET, WIFI])
                self.assertTrue(os.path.isdir(copy), "the window can save there")
                self.refused("finalize_wifi", because="no plain file")  # it looked disabled
                self.save_static()
                self.request("finalize_ethernet", "ethernet")
                os.rmdir(copy)
                self.refused("finalize_wifi", **fault(2))
                self.put_into_copy(ACCESS_POINT, WIFI)
                self.refused("finalize_wifi", "Hotspot", **fault(2))
                self.assert_installed(STATIC, CLIENT)
                self.request("unlock")
                self.assert_copy(False, ethernet=STATIC, wifi=CLIENT)

    def test_file_that_cannot_be_put_back_is_told(self):
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet",
                     because="Input/output error, and the one before cannot be put back: ",
                     wrapper=("strace", "-qq", "-o", "/tmp/trace", "-e", "trace=fsync",
                              "-e", "inject=fsync:error=EIO:when=2+"))  # the folder, then all
        self.assertIn(b"result=failed", read(OUTCOMES, "finalize_ethernet"))

    def test_file_that_was_never_replaced_is_not_put_back(self):
        write(DYNAMIC_RECORD, PUBLISHED, mode=0o644)
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet",
                     because="Input/output error, the one before is back",
                     wrapper=("strace", "-qq", "-o", "/tmp/trace", "-e", "trace=fsync",
                              "-e", "inject=fsync:error=EIO"))  # of the new file already
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)

    def test_file_that_cannot_be_read_keeps_no_other_from_being_set_aside(self):
        self.request("unlock")
        self.save_static()
        ethernet, wifi = self.call_sudo(), self.call_sudo()
        status, errors = self.ask("rollback", wrapper=(
            "strace", "-qq", "-o", "/tmp/trace", "-P", f"{WORKING_COPY}/{WIFI}", "-e",
            "trace=read", "-e", "inject=read:error=EIO"))
        self.assertEqual(status, 0, errors)
        self.assertIn("not set aside: ", errors)
        self.request("finalize_ethernet", "ethernet", sudo=ethernet)
        self.refused("finalize_wifi", sudo=wifi)
        self.assert_installed(STATIC, CLIENT)


class Record(DeviceCase):

    def finalize(self, make):
        write(DYNAMIC, INSTALLED, ETHERNET)
        self.request("unlock")
        self.save_static()
        write(b"old", PUBLISHED, mode=0o644)
        make()
        status, errors = self.ask("finalize_ethernet", "ethernet")
        self.assertEqual(status, 0, errors)
        self.assert_installed(STATIC, CLIENT)
        return errors

    def test_record_that_is_not_the_users_or_not_true_is_not_handed_on(self):
        def become(make):
            def change():
                os.remove(UPDATE_RECORD)
                make()
            return change

        def holds(content):
            return lambda: write(content, UPDATE_RECORD, owner=USER)

        cases = {
            "missing": become(lambda: None),
            "link": become(lambda: os.symlink(write(STATIC_RECORD, "/tmp/r", owner=USER),
                                              UPDATE_RECORD)),
            "FIFO": become(lambda: os.mkfifo(UPDATE_RECORD)),
            "other owner": lambda: os.chown(UPDATE_RECORD, USER - 1, 0),
            "root's": lambda: os.chown(UPDATE_RECORD, 0, 0),
            "short": holds(STATIC_RECORD[:-1]),
            "long": holds(STATIC_RECORD + b"\n"),
        }
        for name, make in cases.items():
            with self.subTest(name):
                self.assertIn("update record is not handed on", self.finalize(make))
                self.assertFalse(os.path.lexists(PUBLISHED), "an older record is taken for this")

    def test_save_that_did_not_reach_the_keyfile_is_told_as_refused(self):
        # None of it, and, on a full disk, only the values that are as long as those before.
        partly = STATIC.replace(b"dns=192.168.1.2", b"dns=192.168.1.3")
        # A first keyfile that others wrote, for which the window has no record.
        no_gateway = STATIC.replace(b",192.168.1.1\n", b"\n")
        for content in (DYNAMIC, partly, no_gateway):
            for record in (STATIC_RECORD.replace(b"0A", b"0B"),
                           STATIC_RECORD.replace(b"FF 00", b"00 00"), STATIC_RECORD.lower(),
                           DYNAMIC_RECORD if content == partly else STATIC_RECORD):
                for rollback_first in (False, True):
                    self.request("unlock")
                    self.put_into_copy(content, ETHERNET)
                    write(record, UPDATE_RECORD, owner=USER)
                    sudo = self.call_sudo()
                    if rollback_first:
                        self.request("rollback")
                    self.refused("finalize_ethernet", "ethernet", sudo=sudo,
                                 because="the update record is of other settings")
                    self.assert_installed(DYNAMIC, CLIENT)
                    self.assertNotIn("connection reload", nmcli_calls())

    def test_save_of_the_same_again_is_activated(self):
        for record, owner in ((DYNAMIC_RECORD, USER), (STATIC_RECORD, USER - 1), (b"", USER)):
            write(record, UPDATE_RECORD, owner=owner)
            self.request("unlock")
            status, errors = self.ask("finalize_ethernet", "ethernet")
            self.assertEqual(status, 0, errors)
            self.assert_activated()

    def test_record_of_what_stays_is_kept_where_no_new_one_can_be_made(self):
        self.request("unlock")
        self.save_static()
        write(DYNAMIC_RECORD, PUBLISHED, mode=0o644)
        os.makedirs(PUBLISHED + "~/folder")  # like a full disk
        write(b"method=manual", NOTES, "refuses")
        self.refused("finalize_ethernet", "ethernet",
                     because="NetworkManager does not take it, the one before is back")
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)
        self.assertEqual(access_of(PUBLISHED), (0, 0, "0o644"))

    @unittest.skipUnless(shutil.which("strace"), "no strace")
    def test_record_that_cannot_be_read_has_no_effect_on_wifi(self):
        write(DYNAMIC_RECORD, PUBLISHED, mode=0o644)
        self.request("unlock")
        self.put_into_copy(ACCESS_POINT, WIFI)
        self.request("finalize_wifi", "Hotspot", wrapper=(
            "strace", "-qq", "-o", "/tmp/trace", "-P", os.path.basename(PUBLISHED), "-e",
            "trace=openat", "-e", "inject=openat:error=EMFILE"))
        self.assert_installed(DYNAMIC, ACCESS_POINT)
        self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)

    @unittest.skipUnless(shutil.which("strace"), "no strace")
    def test_record_that_cannot_be_looked_for_keeps_nothing_from_being_activated(self):
        for content in (STATIC, DYNAMIC):  # a change, and the same again
            self.setUp()
            self.request("unlock")
            self.put_into_copy(content, ETHERNET)
            status, errors = self.ask("finalize_ethernet", "ethernet", wrapper=(
                "strace", "-qq", "-o", "/tmp/trace", "-P", "/tmp/.", "-e", "trace=openat",
                "-e", "inject=openat:error=ENOTDIR"))
            self.assertIn(b"INJECTED", read("/tmp/trace"))
            self.assertEqual(status, 0, errors)
            self.assertIn("the update record is not handed on", errors)
            self.assert_installed(content, CLIENT)
            self.assert_activated()

    def test_record_is_found_where_tmp_is_a_link(self):
        root = "/opt/root"
        os.makedirs(root)
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", root], check=True)
        self.addCleanup(subprocess.run, ["umount", "--recursive", "--lazy", root], check=True)
        for name in os.listdir("/"):
            if os.path.islink("/" + name):
                os.symlink(os.readlink("/" + name), f"{root}/{name}")
            elif os.path.isdir("/" + name):
                place = f"{root}/linked" if name == "tmp" else f"{root}/{name}"
                os.mkdir(place)
                subprocess.run(["mount", "--rbind", "/" + name, place], check=True)
        os.symlink("linked", f"{root}/tmp")
        self.request("unlock")
        self.save_static()
        self.request("finalize_ethernet", "ethernet", wrapper=("chroot", root))
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)

    def test_true_record_is_handed_on(self):
        for make in (lambda: None, lambda: os.link(PUBLISHED, RUN + "/link")):
            self.assertEqual(self.finalize(make), "")
            self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        saves = [(DYNAMIC, DYNAMIC_RECORD),
                 (STATIC.replace(b"address1=", b"address1=  "), STATIC_RECORD),  # as it was typed
                 # A first file may have it, and a save of the same address leaves it.
                 (STATIC.replace(b"192.168.1.1\n", b"192.168.1.1;\n"), STATIC_RECORD)]
        for prefix, mask in ((0, b"00 00 00 00"), (1, b"80 00 00 00"), (20, b"FF FF F0 00"),
                             (32, b"FF FF FF FF")):
            saves.append((STATIC.replace(b"/24,", b"/%d," % prefix),
                          STATIC_RECORD.replace(b"FF FF FF 00", mask)))
        for content, record in saves:
            self.request("unlock")
            self.put_into_copy(content, ETHERNET)
            write(record, UPDATE_RECORD, owner=USER)
            self.request("finalize_ethernet", "ethernet")
            self.assertEqual(read(PUBLISHED), record)


class Outcomes(DeviceCase):
    """A file for each request, about the last time that it ended."""

    def assert_told(self, action, *lines):
        """The outcome of a request that has just ended, after the line of its time."""
        self.assertEqual(access_of(OUTCOMES, action), (0, 0, "0o644"))
        told = read(OUTCOMES, action).decode().splitlines()
        self.assertEqual([told[0], *told[2:]], [f"request={action}", *lines])
        ended = calendar.timegm(time.strptime(told[1], "time=%Y-%m-%dT%H:%M:%SZ"))
        self.assertLess(abs(time.time() - ended), 60)

    def test_done_with_the_address(self):
        self.request("unlock")
        self.assert_told("unlock", "result=done")
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=done", "address=192.168.1.10/24")
        os.remove(f"{WORKING_COPY}/{WIFI}")
        self.request("finalize_wifi")
        self.assert_told("finalize_wifi", "result=done")
        self.request("rollback")
        self.assert_told("rollback", "result=done")
        self.assertEqual(access_of(OUTCOMES), (0, 0, "0o755"))
        self.assertEqual(len(os.listdir(OUTCOMES)), 4)

    def test_address_is_left_out_when_none_is_told(self):
        write(b"", NOTES, "tells-no-address")
        self.request("unlock")
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=done")

    def test_address_that_is_known_a_moment_later_is_told(self):
        write(b"", NOTES, "knows-no-address-yet")
        self.request("unlock")
        self.save_static()
        self.request("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=done", "address=192.168.1.10/24")

    def test_done_with_a_complaint(self):
        self.request("unlock")
        self.put_into_copy(STATIC, ETHERNET)
        self.ask("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=done",
                         "why=the update record is not handed on: it is missing",
                         "address=192.168.1.10/24")

    def test_refused_and_nothing_has_changed(self):
        self.request("unlock")
        self.put_into_copy(ACCESS_POINT + b"psk=correct horse_1\n", WIFI)
        self.refused("finalize_wifi", "Hotspot")
        self.assert_told("finalize_wifi", "result=refused", "why=finalize_wifi: "
                         "wlan0.nmconnection: line 24: a setting that is not allowed")
        self.refused("unlock", user=None)
        self.assert_told("unlock", "result=refused", "why=unlock: no user has asked for this")

    def test_failed_with_the_file_installed(self):
        write(b"", NOTES, "cannot-activate")
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=failed", "why=finalize_ethernet: "
                         "ethernet.nmconnection cannot be activated now")

    @unittest.skipUnless(shutil.which("strace"), "no strace")
    def test_failed_with_the_file_before_back(self):
        self.request("unlock")
        self.save_static()
        write(DYNAMIC_RECORD, PUBLISHED, mode=0o644)
        self.refused("finalize_ethernet", "ethernet", wrapper=(
            "strace", "-qq", "-o", "/tmp/trace", "-e", "trace=fsync",
            "-e", "inject=fsync:error=EIO:when=1"))
        self.assert_installed(DYNAMIC, CLIENT)
        self.assertEqual(read(PUBLISHED), DYNAMIC_RECORD)
        self.assert_told("finalize_ethernet", "result=failed", "why=finalize_ethernet: "
                         "ethernet.nmconnection: fsync: Input/output error, the one before is back")
        write(b"", NOTES, "is-dumb")
        self.refused("finalize_ethernet", "ethernet")
        self.assert_told("finalize_ethernet", "result=failed", "why=finalize_ethernet: "
                         "ethernet.nmconnection: NetworkManager does not tell what it has read, "
                         "the one before is back")

    def test_failed_with_the_refused_file_still_in_use(self):
        write(b"method=manual", NOTES, "refuses")
        write(b"", NOTES, "becomes-deaf")
        self.request("unlock")
        self.save_static()
        self.refused("finalize_ethernet", "ethernet")
        self.assert_installed(DYNAMIC, CLIENT)
        self.assert_told("finalize_ethernet", "result=failed", "why=finalize_ethernet: "
                         "ethernet.nmconnection: NetworkManager does not take it, "
                         "the one before is installed again, but NetworkManager has not read it")

    def test_wrong_call_has_none(self):
        self.request("unlock")
        before = sorted(os.listdir(OUTCOMES))
        self.ask("../lock")
        self.assertEqual(sorted(os.listdir(OUTCOMES)), before)

    def test_outcome_that_cannot_be_told_changes_nothing_else(self):
        def open_to_all():
            os.mkdir(OUTCOMES)
            os.chmod(OUTCOMES, 0o777)

        for spoil in (lambda: write(b"", OUTCOMES), lambda: os.symlink("/tmp", OUTCOMES),
                      open_to_all):
            self.setUp()
            shutil.rmtree(OUTCOMES)
            spoil()
            for action, prepare in (("unlock", lambda: None),
                                    ("finalize_ethernet", self.save_static)):
                prepare()
                status, errors = self.ask(action)
                self.assertEqual(status, 0)
                self.assertIn("the outcome is not told: ", errors)
            self.assert_installed(STATIC, CLIENT)

    def test_outcomes_of_requests_at_the_same_time_are_whole(self):
        self.request("unlock")
        requests = [self.start("rollback") for _ in range(8)]
        while any(process.poll() is None for process in requests):
            self.assertRegex(read(OUTCOMES, "rollback").decode(),
                             r"\Arequest=rollback\ntime=[^\n]{20}\nresult=done\n\Z")
        for process in requests:
            self.assertEqual(self.finish(process), (0, ""))
        self.assertEqual(sorted(os.listdir(OUTCOMES)), ["rollback", "unlock"])


if __name__ == "__main__":
    device_case.main()
