# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Saving on the Ethernet page with real key and pointer events, and its validation dialog."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import UPDATE_RECORD, expected, read

ENTRIES = ("192.168.1.10", "255.255.255.0", "192.168.1.1", "8.8.8.8")

STORED = "192.168.1.10/24,192.168.1.1"
STATIC = expected("ethernet-static", dns="8.8.8.8")
CALLED = [["finalize_ethernet", "ethernet"]]


class EthernetPage(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.keyfile = self.path("ethernet.nmconnection")

    def put_static(self):
        self.put("ethernet.nmconnection", STATIC)

    def type_entries(self, program, *texts):
        labels = ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server")
        for label, text in zip(labels, texts):
            program.fill(label, text)

    def entries(self, program):
        return tuple(program.text(label) for label in
                     ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server"))

    def assert_update_record(self, text):
        self.assertEqual(read(UPDATE_RECORD).decode(), text)

    def test_static_address_replaces_a_dynamic_keyfile(self):
        program = self.run_debug()
        program.pick("Static IP")
        self.type_entries(program, *ENTRIES)
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections) + said.PICK_STATIC
            + said.ethernet_mode_check("auto", "manual", self.keyfile)
            + said.valid_ethernet_entries(*ENTRIES) + said.RECORD_WRITTEN, calls=CALLED)
        self.assert_keyfile(self.keyfile, STATIC)
        self.assert_update_record("00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ")

    def test_static_address_is_changed(self):
        self.put_static()
        program = self.run_debug()
        self.assertEqual(self.entries(program), ENTRIES)
        self.type_entries(program, "10.20.30.40", "255.255.0.0", "10.20.0.1", "")
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections, page=said.static_page(STORED))
            + said.ethernet_mode_check("manual", "manual")
            + said.valid_ethernet_entries("10.20.30.40", "255.255.0.0", "10.20.0.1", "")
            + said.RECORD_WRITTEN, calls=CALLED)
        self.assert_keyfile(self.keyfile, expected("ethernet-static", dns="",
                                                   address1="10.20.30.40/16,10.20.0.1"))
        self.assert_update_record("00 0A 14 1E 28 FF FF 00 00 0A 14 00 01 ")

    def test_dynamic_address_replaces_a_static_keyfile(self):
        self.put_static()
        program = self.run_debug()
        program.pick("Dynamic IP")
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections, page=said.static_page(STORED)) + said.PICK_DYNAMIC
            + said.ethernet_mode_check("manual", "auto", self.keyfile) + said.RECORD_WRITTEN,
            calls=CALLED)
        self.assert_keyfile(self.keyfile, expected("ethernet-dynamic"))
        self.assert_update_record("01 " + 12 * "00 ")

    def test_dynamic_address_saved_again_changes_nothing(self):
        program = self.run_debug()
        program.button("Save And Exit")
        self.assert_ended(program, said.start(self.connections)
                          + said.ethernet_mode_check("auto", "auto") + said.RECORD_WRITTEN,
                          calls=CALLED)
        self.assert_samples_untouched()
        self.assert_update_record("01 " + 12 * "00 ")

    def test_dialog_names_every_bad_field_and_the_window_stays(self):
        self.put_static()
        program = self.run_debug()
        bad = ("192.168.1", "255.0.255.0", "", "dns")
        self.type_entries(program, *bad)
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts(), [
            "You entered invalid Ethernet Credentials",
            "Invalid IP Address, Subnet Mask, Gateway, DNS Server"])
        self.assertIn("modal", program.dialog().states)
        self.assert_keyfile(self.keyfile, STATIC)

        # The window behind does not react, not even where the dialog does not cover it.
        dialog_box = program.frame_of(program.dialog())[1]
        window = program.look().find("window")
        tab = window.all("tab")[1].box
        frame, _ = program.frame_of(program.dialog())
        frame.configure(x=500, y=500)
        program.look()
        self.assertNotEqual(program.frame_of(program.dialog())[1], dialog_box)
        self.desktop.click(tab[0] + tab[2] // 2, tab[1] + tab[3] // 2)
        self.assertEqual(program.page(), "Ethernet")

        program.button("OK")
        self.assertIsNone(program.dialog())
        self.assertEqual(self.entries(program), bad)
        self.type_entries(program, *ENTRIES)
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections, page=said.static_page(STORED))
            + said.ethernet_mode_check("manual", "manual") + said.ethernet_entries(*bad)
            + said.address_check("192.168.1", False) + said.address_check("", False)
            + said.address_check("dns", False)
            + said.ethernet_mode_check("manual", "manual")
            + said.valid_ethernet_entries(*ENTRIES) + said.RECORD_WRITTEN,
            "Invalid format for IP Address or Subnet Mask\n", CALLED)
        self.assert_keyfile(self.keyfile, STATIC)

    def test_dialog_comes_again_after_its_close_button(self):
        self.put_static()
        program = self.run_debug()
        program.fill("Default Gateway", "")
        for _ in range(2):
            program.button("Save And Exit")
            self.assertEqual(program.dialog_texts()[1], "Invalid Gateway")
            self.desktop.close_window(program.frame_of(program.dialog())[0])
            self.assertIsNone(program.dialog())
        self.assertEqual(program.page(), "Ethernet")
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(self.recorder.calls(), [])

    def test_failed_save_after_a_change_of_mode_leaves_the_default_keyfile(self):
        program = self.run_debug()
        program.pick("Static IP")
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts()[1], "Invalid IP Address, Subnet Mask, Gateway")
        program.button("OK")
        program.button("Exit Without Saving")
        self.assert_ended(
            program,
            said.start(self.connections) + said.PICK_STATIC
            + said.ethernet_mode_check("auto", "manual", self.keyfile)
            + said.ethernet_entries("", "", "", "") + said.address_check("", False)
            + said.address_check("", False) + said.CLOSED_WITHOUT_SAVING,
            "Invalid format for IP Address or Subnet Mask\n", [["rollback"]])
        self.assert_keyfile(self.keyfile, expected("ethernet-default"))
        self.assertFalse(os.path.exists(UPDATE_RECORD))



program_case.main()
