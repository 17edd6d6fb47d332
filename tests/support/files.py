# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Files: the project's own, which tests look at or start from, and what the program writes."""
import os
import re

SOURCES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
KEYFILES = os.path.join(SOURCES, "tests", "keyfiles")
SAMPLES = os.path.join(KEYFILES, "samples")
UPDATE_RECORD = "/tmp/ethernetUpdateSettings"


def read(*path):
    """The bytes of a file, or None if there is none."""
    try:
        with open(os.path.join(*path), "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def source(*path):
    """The text of a file of the project."""
    return read(SOURCES, *path).decode()


def expected(name, **values):
    """A keyfile as the program writes it; values: by their keys, in place of those in the file."""
    content = read(KEYFILES, "expected", name + ".nmconnection")
    for key, value in values.items():
        content, count = re.subn(rf"(?m)^{key}=.*$".encode(), f"{key}={value}".encode(), content)
        assert count == 1, f"{count} times {key} in {name}"
    return content
