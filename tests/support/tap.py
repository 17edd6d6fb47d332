# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Runs the unittest cases of the calling file and reports them in the Test Anything Protocol."""
import os
import sys
import unittest


class _Result(unittest.TestResult):
    """One point a test. Why one failed goes to standard error: of a failed program that is shown."""

    def __init__(self, stream):
        super().__init__()
        self.tap = stream
        self.points = 0

    def _point(self, verdict, test, directive=""):
        self.points += 1
        name = test.id().removeprefix("__main__.")
        print(f"{verdict} {self.points} - {name}{directive}", file=self.tap, flush=True)

    def _failed(self, test, text):
        print(text.rstrip(), file=sys.stderr)
        self._point("not ok", test)

    def startTest(self, test):
        super().startTest(test)
        self.failed = []

    def stopTest(self, test):
        if self.failed:
            self._failed(test, "\n".join(self.failed))
        super().stopTest(test)

    def _note(self, test, error):
        text = self._exc_info_to_string(error, test)
        if isinstance(test, unittest.TestCase):
            self.failed.append(text)
        else:  # setting up a whole class failed: none of its tests runs
            self._failed(test, text)

    def addSuccess(self, test):
        self._point("ok", test)

    def addFailure(self, test, err):
        super().addFailure(test, err)
        self._note(test, err)

    def addError(self, test, err):
        super().addError(test, err)
        self._note(test, err)

    def addSubTest(self, test, subtest, err):
        super().addSubTest(test, subtest, err)
        if err is not None:
            self._note(test, err)
            self.failed[-1] = f"{subtest.id()}\n{self.failed[-1]}"

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self._point("ok", test, f" # SKIP {reason}")


def require_nothing(missing):
    """Ends the program if something is missing here: skips all its tests, which CI must not do."""
    if missing and os.environ.get("CI"):
        sys.exit(f"cannot run here: {missing}")
    if missing:
        print(f"1..0 # SKIP {missing}", flush=True)
        sys.exit(0)


def main():
    """Runs all tests of the calling file, or those named on the command line."""
    module = sys.modules["__main__"]
    loader = unittest.defaultTestLoader
    names = [name for name in sys.argv[1:] if not name.startswith("/")]
    suite = (loader.loadTestsFromNames(names, module) if names
             else loader.loadTestsFromModule(module))
    # Only what is reported here may stand on standard output.
    result = _Result(sys.stdout)
    suite.run(result)
    print(f"1..{result.points}", flush=True)
    sys.exit(0 if result.wasSuccessful() else 1)
