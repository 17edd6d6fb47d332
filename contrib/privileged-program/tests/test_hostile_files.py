# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program against a user who means harm."""
import contextlib
import os
import re
import shutil
import socket
import stat
import subprocess
import sys

from tests.support.files import read
from tests.support.limit import wait_until

from . import device_case
from .device import ETHERNET, INSTALLED, OLD_COPIES, STATE, USER, WIFI, WORKING_COPY, write
from .device_case import (ACCESS_POINT, CLIENT, DYNAMIC, DeviceCase, NOTES, STATIC, STRANGER,
                          USER_MAY_WRITE, access_of, empty, nmcli_calls, snapshot)

# Always twenty more, and on into the last of them; on a file system in memory, not too many at once.
MAKE_FOLDERS = """
import os, sys, time
os.chdir(sys.argv[1])
try:
    while True:
        for number in range(20):
            os.mkdir(str(number))
        os.chdir("19")
        while (status := os.statvfs(".")).f_files - status.f_ffree > 20000:
            time.sleep(0.0005)
except (PermissionError, FileNotFoundError):  # it was slower than who removes them
    time.sleep(3600)
"""


class HostileFiles(DeviceCase):

    def assert_refused(self, *words, because):
        """The file in the working copy is refused, and so when a rollback comes first."""
        with self.subTest("finalize first"):
            self.refused(*words, because=because)
        with self.subTest("rollback first"):
            sudo = self.call_sudo()
            self.ask("rollback")
            self.refused(*words, sudo=sudo)
        self.assert_installed(DYNAMIC, CLIENT)
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assertNotIn("connection reload", nmcli_calls())

    def test_what_is_no_plain_file_of_the_users_is_refused(self):
        path = f"{WORKING_COPY}/{ETHERNET}"

        def link():
            os.symlink(write(STATIC, "/tmp/mine", owner=USER), path)

        def second_name():
            os.link(write(STATIC, WORKING_COPY, "mine", owner=USER), path)

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

    def test_ethernet_settings_that_are_not_on_the_list_are_refused(self):
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
            # The window reads no more of a line at once, and takes the rest for another line.
            "second key behind a comment":
                replace(b"method=manual", b"#" + 510 * b"x" + b"method=auto\nmethod=manual"),
            "key before any section": b"id=x\n" + STATIC,
            "shared network": replace(b"method=manual", b"method=shared"),
            "other type": replace(b"type=ethernet", b"type=vpn"),
            "type of Wi-Fi": replace(b"type=ethernet", b"type=wifi"),
            "no type": replace(b"type=ethernet\n", b""),
            "other interface": replace(b"eth0", b"eth1"),
            "interface of Wi-Fi": replace(b"eth0", b"wlan0"),
            "no interface": replace(b"interface-name=eth0\n", b""),
            "UUID of another": replace(b"id=ethernet", b"id=ethernet\nuuid=" + 4 * b"11111111-"),
            "address missing": replace(b"address1=192.168.1.10/24,192.168.1.1\n", b""),
            "address with zeros": replace(b"192.168.1.10/", b"192.168.01.10/"),
            "address of a name server with zeros": replace(b"dns=192.168.1.2", b"dns=192.168.01.2"),
            "address beside the method": DYNAMIC.replace(b"auto\n", b"auto\naddress1=1.2.3/8\n", 1),
            "empty address": DYNAMIC.replace(b"method=auto\n", b"method=auto\naddress1=\n", 1),
            "empty UUID": replace(b"id=ethernet", b"id=ethernet\nuuid="),
            "no room for a longer value": STATIC + (65536 - len(STATIC)) * b"\n",
            "nothing": b"",
        }
        for name, content in cases.items():
            with self.subTest(name):
                self.assertNotIn(content, (STATIC, DYNAMIC))
                self.request("unlock")
                self.put_into_copy(content, ETHERNET)
                empty(NOTES)
                self.assert_refused("finalize_ethernet", "ethernet", because=ETHERNET + ": ")
                # For all else the list is enough.
                self.assertEqual(nmcli_calls() != [], name.startswith("address"))

    def test_wifi_settings_that_are_not_on_the_list_are_refused(self):
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
            "end of a line in the name": replace(b"ssid=", b"ssid=\\n"),
            "another end of a line in the name": replace(b"Halvorik AP", b"Halvorik\\\\\\r"),
            "name as numbers": replace(b"ssid=Halvorik AP", b"ssid=72;10;"),
            "name as numbers, and blanks": replace(b"ssid=Halvorik AP", b"ssid=72;10;  "),
            **{f"name as numbers, and {end}": replace(b"Halvorik AP", b"65;10;" + end)
               for end in (b"\\s", b"\\t", b"\\", b" \\s \\t\\")},
            "end of a line in the password": replace(b"psk=", b"psk=\\\\\\n"),
            "empty address": re.sub(b"address1=.*", b"address1=", ACCESS_POINT),
            "blank address": re.sub(b"address1=.*", b"address1= ", ACCESS_POINT),
            # It would get another one, NetworkManager's own choice.
            "address with zeros": replace(b"192.168.4.20/", b"192.168.04.20/"),
            "address with a dot": replace(b"192.168.4.20/", b"192.168.4.20./"),
            "separator alone": re.sub(b"address1=.*", b"address1=,", ACCESS_POINT),
            # It would have none.
            "password with quotes": re.sub(b"psk=.*", rb'psk="say \\"open\\""', ACCESS_POINT),
            "password with a backslash": re.sub(b"psk=.*", rb"psk=back\\door 9", ACCESS_POINT),
            # No network has such a one.
            **{f"password {typed}": re.sub(b"psk=.*", lambda _, typed=typed: b"psk=" + typed,
                                           ACCESS_POINT)
               for typed in (b" ", b" 1234567", rb"\s\s12345", 64 * b"x", 65 * b"f")},
        }
        for name, content in cases.items():
            with self.subTest(name):
                self.assertNotEqual(content, ACCESS_POINT)
                self.request("unlock")
                self.put_into_copy(content, WIFI)
                self.assert_refused("finalize_wifi", "Hotspot", because=WIFI + ": ")

    def test_backslashes_that_end_no_line_are_taken(self):
        for typed in (b"\\\\n", b"a\\\\\\\\r", b"\\s\\tx", b"65;10;s", b"65;10\\s", b"x\\"):
            content = ACCESS_POINT.replace(b"Halvorik AP", typed)
            self.request("unlock")
            self.put_into_copy(content, WIFI)
            status, errors = self.ask("finalize_wifi", "Hotspot")
            if typed == b"x\\" and "NetworkManager cannot read it" in errors:
                continue  # a newer one refuses a backslash that nothing follows
            self.assertEqual((status, read(INSTALLED, WIFI)), (0, content), errors)

    def test_passwords_of_any_length_that_there_is_are_taken(self):
        for typed in (b" 12345678", rb"\s\\34567\t", 63 * b"x", 32 * b"fA"):
            content = re.sub(b"psk=.*", lambda _, typed=typed: b"psk=" + typed, ACCESS_POINT)
            self.request("unlock")
            self.put_into_copy(content, WIFI)
            self.request("finalize_wifi", "Hotspot")
            self.assert_installed(DYNAMIC, content)

    def test_name_servers_that_can_be_read_are_taken(self):
        for typed in (b"", b" ", b";", b" 1.1.1.1", b"1.1.1.1;8.8.8.8;"):
            content = STATIC.replace(b"dns=192.168.1.2", b"dns=" + typed)
            self.request("unlock")
            self.put_into_copy(content, ETHERNET)
            self.ask("finalize_ethernet", "ethernet")
            self.assert_installed(content, CLIENT)

    def test_comments_are_taken(self):
        for comments in (b"#" + 510 * b"x" + b"\n", 16000 * b"#\n"):
            content = STATIC.replace(b"method=", comments + b"method=", 1)
            self.request("unlock")
            self.put_into_copy(content, ETHERNET)
            self.ask("finalize_ethernet", "ethernet")
            self.assert_installed(content, CLIENT)

    def test_installed_uuid_may_stay(self):
        uuid = b"uuid=1b4e28ba-2fa1-11d2-883f-0016d3cca427\n"
        write(DYNAMIC.replace(b"type=", uuid + b"type="), INSTALLED, ETHERNET)
        with_uuid = STATIC.replace(b"type=", uuid + b"type=")
        self.request("unlock")
        self.put_into_copy(with_uuid, ETHERNET)
        self.ask("finalize_ethernet", "ethernet")
        self.assert_installed(with_uuid, CLIENT)

    def test_file_that_changes_afterwards_is_taken_as_it_was(self):
        self.request("unlock")
        self.save_static()
        sudo = self.call_sudo()
        with open(f"{WORKING_COPY}/{ETHERNET}", "r+b") as held:  # by a process of the user's
            self.request("rollback")
            held.write(b"[vpn]\n")
            held.flush()
            self.request("finalize_ethernet", "ethernet", sudo=sudo)
        self.assert_installed(STATIC, CLIENT)
        self.assert_copy(True, ethernet=STATIC, wifi=CLIENT)

    def test_folder_that_is_held_open_is_of_no_use(self):
        self.request("unlock")
        held = os.open(WORKING_COPY, os.O_RDONLY)
        self.addCleanup(os.close, held)
        self.request("rollback")
        self.assert_user_cannot_remove(ETHERNET, held)

    def test_leftovers_of_every_kind_are_removed_from_the_working_copy(self):
        for user_again in ("unlock", "rollback"):
            with self.subTest(user_again):
                self.request("unlock")
                for name in (ETHERNET, WIFI):
                    os.remove(f"{WORKING_COPY}/{name}")
                os.symlink(STRANGER + "/root", f"{WORKING_COPY}/{ETHERNET}")
                os.symlink(STRANGER + "/root", f"{WORKING_COPY}/{ETHERNET}~")
                os.symlink(STRANGER, f"{WORKING_COPY}/link")
                os.makedirs(f"{WORKING_COPY}/{WIFI}~/a/b")
                os.symlink(STRANGER, f"{WORKING_COPY}/{WIFI}~/a/link")
                os.mkfifo(f"{WORKING_COPY}/{WIFI}")
                os.link(STRANGER + "/another", f"{WORKING_COPY}/.hidden")
                self.ask(user_again)
                self.assert_copy(user_again == "rollback", ethernet=DYNAMIC, wifi=CLIENT)

    def test_folders_of_any_depth_are_removed_from_the_working_copy(self):
        self.request("unlock")
        os.remove(f"{WORKING_COPY}/{ETHERNET}")
        for folder in (ETHERNET, "moved.2", "other"):
            os.makedirs(f"{WORKING_COPY}/{folder}/" + 900 * "d/")
            write(b"", WORKING_COPY, folder, "moved.1", owner=USER)
        self.assertEqual(self.ask("rollback")[0], 0)
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_each_working_copy_is_a_new_folder(self):
        seen = [os.stat(WORKING_COPY).st_ino]
        held = [os.open(WORKING_COPY, os.O_RDONLY)]  # else a number could be given out again
        self.addCleanup(lambda: [os.close(folder) for folder in held])
        for action in ("unlock", "unlock", "rollback"):
            self.request(action)
            self.assertNotIn(os.stat(WORKING_COPY).st_ino, seen)
            seen.append(os.stat(WORKING_COPY).st_ino)
            held.append(os.open(WORKING_COPY, os.O_RDONLY))
        self.assertEqual(os.listdir(OLD_COPIES), [])
        self.assertEqual(access_of(OLD_COPIES), (0, 0, "0o700"))

    def test_process_that_goes_on_making_folders_holds_nobody_up(self):
        self.request("unlock")
        os.mkdir(os.path.join(WORKING_COPY, "folder"))
        os.chown(os.path.join(WORKING_COPY, "folder"), USER, USER)
        busy = subprocess.Popen([sys.executable, "-c", MAKE_FOLDERS, WORKING_COPY + "/folder"],
                                user=USER, group=USER, extra_groups=[])
        self.addCleanup(busy.wait)
        self.addCleanup(busy.kill)
        wait_until(lambda: os.path.exists(WORKING_COPY + "/folder/19"), "the first folders")
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("unlock", user=USER - 1)
        self.assertIsNone(busy.poll())

    def assert_done_while_standard_error_is_blocked(self, words, is_done):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        os.set_blocking(writer, False)
        length = 0
        with contextlib.suppress(BlockingIOError):
            while True:
                length += os.write(writer, b"x")
        os.set_blocking(writer, True)
        process = self.start(*words, preexec_fn=lambda: os.dup2(writer, 2))
        os.close(writer)
        wait_until(is_done, "the request to do what it is for")
        self.request("unlock", user=USER - 1)
        self.assertIsNone(process.poll(), "nothing was complained about")
        os.read(reader, length)
        self.assertEqual(self.finish(process), (0, ""))
        self.assertIn(b"zor-network-permissions-handler: ", os.read(reader, length))

    def test_standard_error_that_is_blocked_holds_nobody_up(self):
        self.request("unlock")
        os.link(f"{WORKING_COPY}/{WIFI}", WORKING_COPY + "/link")  # not to be set aside
        self.assert_done_while_standard_error_is_blocked(
            ("rollback",), lambda: os.stat(WORKING_COPY).st_uid == 0)
        self.request("unlock")
        self.put_into_copy(STATIC, ETHERNET)  # without a record
        self.assert_done_while_standard_error_is_blocked(
            ("finalize_ethernet", "x"), lambda: any("connection up" in call for call in nmcli_calls()))

    def test_names_for_what_is_moved_may_be_taken(self):
        self.request("unlock")
        write(b"", WORKING_COPY, "moved.1")
        os.makedirs(f"{WORKING_COPY}/folder/folder")  # listed before the older file
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_access_lists_are_taken_away(self):
        self.request("unlock")
        for name in ("system.posix_acl_access", "system.posix_acl_default"):
            os.setxattr(WORKING_COPY, name, USER_MAY_WRITE)
        self.request("rollback")
        for path in (WORKING_COPY, f"{WORKING_COPY}/{ETHERNET}"):
            self.assertEqual(os.listxattr(path), [])
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_working_copy_must_be_a_folder(self):
        moved = WORKING_COPY + ".moved"
        os.rename(WORKING_COPY, moved)
        self.addCleanup(os.rename, moved, WORKING_COPY)
        os.symlink(STRANGER, WORKING_COPY)
        self.addCleanup(os.remove, WORKING_COPY)
        for action in ("unlock", "rollback", "finalize_ethernet"):
            self.refused(action, because="Not a directory")

    def test_files_that_were_never_installed_stay(self):
        for name in (ETHERNET, WIFI):
            os.remove(os.path.join(INSTALLED, name))
        write(DYNAMIC, WORKING_COPY, ETHERNET)
        write(CLIENT, WORKING_COPY, "office.nmconnection")
        os.chown(WORKING_COPY, 0, 0)  # as it was before the first request of all
        for action in ("unlock", "rollback"):
            self.refused(action, because="files that are not installed")
        self.assertIn("office.nmconnection", os.listdir(WORKING_COPY))
        os.rename(INSTALLED, INSTALLED + ".moved")
        self.refused("rollback", because="No such file")
        os.rename(INSTALLED + ".moved", INSTALLED)

    def test_nothing_is_lost_when_only_some_files_were_moved(self):
        # NetworkManager reads files without a suffix too. Some tools do not replace a file.
        for name, content in (("Wired connection 1", DYNAMIC), (ETHERNET, STATIC)):
            empty(WORKING_COPY)
            os.chown(WORKING_COPY, 0, 0)
            write(content, WORKING_COPY, name)
            for action in ("unlock", "rollback"):
                self.refused(action, because="files that are not installed")
            self.assertEqual(read(WORKING_COPY, name), content)
        write(DYNAMIC, WORKING_COPY, ETHERNET)  # as a copy whose readers have another group now
        self.request("rollback")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_backups_beside_the_working_copy_stay(self):
        for end in (".old", ".new", ".bak"):
            os.mkdir(WORKING_COPY + end)
            self.addCleanup(shutil.rmtree, WORKING_COPY + end)
            write(DYNAMIC, WORKING_COPY + end, ETHERNET)
            before = snapshot(WORKING_COPY + end)
            for action in ("unlock", "rollback"):
                self.request(action)
            self.assertEqual(snapshot(WORKING_COPY + end), before)

    def test_folder_of_old_working_copies_is_roots_alone_whatever_it_was(self):
        os.chown(OLD_COPIES, USER, USER)
        os.chmod(OLD_COPIES, 0o777)
        for action in ("unlock", "rollback"):
            self.request(action)
        self.assertEqual(access_of(OLD_COPIES), (0, 0, "0o700"))

    def test_what_cannot_be_set_aside_is_not_taken_for_removed(self):
        self.request("unlock")
        os.link(f"{WORKING_COPY}/{WIFI}", WORKING_COPY + "/link")
        sudo = self.call_sudo()
        self.ask("rollback")
        self.refused("finalize_wifi", sudo=sudo, because="another type of connection")
        self.assert_installed(DYNAMIC, CLIENT)

    def test_folders_that_others_can_write_are_not_trusted(self):
        for folder in (STATE, INSTALLED):
            mode = stat.S_IMODE(os.stat(folder).st_mode)
            os.chmod(folder, mode | stat.S_IWGRP)
            self.refused("unlock", because="can be written by others")
            os.chmod(folder, mode)


device_case.main()
