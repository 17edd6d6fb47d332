# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Keyfiles and folders that nobody meant: the window opens all the same, without a warning."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import read

NO_ETHERNET_FILE = "No ethernet connection file found; defaulting mode to dynamic (auto).\n"
UNREADABLE = ["setpriv", "--inh-caps=-dac_override,-dac_read_search",
              "--bounding-set=-dac_override,-dac_read_search"]


class OddKeyfiles(program_case.ProgramCase):

    def open_and_close(self, output, errors="", look=None, **options):
        """A run in which the window opens, is looked at and closed."""
        program = self.run_debug(**options)
        self.assertEqual(program.page(), "Ethernet")
        if look:
            look(program)
        program.close()
        self.assert_ended(program, output, errors)

    def without_ethernet(self):
        return said.start(self.connections, ethernet="", page=said.dynamic_page(None))

    def test_no_files(self):
        os.remove(self.path("ethernet.nmconnection"))
        os.remove(self.path("wlan0.nmconnection"))

        def look(program):
            self.assertTrue(program.is_checked("Dynamic IP"))
            self.assertEqual(program.text("Device"), "eth0")
            program.show_page("Wifi")
            self.assertTrue(program.is_checked("Disabled"))
            self.assertEqual(program.text("Device"), "wlan0")

        self.open_and_close(
            said.start(self.connections, ethernet="", wifi="", page=said.dynamic_page(None))
            + said.SHOW_WIFI, NO_ETHERNET_FILE, look)

    def test_missing_folder(self):
        working = os.path.join(self.folder, "inner", "working")
        os.makedirs(working)
        working = os.path.realpath(working)
        program = self.run_debug(cwd=working,
                                 environment={"ZOR_NETWORKMANAGER_DEBUG_PATH": "/no/folder"})
        program.look()
        program.close()
        self.assertEqual(program.finish(), 0)
        folder = os.path.join(working, "Ethernet_Test_Connections")
        self.assertEqual(program.output, said.start(folder, ethernet="", wifi="",
                                                    page=said.dynamic_page(None)))
        error, rest = program.errors.split("\n", 1)
        self.assertRegex(error, "^Error: .*No such file or directory")
        self.assertIn(folder, error)
        self.assertEqual(rest, NO_ETHERNET_FILE)

    def test_not_a_file(self):
        path = self.path("ethernet.nmconnection")
        for make in (os.mkfifo, os.mkdir, lambda name: os.symlink("nowhere", name),
                     lambda name: os.symlink(name, name)):
            with self.subTest(make=make):
                if os.path.isdir(path) and not os.path.islink(path):
                    os.rmdir(path)
                else:
                    os.remove(path)
                make(path)
                self.open_and_close(self.without_ethernet(), NO_ETHERNET_FILE)

    def test_unreadable_file(self):
        os.chmod(self.path("ethernet.nmconnection"), 0)
        self.open_and_close(self.without_ethernet(), NO_ETHERNET_FILE, wrapper=UNREADABLE)

    def test_unreadable_folder(self):
        os.chmod(self.connections, 0)
        program = self.run_debug(wrapper=UNREADABLE)
        program.look()
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.output, said.start(self.connections, ethernet="", wifi="",
                                                    page=said.dynamic_page(None)))
        error, rest = program.errors.split("\n", 1)
        self.assertRegex(error, "^Error: .*Permission denied")
        self.assertEqual(rest, NO_ETHERNET_FILE)

    def test_read_only_file(self):
        path = self.path("ethernet.nmconnection")
        os.chmod(path, 0o400)
        before = read(path)
        program = self.run_debug(wrapper=UNREADABLE)
        program.button("Save And Exit")
        self.assert_ended(program, said.start(self.connections)
                          + said.ethernet_mode_check("auto", "auto") + said.RECORD_WRITTEN,
                          calls=[["finalize_ethernet", "ethernet"]])
        self.assertEqual(read(path), before)

    def test_link_to_a_keyfile(self):
        path = self.path("ethernet.nmconnection")
        os.rename(path, os.path.join(self.folder, "elsewhere"))
        os.symlink("../elsewhere", path)
        self.open_and_close(said.start(self.connections))

    def test_no_section_or_no_bytes(self):
        for content in ("", "\n\n", "type=ethernet\n", "[connection\ntype=ethernet\n",
                        "[connection]\ntype=Ethernet\n", "[connection]\n", "\0" * 5000):
            with self.subTest(content=content):
                self.put("ethernet.nmconnection", content)
                self.open_and_close(self.without_ethernet(), NO_ETHERNET_FILE)

    def test_carriage_returns_and_no_final_newline(self):
        sample = read(self.path("ethernet.nmconnection"))
        for content in (sample.replace(b"\n", b"\r\n"), sample.rstrip(b"\n")):
            with self.subTest(content=content):
                self.put("ethernet.nmconnection", content)
                self.open_and_close(said.start(self.connections))

    def test_nul_bytes(self):
        self.put("ethernet.nmconnection",
                 b"[connection]\ntype=ethernet\n\0\0=\0\n[ipv4]\nmethod=au\0to\n")
        self.open_and_close(said.start(self.connections, page=said.dynamic_page("au")),
                            "Unrecognized Ethernet mode 'au'; defaulting to dynamic (auto).\n")

    def test_invalid_utf8(self):
        self.put("ethernet.nmconnection", b"[connection]\ntype=ethernet\ninterface-name=e\xff0\n"
                 b"[ipv4]\nmethod=manual\naddress1=1.2\xe9/24,\xc3\ndns=\xf0\x9f;\n")
        self.put("wlan0.nmconnection", b"[connection]\ntype=wifi\n[wifi]\nmode=infrastructure\n"
                 b"ssid=caf\xe9\n[wifi-security]\npsk=\x80\x81\n")
        shown = "1.2\udce9/24,\udcc3"

        def look(program):
            self.assertEqual([program.text(label) for label in
                              ("Device", "IP Address", "Default Gateway")],
                             ["e\ufffd0", "1.2\ufffd", "\ufffd"])
            self.assertEqual(set(program.text("DNS Server")), {"\ufffd"})
            program.show_page("Wifi")
            self.assertEqual(program.text("SSID"), "caf\ufffd")
            self.assertEqual(program.text("Password"), "\ufffd\ufffd")

        self.open_and_close(said.start(self.connections, page=said.static_page(shown))
                            + said.SHOW_WIFI, look=look)

    def test_long_lines(self):
        for length in (511, 512, 513, 1023, 100_000):
            with self.subTest(length=length):
                line = "x" * (length - len("note=") - 1)
                self.put("ethernet.nmconnection",
                         f"[connection]\nnote={line}\ntype=ethernet\n[ipv4]\nmethod=auto\n")
                self.open_and_close(said.start(self.connections))

    def test_value_cut_inside_a_character(self):
        # 98 bytes of letters, then a character of two bytes: its second one is cut off.
        self.put("wlan0.nmconnection", "[connection]\ntype=wifi\n[wifi]\nmode=infrastructure\n"
                 f"ssid={'s' * 98}é\n")

        def look(program):
            program.show_page("Wifi")
            self.assertEqual(program.text("SSID"), "s" * 98 + "\ufffd")

        self.open_and_close(said.start(self.connections) + said.SHOW_WIFI, look=look)

    def test_access_point_without_a_sensible_channel(self):
        for channel in ("abc", "99999999999", "-1", "12", ""):
            with self.subTest(channel=channel):
                self.put("wlan0.nmconnection", "[connection]\ntype=wifi\n[wifi]\nmode=ap\nband=bg\n"
                         f"channel={channel}\n[ipv4]\naddress1=10.42.0.1/24,10.42.0.1\n")

                def look(program):
                    program.show_page("Wifi")
                    self.assertEqual(program.channel(), "Auto")
                    self.assertEqual(program.text("IP Address"), "10.42.0.1")

                self.open_and_close(said.start(self.connections) + said.SHOW_WIFI, look=look)

    def test_addresses_that_cannot_be_split(self):
        for address, error in (("10.0.0.1/24", "Invalid Ethernet address format: 10.0.0.1/24\n"),
                               ("10.0.0.1/a,1", "Invalid CIDR prefix in ethernet address: "
                                "10.0.0.1/a,1\n")):
            with self.subTest(address=address):
                self.put("ethernet.nmconnection", "[connection]\ntype=ethernet\n[ipv4]\n"
                         f"method=manual\naddress1={address}\n")
                self.open_and_close(said.start(self.connections, page=said.static_page(address)),
                                    error)

    def test_static_keyfile_without_an_address(self):
        self.put("ethernet.nmconnection", "[connection]\ntype=ethernet\n[ipv4]\nmethod=manual\n")
        self.open_and_close(said.start(self.connections, page=said.static_page("")),
                            "Error: No Ethernet address information found in the configuration "
                            "file.\n")

    def test_many_files(self):
        for number in range(10_000):
            self.put(f"other-{number}", "[connection]\ntype=vpn\n")
        self.open_and_close(said.start(self.connections))


program_case.main()
