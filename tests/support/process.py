# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The program under test as a process: its streams and its end."""
import os
import pty
import subprocess
import threading
import tty

from tests.support.desktop import bound_to_us
from tests.support.limit import LIMIT, wait_until

APPLICATION_ID = "org.gtkmm.example"


class _Stream:
    """Collects all that comes through a descriptor until its last writer is gone."""

    def __init__(self, descriptor):
        self.content = b""
        self._descriptor = descriptor
        self._thread = threading.Thread(target=self._collect, daemon=True)
        self._thread.start()

    def _collect(self):
        while True:
            try:
                piece = os.read(self._descriptor, 65536)
            except OSError:  # a terminal whose other side is gone
                break
            if not piece:
                break
            self.content += piece
        os.close(self._descriptor)

    def join(self):
        """Waits for the end, that is for the program and for all that it has started."""
        self._thread.join(LIMIT)
        if self._thread.is_alive():
            raise TimeoutError("a stream stays open after the program's end")


class Process:
    """A run of the program. `with Process(...)` makes sure that it ends.

    stdout: "pipe", "terminal", or a descriptor to hand over. wrapper: a command in front.
    """

    def __init__(self, desktop, command, environment=None, stdout="pipe", wrapper=(), cwd=None):
        self.desktop = desktop
        self._streams = {}
        handle, opened = stdout, []
        if stdout == "pipe":
            reader, handle = os.pipe()
            opened.append(handle)
        elif stdout == "terminal":
            reader, handle = pty.openpty()
            tty.setraw(handle)  # else each line feed gets a carriage return
            opened.append(handle)
        if opened:
            self._streams["out"] = _Stream(reader)
        reader, errors = os.pipe()
        opened.append(errors)
        self._streams["err"] = _Stream(reader)
        command = bound_to_us(*command)
        if wrapper:
            command = bound_to_us(*wrapper, *command)
        self.process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=handle, stderr=errors,
            env={**desktop.environment, **(environment or {})}, cwd=cwd)
        for descriptor in opened:
            os.close(descriptor)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._wait_until_gone()
        wait_until(lambda: not self.desktop.windows(), "the windows to go")

    def _wait_until_gone(self):
        # The next run is taken for a second instance while this one is still known on the bus.
        wait_until(lambda: self.desktop.bus.owner(APPLICATION_ID) != self.process.pid,
                   "the bus to take notice")

    @property
    def output(self):
        """What came on standard output, byte for byte; bytes that are no UTF-8 as escapes."""
        return self._streams["out"].content.decode("utf-8", "surrogateescape")

    @property
    def errors(self):
        """The same for standard error."""
        return self._streams["err"].content.decode("utf-8", "surrogateescape")

    def wait_for_output(self, text):
        """Waits until a text stands on standard output."""
        wait_until(lambda: text in self.output or self.process.poll() is not None,
                   f"{text!r} on standard output")
        assert text in self.output, f"ended without {text!r}:\n{self.output}{self.errors}"

    def finish(self):
        """Waits for the end of the program and of what it started; returns its exit status."""
        status = self.process.wait(LIMIT)
        self._wait_until_gone()
        for stream in self._streams.values():
            stream.join()
        return status
