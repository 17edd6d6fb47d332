# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The INI unit as a library for other programs: what is installed, offered, and said of it."""
import glob
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from tests.support import tap
from tests.support.files import SOURCES, source

PAGE = source("data", "man", "zor-ini.3")
BLOCKS = [block.replace("\\e", "\\") for block in
          re.findall(r"^\.Bd -literal\n(.*?)\n\.Ed$", PAGE, re.M | re.S)]
SYNOPSIS, EXAMPLE, PRINTED = BLOCKS
INSTALLED = {"include/zor-ini/ini/ini.h", "share/man/man3/zor-ini.3", "lib/libzor-ini.so",
             "lib/libzor-ini.so.0", "lib/libzor-ini.so.0.0.0", "lib/pkgconfig/zor-ini.pc"}


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


class Library(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="zor-library-")
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        build = os.path.join(cls.folder, "build")
        cls.prefix = os.path.join(cls.folder, "installed")
        run("meson", "setup", build, SOURCES, "-Dtests=none", "-Dini_library=true", "-Dlibdir=lib",
            "--prefix", cls.prefix)
        run("ninja", "-C", build, "src/ini/libzor-ini.so.0.0.0")
        run("meson", "install", "-C", build, "--no-rebuild", "--tags", "devel")
        cls.library = os.path.join(cls.prefix, "lib", "libzor-ini.so.0")

    def test_nothing_else_is_installed(self):
        files = glob.glob("**", root_dir=self.prefix, recursive=True)
        self.assertEqual({name for name in files
                          if not os.path.isdir(os.path.join(self.prefix, name))}, INSTALLED)

    def test_offers_what_the_header_declares_and_no_more(self):
        symbols = run("nm", "--dynamic", "--defined-only", "--with-symbol-versions", self.library)
        offered = re.findall(r" T (\S+)@@ZOR_INI_0$", symbols, re.M)
        self.assertEqual(len(re.findall(r" [A-Z] ", symbols.replace(" A ZOR_INI_0", ""))),
                         len(offered), symbols)
        declared = re.findall(r"\b(ini_\w+)\(", SYNOPSIS)
        self.assertEqual(sorted(offered), sorted(declared))

    def test_page_declares_what_the_header_does(self):
        header = re.sub(r"/\*.*?\*/", "", source("src", "ini", "ini.h"), flags=re.S)
        declared = re.findall(r"^(?:typedef )?(?:int|long|float) [^;]*;", header, re.M)
        self.assertEqual(SYNOPSIS.split("\n\n", 1)[1], "\n".join(declared))
        (names,) = re.findall(r"^((?:\.Nm .*\n)+)", PAGE, re.M)
        self.assertEqual(re.findall(r"ini_\w+", names), re.findall(r"\b(ini_\w+)\(", SYNOPSIS))

    def test_example_of_the_page_does_what_it_says(self):
        path = os.path.join(self.folder, "example.c")
        with open(path, "w", encoding="utf-8") as file:
            file.write(EXAMPLE)
        environment = {**os.environ, "LD_LIBRARY_PATH": os.path.join(self.prefix, "lib"),
                       "PKG_CONFIG_PATH": os.path.join(self.prefix, "lib", "pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "zor-ini", env=environment).split()
        program = path.removesuffix(".c")
        run("cc", "-Wall", "-Wextra", "-Werror", "-std=c99", "-o", program, path, *flags)
        self.assertEqual(run(program, env=environment, cwd=self.folder), PRINTED + "\n")


tap.main()
