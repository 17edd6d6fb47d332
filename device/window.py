# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The settings window on a device's screen, as a person with a finger and a keyboard uses it."""
from tests.support.limit import wait_until

from .machine import LIMIT

WORKING_COPY = "/etc/NetworkManager/system-connections"

# Where things are, from the left and upper edge of the window, or up from its lower edge.
PLACES = {
    "Ethernet": (58, 28), "Wifi": (132, 28),
    "Static IP": (116, 199), "Dynamic IP": (341, 199),
    "IP Address": (322, 239), "Subnet Mask": (322, 273),
    "Default Gateway": (322, 307), "DNS Server": (322, 341),
    "Disabled": (75, 199), "Client": (241, 199), "Access Point": (376, 199),
    "SSID": (118, 240), "Password": (316, 240),
    "Access point's IP Address": (227, 289), "Access point's Subnet Mask": (227, 323),
    "Channel": (227, 357),
    "Save And Exit": (156, -23), "Exit Without Saving": (349, -23),
}

# The rows of the list of channels, which begins at its top or, when it was scrolled, ends with its
# last: the middle of one of them as seen from its button. It must not be opened at a later one.
FIRST_ROW, LAST_ROW, HEIGHT_OF_ROW, LAST_IN_SIGHT = -282, -41, 32, 7
HEIGHT_OF_TWO = 80  # buttons or entries, in rows of the screen


def is_light(colour):
    return min(colour) > 200


def frame(picture):
    """Left, top and bottom of the window; None without one. The wall behind it is black."""
    middle = picture.width // 2
    rows = [y for y in range(picture.height) if any(picture.at(middle, y))]
    if len(rows) < picture.height // 2:
        return None
    top, bottom = rows[0], rows[-1] + 1
    left = next((x for x in range(middle) if is_light(picture.at(x, top + 3))), None)
    return None if left is None else (left, top, bottom)


def has_text(picture):
    """Whether the second line of a terminal says something, with no window before it."""
    return not frame(picture) and any(
        any(picture.at(x, y)) for y in range(38, 60) for x in range(picture.width // 2))


class Window:
    """Steps in the window. Each ends when the screen shows its effect."""

    def __init__(self, machine):
        self.machine = machine

    def process(self):
        """The number of the window's process; 0 if there is none."""
        return int(self.machine.run("systemctl show -P MainPID zor-network-manager"))

    def wait(self, but_not=0):
        """Until a window stands that is another process than one before, and may save."""
        if but_not:
            self._see(lambda picture: not frame(picture), "the window to close")
        self._see(frame, "a window on the screen")
        # A window that is gone leaves the user an unlocked folder until its rollback is done.
        self.machine.wait_for(
            f"[ $(systemctl show -P MainPID zor-network-manager) != {but_not} ] && "
            f"[ $(stat -c %U {WORKING_COPY}) = zor ]", "a new window, unlocked")
        return self.machine.at_rest()

    def see_outcome(self):
        """Until the screen tells how a save has ended. Returns the picture."""
        self._see(has_text, "the outcome on the screen")
        return self.machine.look()

    def _see(self, condition, what):
        """Looks from outside, which takes nothing of the machine's time."""
        wait_until(lambda: condition(self.machine.look()), what, limit=LIMIT, interval=0.5)

    def place(self, name):
        """Where something is on the screen."""
        left, top, bottom = frame(self.machine.look())
        x, y = PLACES[name]
        return left + x, y + (top if y > 0 else bottom)

    def touch(self, name):
        """Taps on something, which shows."""
        before = self.machine.at_rest()
        self.machine.touch(self.place(name))
        return self.machine.at_rest(before, f"an effect of {name}")

    def fill(self, name, text):
        """Taps on an entry, and replaces what stands in it."""
        before = self.machine.at_rest()
        self.machine.touch(self.place(name))
        self.machine.key("ctrl", "a")
        self.machine.key("delete")
        self.machine.type(text)
        return self.machine.at_rest(before, f"{text} in {name}")

    def choose_channel(self, row):
        """Taps on a row of the list of channels; 0 is Auto, 11 the last."""
        before = self.machine.at_rest()
        x, y = self.place("Channel")
        self.machine.touch((x, y))
        # Before it opens, its button and the entry that was filled in look different.
        self._see(lambda picture: picture.rows_unlike(before) > HEIGHT_OF_TWO, "the list to open")
        opened = self.machine.at_rest()
        if row <= LAST_IN_SIGHT:
            y += FIRST_ROW + row * HEIGHT_OF_ROW
        else:
            self.machine.touch(*((x, y - 50 - way) for way in range(0, 250, 25)))
            opened = self.machine.at_rest(opened, "the list to scroll")
            y += LAST_ROW - (11 - row) * HEIGHT_OF_ROW
        opened.save(self.machine.picture_path("channels"))
        self.machine.touch((x, y))
        return self.machine.at_rest(opened, "the list to close")

    def leave(self, name="Save And Exit"):
        """Taps on one of the two buttons. Returns which process was left."""
        before = self.process()
        self.machine.touch(self.place(name))
        return before
