# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A private virtual desktop: an X server, a session bus with accessibility, a pointer, a keyboard.

No window manager: the program's windows are placed at the corner and keep the sizes they ask for.
"""
import os
import select
import shutil
import subprocess
import tempfile
import time

from Xlib import X, XK, display
from Xlib.ext import xtest
from Xlib.protocol import event

from tests.support import bus
from tests.support.limit import LIMIT

SCREEN = (1024, 768)

def missing_tools():
    """What this machine lacks for a virtual desktop, as text; empty if nothing."""
    tools = [name for name in ("Xvfb", "dbus-daemon", "setpriv") if not shutil.which(name)]
    if not os.path.exists(bus.ACCESSIBILITY_SERVICE):
        tools.append("at-spi2-core")
    return ", ".join(tools)


def bound_to_us(*command):
    """The command, set to die with this process, however this one ends."""
    return [shutil.which("setpriv"), "--pdeathsig", "KILL", "--", *command]


class Desktop:
    """Everything is started by `with Desktop() as desktop` and gone after it."""

    def __init__(self, screen=SCREEN):
        self.screen = screen
        self.last_key = 0  # when a key was pressed, by the monotonic clock
        self.folder = tempfile.mkdtemp(prefix="zor-desktop-")
        self._processes = []
        self._display = None
        self._next_client = 0

    def __enter__(self):
        try:
            self.environment = self._base_environment()
            self._log = open(os.path.join(self.folder, "log"), "wb")
            self._start_x_server()
            self._start_bus()
        except BaseException:
            self.stop()
            raise
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """Ends the servers and removes all their files."""
        if self._display:
            self._display.close()
        for process in reversed(self._processes):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._processes.clear()
        shutil.rmtree(self.folder, ignore_errors=True)

    def _base_environment(self):
        environment = {name: value for name, value in os.environ.items()
                       if name in ("PATH", "TMPDIR", "UBSAN_OPTIONS")}
        home = os.path.join(self.folder, "home")
        runtime = os.path.join(self.folder, "runtime")
        os.mkdir(home)
        os.mkdir(runtime, 0o700)
        environment.update(HOME=home, XDG_CACHE_HOME=home, XDG_RUNTIME_DIR=runtime,
                           LANG="C.UTF-8", GDK_BACKEND="x11", GSETTINGS_BACKEND="memory",
                           # The toolkit keeps memory to its end: no news about the program.
                           ASAN_OPTIONS="detect_leaks=0:" + os.environ.get("ASAN_OPTIONS", ""))
        return environment

    def _start(self, *command, **options):
        process = subprocess.Popen(bound_to_us(*command), stdin=subprocess.DEVNULL,
                                   stderr=self._log, env=self.environment, **options)
        self._processes.append(process)
        return process

    def _read_announcement(self, handle, what):
        """A server's first line: where it is to be reached."""
        line = b""
        while not line.endswith(b"\n"):
            if not select.select([handle], [], [], LIMIT)[0]:
                raise TimeoutError(f"{what} does not start")
            piece = os.read(handle, 1)
            if not piece:
                raise RuntimeError(f"{what} ended: see its messages:\n" + self._messages())
            line += piece
        return line.decode().strip()

    def _messages(self):
        with open(self._log.name, encoding="utf-8", errors="replace") as file:
            return file.read()

    def _start_x_server(self):
        reader, writer = os.pipe()
        self._start("Xvfb", "-displayfd", str(writer), "-screen", "0",
                    "{}x{}x24".format(*self.screen), "-nolisten", "tcp", "-noreset",
                    stdout=self._log, pass_fds=[writer])
        os.close(writer)
        name = ":" + self._read_announcement(reader, "the X server")
        os.close(reader)
        self.environment["DISPLAY"] = name
        self._display = display.Display(name)
        self._root = self._display.screen().root
        # The answers to pings go to the root window.
        self._root.change_attributes(event_mask=X.SubstructureNotifyMask, background_pixel=0xffffff)
        self._root.clear_area()

    def _start_bus(self):
        process = self._start("dbus-daemon", "--nofork", "--print-address",
                              "--config-file", bus.configure(os.path.join(self.folder, "bus")),
                              stdout=subprocess.PIPE)
        address = self._read_announcement(process.stdout.fileno(), "the session bus")
        process.stdout.close()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.bus = bus.Bus(address)

    # Windows, pointer and keyboard.

    def windows(self):
        """The mapped top-level windows, oldest first, with place and size."""
        found = []
        for window in self._root.query_tree().children:
            try:
                if window.get_attributes().map_state != X.IsViewable:
                    continue
                box = window.get_geometry()
                if window.get_wm_class():
                    found.append((window, (box.x, box.y, box.width, box.height)))
            except Exception as error:
                if type(error).__name__ not in ("BadWindow", "BadDrawable"):
                    raise  # else it went while we looked
        return found

    def _protocol_message(self, window, name, *data):
        data = [self._display.get_atom(name), X.CurrentTime, *data]
        message = event.ClientMessage(window=window,
                                      client_type=self._display.get_atom("WM_PROTOCOLS"),
                                      data=(32, data + [0] * (5 - len(data))))
        window.send_event(message)
        self._display.flush()

    def give_keyboard_to_topmost(self):
        """What a window manager does when a window is mapped, and when the one above it went."""
        windows = [window for window, _ in self.windows()
                   if not window.get_attributes().override_redirect]
        if windows and self._display.get_input_focus().focus != windows[-1]:
            windows[-1].set_input_focus(X.RevertToPointerRoot, X.CurrentTime)

    def close_window(self, window):
        """What a window manager sends when its close button is pressed."""
        self._protocol_message(window, "WM_DELETE_WINDOW")

    def ping(self, window, limit=LIMIT):
        """Waits until the program has taken all earlier input. False if the window went."""
        self._protocol_message(window, "_NET_WM_PING", window.id)
        end = time.monotonic() + limit
        while time.monotonic() < end:
            while self._display.pending_events():
                answer = self._display.next_event()
                if answer.type == X.ClientMessage and answer.data[1][2] == window.id:
                    return True
                if answer.type in (X.DestroyNotify, X.UnmapNotify) and answer.window == window:
                    return False
            if (not select.select([self._display], [], [], 0.02)[0]
                    and window.id not in [known.id for known, _ in self.windows()]):
                return False
        raise TimeoutError("the program does not answer")

    def click(self, x, y):
        """A click with the first button."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self._display, X.ButtonPress, 1)
        xtest.fake_input(self._display, X.ButtonRelease, 1)
        self._display.sync()

    def scroll_down(self, x, y, steps):
        """Turns the wheel."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        for _ in range(steps):
            xtest.fake_input(self._display, X.ButtonPress, 5)
            xtest.fake_input(self._display, X.ButtonRelease, 5)
        self._display.sync()

    def park_pointer(self):
        """Moves the pointer away, so that nothing is drawn as pointed at."""
        width, height = self.screen
        xtest.fake_input(self._display, X.MotionNotify, x=width - 1, y=height - 1)
        self._display.sync()

    def press(self, *names):
        """Presses the named keys together: press("Control_L", "a")."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(name)) for name in names]
        assert 0 not in codes, names
        for code in codes:
            xtest.fake_input(self._display, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()
        self.last_key = time.monotonic()

    def type(self, text):
        """Types any text; what has no key goes in by its code point."""
        for character in text:
            symbol = ord(character)
            places = self._display.keysym_to_keycodes(symbol) if 32 <= symbol < 127 else ()
            for code, level in places:
                if level <= 1:
                    self._stroke(code, shifted=level == 1)
                    break
            else:
                self.press("Control_L", "Shift_L", "u")
                for digit in f"{symbol:x}":
                    self.press(digit)
                self.press("space")

    def _stroke(self, code, shifted):
        shift = self._display.keysym_to_keycode(XK.XK_Shift_L)
        if shifted:
            xtest.fake_input(self._display, X.KeyPress, shift)
        xtest.fake_input(self._display, X.KeyPress, code)
        xtest.fake_input(self._display, X.KeyRelease, code)
        if shifted:
            xtest.fake_input(self._display, X.KeyRelease, shift)
        self._display.sync()
        self.last_key = time.monotonic()

    def picture(self, box):
        """The pixels of a part of the screen, four bytes each (blue, green, red, unused)."""
        x, y, width, height = box
        return self._root.get_image(x, y, width, height, X.ZPixmap, 0xffffffff).data
