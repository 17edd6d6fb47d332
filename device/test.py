# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Takes a device in a virtual machine through its journeys: a table, pictures, logs of failures."""
import argparse
import os
import sys
import time
import traceback

from .journeys import INSTALLED, Journeys
from .machine import RUN, WORK, Machine, clear
from .window import WORKING_COPY, Window

# Each is one row of the table; None: the machine is shut down and started again.
LONG = ("boot", "static", "dynamic", "static_again", "refused", "access_point", "channels",
        "client", None, "client_after_a_restart", "odd_names", "disabled", "window_killed",
        "screen_killed", "stopped", "plug", "read_only")
SHORT = ("boot", "static", "access_point", "plug")


class Table:
    """What became of each journey."""

    def __init__(self):
        self.failed = 0
        self.started = time.monotonic()

    def row(self, name, verdict, note):
        seconds = time.monotonic() - self.started
        self.started = time.monotonic()
        self.failed += verdict != "ok"
        print(f"{name:<24}{verdict:<8}{seconds:>5.0f} s  {note}", flush=True)


def describe(machine):
    """What to look at after a failure, beside the picture."""
    for command in ("systemctl status --no-pager kiosk zor-network-manager NetworkManager",
                    f"ls -la {WORKING_COPY} {INSTALLED}",
                    "ip address; iw dev; nmcli device", "journalctl -b --no-pager | tail -n 300"):
        yield f"## {command}\n{machine.attempt(command)[1]}\n"


def explain(machine, name, error):
    """Leaves a picture and a log of a failure. Returns what the table says."""
    log = os.path.join(WORK, f"failed-{name}.log")
    with open(log, "w", encoding="utf-8") as file:
        file.write("".join(traceback.format_exception(error)))
        try:
            machine.look().save(machine.picture_path("failed-" + name))
            file.writelines(describe(machine))
        except (OSError, AssertionError, ValueError) as silence:
            file.write(f"and the machine says nothing: {silence}\n")
    return f"{str(error).splitlines()[0] if str(error) else repr(error)}; see {log}"


def test(names):
    """Takes the journeys one after the other."""
    table = Table()
    clear(RUN)
    machine = Machine(RUN)
    try:
        for name in names:
            if name is None:
                machine.shut_down()
                machine.switch_on()
                continue
            try:
                note = getattr(Journeys(machine, Window(machine)), name)()
                table.row(name, "ok", note)
            except (AssertionError, OSError, ValueError, TypeError) as error:
                table.row(name, "FAILED", explain(machine, name, error))
                # The next one finds a window as after a start.
                machine.attempt("systemctl restart zor-network-manager")
                Window(machine).wait()
    finally:
        machine.pull_the_plug()
    print(f"pictures: {os.path.join(WORK, 'pictures')}")
    return 1 if table.failed else 0


def main():
    parser = argparse.ArgumentParser(prog="./dev device test")
    parser.add_argument("--short", action="store_true",
                        help="boot, one save of each page, one plug")
    parser.add_argument("names", nargs="*", metavar="JOURNEY", help="only these, in this order")
    arguments = parser.parse_args()
    sys.exit(test(arguments.names or (SHORT if arguments.short else LONG)))


main()
