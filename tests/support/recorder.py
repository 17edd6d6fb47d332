# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A stand-in for the privileged program that only writes down what it was called with."""
import json
import os

NAME = "zor-network-permissions-handler"

# One file per call, complete as soon as it has its name, and the names sort in the order of calls.
_SCRIPT = """#!/usr/bin/python3 -ISs
import json, os, sys, time
name = f"{folder}/{{time.monotonic_ns():020d}}-{{os.getpid()}}"
with open(name + ".part", "w") as file:
    json.dump(sys.argv[1:], file)
os.rename(name + ".part", name + ".json")
"""


class Recorder:
    """The stand-in in a folder of its own, which belongs in front of PATH."""

    def __init__(self, folder):
        self.bin = os.path.join(folder, "bin")
        self._records = os.path.join(folder, "calls")
        os.makedirs(self.bin)
        os.makedirs(self._records)
        self.path = os.path.join(self.bin, NAME)
        with open(self.path, "w", encoding="utf-8") as file:
            file.write(_SCRIPT.format(folder=self._records))
        os.chmod(self.path, 0o755)

    def calls(self):
        """The arguments of every call so far, without the program's name."""
        calls = []
        for name in sorted(os.listdir(self._records)):
            if name.endswith(".json"):
                with open(os.path.join(self._records, name), encoding="utf-8") as file:
                    calls.append(json.load(file))
        return calls
