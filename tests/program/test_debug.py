# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Debug mode as a process: start, pages and modes, every way of leaving, a second instance."""
import os

from gi.repository import Gio, GLib

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import UPDATE_RECORD


class DebugMode(program_case.ProgramCase):

    def take_name(self, name):
        """Owns a name on the session bus, and answers that what is asked of it is not known."""
        owner = Gio.DBusConnection.new_for_address_sync(
            self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.addCleanup(owner.close_sync, None)
        owner.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                        "RequestName", GLib.Variant("(su)", (name, 0)), None,
                        Gio.DBusCallFlags.NONE, -1, None)

    def test_close_button_requests_nothing(self):
        program = self.run_debug()
        program.look()
        program.close()
        self.assert_ended(program, said.start(self.connections))
        self.assert_samples_untouched()

    def test_exit_without_saving_forgets_and_requests_rollback_once(self):
        program = self.run_debug()
        program.pick("Static IP")
        program.fill("IP Address", "10.1.2.3")
        program.button("Exit Without Saving")
        self.assert_ended(program, said.start(self.connections) + said.PICK_STATIC
                          + said.CLOSED_WITHOUT_SAVING, calls=[["rollback"]])
        self.assert_samples_untouched()
        self.assertFalse(os.path.exists(UPDATE_RECORD))

    def test_toolkit_sees_no_argument(self):
        program = self.run_program("1", "--help-all", "no-such-file")
        self.assertEqual(program.page(), "Ethernet")
        program.close()
        self.assert_ended(program, said.start(self.connections))

    def test_status_of_the_run_is_that_of_the_program(self):
        # The name of the application is somebody else's, who does not behave like its window.
        self.take_name("org.gtkmm.example")
        program = self.run_program("1", environment={"G_DEBUG": ""})
        self.assertEqual(program.finish(), 1)
        self.assertEqual(program.output,  # no window is built
                         said.start(self.connections).partition("Ethernet Path: ")[0])
        self.assertEqual(self.recorder.calls(), [])

    def test_window_has_its_title_and_size(self):
        program = self.run_debug()
        window = program.window()
        self.assertEqual([tab.label() for tab in window.all("tab")], ["Ethernet", "Wifi"])
        self.assertEqual([button.label() for button in window.all("button")],
                         ["Save And Exit", "Exit Without Saving"])
        frame, box = program.frame_of(window)
        self.assertEqual(frame.get_wm_name(), "ZOR Network Manager")
        self.assertEqual(box[2:], (525, 425))
        hints = frame.get_wm_normal_hints()
        self.assertEqual((hints.min_width, hints.min_height), (hints.max_width, hints.max_height))

    def test_modes_and_pages_show_what_belongs_to_them(self):
        program = self.run_debug()
        steps = [said.start(self.connections)]
        self.assertFalse(program.shows("text box", "IP Address"))

        program.pick("Static IP")
        steps.append(said.PICK_STATIC)
        self.assertEqual(program.size(), (525, 475))
        for label in ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server"):
            self.assertEqual(program.text(label), "")

        program.show_page("Wifi")
        steps.append(said.SHOW_WIFI)
        self.assertEqual(program.size(), (525, 425))
        self.assertTrue(program.is_checked("Client"))
        self.assertEqual(program.text("SSID"), "Workshop")
        self.assertFalse(program.shows("text box", "IP Address"))

        program.pick("Access Point")
        steps.append(said.PICK_WIFI_MODE)
        self.assertEqual(program.size(), (525, 500))
        self.assertEqual(program.text("IP Address"), "")
        self.assertTrue(program.shows("label", "Below info is only for access points"))
        self.assertFalse(program.shows("label", "Enable DHCP"))  # in this mode neither
        self.assertEqual(program.channel(), "Auto")

        program.pick("Disabled")
        steps.append(said.PICK_WIFI_MODE)
        self.assertEqual(program.size(), (525, 425))
        self.assertFalse(program.shows("text box", "SSID"))
        self.assertFalse(program.shows("text box", "IP Address"))

        program.show_page("Ethernet")
        steps.append(said.SHOW_ETHERNET_STATIC)
        self.assertEqual(program.size(), (525, 475))
        program.show_page("Wifi")
        steps.append(said.SHOW_WIFI)
        self.assertFalse(program.shows("text box", "SSID"))
        program.pick("Client")
        steps.append(said.PICK_WIFI_MODE)
        self.assertTrue(program.shows("text box", "SSID"))
        program.show_page("Ethernet")
        steps.append(said.SHOW_ETHERNET_STATIC)
        program.pick("Dynamic IP")
        steps.append(said.PICK_DYNAMIC)
        self.assertFalse(program.shows("text box", "IP Address"))
        self.assertEqual(program.size(), (525, 425))
        program.close()
        self.assert_ended(program, "".join(steps))
        self.assert_samples_untouched()

    def test_folders_beside_the_working_directory_are_found(self):
        name = "Ethernet_Test_Connections"
        for place, working in ((name, "."), (f"gtkTest/{name}", "."), (name, "inner")):
            with self.subTest(place=place, working=working):
                base = os.path.join(self.folder, "base" + place.replace("/", "-") + working)
                folder = os.path.join(base, place)
                os.makedirs(os.path.dirname(folder), exist_ok=True)
                os.makedirs(os.path.join(base, working), exist_ok=True)
                self.use_samples(folder)
                # The program asks for its working directory: no "." or links in its paths.
                working = os.path.realpath(os.path.join(base, working))
                program = self.run_debug(cwd=working,
                                         environment={"ZOR_NETWORKMANAGER_DEBUG_PATH": "/none"})
                program.look()
                program.close()
                self.assert_ended(program, said.start(os.path.realpath(folder)))


program_case.main()
