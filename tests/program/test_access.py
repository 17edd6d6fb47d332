# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The window for a screen reader, which goes by names, and for a person with a keyboard only."""
import re

from tests.support import program_case
from tests.support.desktop import Desktop
from tests.support.files import expected
from tests.support.limit import wait_until

STATIC = expected("ethernet-static", dns="8.8.8.8")
ACCESS_POINT = expected("access-point", ssid="ZOR", psk="secret 88",
                        address1="10.42.0.1/24,10.42.0.1")
# In the order in which Tab goes round. A group of buttons is one stop, at the chosen one.
BUTTONS = [("button", "Save And Exit"), ("button", "Exit Without Saving")]
ETHERNET_ENTRIES = [("text box", name) for name in ("IP Address", "Subnet Mask", "Default Gateway",
                                                    "DNS Server")]
CREDENTIALS = [("text box", "SSID"), ("text box", "Password"), ("checkbox", "Show Password")]
CHANNEL = "Channel (2.4 GHz)"
CHANNELS = ["Auto", *map(str, range(1, 12))]
# What the toolkit calls something that has no name: the name of its class, or that of its role.
NAME_OF_A_TYPE = re.compile(r"\b(gtkmm__)?G[td]k[A-Z]|^(Tab|Tab list|Button|Entry|Window)$")


def modes(tree):
    """The buttons of the mode's group."""
    (group,) = [node for node in tree.all("group") if node.name == "Mode"]
    return group.all("radio")


def stops(page, mode, *more):
    return [("group", page), ("text box", "Device"), ("radio", mode), *more, *BUTTONS]


class AccessCase(program_case.ProgramCase):

    def run_on(self, page, environment=None, **keyfiles):
        """Starts on keyfiles given by their name, and goes to a page by keys."""
        for name, content in keyfiles.items():
            self.put(name + ".nmconnection", content)
        program = self.run_debug(environment=environment)
        wait_until(lambda: program.focused() == ("group", "Ethernet"), "the focus")
        if page == "Wifi":
            self.desktop.press("Right")
            wait_until(lambda: program.page() == page, "the other page")
        return program

    def open_channels(self, program, row, key="space"):
        """Opens the list of channels, which begins at the row of the chosen one."""
        program.focus_and_press("button", CHANNEL, key)
        wait_until(lambda: program.focused() == ("list item", row), "the list")

    def choose_channel(self, program, channel, *keys):
        """Presses keys in the list; the last one closes it."""
        for key in keys:
            self.desktop.press(*key.split("+"))
        wait_until(lambda: program.focused() == ("button", CHANNEL), "the list to close")
        self.assertEqual(program.channel(), channel)
        self.assertEqual(program.look().find("button", CHANNEL).description, channel)


