# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A stand-in for the privileged program that only writes down what it was called with."""
import os

from tests.support.files import read

NAME = "zor-network-permissions-handler"

# Each call with one write, so that no two of them get mixed up.
_SCRIPT = """#!/bin/sh
printf '%s\\0' $# "$@" >>'{record}'
"""


class Recorder:
    """The stand-in in a folder of its own, which belongs in front of PATH."""

    def __init__(self, folder):
        self.bin = os.path.join(folder, "bin")
        self._record = os.path.join(folder, "calls")
        os.makedirs(self.bin)
        self.path = os.path.join(self.bin, NAME)
        self.replace(_SCRIPT.format(record=self._record))

    def replace(self, script):
        """Puts another script in its place."""
        with open(self.path, "w", encoding="utf-8") as file:
            file.write(script)
        os.chmod(self.path, 0o755)

    def calls(self):
        """The arguments of every call so far, in their order, without the program's name."""
        words = (read(self._record) or b"").decode().split("\0")
        calls = []
        while len(words) > 1:
            end = 1 + int(words[0])
            calls.append(words[1:end])
            words = words[end:]
        return calls

    def forget(self):
        """Forgets all calls so far."""
        if os.path.exists(self._record):
            os.remove(self._record)
