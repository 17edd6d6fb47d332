# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the documents lead to is there, what they say in numbers and words is so: BUILD_DIRECTORY."""
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from tests.support import tap
from tests.support.files import SOURCES, source

BUILD = sys.argv.pop(1)
README = source("README.md")
# For each page the number of lines that its reader can be asked to read.
LONGEST = {"README.md": 70, "CONTRIBUTING.md": 150, "SECURITY.md": 150, "docs/architecture.md": 150,
           "docs/user.md": 60, "docs/deployment.md": 160, "docs/deployment-screens.md": 150,
           "docs/deployment-refused.md": 150, "docs/deployment-more.md": 150}


def documents():
    """The Markdown files under version control, or, without one, all there are, by their names."""
    for folder, folders, names in os.walk(SOURCES):
        folders[:] = [name for name in folders if not name.startswith((".", "build"))]
        for name in names:
            if name.endswith(".md"):
                path = os.path.relpath(os.path.join(folder, name), SOURCES)
                yield path, source(path)


def anchors(text):
    """What a link can name of a document: its headings, as they are written in links."""
    for heading in re.findall(r"^#+ (.*)$", text, re.M):
        yield re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def without_code(text):
    return re.sub(r"^```.*?^```|`[^`\n]*`", "", text, flags=re.M | re.S)


class Documents(unittest.TestCase):

    def test_links_lead_somewhere(self):
        texts = dict(documents())
        for path, text in texts.items():
            for target in re.findall(r"\]\(([^)\s]+)\)", without_code(text)):
                if target.startswith("https:"):
                    continue
                name, _, anchor = target.partition("#")
                name = os.path.normpath(os.path.join(os.path.dirname(path), name)) if name else path
                with self.subTest(page=path, target=target):
                    self.assertTrue(os.path.exists(os.path.join(SOURCES, name)))
                    if anchor:
                        self.assertIn(anchor, anchors(texts[name]))

    def test_files_and_commands_that_are_named_are_there(self):
        commands = re.findall(r"^  (\w+)\b", source("dev").partition("END\n}")[0], re.M)
        files = re.compile(r"`((?:src|tests|docs|data|contrib|packaging|fuzz|bench|debian|\.ci)"
                           r"/[\w./-]+)`")
        for path, text in documents():
            with self.subTest(page=path):
                for name in files.findall(text):
                    self.assertTrue(os.path.exists(os.path.join(SOURCES, name))
                                    or os.path.exists(os.path.join(SOURCES, name + ".cc")), name)
                for command in re.findall(r"\./dev (\w+)", text):
                    self.assertIn(command, [*commands, "help"])

    def test_tests_that_are_named_are_there(self):
        with open(os.path.join(BUILD, "meson-info", "intro-tests.json"), encoding="utf-8") as file:
            tests = {test["name"] for test in json.load(file)}
        for path, text in documents():
            for names in re.findall(r"`\./dev test((?: [a-z][\w-]*)+)`", text):
                with self.subTest(page=path):
                    self.assertLessEqual(set(names.split()), tests)

    def test_none_is_longer_than_its_reader_bears(self):
        for path, most in LONGEST.items():
            self.assertLessEqual(source(path).count("\n"), most, path)

    def test_words_of_the_window_are_its_own(self):
        window = "".join(source("src", folder, name) for folder in ("widgets", "window")
                         for name in os.listdir(os.path.join(SOURCES, "src", folder)))
        page = re.sub(r"!\[[^]]*\]", "", source("docs/user.md"))
        texts = set(re.findall(r'"([A-Z][^"]*)"', page)) - {"OK"}  # which is the toolkit's
        self.assertGreater(len(texts), 12)
        for text in texts:
            self.assertIn(text, window)


class Numbers(unittest.TestCase):
    """The footprint in the README."""

    def test_memory_is_what_was_measured(self):
        measured = [round(int(size) / 1024) for size in re.findall(
            r"^(?:ours|drawn as by default) .* (\d+) KiB at the end",
            source("docs/generated/bench.txt"), re.M)]
        said = re.search(r"^\| memory \| (\d+) MiB.* (\d+) MiB", README, re.M).groups()
        self.assertEqual([int(size) for size in said], measured)

    def test_what_it_depends_on_is_as_large_as_is_said(self):
        # The figures are those of Debian 12. Nothing is installed or fetched.
        if 'VERSION_ID="12"' not in source("/etc/os-release") or not shutil.which("apt-get"):
            print("# left out: the size of what it depends on is said for Debian 12")
            return
        with tempfile.TemporaryDirectory(prefix="zor-apt-") as cache:
            done = subprocess.run(
                ["apt-get", "--simulate", "-o", "Dir::State::status=/dev/null",
                 "-o", "Dir::Cache=" + cache, "--no-install-recommends", "install",
                 "libgtkmm-4.0-0"],
                capture_output=True, text=True, check=False, env={**os.environ, "LC_ALL": "C"})
        packages = re.findall(r"^Inst (\S+)", done.stdout, re.M)
        if not packages:
            print("# left out: the size of what it depends on, which apt has no list of")
            return
        shown = subprocess.check_output(["apt-cache", "show", "--no-all-versions", *packages],
                                        text=True)
        size = sum(map(int, re.findall(r"^Installed-Size: (\d+)$", shown, re.M))) / 1024
        said = map(int, re.search(r"(\d+) packages and (\d+) MiB", README).groups())
        for found, figure in zip((len(packages), size), said):
            self.assertAlmostEqual(found, figure, delta=figure / 20)


tap.main()
