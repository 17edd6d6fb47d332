# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the tests of the whole program share: a desktop, private folders, runs and comparisons."""
import os
import shutil
import signal
import stat
import sys
import tempfile
import unittest

from tests.support import isolation, tap
from tests.support.files import SAMPLES, SOURCES, UPDATE_RECORD, read
from tests.support.recorder import Recorder

try:
    from tests.support import desktop
    from tests.support.program import Program
    _MISSING = desktop.missing_tools()
except (ImportError, ValueError) as error:
    _MISSING = str(error)



def main():
    """Runs the tests of the calling file: PROGRAM [TEST...]."""
    program = os.path.realpath(sys.argv[1])
    reason = _MISSING and f"not installed: {_MISSING}"
    reason = reason or isolation.enter(SOURCES, os.path.dirname(program))
    tap.require_nothing(reason)
    del sys.argv[1]
    # A run in the background begins with some ignored, and would hand that on to the program.
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
        signal.signal(number, signal.SIG_DFL)
    with desktop.Desktop() as ProgramCase.desktop:
        ProgramCase.program = program
        tap.main()


class ProgramCase(unittest.TestCase):
    """A test that runs the program, with the two sample keyfiles in the folder of each mode."""

    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="zor-test-")
        self.addCleanup(shutil.rmtree, self.folder)
        self.recorder = Recorder(self.folder)
        self.connections = os.path.join(self.folder, "connections")
        self.use_samples(self.connections)
        self.use_samples(isolation.SYSTEM_CONNECTIONS)
        if os.path.lexists(UPDATE_RECORD):
            os.remove(UPDATE_RECORD)

    def use_samples(self, folder):
        """Makes the folder anew with the samples alone in it."""
        shutil.rmtree(folder, ignore_errors=True)
        os.mkdir(folder, 0o700)
        for name in os.listdir(SAMPLES):
            self.put(name, read(os.path.join(SAMPLES, name)), folder)

    def put(self, name, content, folder=None):
        """Writes a keyfile; returns its path."""
        path = os.path.join(folder or self.connections, name)
        with open(path, "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        os.chmod(path, 0o600)
        return path

    def path(self, name):
        """The path of a keyfile."""
        return os.path.join(self.connections, name)

    def run_program(self, *arguments, environment=None, **options):
        """Starts the program; it ends with the test at the latest."""
        environment = {
            "PATH": self.recorder.bin + ":" + os.environ["PATH"],
            "ZOR_NETWORKMANAGER_DEBUG_PATH": self.connections,
            "G_DEBUG": "fatal-warnings",  # a warning of the toolkit is our mistake
            **(environment or {})}
        program = Program(self.desktop, [self.program, *arguments], environment, **options)
        self.addCleanup(program.__exit__)
        return program

    def run_debug(self, **options):
        """Starts the program in debug mode."""
        return self.run_program("1", **options)

    def assert_ended(self, program, output, errors="", calls=(), status=0):
        """Waits for the end; compares both streams, the requests and the status."""
        self.assertEqual(program.finish(), status, program.errors)
        self.assertEqual(program.output, output)
        self.assertEqual(program.errors, errors)
        # The last two requests of a run overlap: no order is promised.
        self.assertCountEqual(self.recorder.calls(), [list(call) for call in calls])

    def assert_keyfile(self, path, content):
        """Compares a keyfile, which must be private."""
        # As lines, so that a difference can be read.
        self.assertEqual(read(path).splitlines(True), content.splitlines(True))
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)

    def assert_samples_untouched(self, folder=None):
        """No file was changed, made or removed."""
        folder = folder or self.connections
        self.assertEqual(sorted(os.listdir(folder)), sorted(os.listdir(SAMPLES)))
        for name in os.listdir(SAMPLES):
            self.assertEqual(read(os.path.join(folder, name)), read(os.path.join(SAMPLES, name)))
