# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Saving on the Ethernet page with real key and pointer events, and its validation dialog."""
import os

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.desktop import wait_until
from tests.support.files import read

ENTRIES = ("192.168.1.10", "255.255.255.0", "192.168.1.1", "8.8.8.8")

# On the default keyfile: new keys stand at the end of their section, after its empty line.
STATIC_KEYFILE = """[connection]
id=ethernet
type=ethernet
autoconnect-priority=-999
interface-name=eth0

autoconnect=true
[ethernet]

[ipv4]
method=manual

address1={address}
dns={dns}
[ipv6]
addr-gen-mode=stable-privacy
method=auto

[proxy]
"""
DYNAMIC_KEYFILE = """[connection]
id=ethernet
type=ethernet
autoconnect-priority=-999
interface-name=eth0

autoconnect=true
[ethernet]

[ipv4]
method=auto

[ipv6]
addr-gen-mode=stable-privacy
method=auto

[proxy]
"""
DEFAULT_KEYFILE = """[connection]
id=new_ethernet_connection
type=ethernet
autoconnect-priority=-999
interface-name=eth0

[ethernet]

[ipv4]
method=auto

[ipv6]
addr-gen-mode=stable-privacy
method=auto

[proxy]"""
STORED = "192.168.1.10/24,192.168.1.1"
CALLED = [["finalize_ethernet", "ethernet"]]


class EthernetPage(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.keyfile = self.path("ethernet.nmconnection")

    def put_static(self, address=STORED, dns="8.8.8.8"):
        self.put("ethernet.nmconnection", STATIC_KEYFILE.format(address=address, dns=dns))

    def type_entries(self, program, *texts):
        labels = ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server")
        for label, text in zip(labels, texts):
            program.fill(label, text)

    def entries(self, program):
        return tuple(program.text(label) for label in
                     ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server"))

    def assert_update_record(self, text):
        self.assertEqual(read(program_case.UPDATE_RECORD).decode(), text)

    def test_static_address_on_a_dynamic_keyfile(self):
        program = self.run_debug()
        program.pick("Static IP")
        self.type_entries(program, *ENTRIES)
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections) + said.PICK_STATIC
            + said.ethernet_mode_check("auto", "manual", self.keyfile)
            + said.valid_ethernet_entries(*ENTRIES) + said.RECORD_WRITTEN, calls=CALLED)
        self.assert_keyfile(self.keyfile, STATIC_KEYFILE.format(address=STORED, dns="8.8.8.8"))
        self.assert_update_record("00 C0 A8 01 0A FF FF FF 00 C0 A8 01 01 ")

    def test_static_address_changed(self):
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
        self.assert_keyfile(self.keyfile,
                            STATIC_KEYFILE.format(address="10.20.30.40/16,10.20.0.1", dns=""))
        self.assert_update_record("00 0A 14 1E 28 FF FF 00 00 0A 14 00 01 ")

    def test_dynamic_address_on_a_static_keyfile(self):
        self.put_static()
        program = self.run_debug()
        program.pick("Dynamic IP")
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections, page=said.static_page(STORED)) + said.PICK_DYNAMIC
            + said.ethernet_mode_check("manual", "auto", self.keyfile) + said.RECORD_WRITTEN,
            calls=CALLED)
        self.assert_keyfile(self.keyfile, DYNAMIC_KEYFILE)
        self.assert_update_record("01 " + 12 * "00 ")

    def test_dynamic_address_unchanged(self):
        program = self.run_debug()
        program.button("Save And Exit")
        self.assert_ended(program, said.start(self.connections)
                          + said.ethernet_mode_check("auto", "auto") + said.RECORD_WRITTEN,
                          calls=CALLED)
        self.assert_samples_untouched()
        self.assert_update_record("01 " + 12 * "00 ")

    def test_keyfile_of_another_name(self):
        os.rename(self.keyfile, self.path("b.txt"))
        program = self.run_debug()
        program.pick("Static IP")
        self.type_entries(program, *ENTRIES)
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        self.assertFalse(os.path.exists(self.path("b.txt")))
        self.assert_keyfile(self.keyfile, STATIC_KEYFILE.format(address=STORED, dns="8.8.8.8"))

    def test_dialog_names_every_bad_field_and_the_window_stays(self):
        self.put_static()
        before = read(self.keyfile)
        program = self.run_debug()
        bad = ("192.168.1", "255.0.255.0", "", "dns")
        self.type_entries(program, *bad)
        program.button("Save And Exit")
        self.assertEqual(program.dialog_texts(), [
            "You entered invalid Ethernet Credentials",
            "Invalid IP Address, Subnet Mask, Gateway, DNS Server"])
        self.assertIn("modal", program.dialog().states)
        self.assertEqual(read(self.keyfile), before)

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
        self.assert_keyfile(self.keyfile, STATIC_KEYFILE.format(address=STORED, dns="8.8.8.8"))

    def test_dialog_once_more_after_a_close_button(self):
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

    def test_dialog_is_answered_by_the_keyboard(self):
        self.put_static()
        program = self.run_debug()
        for key in ("Return", "Escape"):
            program.fill("DNS Server", "x")
            program.button("Save And Exit")
            self.assertEqual(program.dialog_texts()[1], "Invalid DNS Server")
            self.desktop.press(key)
            # The toolkit shows a button that is pressed by a key for a moment.
            wait_until(lambda: program.dialog() is None, f"{key} to close the dialog")
        program.close()
        self.assertEqual(program.finish(), 0)

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
        self.assert_keyfile(self.keyfile, DEFAULT_KEYFILE)
        self.assertFalse(os.path.exists(program_case.UPDATE_RECORD))

    def test_blanks_around_an_address(self):
        self.put_static()
        program = self.run_debug()
        program.fill("IP Address", " 10.0.0.7 ")
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        self.assert_keyfile(self.keyfile, STATIC_KEYFILE.format(
            address=" 10.0.0.7 /24,192.168.1.1", dns="8.8.8.8"))
        self.assert_update_record("00 0A 00 00 07 FF FF FF 00 C0 A8 01 01 ")

    def test_update_record_that_cannot_be_written(self):
        os.mkdir(program_case.UPDATE_RECORD)
        self.addCleanup(os.rmdir, program_case.UPDATE_RECORD)
        program = self.run_debug()
        program.button("Save And Exit")
        self.assert_ended(program, said.start(self.connections)
                          + said.ethernet_mode_check("auto", "auto"),
                          "Error: Unable to create the file.\n", CALLED)

    def test_default_keyfile_that_cannot_be_created(self):
        os.remove(self.keyfile)
        os.mkdir(self.keyfile)
        program = self.run_debug()
        program.button("Save And Exit")
        self.assert_ended(
            program,
            said.start(self.connections, ethernet="", page=said.dynamic_page(None))
            + said.ethernet_mode_check("", "auto") + said.RECORD_WRITTEN,
            "No ethernet connection file found; defaulting mode to dynamic (auto).\n"
            f"Failed to create new Wi-Fi connection file at: {self.keyfile}\n",
            [["finalize_ethernet"]])


program_case.main()
