# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The accessibility conformance report has the form that is asked of it, and tests behind its lines."""
import re
import unittest

import yaml

from tests.support import tap
from tests.support.files import source

REPORT = yaml.safe_load(source("docs", "accessibility.yaml"))
LEVELS = {"supports", "partially-supports", "does-not-support", "not-applicable"}
# The criteria of the guidelines (WCAG 2.1) and of the section on functions (508, 302), by chapter.
CRITERIA = {
    "success_criteria_level_a":
        "1.1.1 1.2.1 1.2.2 1.2.3 1.3.1 1.3.2 1.3.3 1.4.1 1.4.2 2.1.1 2.1.2 2.1.4 2.2.1 2.2.2 2.3.1 "
        "2.4.1 2.4.2 2.4.3 2.4.4 2.5.1 2.5.2 2.5.3 2.5.4 3.1.1 3.2.1 3.2.2 3.3.1 3.3.2 4.1.1 4.1.2",
    "success_criteria_level_aa":
        "1.2.4 1.2.5 1.3.4 1.3.5 1.4.3 1.4.4 1.4.5 1.4.10 1.4.11 1.4.12 1.4.13 2.4.5 2.4.6 2.4.7 "
        "3.1.2 3.2.3 3.2.4 3.3.3 3.3.4 4.1.3",
    "functional_performance_criteria":
        "302.1 302.2 302.3 302.4 302.5 302.6 302.7 302.8 302.9",
}
DISABLED = {"success_criteria_level_aaa", "hardware", "software",
            "support_documentation_and_services"}


def adherences():
    """Number, level and notes of each criterion."""
    for chapter in CRITERIA:
        for criterion in REPORT["chapters"][chapter]["criteria"]:
            (component,) = criterion["components"]
            yield criterion["num"], component["adherence"]["level"], component["adherence"]["notes"]


class Conformance(unittest.TestCase):

    def test_report_has_the_form_that_is_asked_of_it(self):
        for key in ("title", "product", "author", "vendor", "report_date", "catalog",
                    "evaluation_methods_used", "chapters"):
            self.assertIn(key, REPORT)
        self.assertIn(f"version: '{REPORT['product']['version']}'", source("meson.build"))
        self.assertEqual(set(REPORT["chapters"]), {*CRITERIA, *DISABLED})
        for chapter in DISABLED:
            self.assertIs(REPORT["chapters"][chapter]["disabled"], True)
            self.assertTrue(REPORT["chapters"][chapter]["notes"], chapter)
        for chapter, numbers in CRITERIA.items():
            criteria = REPORT["chapters"][chapter]["criteria"]
            self.assertEqual([criterion["num"] for criterion in criteria], numbers.split())
            # What is said of people, and not of what they use, has no component.
            name = "none" if chapter == "functional_performance_criteria" else "software"
            for criterion in criteria:
                (component,) = criterion["components"]
                self.assertEqual(component["name"], name)
        for number, level, notes in adherences():
            self.assertIn(level, LEVELS, number)
            self.assertTrue(notes.strip(), number)

    def test_each_line_has_a_test_behind_it(self):
        for number, level, notes in adherences():
            tests = re.findall(r"^Test: (\S+) (\w+)\.(\w+)$", notes, re.M)
            with self.subTest(number):
                self.assertEqual(not tests, level == "not-applicable")
                for path, suite, name in tests:
                    if path.endswith(".cc"):
                        self.assertIn(f"TEST_F({suite}, {name})", source(path))
                    else:
                        code = source(path).partition(f"\nclass {suite}(")[2].partition("\nclass ")[0]
                        self.assertIn(f"\n    def {name}(self):\n", code)


tap.main()
