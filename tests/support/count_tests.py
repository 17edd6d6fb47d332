#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Prints how many tests of a run passed, failed and were skipped, and fails if one failed.

usage: count_tests.py JUNIT_XML STATUS

STATUS is the test runner's own: a run that ended badly has a failure, even one that no test shows.
What a test has left out because it has no meaning on this system it says in a line that contains
"left out: REASON"; those lines are printed, and are no skipped test.
"""
import re
import sys
import xml.etree.ElementTree


def main(report, status):
    passed = failed = skipped = 0
    tree = xml.etree.ElementTree.parse(report)
    for part in tree.iter():
        reasons = re.findall("left out: .*", part.findtext("system-out") or "")
        for reason in dict.fromkeys(reasons):
            print(part.get("name").rpartition(" ")[2], reason)
    for case in tree.iter("testcase"):
        if case.find("failure") is not None or case.find("error") is not None:
            failed += 1
        elif "left out: " in (case.findtext("system-out") or ""):
            pass
        elif case.find("skipped") is not None:
            skipped += 1
        else:
            passed += 1
    if int(status) != 0 and failed == 0:
        failed = 1
    print(f"{passed} passed, {failed} failed, {skipped} skipped")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
