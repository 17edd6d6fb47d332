# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A virtual machine with a device in it: its power, keys, pointer, screen, cable and shell."""
import json
import os
import shlex
import shutil
import socket
import subprocess
import time

from tests.support.files import SOURCES
from tests.support.limit import wait_until
from tests.support.png import write_png

RELEASE = os.environ.get("DEVICE_RELEASE", "bookworm")
WORK = os.path.join(SOURCES, "build-device" + ("" if RELEASE == "bookworm" else "-" + RELEASE))
DISK = os.path.join(WORK, "disk.img")
RUN = os.path.join(WORK, "run")
# Emulated, and beside other work: what takes a second on a device may take many here.
LIMIT = 1800
KERNEL = "root=/dev/vda rw console=ttyS0 net.ifnames=0 quiet mitigations=off"
# Letters: the keyboard has room for so many before the machine has to take them.
AT_ONCE = 6

_KEYS = {" ": "spc", ".": "dot", "-": "minus", "_": "shift-minus", ";": "semicolon",
         "#": "shift-3", '"': "shift-apostrophe", "\\": "backslash", "'": "apostrophe",
         "/": "slash", ",": "comma", "=": "equal"}


def _strokes(letter):
    """What is pressed for a letter; "-" joins what is pressed together."""
    if not letter.isascii():  # by its number, as the toolkit takes it
        return ["ctrl-shift-u", *f"{ord(letter):x}", "spc"]
    return ["shift-" + letter.lower() if letter.isupper() else _KEYS.get(letter, letter)]


def qemu(folder, disk, screen):
    """The command of a machine whose sockets are in a folder."""
    width, height = screen
    net = [argument for number in (0, 1) for argument in
           ("-netdev", f"hubport,id=end{number},hubid=0",
            "-device", f"virtio-net-pci,netdev=end{number},id=card{number},romfile=")]
    # By counted instructions the clock inside stands still while the machine does not get its turn:
    # other work here makes nothing inside run into its time limit.
    return ["qemu-system-x86_64", "-accel", "tcg", "-icount", "shift=1", "-cpu", "max",
            "-smp", "1", "-m", "1024", "-nodefaults", "-no-reboot",
            "-drive", f"file={disk},if=virtio,format=qcow2",
            "-kernel", os.path.join(WORK, "vmlinuz"), "-initrd", os.path.join(WORK, "initrd.img"),
            "-append", KERNEL,
            "-device", f"virtio-vga,xres={width},yres={height}",
            "-device", "virtio-keyboard-pci", "-device", "virtio-tablet-pci", *net,
            "-device", "virtio-serial-pci",
            "-chardev", f"socket,id=lab,path={folder}/lab,server=on,wait=off",
            "-device", "virtserialport,chardev=lab,name=lab",
            "-qmp", f"unix:{folder}/qmp,server=on,wait=off"]


def new_disk(path, below=DISK):
    """A disk that holds what another one does, which is only read from now on."""
    kind = "raw" if below == DISK else "qcow2"
    subprocess.run(["qemu-img", "create", "-q", "-f", "qcow2", "-F", kind, "-b", below, path],
                   check=True)
    return path


class Lines:
    """One line of JSON for another, over a socket."""

    def __init__(self, path):
        def connect():
            connection = socket.socket(socket.AF_UNIX)
            try:
                connection.connect(path)
            except (FileNotFoundError, ConnectionRefusedError):
                connection.close()
                return None
            return connection

        self.socket = wait_until(connect, f"{path} to be there", interval=0.05)
        self.file = self.socket.makefile("rb")

    def send(self, message):
        self.socket.sendall(json.dumps(message).encode() + b"\n")

    def receive(self, limit):
        self.socket.settimeout(limit)
        line = self.file.readline()
        if not line:
            raise ConnectionError("the machine is gone")
        return json.loads(line)

    def close(self):
        self.file.close()
        self.socket.close()


class Picture:
    """What the screen shows: rows of red, green and blue."""

    def __init__(self, path):
        with open(path, "rb") as file:
            magic, size, _, self.pixels = file.read().split(b"\n", 3)
        assert magic == b"P6", magic
        self.width, self.height = (int(number) for number in size.split())

    def __eq__(self, other):
        return isinstance(other, Picture) and self.pixels == other.pixels

    def at(self, x, y):
        """The colour of a point."""
        start = 3 * (y * self.width + x)
        return tuple(self.pixels[start:start + 3])

    def rows_unlike(self, other):
        """How many of its rows are others than in another picture of this size."""
        row = 3 * self.width
        return sum(self.pixels[start:start + row] != other.pixels[start:start + row]
                   for start in range(0, len(self.pixels), row))

    def save(self, path):
        """Writes it as a PNG file."""
        points = bytearray(4 * self.width * self.height)
        for target, source in ((0, 2), (1, 1), (2, 0)):
            points[target::4] = self.pixels[source::3]
        write_png(path, self.width, self.height, points)


