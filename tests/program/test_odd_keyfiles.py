# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Keyfiles and folders that nobody meant: the window opens all the same, without a warning."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import SAMPLES, read

NO_ETHERNET_FILE = "No ethernet connection file found; defaulting mode to dynamic (auto).\n"
UNREADABLE = ["setpriv", "--inh-caps=-dac_override,-dac_read_search",
              "--bounding-set=-dac_override,-dac_read_search"]
ETHERNET = b"[connection]\ntype=ethernet\n"
WIFI = b"[connection]\ntype=wifi\n[wifi]\n"

# Ethernet keyfiles, what is printed of the page, and the error.
ETHERNET_FILES = (
    (read(SAMPLES, "ethernet.nmconnection").rstrip(b"\n").replace(b"\n", b"\r\n"),
     said.dynamic_page(), ""),
    (b"[connection]\nnote=" + 100_000 * b"x" + b"\ntype=ethernet\n[ipv4]\nmethod=auto\n",
     said.dynamic_page(), ""),
    (ETHERNET + b"\0\0=\0\n[ipv4]\nmethod=au\0to\n", said.dynamic_page("au"),
     "Unrecognized Ethernet mode 'au'; defaulting to dynamic (auto).\n"),
    (ETHERNET + b"[ipv4]\nmethod=manual\n", said.static_page(""),
     "Error: No Ethernet address information found in the configuration file.\n"),
    (ETHERNET + b"[ipv4]\nmethod=manual\naddress1=10.0.0.1/a,1\n", said.static_page("10.0.0.1/a,1"),
     "Invalid CIDR prefix in ethernet address: 10.0.0.1/a,1\n"),
)
# Wi-Fi keyfiles, and what the page shows of them.
WIFI_FILES = (
    # 98 bytes of letters, then a character of two bytes: its second one is cut off.
    (WIFI + f"mode=infrastructure\nssid={'s' * 98}é\n".encode(), {"SSID": "s" * 98 + "\ufffd"}),
    (WIFI + b"mode=infrastructure\nssid=caf\xe9\n[wifi-security]\npsk=\x80\x81\n",
     {"SSID": "caf\ufffd", "Password": "\ufffd\ufffd"}),
    (WIFI + b"mode=ap\nband=bg\nchannel=99999999999\n[ipv4]\naddress1=10.42.0.1/24,10.42.0.1\n",
     {"IP Address": "10.42.0.1"}),
)


class OddKeyfiles(program_case.ProgramCase):

    def open_and_close(self, output, errors="", look=None, **options):
        """A run in which the window opens, is looked at and closed."""
        program = self.run_debug(**options)
        self.assertEqual(program.page(), "Ethernet")
        if look:
            look(program)
        program.close()
        self.assert_ended(program, output, errors)

    def test_window_opens_without_files(self):
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

    def test_files_of_no_type_are_passed_over(self):
        os.chmod(self.path("ethernet.nmconnection"), 0)
        os.mkfifo(self.path("fifo"))
        os.mkdir(self.path("folder"))
        os.symlink("nowhere", self.path("link to nothing"))
        os.symlink("loop", self.path("loop"))
        for number, content in enumerate((
                "", "\n\n", "type=ethernet\n", "[connection\ntype=ethernet\n",
                "[connection]\ntype=Ethernet\n", "[connection]\n", "\0" * 5000)):
            self.put(f"{number}.nmconnection", content)
        self.open_and_close(
            said.start(self.connections, ethernet="", page=said.dynamic_page(None)),
            NO_ETHERNET_FILE, wrapper=UNREADABLE)

    def test_folder_that_cannot_be_read_is_reported(self):
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

    def test_odd_ethernet_files_are_shown(self):
        for content, page, errors in ETHERNET_FILES:
            with self.subTest(content[:100]):
                self.put("ethernet.nmconnection", content)
                self.open_and_close(said.start(self.connections, page=page), errors)

    def test_odd_wifi_files_are_shown(self):
        for content, texts in WIFI_FILES:
            with self.subTest(content):
                self.put("wlan0.nmconnection", content)

                def look(program):
                    program.show_page("Wifi")
                    self.assertEqual({label: program.text(label) for label in texts}, texts)
                    if "IP Address" in texts:
                        self.assertEqual(program.channel(), "Auto")

                self.open_and_close(said.start(self.connections) + said.SHOW_WIFI, look=look)

    def test_text_that_is_not_utf8_is_shown_and_printed(self):
        self.put("ethernet.nmconnection", ETHERNET + b"interface-name=e\xff0\n[ipv4]\n"
                 b"method=manual\naddress1=1.2\xe9/24,\xc3\ndns=\xf0\x9f;\n")

        def look(program):
            self.assertEqual([program.text(label) for label in
                              ("Device", "IP Address", "Default Gateway")],
                             ["e\ufffd0", "1.2\ufffd", "\ufffd"])
            self.assertEqual(set(program.text("DNS Server")), {"\ufffd"})

        # It is printed byte for byte.
        page = said.static_page("1.2\udce9/24,\udcc3")
        self.open_and_close(said.start(self.connections, page=page), look=look)


program_case.main()
