# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What of the manual pages can go stale: their texts, keys and numbers are those of the source."""
import glob
import os
import re
import unittest

from tests.support import tap
from tests.support.files import SOURCES, read, source

NAMES = ("zor-network-manager.1", "zor-network-manager.5", "zor-network-manager.7",
         "zor-network-permissions-handler.8")
PAGES = [source("data", "man", name) for name in NAMES]
PROGRAM_PAGE, FORMATS_PAGE, LINES_PAGE, HANDLER_PAGE = PAGES
LONGEST_PAGE = 250


class Pages(unittest.TestCase):
    """What the pages name stands in the source, and the other way round."""

    @classmethod
    def setUpClass(cls):
        names = glob.glob(os.path.join(SOURCES, "src", "**", "*.*"), recursive=True)
        cls.source = {os.path.relpath(name, SOURCES): read(name).decode() for name in names}
        cls.literals = {text for source in cls.source.values() for text in literals(source)}

    def assert_in_source(self, text):
        self.assertTrue(any(text in literal for literal in self.literals),
                        f"{text!r} is not printed")

    def test_every_text_is_printed(self):
        printed = [text for line in re.findall(r"^\.It (Sy .*)", LINES_PAGE, re.M)
                   for text in arguments(line, "Sy")]
        self.assertGreater(len(printed), 40)
        for text in printed:
            with self.subTest(text):
                # perror() adds a colon of its own.
                self.assert_in_source(text.removesuffix(":"))

    def test_every_error_is_explained(self):
        call = re.compile(r'\b(?:logError|perror)\(((?:[^;"]|"(?:\\.|[^"\\])*")*)\);')
        calls = [found for source in self.source.values() for found in call.findall(source)]
        texts = [text.strip() for call in calls for text in literals(call)]
        self.assertGreater(len(texts), 20)
        listed = "".join(re.findall(r"^\.It Sy .*\n", LINES_PAGE, re.M)).replace("\\(aq", "'")
        for text in texts:
            with self.subTest(text):
                self.assertIn(f'"{text}', listed)

    def test_every_label_stands_in_the_window(self):
        for page, least in zip(PAGES, (10, 0, 2, 3)):
            texts = [text for line in re.findall(r"^\.(?:It )?(Dq .*)", page, re.M)
                     for text in arguments(line, "Dq")]
            self.assertGreaterEqual(len(texts), least)
            for text in texts:
                with self.subTest(text):
                    self.assertIn(text, self.literals)

    def test_default_files_are_shown_whole(self):
        files = [re.search(r'_KEYFILE = \{\n *"[\w.]+",\n([^;]*)\};', self.source[source])[1]
                 for source in ("src/settings/ethernet.cc", "src/settings/wifi.cc")]
        files = ["".join(re.findall('"(.*)"', code)).replace("\\n", "\n") for code in files]
        shown = re.findall(r"^\.Bd [^\n]*\n(\[connection\].*?)\n\.Ed$", FORMATS_PAGE, re.M | re.S)
        self.assertEqual(shown, files)

    def test_every_action_variable_and_path_is_named(self):
        everything = "\n".join(self.source.values())
        names = (re.findall(r'unPermissionsHandler\("(\w+)"', everything)
                 + re.findall(r'getenv\("(\w+)"\)', everything)
                 + [text.lstrip("/") for text in self.literals
                    if re.match(r"/[\w./-]{3,}$|\w+\.nmconnection$", text)])
        for name in ("unlock", "finalize_wifi", "tmp/ethernetUpdateSettings", "wlan0.nmconnection",
                     "ZOR_NETWORKMANAGER_DEBUG_PATH"):
            self.assertIn(name, names)
        for name in names:
            with self.subTest(name):
                self.assertIn(name, "".join(PAGES))
        for action in re.findall(r'unPermissionsHandler\("(\w+)"', everything):
            self.assertRegex(HANDLER_PAGE, rf"\n\.It Cm {action}\b")

    def test_keys_are_listed_as_they_are_written(self):
        _, access_point, client = re.split(r"(?:accessPoint|client)Entries\(const WifiSettings",
                                           self.source["src/settings/wifi.cc"])
        constants = {name: value for source in ("ethernet", "wifi") for name, value in
                     re.findall(r'string_view (\w+) = "(.*)"',
                                self.source[f"src/settings/{source}.h"])}
        for heading, code in (("Wired", self.source["src/settings/ethernet.cc"]),
                              ("Access point", access_point), ("Client", client)):
            with self.subTest(heading):
                table = re.search(rf"^\.Ss {heading}$(.*?)^\.El$", FORMATS_PAGE, re.M | re.S)[1]
                listed = re.findall(r"^\.It ([\w-]+) Ta ([\w-]+) Ta (.*)", table, re.M)
                written = re.findall(r'\{"([\w-]+)", "([\w-]+)", (.*?)\}', code)
                self.assertEqual([row[:2] for row in listed], [row[:2] for row in written])
                for (_, key, value), (*_, expression) in zip(listed, written):
                    name = re.sub(r"std::string\((\w+)\)", r"\1", expression)
                    if name.startswith('"') or name in constants:
                        self.assertEqual(value, constants.get(name, name.strip('"')), key)

    def test_numbers_are_those_of_the_source(self):
        window = self.source["src/window/view.cc"]
        sizes = {name: int(value) for name, value in
                 re.findall(r"constexpr int (\w+(?:WIDTH|HEIGHT)) = (\d+);", window)}
        width = sizes.pop("WINDOW_WIDTH")
        self.assertIn(f"up to {width} by {max(sizes.values())} pixels", words(PROGRAM_PAGE))
        (pause,) = re.findall(r"PAUSE_AFTER_UNLOCK\{(\d+)\}", self.source["src/app/main.cc"])
        for page in (PROGRAM_PAGE, HANDLER_PAGE):
            self.assertIn(f"{pause} milliseconds", words(page))
        (value,) = re.findall(r"LONGEST_VALUE = (\d+);",
                              self.source["src/app/NetworkManagerConfig.h"])
        self.assertIn(f"up to {value} bytes", words(PROGRAM_PAGE))
        (line,) = re.findall(r"define INI_BUFFERSIZE (\d+)", self.source["src/ini/ini.h"])
        self.assertIn(f"lines of a keyfile up to {int(line) - 1} bytes", words(PROGRAM_PAGE))

    def test_none_is_too_long_to_be_read(self):
        for name, page in zip(NAMES, PAGES):
            self.assertLessEqual(page.count("\n"), LONGEST_PAGE, name)

    def test_each_leads_to_the_others(self):
        known = {tuple(name.rsplit(".", 1)) for name in NAMES}
        for name, page in zip(NAMES, PAGES):
            named = set(re.findall(r"(zor-network-[\w-]+)(?:\\fR\(| )(\d)\b", page))
            self.assertEqual(named - known, set(), name)
            self.assertIn("\n.Sh SEE ALSO\n", page)
        for other in known - {("zor-network-manager", "1")}:
            self.assertIn(f"\n.Xr {other[0]} {other[1]}", PROGRAM_PAGE)


def words(page):
    """A page without the ends of its lines."""
    return " ".join(page.split())


def literals(code):
    """The string literals of a piece of C++; neighbours count as one."""
    one = r'"(?:\\.|[^"\\\n])*"'
    return [re.sub(r"\\(.)", r"\1", "".join(part[1:-1] for part in re.findall(one, text)))
            for text in re.findall(rf"{one}(?:\s*{one})*", code)]


def arguments(line, macro):
    """What a macro is applied to on a line of a manual page, without escapes."""
    quoted = re.findall(rf'\b{macro} (?:"([^"]*)"|(\S+))', line)
    return [(long or short).replace("\\(aq", "'").strip() for long, short in quoted]


tap.main()
