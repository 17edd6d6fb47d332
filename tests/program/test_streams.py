# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Streams that fail and locales that do not fit: the program goes on and saves."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import UPDATE_RECORD, expected, read
from tests.support.limit import wait_until

ODD_TEXT = "naïve €ß→😀"


def static(address):
    """The keyfile of a static address."""
    return expected("ethernet-static", address1=address + "/24,192.168.1.1", dns="")


class BrokenStreams(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.keyfile = self.put("ethernet.nmconnection", static("192.168.1.10"))

    def save(self, program):
        program.fill("IP Address", "192.168.1.77")
        program.button("Save And Exit")

    def assert_saved(self, program, errors=""):
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.errors, errors)
        self.assert_keyfile(self.keyfile, static("192.168.1.77"))
        self.assertEqual(read(UPDATE_RECORD),
                         b"00 C0 A8 01 4D FF FF FF 00 C0 A8 01 01 ")
        wait_until(self.recorder.calls, "the request")
        self.assertEqual(self.recorder.calls(), [["finalize_ethernet", "ethernet"]])

    def test_closed_streams_do_not_stop_a_save(self):
        # The number of a closed stream must not go to a file or a connection: the program's
        # lines would be written into that.
        for closed in (">&-", "2>&-", "<&- >&- 2>&-"):
            with self.subTest(closed=closed):
                self.setUp()
                program = self.run_debug(wrapper=["sh", "-c", f'exec "$@" {closed}', "sh"])
                wait_until(self.desktop.windows, "the window")
                for number in (0, 1, 2):
                    self.assertRegex(os.readlink(f"/proc/{program.process.pid}/fd/{number}"),
                                     "^(/dev/null|pipe:.*)$")
                self.save(program)
                self.assert_saved(program)

    def test_full_output_does_not_stop_a_save(self):
        with open("/dev/full", "wb") as full:
            program = self.run_debug(stdout=full.fileno())
        self.save(program)
        self.assert_saved(program)

    def test_log_at_its_size_limit_does_not_stop_a_save(self):
        start = said.start(self.connections,
                           page=said.static_page("192.168.1.10/24,192.168.1.1"))
        limit = 100000
        name = os.path.join(self.folder, "log")
        with open(name, "ab") as log:
            os.truncate(name, limit - len(start))
            program = self.run_debug(stdout=log.fileno(),
                                     wrapper=["prlimit", f"--fsize={limit}"])
        self.save(program)
        self.assert_saved(program)
        self.assertEqual(read(name).lstrip(b"\0"), start.encode())

    def test_reader_that_is_gone_does_not_stop_a_save(self):
        reader, writer = os.pipe()
        os.close(reader)
        program = self.run_debug(stdout=writer)
        os.close(writer)
        self.save(program)
        self.assert_saved(program)

    def test_reader_that_goes_in_the_middle_does_not_stop_a_save(self):
        reader, writer = os.pipe()
        program = self.run_debug(stdout=writer)
        os.close(writer)
        program.fill("IP Address", "x")
        os.close(reader)
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts()[1], "Invalid IP Address")
        program.button("OK")
        self.save(program)
        self.assert_saved(program, "Invalid format for IP Address or Subnet Mask\n")


class Locales(program_case.ProgramCase):

    def assert_bytes_pass(self, environment):
        """Any text that is typed is printed byte for byte, checked and refused."""
        self.put("ethernet.nmconnection", static("192.168.1.10"))
        program = self.run_debug(environment=environment)
        program.fill("IP Address", ODD_TEXT)
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts()[1], "Invalid IP Address")
        program.button("OK")
        program.fill("IP Address", "192.168.1.10")
        program.button("Save And Exit")
        entries = ("255.255.255.0", "192.168.1.1", "")
        self.assertEqual(program.finish(), 0)
        self.assertEqual(
            program.output,
            said.start(self.connections, page=said.static_page("192.168.1.10/24,192.168.1.1"))
            + said.ethernet_mode_check("manual", "manual")
            + said.ethernet_entries(ODD_TEXT, *entries) + said.address_check(ODD_TEXT, False)
            + said.address_check("192.168.1.1")
            + said.ethernet_mode_check("manual", "manual")
            + said.valid_ethernet_entries("192.168.1.10", *entries) + said.RECORD_WRITTEN)
        return program.errors

    def test_any_text_is_refused_in_every_locale(self):
        for environment in ({"LC_ALL": "C"}, {"LC_ALL": "C.UTF-8"},
                            {"LANG": "xx_YY.UTF-8", "G_DEBUG": ""}):  # unknown: a warning
            with self.subTest(environment):
                errors = self.assert_bytes_pass(environment)
                if "LANG" in environment:
                    errors = errors.splitlines(True)[-1]
                self.assertEqual(errors, "Invalid format for IP Address or Subnet Mask\n")

    def test_any_text_is_saved_in_the_c_locale(self):
        program = self.run_debug(environment={"LC_ALL": "C"})
        program.show_page("Wifi")
        program.fill("SSID", ODD_TEXT)
        program.button("Save And Exit")
        self.assert_ended(program, said.start(self.connections) + said.SHOW_WIFI
                          + said.wifi_mode_check("infrastructure", "infrastructure")
                          + "Wifi Device name: wlan0\n", calls=[["finalize_wifi", "ZOR"]])
        self.assertIn(f"\nssid={ODD_TEXT}\n".encode(),
                      read(self.path("wlan0.nmconnection")))


program_case.main()
