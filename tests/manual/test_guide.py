# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The guide to a device shows the very files of the one that is tried, and names what tries it."""
import glob
import os
import re
import unittest

from tests.support import tap
from tests.support.files import SOURCES, source

PAGES = {os.path.relpath(name, SOURCES): source(name)
         for name in glob.glob(os.path.join(SOURCES, "docs", "deployment*.md"))}
FILES = os.path.join(SOURCES, "device", "files")


class Guide(unittest.TestCase):

    def test_every_file_of_the_device_is_shown(self):
        shown = dict(re.findall(r"^`(/[^`]+)`[^\n]*:\n\n```\w*\n(.*?)^```$",
                                "".join(PAGES.values()), re.M | re.S))
        names = [os.path.join(folder, name) for folder, _, found in os.walk(FILES)
                 for name in found]
        held = {name.removeprefix(FILES): re.sub(r"\A(#!.*\n)?(# SPDX-.*\n)+", r"\1", source(name))
                for name in names}
        self.assertGreater(len(held), 5)
        self.maxDiff = None
        self.assertEqual(shown, held)

    def test_every_journey_that_is_named_is_taken(self):
        taken = re.findall(r'"(\w+)"', re.search(r"LONG = \((.*?)\)", source("device", "test.py"),
                                                re.S)[1])
        named = {name for page in PAGES.values()
                 for names in re.findall(r"\((\*[a-z_]+\*(?:, \*[a-z_]+\*)*)\)", page)
                 for name in re.findall(r"\w+", names)}
        self.assertGreater(len(named), 4)
        self.assertEqual(named - set(taken), set())


tap.main()