class Machine:
    """A running machine. Its folder holds its sockets, disk and what its console said."""

    def __init__(self, folder, disk=None, screen=(800, 600), arguments=()):
        os.makedirs(folder, exist_ok=True)
        self.folder = folder
        self.disk = disk or new_disk(os.path.join(folder, "disk.qcow2"))
        self.command = [*qemu(folder, self.disk, screen), "-display", "none",
                        "-serial", f"file:{folder}/console", *arguments]
        self.switch_on()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.pull_the_plug()

    # Power.

    def switch_on(self, *arguments):
        """At first, and after its end; some arguments may be others then, or more."""
        for name in "lab", "qmp":
            if os.path.exists(os.path.join(self.folder, name)):
                os.remove(os.path.join(self.folder, name))
        self.process = subprocess.Popen([*self.command, *arguments], stdin=subprocess.DEVNULL)
        self.monitor = Lines(os.path.join(self.folder, "qmp"))
        self.monitor.receive(LIMIT)
        self.ask("qmp_capabilities")
        self.agent = Lines(os.path.join(self.folder, "lab"))

    def ask(self, command, **arguments):
        """Has the machine's monitor do something, and returns what it answers."""
        self.monitor.send({"execute": command, "arguments": arguments})
        while True:
            answer = self.monitor.receive(LIMIT)
            if "event" in answer:
                continue
            assert "return" in answer, (command, arguments, answer)
            return answer["return"]

    def pull_the_plug(self):
        """Whatever was in memory is lost."""
        self.process.kill()
        self.process.wait()
        self.monitor.close()
        self.agent.close()

    def shut_down(self):
        """Waits for the end of an orderly one."""
        self.agent.send({"run": "systemctl poweroff", "limit": LIMIT})
        self.process.wait(LIMIT)
        self.monitor.close()
        self.agent.close()

    # Inside.

    def attempt(self, command, limit=LIMIT):
        """Runs a shell command as root. Returns its status, and all that it printed."""
        self.agent.send({"run": command, "limit": limit})
        answer = self.agent.receive(limit + LIMIT)
        return answer["status"], answer["output"]

    def run(self, command, limit=LIMIT):
        """The output of a command that must succeed."""
        status, output = self.attempt(command, limit)
        assert status == 0, f"{command}: {status}\n{output}"
        return output

    def wait_for(self, command, what, limit=LIMIT):
        """Until a command succeeds, which is asked inside every second. Returns its output."""
        end = time.monotonic() + limit
        while True:
            status, output = self.attempt(command)
            if status == 0:
                return output
            if time.monotonic() > end:
                raise TimeoutError(f"waited {limit} s in vain: {what}\n{output}")
            time.sleep(1)

    def out_there(self, command):
        """The command for the other end of the cable, and on the air."""
        return f"ip netns exec world sh -c {shlex.quote(command)}"

    def pause(self, seconds):
        """By the clock inside, which is slow where this machine is busy."""
        self.agent.send({"pause": seconds})
        self.agent.receive(LIMIT)

    def clock(self):
        """Seconds, by the same clock."""
        return float(self.run("cat /proc/uptime").split()[0])

    # Input.

    def key(self, *names):
        """Presses keys together."""
        self._press([names])

    def _press(self, strokes):
        """Presses keys, one stroke after the other; each is some keys together."""
        self.ask("input-send-event", events=[
            {"type": "key", "data": {"down": down, "key": {"type": "qcode", "data": name}}}
            for names in strokes for down in (True, False)
            for name in (names if down else reversed(names))])
        self.pause(0.02)

    def type(self, text):
        """A text on the keyboard of the United States."""
        names = [name for letter in text for name in _strokes(letter)]
        for start in range(0, len(names), AT_ONCE):
            self._press([name.split("-") for name in names[start:start + AT_ONCE]])

    def click(self, x, y):
        """The pointer's; ends when the button is let go."""
        now = self.look()
        moved = [{"type": "abs", "data": {"axis": axis, "value": value * 0x7FFF // size}}
                 for axis, value, size in (("x", x, now.width), ("y", y, now.height))]
        self.ask("input-send-event", events=moved)
        for down in True, False:
            self.pause(0.1)  # at once is too quick to be taken for a click
            self.ask("input-send-event",
                     events=[{"type": "btn", "data": {"button": "left", "down": down}}])

    def touch(self, *points):
        """A finger's tap; or its way, by several points."""
        now = self.look()
        self.agent.send({"touch": [[x * 1000 // now.width, y * 1000 // now.height]
                                   for x, y in points]})
        self.agent.receive(LIMIT)

    # Looking.

    def look(self):
        """The picture of now."""
        path = os.path.join(self.folder, "screen.ppm")
        self.ask("screendump", filename=path)
        return Picture(path)

    def at_rest(self, differs_from=None, what="the screen to come to rest", limit=LIMIT):
        """The picture once three of them in a row are the same, and another than before."""
        last, same = None, 0

        def still():
            nonlocal last, same
            self.pause(0.2)
            picture = self.look()
            same = same + 1 if picture == last else 0
            last = picture
            return picture if same >= 2 and picture != differs_from else None

        return wait_until(still, what, limit=limit)

    @staticmethod
    def picture_path(name):
        """Where a picture is left."""
        folder = os.path.join(WORK, "pictures")
        os.makedirs(folder, exist_ok=True)
        return os.path.join(folder, name + ".png")

    def keep(self, name):
        """Leaves a picture of the screen."""
        self.at_rest().save(self.picture_path(name))

    def cable(self, is_in):
        """Pulls the network cable, or puts it back."""
        self.ask("set_link", name="card0", up=is_in)


def clear(folder):
    """Removes what a machine left."""
    shutil.rmtree(folder, ignore_errors=True)
