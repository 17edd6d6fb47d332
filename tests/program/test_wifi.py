# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Saving on the Wifi page with real key and pointer events, and its validation dialog."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.desktop import Desktop
from tests.support.files import SAMPLES, UPDATE_RECORD, expected, read
from tests.support.limit import wait_until

PASSWORD_FIELD = "Password (must at least 8 characters and contain no special characters)"

DEVICE = "Wifi Device name: wlan0\n"


def access_point(**values):
    """The keyfile of the access point that most tests start with."""
    return expected("access-point", **{"ssid": "ZOR", "psk": "secret 88",
                                       "address1": "10.42.0.1/24,10.42.0.1", **values})


class WifiPage(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.keyfile = self.path("wlan0.nmconnection")
        self.start = said.start(self.connections) + said.SHOW_WIFI

    def put_access_point(self):
        self.put("wlan0.nmconnection", access_point())

    def run_on_wifi_page(self):
        program = self.run_debug()
        program.show_page("Wifi")
        return program

    def test_client_saved_again_changes_nothing(self):
        program = self.run_on_wifi_page()
        program.button("Save And Exit")
        self.assert_ended(program, self.start
                          + said.wifi_mode_check("infrastructure", "infrastructure") + DEVICE,
                          calls=[["finalize_wifi", "ZOR"]])
        self.assert_samples_untouched()
        self.assertFalse(os.path.exists(UPDATE_RECORD))

    def test_client_gets_another_network_unchecked(self):
        program = self.run_on_wifi_page()
        program.fill("SSID", "Café 7")
        program.fill("Password", "p\"a;ss")  # written without any check
        program.button("Save And Exit")
        self.assert_ended(program, self.start
                          + said.wifi_mode_check("infrastructure", "infrastructure") + DEVICE,
                          calls=[["finalize_wifi", "ZOR"]])
        sample = read(SAMPLES, "wlan0.nmconnection")
        self.assert_keyfile(self.keyfile, sample.replace(b"Workshop", "Café 7".encode())
                            .replace(b"correct horse 42", b'"p\\"a;ss"'))

    def test_client_replaces_an_access_point(self):
        self.put_access_point()
        program = self.run_on_wifi_page()
        program.pick("Client")
        program.button("Save And Exit")
        self.assert_ended(
            program, self.start + said.PICK_WIFI_MODE
            + said.wifi_mode_check("ap", "infrastructure", self.keyfile) + DEVICE,
            calls=[["finalize_wifi", "ZOR"]])
        self.assert_keyfile(self.keyfile, expected("client", ssid="ZOR", psk="secret 88"))

    def test_access_point_replaces_a_client(self):
        program = self.run_on_wifi_page()
        program.pick("Access Point")
        program.fill("SSID", "Halvorik AP")
        program.fill("Password", "new_pass-1")
        program.fill("IP Address", "192.168.4.20")
        program.fill("Subnet Mask", "255.255.255.0")
        program.choose_channel(7)
        self.assertEqual(program.channel(), "7")
        program.button("Save And Exit")
        self.assert_ended(
            program, self.start + said.PICK_WIFI_MODE
            + said.wifi_mode_check("infrastructure", "ap", self.keyfile)
            + said.access_point_saved("192.168.4.20", "255.255.255.0", "new_pass-1"),
            calls=[["finalize_wifi", "Hotspot"]])
        self.assert_keyfile(self.keyfile, expected(
            "access-point", channel=7, psk="new_pass-1"))

    def test_access_point_is_shown_as_stored_and_changed(self):
        self.put_access_point()
        program = self.run_on_wifi_page()
        self.assertEqual(
            [program.text(label) for label in ("SSID", "Password", "IP Address", "Subnet Mask")],
            ["ZOR", "secret 88", "10.42.0.1", "255.255.255.0"])
        self.assertEqual(program.channel(), "6")
        self.assertEqual(program.size(), (525, 500))
        program.choose_channel(11)
        program.fill("Subnet Mask", "255.255.0.0")
        program.button("Save And Exit")
        self.assert_ended(
            program, self.start + said.wifi_mode_check("ap", "ap")
            + said.access_point_saved("10.42.0.1", "255.255.0.0", "secret 88"),
            calls=[["finalize_wifi", "Hotspot"]])
        self.assert_keyfile(self.keyfile, access_point(
            channel=11, address1="10.42.0.1/16,10.42.0.1"))

    def test_list_of_channels_stays_in_the_window_and_scrolls(self):
        self.put_access_point()
        for screen in ((800, 480), (800, 600), (1024, 768)):
            with self.subTest(screen=screen):
                self.desktop = self.enterContext(Desktop(screen))
                program = self.run_on_wifi_page()
                program.click("combo box", None)
                wait_until(lambda: program.look().find("list item"), "the list to open")
                (_, (_, _, width, height)), (_, (left, top, *size)) = self.desktop.windows()
                right, bottom = left + size[0], top + size[1]
                self.assertTrue(0 <= left and right <= width and 0 <= top and bottom <= height,
                                self.desktop.windows())
                last_row = (left + right) // 2, bottom - 24
                self.desktop.scroll_down(*last_row, steps=20)
                program.look()  # until it is at rest
                self.desktop.click(*last_row)
                wait_until(lambda: program.channel() == "11", "channel 11")

    def test_disabled_mode_removes_the_keyfile(self):
        program = self.run_on_wifi_page()
        program.pick("Disabled")
        program.button("Save And Exit")
        self.assert_ended(
            program, self.start + said.PICK_WIFI_MODE
            # Reset once by the save and once by the removal.
            + "Resetting Wifi Credentials\n"
            f"Removing existing Wi-Fi settings file at {self.keyfile}\n"
            "Resetting Wifi Credentials\n", calls=[["finalize_wifi"]])
        self.assertEqual(os.listdir(self.connections), ["ethernet.nmconnection"])

    def test_dialog_names_every_bad_field_and_the_window_stays(self):
        self.put_access_point()
        program = self.run_on_wifi_page()
        program.fill("Password", "short")
        program.fill("IP Address", "10.42.0")
        program.fill("Subnet Mask", "255.0.255.0")
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts(), [
            "You entered invalid Wifi Credentials",
            "Invalid IP Address, Subnet Mask, " + PASSWORD_FIELD])
        self.assertIn("modal", program.dialog().states)
        program.button("OK")
        self.assertIsNone(program.dialog())
        self.assertEqual(program.text("Password"), "short")
        self.assert_keyfile(self.keyfile, access_point())

        program.fill("Password", "seven 77")
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts()[1], "Invalid IP Address, Subnet Mask")
        program.button("OK")
        program.fill("IP Address", "10.42.0.9")
        program.fill("Subnet Mask", "255.255.255.0")
        program.button("Save And Exit")
        error = "Invalid format for IP Address or Subnet Mask, or invalid wifi mode\n"
        self.assert_ended(
            program, self.start + said.wifi_mode_check("ap", "ap")
            + said.wifi_entries("10.42.0", "255.0.255.0", "short")
            + said.address_check("10.42.0", False)
            + said.wifi_mode_check("ap", "ap")
            + said.wifi_entries("10.42.0", "255.0.255.0", "seven 77")
            + said.address_check("10.42.0", False)
            + said.wifi_mode_check("ap", "ap")
            + said.access_point_saved("10.42.0.9", "255.255.255.0", "seven 77"),
            2 * error, [["finalize_wifi", "Hotspot"]])
        self.assert_keyfile(self.keyfile, access_point(
            address1="10.42.0.9/24,10.42.0.1", psk="seven 77"))


program_case.main()
