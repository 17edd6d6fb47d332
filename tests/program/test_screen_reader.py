# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What a blind person hears, from the start of the window to each of its two saves.

A real screen reader speaks to a service that only remembers. `--write` after the program's name
keeps what is heard, as tests/program/heard.txt.
"""
import os
import re
import subprocess
import sys

from tests.support import program_case
from tests.support.files import SOURCES, expected, read
from tests.support.limit import wait_until
from tests.support.speech import Orca, SpeechService, version_of_orca

TRANSCRIPT = os.path.join(SOURCES, "tests", "program", "heard.txt")
# Others say the same in other words.
KNOWN = "43.1"
WRITE = "--write" in sys.argv
if WRITE:
    sys.argv.remove("--write")

STATIC = expected("ethernet-static", dns="8.8.8.8")
ACCESS_POINT = expected("access-point", ssid="Workshop", psk="horse 42",
                        address1="10.42.0.1/24,10.42.0.1")
# What is pressed together, or typed. The first save on the Ethernet page is refused.
STEPS = {
    "Ethernet": [*3 * ["Tab"], "type 10.0.0", *4 * ["Tab"], "Return", "Return", "type 10.0.0.7",
                 *4 * ["Tab"], "Return"],
    "Wifi": [*4 * ["Tab"], "type horse 43", *4 * ["Tab"], "space", "Down", "Return", "Tab",
             "Return"],
}
# What is said of marked text, and around what has the focus, if there is time for it.
ASIDE = re.compile(r"Text unselected\.|Selection deleted\.|ZOR Network Manager( frame\.)?"
                   r"|(Ethernet|Wifi)( GtkGizmo)? panel\.|10\.0\.0 selected(?!\.)"
                   r"|Channel \(2\.4 GHz\) combo box(?= Channel)")


class Transcript(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.service = self.enterContext(SpeechService(self.desktop))
        self.enterContext(Orca(self.desktop))
        wait_until(lambda: "Screen reader on." in self.service.take(), "the screen reader")
        self.put("ethernet.nmconnection", STATIC)
        self.put("wlan0.nmconnection", ACCESS_POINT)

    def answer(self, step, typed):
        """What is spoken after a step; after typing nothing need be."""
        heard = []

        def has_answered():
            nonlocal heard
            heard += ASIDE.sub("", " ".join(self.service.take())).split()
            return heard or typed

        wait_until(has_answered, f"an answer to {step}")
        return heard

    def hear(self, program, page, steps):
        """Takes steps on a page, of which the last one closes the window; returns what is told."""
        wait_until(lambda: program.focused() == ("group", "Ethernet"), "the focus")
        if page == "Wifi":
            self.desktop.press("Right")
            wait_until(lambda: program.focused() == ("group", "Wifi"), "the other page")
        self.service.take()  # what comes first here, and whether the page is told, is up to chance
        lines = [f"# {page}\n"]
        for step in steps[:-1]:
            typed = step.startswith("type ")
            if typed:
                self.desktop.press("Control_L", "a")
                self.desktop.type(step.removeprefix("type "))
            else:
                self.desktop.press(step)
            program.focused()  # which takes the keyboard to a dialog, and back
            lines.append(f"{step}: {' '.join(self.answer(step, typed))}".rstrip() + "\n")
        self.desktop.press(steps[-1])
        self.assertEqual(program.finish(), 0)
        return lines

    def hear_in_the_end(self, page, steps):
        """As hear(), and again from the start of the program when the reader falls silent.

        When a dialog closes, GTK 4.8 tells that the program itself is gone, and a reader that had
        looked at its windows by then believes it: one start in four.
        """
        for trials_left in reversed(range(5)):
            try:
                # The reader asks for places on the screen, which the toolkit warns of.
                with self.run_debug(environment={"G_DEBUG": ""}) as program:
                    return self.hear(program, page, steps)
            except TimeoutError:
                if not trials_left:
                    raise

    def test_both_saves_are_heard_as_before(self):
        lines = [line for page, steps in STEPS.items()
                 for line in self.hear_in_the_end(page, steps)]
        if WRITE:
            with open(TRANSCRIPT, "w", encoding="utf-8") as file:
                file.writelines(lines)
        self.assertEqual(lines, read(TRANSCRIPT).decode().splitlines(True))
        self.assertEqual(self.recorder.calls(), [["finalize_ethernet", "ethernet"],
                                                 ["finalize_wifi", "Hotspot"]])


def not_comparable():
    """Why nothing can be compared here, if so."""
    if version_of_orca() != KNOWN:
        return f"the transcript is that of Orca {KNOWN}, here is {version_of_orca() or 'none'}"
    if b"__asan_init" in read(sys.argv[1]):
        return "with a sanitizer the window is too slow for it"
    if subprocess.run(["pgrep", "-x", "orca"], capture_output=True, check=False).returncode == 0:
        return "a screen reader is running, which would have to end"
    return None


if not_comparable():
    print(f"# left out: {not_comparable()}")
    print("1..1\nok 1 - Transcript")
else:
    program_case.main()
