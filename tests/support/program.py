# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The program under test: its process and streams, and its window as a person sees and uses it."""
import os
import pty
import struct
import subprocess
import threading
import time
import tty
import zlib

from gi.repository import GLib

from tests.support.desktop import LIMIT, bound_to_us, wait_until

TITLE = "ZOR Network Manager"
APPLICATION_ID = "org.gtkmm.example"
_ACCESSIBLE = "org.a11y.atspi.Accessible"
_WINDOW_COORDINATES = 1  # asking for the screen's makes the toolkit print a warning
_STATES = {4: "checked", 7: "editable", 11: "focusable", 12: "focused", 16: "modal",
           23: "selected", 24: "sensitive", 30: "visible", 43: "read-only"}


class Node:
    """One accessible object at the moment of a look: kind, label, states, place, text."""

    def __init__(self, role, name, description, states, box, text):
        self.role = role
        self.name = name
        self.description = description
        self.states = states
        self.box = box
        self.text = text
        self.children = []

    def walk(self):
        """This object and all below it."""
        yield self
        for child in self.children:
            yield from child.walk()

    def all(self, role):
        """All objects of a role, in the order of the tree."""
        return [node for node in self.walk() if node.role == role]

    def find(self, role, label=None):
        """The first object of a role, with a label if one is given, or None."""
        for node in self.all(role):
            if label is None or label in (node.name, node.label()):
                return node
        return None

    def label(self):
        """The text that is shown on it."""
        return next((node.text for node in self.walk() if node.role == "label"), None)

    def dump(self, depth=0):
        """The whole tree as text: looks are compared by it, and failures explained."""
        line = (f"{'  ' * depth}{self.role} {self.name!r} {sorted(self.states)} {self.box} "
                f"{self.text!r}\n")
        return line + "".join(child.dump(depth + 1) for child in self.children)


class _Stream:
    """Collects all that comes through a descriptor until its last writer is gone."""

    def __init__(self, descriptor):
        self.content = b""
        self._descriptor = descriptor
        self._thread = threading.Thread(target=self._collect, daemon=True)
        self._thread.start()

    def _collect(self):
        while True:
            try:
                piece = os.read(self._descriptor, 65536)
            except OSError:  # a terminal whose other side is gone
                break
            if not piece:
                break
            self.content += piece
        os.close(self._descriptor)

    def join(self):
        """Waits for the end, that is for the program and for all that it has started."""
        self._thread.join(LIMIT)
        if self._thread.is_alive():
            raise TimeoutError("a stream stays open after the program's end")