class Names(AccessCase):

    def assert_named(self, program):
        """What can have the focus has a name, which can be read on the screen."""
        tree = program.look()
        shown = {node.text for node in tree.walk() if node.role == "label"}
        for node in tree.walk():
            if "focusable" in node.states:
                self.assertTrue(node.name, tree.dump())
                self.assertNotRegex(node.name, NAME_OF_A_TYPE, tree.dump())
                self.assertIn(node.name, shown, tree.dump())
        return tree

    def assert_fields(self, tree, *names):
        """Each entry is named by the label in front of it, or above it."""
        entries = tree.all("text box")
        self.assertEqual([entry.name for entry in entries], list(names))
        for entry in entries:
            label = next(node for node in tree.all("label") if node.text == entry.name)
            self.assertTrue(label.box[0] + label.box[2] <= entry.box[0]
                            or label.box[1] + label.box[3] <= entry.box[1], tree.dump())

    def test_ethernet_page_is_named(self):
        program = self.run_on("Ethernet", ethernet=STATIC)
        tree = self.assert_named(program)
        self.assert_fields(tree, "Device", "IP Address", "Subnet Mask", "Default Gateway",
                           "DNS Server")
        self.assertEqual([tab.name for tab in tree.all("tab")], ["Ethernet", "Wifi"])
        self.assertEqual([node.name for node in modes(tree)], ["Static IP", "Dynamic IP"])

    def test_wifi_page_is_named(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        tree = self.assert_named(program)
        self.assert_fields(tree, "Device", "SSID", "Password", "IP Address", "Subnet Mask")
        self.assertEqual([node.name for node in modes(tree)],
                         ["Disabled", "Client", "Access Point"])
        self.assertEqual([node.name for node in tree.all("combo box")], [CHANNEL])

    def test_list_of_channels_is_named_and_begins_at_the_choice(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        self.assertEqual(program.look().find("button", CHANNEL).description, "6")
        self.open_channels(program, "6")
        tree = self.assert_named(program)
        # Newer toolkits (4.18) make the rows that show, and some around them.
        rows = [row.name for row in tree.all("list item")]
        first = CHANNELS.index(rows[0])
        self.assertEqual(rows, CHANNELS[first:first + len(rows)])
        self.assertIn("6", rows)
        self.choose_channel(program, "6", "Down", "Down", "Escape")
        self.open_channels(program, "6")
        self.assertEqual([row.name for row in program.look().all("list item")
                          if "selected" in row.states], ["6"])
        self.choose_channel(program, "6", "Return")

    def test_row_with_the_focus_is_taken(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        row = "6"
        for keys in (["End"], ["Home", "Tab", "Tab"], ["Control_L+End"], ["Control_L+Home", "Down"]):
            chosen = row
            self.open_channels(program, chosen, key="Return")
            for key in keys:
                self.desktop.press(*key.split("+"))
            # Which one that is after the last keys is up to the toolkit.
            _, row = wait_until(program.focused, "a row with the focus")
            self.assertNotEqual(row, chosen)
            self.choose_channel(program, row, "Return")

    def test_dialogs_are_named_and_described(self):
        for page, entry, message, fields in (
                ("Ethernet", "IP Address", "You entered invalid Ethernet Credentials",
                 "Invalid IP Address"),
                ("Wifi", "Password", "You entered invalid Wifi Credentials",
                 "Invalid Password (must at least 8 characters and contain no special characters)")):
            with self.subTest(page=page):
                program = self.run_on(page, ethernet=STATIC, wlan0=ACCESS_POINT)
                program.focus_and_type(entry, "x")
                program.focus_and_press("button", "Save And Exit", "Return")
                wait_until(program.dialog, "the dialog")
                self.assert_named(program)
                self.assertEqual(program.dialog().name, message)
                self.assertEqual(program.dialog().description, fields)
                self.assertEqual(program.dialog_texts(), [message, fields])
                self.assertEqual(program.focused(), ("button", "OK"))
                program.__exit__()


class Keyboard(AccessCase):

    def assert_round(self, program, expected):
        """Tab goes through all stops and back to the first, Shift+Tab the other way."""
        backwards = expected[:1] + expected[:0:-1]
        for keys, order in ((["Tab"], expected), (["Shift_L", "Tab"], backwards)):
            program.focus(*expected[0])
            for stop in order:
                self.assertEqual(program.focused(), stop)
                self.desktop.press(*keys)
            self.assertEqual(program.focused(), expected[0])

    def choose(self, program, mode, *keys):
        """Moves from the chosen button of the group to another one."""
        chosen = next(node for node in modes(program.look()) if "checked" in node.states)
        program.focus("radio", chosen.name)
        for key in keys:
            self.desktop.press(key)
        wait_until(lambda: program.is_checked(mode), f"{mode} to be chosen")
        self.assertEqual(program.focused(), ("radio", mode))

    def test_tab_goes_round_the_ethernet_page(self):
        program = self.run_on("Ethernet", ethernet=STATIC)
        self.assert_round(program, stops("Ethernet", "Static IP", *ETHERNET_ENTRIES))
        self.choose(program, "Dynamic IP", "Right")
        self.assert_round(program, stops("Ethernet", "Dynamic IP"))

    def test_tab_goes_round_the_wifi_page(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        self.assert_round(program, stops(
            "Wifi", "Access Point", *CREDENTIALS, ("text box", "IP Address"),
            ("text box", "Subnet Mask"), ("button", CHANNEL)))
        self.choose(program, "Client", "Left")
        self.assert_round(program, stops("Wifi", "Client", *CREDENTIALS))
        self.choose(program, "Disabled", "Left")
        self.assert_round(program, stops("Wifi", "Disabled"))

    def test_arrow_keys_do_not_show_the_password(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        show = ("checkbox", "Show Password")
        for key in ("Up", "Down", "Left", "Right", "KP_Up", "KP_Down", "KP_Left", "KP_Right"):
            program.focus_and_press(*show, key)
            self.assertFalse(program.is_checked("Show Password"), key)
        # What is read aloud of the password is up to the reader: the toolkit gives it away anyway.
        hidden = program.text("Password")
        program.focus_and_press(*show, "space")
        self.assertTrue(program.is_checked("Show Password"))
        self.assertEqual(program.text("Password"), hidden)
        program.focus_and_press(*show, "Return")
        self.assertFalse(program.is_checked("Show Password"))

    def test_keys_change_the_page(self):
        program = self.run_on("Ethernet")
        for keys, page in ((["Right"], "Wifi"), (["Left"], "Ethernet"),
                           (["Control_L", "Next"], "Wifi"), (["Control_L", "Prior"], "Ethernet")):
            self.desktop.press(*keys)
            wait_until(lambda: program.page() == page, f"page {page}")
            self.assertEqual(program.focused(), ("group", page))
        program.focus("radio", "Dynamic IP")
        self.desktop.press("Control_L", "Next")  # from within a page as well
        wait_until(lambda: program.page() == "Wifi", "page Wifi")
        self.assertEqual(program.focused(), ("group", "Wifi"))

    def test_static_address_is_saved(self):
        program = self.run_on("Ethernet")
        self.choose(program, "Static IP", "Left")
        for (_, name), text in zip(ETHERNET_ENTRIES, ("10.20.30.40", "255.255.240.0", "10.20.16.1",
                                                      "10.20.16.53")):
            program.focus_and_type(name, text)
        program.focus_and_press("button", "Save And Exit", "Return")
        self.assertEqual(program.finish(), 0)
        self.assert_keyfile(self.path("ethernet.nmconnection"), expected(
            "ethernet-static", address1="10.20.30.40/20,10.20.16.1", dns="10.20.16.53"))
        self.assertEqual(self.recorder.calls(), [["finalize_ethernet", "ethernet"]])

    def test_access_point_is_saved(self):
        program = self.run_on("Wifi")
        self.choose(program, "Access Point", "Right")
        program.focus_and_type("SSID", "Halvorik AP")
        program.focus_and_type("Password", "new_pass-1")
        program.focus_and_press("checkbox", "Show Password", "space")
        self.assertTrue(program.is_checked("Show Password"))
        program.focus_and_type("IP Address", "192.168.4.20")
        program.focus_and_type("Subnet Mask", "255.255.255.0")
        self.assertEqual(program.look().find("button", CHANNEL).description, "Auto")
        self.open_channels(program, "Auto")
        self.choose_channel(program, "7", *7 * ["Down"], "Return")
        program.focus_and_press("button", "Save And Exit", "space")
        self.assertEqual(program.finish(), 0)
        self.assert_keyfile(self.path("wlan0.nmconnection"),
                            expected("access-point", psk="new_pass-1", channel=7))
        self.assertEqual(self.recorder.calls(), [["finalize_wifi", "Hotspot"]])

    def test_list_of_channels_fits_on_a_small_panel(self):
        self.desktop = self.enterContext(Desktop((800, 480)))
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        for channel in ("6", "11"):
            self.open_channels(program, channel)
            tree = program.look()
            _, top, _, height = tree.find("list").box
            _, row_top, _, row_height = tree.find("list item", channel).box
            self.assertTrue(row_height and top <= row_top
                            and row_top + row_height <= top + height, tree.dump())
            self.choose_channel(program, "11", "End", "Return")

    def test_channel_is_chosen_where_its_button_is_off_the_screen(self):
        # The list cannot be drawn there, which the toolkit complains of; the keys work all the same,
        # but that newer ones (4.18) lose a key now and then.
        self.desktop = self.enterContext(Desktop((480, 320)))
        program = self.run_on("Wifi", environment={"G_DEBUG": ""}, wlan0=ACCESS_POINT)
        self.open_channels(program, "6")
        wait_until(lambda: program.focused() == ("list item", "7") or self.desktop.press("Down"),
                   "the next row", interval=0.3)
        self.choose_channel(program, "7", "Return")
        program.focus_and_press("button", "Save And Exit", "space")
        self.assertEqual(program.finish(), 0)
        self.assert_keyfile(self.path("wlan0.nmconnection"),
                            ACCESS_POINT.replace(b"channel=6", b"channel=7"))

    def test_mode_is_chosen_and_a_client_saved(self):
        program = self.run_on("Wifi", wlan0=ACCESS_POINT)
        self.choose(program, "Disabled", "Left", "Left")
        self.choose(program, "Client", "Right")
        program.focus_and_type("SSID", "Café 7")
        program.focus_and_press("button", "Save And Exit", "Return")
        self.assertEqual(program.finish(), 0)
        self.assert_keyfile(self.path("wlan0.nmconnection"),
                            expected("client", ssid="Café 7", psk="secret 88"))
        self.assertEqual(self.recorder.calls(), [["finalize_wifi", "ZOR"]])

    def test_focus_can_be_seen(self):
        program = self.run_on("Ethernet")
        program.focus(*BUTTONS[0])
        _, box = program.frame_of(program.window())
        before = self.desktop.picture(box)
        self.desktop.press("Tab")
        self.assertEqual(program.focused(), BUTTONS[1])
        wait_until(lambda: self.desktop.picture(box) != before, "a ring around the other button")

    def test_page_opens_at_its_tab(self):
        # Wherever the focus was, and never in an entry that only shows something.
        program = self.run_on("Ethernet")
        for role, name in (("radio", "Dynamic IP"), ("text box", "Device"),
                           ("button", "Save And Exit")):
            with self.subTest(name=name):
                program.focus(role, name)
                program.show_page("Wifi")
                self.assertEqual(program.focused(), ("group", "Wifi"))
                program.show_page("Ethernet")
                self.assertEqual(program.focused(), ("group", "Ethernet"))
        program.focus("radio", "Dynamic IP")
        program.select_tab(1)  # as a screen reader does
        self.assertEqual(program.page(), "Wifi")
        self.assertEqual(program.focused(), ("group", "Wifi"))

    def test_dialog_leaves_the_focus_in_the_first_entry_that_it_names(self):
        for page, entries, leave in (
                ("Ethernet", ["IP Address", "DNS Server"], lambda: self.desktop.press("Return")),
                ("Ethernet", ["Subnet Mask", "Default Gateway"], lambda: program.button("OK")),
                ("Ethernet", ["Default Gateway"], lambda: self.desktop.press("Escape")),
                ("Ethernet", ["DNS Server"], lambda: self.desktop.press("space")),
                ("Wifi", ["IP Address", "Subnet Mask", "Password"],
                 lambda: self.desktop.press("Return")),
                ("Wifi", ["Subnet Mask", "Password"], lambda: program.button("OK")),
                ("Wifi", ["Password"], lambda: self.desktop.press("Escape"))):
            with self.subTest(page=page, entries=entries), \
                    self.run_on(page, ethernet=STATIC, wlan0=ACCESS_POINT) as program:
                for name in entries:
                    program.focus_and_type(name, "x")
                program.focus_and_press("button", "Save And Exit", "Return")
                wait_until(program.dialog, "the dialog")
                leave()
                wait_until(lambda: not program.dialog(), "the dialog to go")
                self.assertEqual(program.focused(), ("text box", entries[0]))
                self.desktop.type("7")  # in place of what was refused
                wait_until(lambda: program.text(entries[0]) in ("7", "*"), "the entry")

    def test_dialog_is_answered_and_nothing_is_changed(self):
        for key in ("Return", "space", "Escape"):
            with self.subTest(key=key):
                program = self.run_on("Ethernet", ethernet=STATIC)
                program.focus_and_type("IP Address", "10.0.0")
                program.focus_and_press("button", "Save And Exit", "Return")
                wait_until(program.dialog, "the dialog")
                self.desktop.press(key)
                wait_until(lambda: not program.dialog(), "the dialog to go")
                self.assertEqual(program.focused(), ("text box", "IP Address"))
                self.assertEqual(program.text("IP Address"), "10.0.0")
                program.focus_and_press("button", "Exit Without Saving", "Return")
                self.assertEqual(program.finish(), 0)
                program.__exit__()
                self.assert_keyfile(self.path("ethernet.nmconnection"), STATIC)


program_case.main()
