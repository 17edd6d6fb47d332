# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The program under test, its window as a person sees and uses it."""
import time

from dbus import DBusException

from tests.support.accessible import Reader
from tests.support.limit import wait_until
from tests.support.png import write_png
from tests.support.process import Process

TITLE = "ZOR Network Manager"


class Program(Process):
    """A run of the program whose window is looked at and used.

    scale: how many pixels of the screen are one of the program's.
    """

    def __init__(self, desktop, command, environment=None, scale=1, **options):
        super().__init__(desktop, command, {"GDK_SCALE": str(scale), **(environment or {})},
                         **options)
        self.scale = scale
        self._reader = Reader(desktop.bus)

    # Looking.

    def _owner(self):
        assert self.process.poll() is None, f"the program ended:\n{self.errors}"
        return self.desktop.bus.application(self.process.pid)

    def _take_input(self):
        """Waits until the program has a window, and has taken all input; returns its reference."""
        reference = wait_until(self._owner, "the program to register")
        wait_until(lambda: self.process.poll() is not None or self.desktop.windows(), "a window")
        for window, _ in self.desktop.windows():
            self.desktop.ping(window)
        return reference

    def look(self):
        """All that shows: a tree of nodes, once what was done has had all its effects."""
        reference = self._take_input()
        last = ""

        def at_rest():
            nonlocal last
            assert self.process.poll() is None, f"the program ended:\n{self.errors}"
            try:
                tree = self._reader.tree(reference)
            except (DBusException, KeyError):  # something went or came while we looked
                return None
            before, last = last, tree.dump()
            laid_out = sorted(child.box[2:] for child in tree.children)
            shown = sorted(self._size_of(box) for window, box in self.desktop.windows()
                           if not window.get_attributes().override_redirect)
            return tree if before == last and laid_out == shown else None

        try:
            return wait_until(at_rest, "the window to come to rest", interval=0.025)
        except TimeoutError as error:
            raise TimeoutError(f"{error}\n{last}\n{self.desktop.windows()}") from None

    def _size_of(self, box):
        """The size of a place on the screen in the program's pixels."""
        return box[2] // self.scale, box[3] // self.scale

    def window(self):
        """The main window's node."""
        return self.look().find("window", TITLE)

    def dialog(self):
        """The node of the dialog that shows, or None."""
        return self.look().find("dialog")

    def dialog_texts(self):
        """The primary and the secondary text of the dialog."""
        return [label.text for label in self.dialog().all("label")[:2]]

    def text(self, label):
        """The text in the entry beside a label."""
        return self._named("text box", label)[1].text

    def is_checked(self, label):
        """Whether a check or radio button is on."""
        return "checked" in self._named(self._kind_of_check(label), label)[1].states

    def page(self):
        """The label of the page that shows."""
        tabs = self.window().all("tab")
        return next(tab.label() for tab in tabs if "selected" in tab.states)

    def shows(self, role, label):
        """Whether there is such a thing to be seen."""
        return self.look().find(role, label) is not None

    def size(self):
        """Width and height of the main window."""
        return self.window().box[2:]

    def _named(self, role, label):
        """The topmost window that holds such a thing, and the thing."""
        tree = self.look()
        for top in reversed(tree.children):
            node = top.find(role, label)
            if node:
                return top, node
        raise AssertionError(f"no {role} {label!r} in\n{tree.dump()}")

    def _kind_of_check(self, label):
        return "radio" if self.look().find("radio", label) else "checkbox"

    def focused(self):
        """Role and name of what has the keyboard's focus, as a screen reader would tell."""
        self._take_input()
        self.desktop.give_keyboard_to_topmost()  # GTK 4.18 tells of the window that has it
        reference = self._take_input()
        try:
            return self._reader.focused(reference)
        except (DBusException, KeyError):  # something went or came while we looked
            return self.focused()

    # Acting, with the keyboard alone.

    def focus(self, role, name):
        """Presses Tab until the focus is there; fails when it has come round."""
        seen = []
        while (place := self.focused()) != (role, name):
            assert place not in seen, f"no {role} {name!r} among {seen}"
            seen.append(place)
            self.desktop.press("Tab")

    def focus_and_press(self, role, name, *keys):
        """Goes to something, and presses keys together there."""
        self.focus(role, name)
        self.desktop.press(*keys)

    def focus_and_type(self, name, text):
        """Goes to an entry, and types a text in place of what it holds."""
        self.focus_and_press("text box", name, "Control_L", "a")
        self.desktop.press("BackSpace")
        self.desktop.type(text)
        wait_until(lambda: self.text(name) == text, f"{text!r} in {name!r}")

    # Acting, with the pointer and the keyboard.

    def frame_of(self, top):
        """The X window and the place on the screen of a top-level node."""
        for window, box in self.desktop.windows():
            if self._size_of(box) == top.box[2:]:
                return window, box
        raise AssertionError(f"no X window for {top.dump()}")

    def click(self, role, label):
        """Clicks in the middle of what bears a label."""
        top, node = self._named(role, label)
        _, (left, above, width, height) = self.frame_of(top)
        x, y = (self.scale * (node.box[i] + node.box[i + 2] // 2) for i in (0, 1))
        assert 0 < x < width and 0 < y < height, f"{label!r} is out of reach:\n{top.dump()}"
        self.desktop.click(left + x, above + y)

    def button(self, label):
        self.click("button", label)

    def pick(self, label):
        """Clicks a check or radio button."""
        self.click(self._kind_of_check(label), label)

    def show_page(self, label):
        self.click("tab", label)
        wait_until(lambda: self.page() == label, f"page {label}")

    def select_tab(self, number):
        """Has a page shown as assistive technology does: neither a key nor the pointer."""
        self._reader.select(self._take_input(), "tab list", number)

    def fill(self, label, text):
        """Types a text in place of what the entry beside a label holds."""
        self.click("text box", label)
        self.desktop.press("Control_L", "a")
        self.desktop.press("BackSpace")
        self.desktop.type(text)
        wait_until(lambda: self.text(label) == text, f"{text!r} in {label!r}")
        self.desktop.last_key = time.monotonic()  # a slow program may have taken them only now

    def choose_channel(self, position):
        """Opens the list of channels and takes a place of it, counted from 0."""
        self.click("combo box", None)
        wait_until(lambda: self.look().find("list item"), "the list to open")
        self.desktop.press("Home")
        for _ in range(position):
            self.desktop.press("Down")
        self.desktop.press("Return")
        wait_until(lambda: not self.look().find("list item"), "the list to close")

    def channel(self):
        """The chosen channel as it is shown."""
        labels = self._named("combo box", None)[1].all("label")
        return labels[-1].text  # the ones before stand for states that do not show

    def close(self):
        """Presses the close button that a window manager would show."""
        self.desktop.close_window(self.frame_of(self.window())[0])

    def screenshot(self, path, whole_screen=False):
        """Saves a picture (PNG) of the window, or of the dialog if there is one."""
        self.desktop.park_pointer()
        # For three seconds after a key the toolkit shows where the focus is.
        time.sleep(max(0, self.desktop.last_key + 4 - time.monotonic()))
        tree = self.look()
        _, box = self.frame_of(tree.find("dialog") or tree.find("window", TITLE))
        if whole_screen:
            box = (0, 0, *self.desktop.screen)
        last, same = None, 0

        def steady():
            nonlocal last, same
            # A program that has no time draws nothing either: it has to answer between two looks.
            self._take_input()
            before, last = last, self.desktop.picture(box)
            same = same + 1 if before == last else 0
            return same == 3

        wait_until(steady, "the picture to come to rest", interval=0.1)
        write_png(path, box[2], box[3], last)
