# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Takes a picture of the window in every state: PROGRAM FOLDER."""
import os
import shutil
import subprocess
import sys
import tempfile

from tests.support.desktop import Desktop
from tests.support.files import expected
from tests.support.program import Program
from tests.support.recorder import Recorder

KEYFILES = {
    "ethernet": expected("ethernet-static", dns="8.8.8.8"),
    "wlan0": expected("access-point", ssid="Workshop", psk="horse 42",
                      address1="10.42.0.1/24,10.42.0.1")}


def every_state(program, picture):
    """Goes through all states of the window."""
    picture("ethernet-static")
    program.fill("IP Address", "192.168.1")
    program.fill("Default Gateway", "")
    program.button("Save And Exit")
    picture("ethernet-dialog")
    program.button("OK")
    program.pick("Dynamic IP")
    picture("ethernet-dynamic")
    program.show_page("Wifi")
    picture("wifi-access-point")
    program.fill("Password", "short")
    program.fill("Subnet Mask", "255.0.255.0")
    program.button("Save And Exit")
    picture("wifi-dialog")
    program.button("OK")
    program.fill("Password", "horse 42")
    program.pick("Client")
    picture("wifi-client")
    program.pick("Show Password")
    picture("wifi-client-password-shown")
    program.pick("Disabled")
    picture("wifi-disabled")


def fullest_states(program, picture):
    """Shows each page with all that it can hold."""
    picture("ethernet-static")
    program.show_page("Wifi")
    picture("wifi-access-point")


SCREEN = (1280, 1024)
PANEL = (800, 480)
# The prefix of the names, what is done, and how the program is started.
RUNS = (
    ("", every_state, SCREEN, 1, {}),
    ("dark-", fullest_states, SCREEN, 1, {"GTK_THEME": "Default-dark"}),
    ("high-contrast-", fullest_states, SCREEN, 1, {"GTK_THEME": "Default-hc"}),
    ("twice-", fullest_states, SCREEN, 2, {}),
    ("panel-800x480-", fullest_states, PANEL, 1, {}),
)


def shrink(path):
    """Few colours are enough for a picture of a window, and take little room."""
    convert = shutil.which("convert")
    if convert:
        subprocess.run([convert, path, "-strip", "+dither", "-colors", "64", "-define",
                        "png:compression-level=9", "PNG8:" + path], check=True)


def take_run(program_path, target, prefix, states, screen, scale, environment):
    """Starts the program once and yields the paths of the pictures taken."""
    taken = []
    with tempfile.TemporaryDirectory(prefix="zor-gallery-") as folder:
        recorder = Recorder(folder)
        for name, content in KEYFILES.items():
            with open(os.path.join(folder, name + ".nmconnection"), "wb") as file:
                file.write(content)
        environment = {"PATH": recorder.bin + ":" + os.environ["PATH"],
                       "ZOR_NETWORKMANAGER_DEBUG_PATH": folder, **environment}

        def picture(name):
            path = os.path.join(target, prefix + name + ".png")
            program.screenshot(path, whole_screen=screen == PANEL)
            shrink(path)
            taken.append(path)

        with Desktop(screen) as desktop, Program(desktop, [os.path.realpath(program_path), "1"],
                                                 environment, scale=scale) as program:
            states(program, picture)
            program.close()
            status = program.finish()
            assert status == 0, f"ended with {status}: {program.errors}"
    return taken


def take_all(program_path, target):
    """Takes all pictures; returns their paths."""
    os.makedirs(target, exist_ok=True)
    return [path for run in RUNS for path in take_run(program_path, target, *run)]


def main():
    for path in take_all(*sys.argv[1:]):
        print(path, os.path.getsize(path), "bytes")


if __name__ == "__main__":
    main()
