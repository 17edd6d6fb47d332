#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Prints how many tests of a run passed, failed and were skipped, and fails if one did.

usage: count_tests.py JUNIT_XML STATUS

STATUS is the test runner's own: a run that ended badly has a failure, even one that no test shows.
"""
import sys
import xml.etree.ElementTree


def main(report, status):
    passed = failed = skipped = 0
    for case in xml.etree.ElementTree.parse(report).iter("testcase"):
        if case.find("failure") is not None or case.find("error") is not None:
            failed += 1
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
