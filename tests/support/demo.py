# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Shows the program at work on sample keyfiles: PROGRAM SAMPLES_DIR.

With a display the window opens there, for you to use. Without one the same is done on a private
virtual display with real pointer and key events. Nothing on the machine is changed but
/tmp/ethernetUpdateSettings, which the program always writes when it saves a wired connection.
"""
import contextlib
import ctypes
import difflib
import os
import shutil
import subprocess
import sys
import tempfile

from tests.support.files import UPDATE_RECORD
from tests.support.recorder import NAME, Recorder

ENTRIES = {"IP Address": "192.168.1.10", "Subnet Mask": "255.255.255.0",
           "Default Gateway": "192.168.1.1", "DNS Server": "8.8.8.8"}


def say(text):
    print("==> " + text, flush=True)


def usable_display():
    """The name of the display that a window can be opened on, or None."""
    wayland = os.environ.get("WAYLAND_DISPLAY")
    if wayland:
        socket = os.path.join(os.environ.get("XDG_RUNTIME_DIR", ""), wayland)
        if os.access(socket, os.W_OK):
            return wayland
    name = os.environ.get("DISPLAY")
    if name:
        with contextlib.suppress(Exception):
            from Xlib import display
            display.Display(name).close()
            return name
    return None


def copy_samples(samples, folder):
    """Private copies, as NetworkManager wants its keyfiles."""
    os.mkdir(folder, 0o700)
    for name in sorted(os.listdir(samples)):
        if name.endswith(".nmconnection"):
            shutil.copyfile(os.path.join(samples, name), os.path.join(folder, name))
            os.chmod(os.path.join(folder, name), 0o600)
            say(f"copied {name} to {folder}")


def read_all(folder):
    """The contents of the keyfiles by name."""
    contents = {}
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), encoding="utf-8", errors="replace") as file:
            contents[name] = file.read()
    return contents


def run_for_the_user(command, environment):
    """Opens the window on the user's display and waits for it to be closed."""
    say("the window is open: change what you like, then press one of its two buttons")
    # Its requests outlive it: they become our children then, and are waited for.
    PR_SET_CHILD_SUBREAPER = 36
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1)
    status = subprocess.call(command, env={**os.environ, **environment})
    with contextlib.suppress(ChildProcessError):
        while True:
            os.wait()
    return status


def run_headless(command, environment, folder):
    """Uses the window on a private display as a person would."""
    from tests.support.desktop import Desktop
    from tests.support.program import Program

    pictures = []

    def picture(program, name):
        pictures.append(os.path.join(folder, name))
        program.screenshot(pictures[-1])
        say(f"took a picture of the window: {name}")

    say("no display here: starting a private virtual one")
    with Desktop() as desktop, Program(desktop, command, environment) as program:
        say("starting the program in debug mode")
        program.look()
        picture(program, "1-before.png")
        say('clicking "Static IP"')
        program.pick("Static IP")
        for label, text in ENTRIES.items():
            say(f'typing {text} into "{label}"')
            program.fill(label, text)
        picture(program, "2-filled.png")
        say('clicking "Save And Exit"')
        program.button("Save And Exit")
        status = program.finish()
        say("the program printed:")
        print(program.output + program.errors, end="")

        say("starting the program again, to see what it has saved")
        with Program(desktop, command, environment) as again:
            saved = [again.text(label) for label in ENTRIES]
            picture(again, "3-saved.png")
            again.close()
            again.finish()
    if saved != list(ENTRIES.values()):
        say(f"the window shows other values: {saved}")
        status = status or 1
    return status, pictures


def report(before, after, calls, pictures):
    say("the keyfiles, before and after:")
    for name in sorted({*before, *after}):
        print("".join(difflib.unified_diff(
            lines(before.get(name, "")), lines(after.get(name, "")),
            f"before/{name}", f"after/{name}")), end="")
    if before == after:
        print("(unchanged)")
    say("the privileged program was called with:")
    for call in calls:
        print(" ".join([NAME, *call]))
    if not calls:
        print("(not called)")
    say(f"the update record {UPDATE_RECORD}:")
    try:
        with open(UPDATE_RECORD, encoding="ascii", errors="replace") as file:
            print(file.read())
    except OSError as error:
        print(f"({error.strerror})")
    for path in pictures:
        say(f"picture: {path}")


def lines(text):
    """Lines that all end, so that a diff of them prints well."""
    return [line + "\n" for line in text.splitlines()]


def main():
    program, samples = (os.path.realpath(argument) for argument in sys.argv[1:])
    folder = tempfile.mkdtemp(prefix="zor-demo-")
    connections = os.path.join(folder, "connections")
    copy_samples(samples, connections)
    before = read_all(connections)
    recorder = Recorder(folder)
    say(f"put a recorder in place of the privileged program: {recorder.path}")
    with contextlib.suppress(OSError):  # one of an earlier run; it may belong to somebody else
        os.remove(UPDATE_RECORD)
    command = [program, "1"]
    environment = {"PATH": recorder.bin + ":" + os.environ["PATH"],
                   "ZOR_NETWORKMANAGER_DEBUG_PATH": connections}
    display = usable_display()
    if display:
        say(f"using the display {display}")
        status, pictures = run_for_the_user(command, environment), []
    else:
        status, pictures = run_headless(command, environment, folder)
    after = read_all(connections)
    if not display:
        if f"address1={ENTRIES['IP Address']}/24," not in after.get("ethernet.nmconnection", ""):
            say("the typed address is not in the keyfile")
            status = status or 1
    report(before, after, recorder.calls(), pictures)
    say("done" if status == 0 else f"failed with status {status}")
    sys.exit(status if 0 <= status < 256 else 1)


if __name__ == "__main__":
    main()
