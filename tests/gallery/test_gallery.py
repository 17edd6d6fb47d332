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
from tests.support.files import SOURCES, source

IMAGES = os.path.join(SOURCES, "docs", "generated", "images")
DOCUMENTS = [*glob.glob(os.path.join(SOURCES, "*.md")),
             *glob.glob(os.path.join(SOURCES, "docs", "**", "*.md"), recursive=True)]
PROGRAM = sys.argv.pop(1)
# The toolkit that drew the pictures. Another one draws the same otherwise.
DRAWN_BY = "4.8."
TOOLKIT = subprocess.run(["pkg-config", "--modversion", "gtk4"], capture_output=True, text=True,
                         check=False).stdout.strip()

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


def look_at(path):
    """Width and height of a picture, and how many colours it has."""
    return map(int, subprocess.check_output(["identify", "-format", "%w %h %k", path]).split())


def pictures_in_documents():
    """What is said of each picture for those who do not see it, and its name."""
    for document in DOCUMENTS:
        with open(document, encoding="utf-8") as file:
            yield from re.findall(r"!\[([^]]*)\]\([^)]*images/([\w-]+\.png)\)", file.read())


class Gallery(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="zor-gallery-")
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        gallery.take_all(PROGRAM, cls.folder)

    def test_every_state_has_its_picture_and_no_other_is_kept(self):
        self.assertEqual(names_in(IMAGES), names_in(self.folder))

    def test_every_state_is_drawn_in_its_size(self):
        for name in names_in(self.folder):
            with self.subTest(name=name):
                width, height, colours = look_at(os.path.join(self.folder, name))
                wanted_width, wanted_height, _ = look_at(os.path.join(IMAGES, name))
                self.assertGreater(colours, 10)
                self.assertEqual(height, wanted_height)
                # A dialog is as wide as its text, which another toolkit sets a little differently.
                self.assertLessEqual(abs(width - wanted_width), 10 if "dialog" in name else 0)

    def test_pictures_show_the_program_as_it_is(self):
        if not TOOLKIT.startswith(DRAWN_BY):
            print(f"# left out: the kept pictures are those of GTK {DRAWN_BY}x, this is {TOOLKIT}")
            return
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
        shown = {name for _, name in pictures_in_documents()}
        self.assertEqual(sorted(shown), names_in(IMAGES))

    def test_pictures_of_the_catalogue_are_among_them(self):
        metainfo = source("data", "org.gtkmm.example.metainfo.xml")
        shown = re.findall(r"<image>https://[^<]*/images/([^<]+)</image>", metainfo)
        self.assertTrue(shown)
        self.assertLessEqual(set(shown), set(names_in(IMAGES)))

    def test_message_is_as_large_as_is_said(self):
        sizes = [tuple(look_at(os.path.join(IMAGES, name)))[:2] for name in names_in(IMAGES)
                 if name.endswith("-dialog.png")]
        said = re.search(r"A message takes up to (\d+) x (\d+)", source("docs/deployment-screens.md"))
        self.assertEqual([max(side) for side in zip(*sizes)], [int(side) for side in said.groups()])

    def test_each_picture_is_told_in_words(self):
        for text, name in pictures_in_documents():
            self.assertGreater(len(text.split()), 2, name)


tap.require_nothing(LACKING)
tap.main()