class Program:
    """A run of the program. `with Program(...)` makes sure that it ends.

    stdout: "pipe", "terminal", or a descriptor to hand over. wrapper: a command in front.
    scale: how many pixels of the screen are one of the program's.
    """

    def __init__(self, desktop, command, environment=None, stdout="pipe", wrapper=(), cwd=None,
                 scale=1):
        self.desktop = desktop
        self.scale = scale
        self._streams = {}
        self._fixed = {}  # what never changes of an accessible object
        handle, opened = stdout, []
        if stdout == "pipe":
            reader, handle = os.pipe()
            opened.append(handle)
        elif stdout == "terminal":
            reader, handle = pty.openpty()
            tty.setraw(handle)  # else each line feed gets a carriage return
            opened.append(handle)
        if opened:
            self._streams["out"] = _Stream(reader)
        reader, errors = os.pipe()
        opened.append(errors)
        self._streams["err"] = _Stream(reader)
        command = bound_to_us(*command)
        if wrapper:
            command = bound_to_us(*wrapper, *command)
        self.process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=handle, stderr=errors,
            env={**desktop.environment, "GDK_SCALE": str(scale), **(environment or {})}, cwd=cwd)
        for descriptor in opened:
            os.close(descriptor)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._wait_until_gone()
        wait_until(lambda: not self.desktop.windows(), "the windows to go")

    def _wait_until_gone(self):
        # The next run is taken for a second instance while this one is still known on the bus.
        wait_until(lambda: self.desktop.owner(APPLICATION_ID) != self.process.pid,
                   "the bus to take notice")

    # The process.

    @property
    def output(self):
        """What came on standard output, byte for byte; bytes that are no UTF-8 as escapes."""
        return self._streams["out"].content.decode("utf-8", "surrogateescape")

    @property
    def errors(self):
        """The same for standard error."""
        return self._streams["err"].content.decode("utf-8", "surrogateescape")

    def wait_for_output(self, text):
        """Waits until a text stands on standard output."""
        wait_until(lambda: text in self.output or self.process.poll() is not None,
                   f"{text!r} on standard output")
        assert text in self.output, f"ended without {text!r}:\n{self.output}{self.errors}"

    def finish(self):
        """Waits for the end of the program and of what it started; returns its exit status."""
        status = self.process.wait(LIMIT)
        self._wait_until_gone()
        for stream in self._streams.values():
            stream.join()
        return status

    # Looking.

    def _owner(self):
        assert self.process.poll() is None, f"the program ended:\n{self.errors}"
        return self.desktop.application(self.process.pid)

    def _below(self, reference):
        """The references of an accessible object and of all below it, each with its children's."""
        found, level = {}, [reference]
        while level:
            answers = self.desktop.ask(level, _ACCESSIBLE, "GetChildren")
            found.update(zip(level, (children for (children,) in answers)))
            level = [child for parent in level for child in found[parent]]
        return found

    def _states(self, references):
        for (bits,) in self.desktop.ask(references, _ACCESSIBLE, "GetState"):
            yield {name for bit, name in _STATES.items()
                   if bits and bits[bit // 32] >> bit % 32 & 1}

    def _names(self, references):
        """Name and description."""
        for (known,) in self.desktop.ask(references, "org.freedesktop.DBus.Properties", "GetAll",
                                         GLib.Variant("(s)", (_ACCESSIBLE,))):
            yield known["Name"], known["Description"]

    def _fix(self, references):
        """Gets to know what never changes: role and interfaces."""
        new = [reference for reference in references if reference not in self._fixed]
        for reference, (role,), (interfaces,) in zip(
                new, self.desktop.ask(new, _ACCESSIBLE, "GetRoleName"),
                self.desktop.ask(new, _ACCESSIBLE, "GetInterfaces")):
            self._fixed[reference] = role, {name.rpartition(".")[2] for name in interfaces}

    def _ask_those_with(self, interface, references, method, *arguments):
        """Asks the objects that have an interface."""
        able = [reference for reference in references if interface in self._fixed[reference][1]]
        return dict(zip(able, self.desktop.ask(able, "org.a11y.atspi." + interface, method,
                                               GLib.Variant(*arguments))))

    def _look_at(self, root):
        children = self._below(root)
        references = list(children)
        self._fix(references)
        boxes = self._ask_those_with("Component", references, "GetExtents",
                                     "(u)", (_WINDOW_COORDINATES,))
        texts = self._ask_those_with("Text", references, "GetText", "(ii)", (0, 1 << 20))
        nodes = {
            reference: Node(self._fixed[reference][0], *names, states,
                            *boxes.get(reference, [None]), *texts.get(reference, [None]))
            for reference, names, states in zip(references, self._names(references),
                                                self._states(references))}
        for reference in reversed(references):  # from below
            nodes[reference].children = [nodes[child] for child in children[reference]]
            self._drop_hidden_pages(nodes[reference])
        return nodes[root]

    @staticmethod
    def _drop_hidden_pages(node):
        """A notebook's pages are all in the tree; only the one of the selected tab shows."""
        if len(node.children) != 2:
            return
        if "tab list" not in [child.role for child in node.children[0].children]:
            return
        tabs = node.children[0].all("tab")
        pages = node.children[1]
        pages.children = [page for tab, page in zip(tabs, pages.children)
                          if "selected" in tab.states]

    def _take_input(self):
        """Waits until the program has taken all input."""
        for window, _ in self.desktop.windows():
            self.desktop.ping(window)

    def look(self):
        """All that shows: a tree of nodes, once what was done has had all its effects."""
        reference = wait_until(self._owner, "the program to register")
        wait_until(lambda: self.process.poll() is not None or self.desktop.windows(), "a window")
        self._take_input()
        last = ""

        def at_rest():
            nonlocal last
            assert self.process.poll() is None, f"the program ended:\n{self.errors}"
            try:
                tree = self._look_at(reference)
            except GLib.Error:  # something went while we looked
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
        root = wait_until(self._owner, "the program to register")
        self._take_input()
        ((windows,),) = self.desktop.ask([root], _ACCESSIBLE, "GetChildren")
        for window in reversed(windows):
            references = list(self._below(window))
            found = [reference for reference, states in zip(references, self._states(references))
                     if "focused" in states]
            if found:
                reference = found[-1]  # a list's row, and not the button that opened it
                self._fix([reference])
                ((name, _),) = self._names([reference])
                return self._fixed[reference][0], name
        return None

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

    def fill(self, label, text):
        """Types a text in place of what the entry beside a label holds."""
        self.click("text box", label)
        self.desktop.press("Control_L", "a")
        self.desktop.press("BackSpace")
        self.desktop.type(text)
        wait_until(lambda: self.text(label) == text, f"{text!r} in {label!r}")

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
        """Saves a picture (PNG) of the window, with the dialog in its middle if there is one."""
        self.desktop.park_pointer()
        # For three seconds after a key the toolkit shows where the focus is.
        time.sleep(max(0, self.desktop.last_key + 4 - time.monotonic()))
        tree = self.look()
        _, box = self.frame_of(tree.find("window", TITLE))
        dialog = tree.find("dialog")
        if dialog:
            frame, (_, _, width, height) = self.frame_of(dialog)
            # Without a window manager nothing else tells the dialog from the window behind it.
            frame.change_attributes(border_pixel=0x808080)
            frame.configure(border_width=1, x=max(0, (box[2] - width) // 2 - 1),
                            y=(box[3] - height) // 2)
            self.look()
            box = (0, 0, max(box[2], width + 2), box[3])
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
        _write_png(path, box[2], box[3], last)


def _write_png(path, width, height, pixels):
    """Writes pixels of blue, green, red and an unused byte as a picture file."""
    colours = bytearray(3 * width * height)
    for target, source in ((0, 2), (1, 1), (2, 0)):
        colours[target::3] = pixels[source::4]
    rows = b"".join(b"\0" + colours[row * 3 * width:(row + 1) * 3 * width]
                    for row in range(height))

    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))

    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n"
                   + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
                   + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))
