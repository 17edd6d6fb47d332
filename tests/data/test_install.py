# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What `meson install` puts where: BUILD_DIRECTORY PROGRAM [OPTION OF APPSTREAMCLI...]."""
import configparser
import hashlib
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml

from tests.support import tap
from tests.support.files import source

BUILD, PROGRAM, *OPTIONS = sys.argv[1:]
del sys.argv[1:]
(VERSION,) = re.findall(r"\n  version: '([^']+)'", source("meson.build"))

FILES = {
    "bin/zor-network-manager",
    "share/applications/zor-network-manager.desktop",
    "share/icons/hicolor/scalable/apps/zor-network-manager.svg",
    "share/icons/hicolor/symbolic/apps/zor-network-manager-symbolic.svg",
    "share/man/man1/zor-network-manager.1",
    "share/man/man5/zor-network-manager.5",
    "share/man/man7/zor-network-manager.7",
    "share/man/man8/zor-network-permissions-handler.8",
    "share/metainfo/org.gtkmm.example.metainfo.xml",
}


class Installed(unittest.TestCase):

    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.root = tempfile.mkdtemp(prefix="zor-install-")
        cls.addClassCleanup(shutil.rmtree, cls.root)
        subprocess.run(["meson", "install", "-C", BUILD, "--no-rebuild", "--destdir", cls.root],
                       check=True, stdout=subprocess.DEVNULL)
        (cls.prefix,) = [os.path.dirname(folder) for folder, folders, _ in os.walk(cls.root)
                         if os.path.basename(folder) == "bin"]

    def test_nothing_else_is_installed(self):
        found = {os.path.relpath(os.path.join(folder, name), self.prefix)
                 for folder, _, names in os.walk(self.root) for name in names}
        self.assertEqual(found, FILES)

    def test_only_the_program_can_be_executed(self):
        for name in FILES:
            mode = os.stat(os.path.join(self.prefix, name)).st_mode & 0o7777
            self.assertEqual(oct(mode), oct(0o755 if name.startswith("bin/") else 0o644), name)

    def test_package_is_as_small_as_is_said(self):
        (most,) = re.findall(r"the package under (\d+) KB", source("README.md"))
        with open(os.path.join(BUILD, "meson-info", "intro-buildoptions.json"),
                  encoding="utf-8") as file:
            options = {option["name"]: option["value"] for option in json.load(file)}
        if options["b_sanitize"] != "none" or options["optimization"] != "2":
            print("# left out: the size of what is not optimised, or has a sanitizer in it")
            return
        subprocess.run(["strip", os.path.join(self.prefix, "bin/zor-network-manager")], check=True)
        size = sum(os.path.getsize(os.path.join(self.prefix, name)) for name in FILES)
        self.assertLess(size, int(most) * 1000)

    def test_tree_is_valid(self):
        # Looks for what the metainfo leads to: the desktop entry and its icon.
        with tempfile.TemporaryDirectory(prefix="zor-tree-") as tree:
            shutil.copytree(self.prefix, os.path.join(tree, "usr"))
            done = subprocess.run(
                ["appstreamcli", "validate-tree", "--no-net", "--pedantic", "--strict", *OPTIONS,
                 tree], capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_entry_leads_to_the_program_and_its_window(self):
        entry = configparser.RawConfigParser()
        entry.optionxform = str
        entry.read_string(source("data/zor-network-manager.desktop"))
        entry = entry["Desktop Entry"]
        self.assertIn("bin/" + entry["Exec"], FILES)
        self.assertIn(f"share/icons/hicolor/scalable/apps/{entry['Icon']}.svg", FILES)
        with open(PROGRAM, "rb") as file:
            self.assertIn(entry["StartupWMClass"].encode() + b"\0", file.read())


class Version(unittest.TestCase):

    def test_is_the_same_everywhere(self):
        metainfo = xml.fromstring(source("data/org.gtkmm.example.metainfo.xml"))
        release = metainfo.find("releases/release")
        (package,) = re.findall(r"^zor-network-manager \(([^)-]+)", source("debian/changelog"))
        self.assertEqual([release.get("version"), package], [VERSION, VERSION])

    def test_recipe_is_of_this_version_and_licence(self):
        recipe = source("packaging/yocto/recipes-connectivity/zor-network-manager",
                        f"zor-network-manager_{VERSION}.bb")
        self.assertIn(hashlib.md5(source("LICENSE").encode()).hexdigest(), recipe)


class Dependencies(unittest.TestCase):

    def test_each_has_its_reason(self):
        (build,) = re.findall(r"^Build-Depends:\n((?:[ #].*\n)+)", source("debian/control"), re.M)
        needed = re.findall(r"^ ([\w.+-]+)", build, re.M)
        explained = re.findall(r"^\| `([^`]+)` \| .+ \|$", source("docs/dependencies.md"), re.M)
        self.assertEqual(sorted(explained), sorted(needed))


tap.main()
