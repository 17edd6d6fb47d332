# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The pictures in the documents are those of the program."""
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from tests.support import tap
from tests.support.files import SOURCES

IMAGES = os.path.join(SOURCES, "docs", "generated", "images")
DOCUMENTS = [*glob.glob(os.path.join(SOURCES, "*.md")),
             *glob.glob(os.path.join(SOURCES, "docs", "*.md"))]
PROGRAM = sys.argv.pop(1)

try:
    from tests.gallery import gallery
    from tests.support.desktop import missing_tools
    LACKING = missing_tools()
except (ImportError, ValueError) as error:
    LACKING = str(error)
if not shutil.which("compare"):
    LACKING = "imagemagick"


def names_in(folder):
    return sorted(map(os.path.basename, glob.glob(os.path.join(folder, "*.png"))))


class Gallery(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="zor-gallery-")
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        gallery.take_all(PROGRAM, cls.folder)

    def test_every_state_has_its_picture_and_no_other_is_kept(self):
        self.assertEqual(names_in(IMAGES), names_in(self.folder))

    def test_pictures_show_the_program_as_it_is(self):
        for name in names_in(self.folder):
            with self.subTest(name=name):
                # Another version of the fonts may draw an edge a little differently.
                done = subprocess.run(
                    ["compare", "-metric", "AE", "-fuzz", "20%", os.path.join(self.folder, name),
                     os.path.join(IMAGES, name), "null:"],
                    capture_output=True, text=True, check=False)
                self.assertRegex(done.stderr, r"^\d+$", "of another size")
                self.assertLessEqual(int(done.stderr), 10, "stale: run ./dev gallery")

    def test_each_picture_is_shown(self):
        shown = set()
        for document in DOCUMENTS:
            with open(document, encoding="utf-8") as file:
                shown.update(re.findall(r"images/([\w-]+\.png)", file.read()))
        self.assertEqual(sorted(shown), names_in(IMAGES))


tap.require_nothing(LACKING)
tap.main()
