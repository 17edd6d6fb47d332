# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A speech service that says nothing and remembers everything, and the screen reader Orca on it."""
import html
import json
import os
import re
import shutil
import socketserver
import subprocess
import threading
import time

from tests.support.desktop import bound_to_us
from tests.support.limit import LIMIT, wait_until

# Neither the keys that were pressed nor what a person types is repeated: only the window is heard.
_SETTINGS = {"general": {"enableKeyEcho": False, "enableEchoByCharacter": False,
                         "enableSpeech": True, "enableBraille": False},
             "profiles": {"default": {"profile": ["Default", "default"]}}, "pronunciations": {},
             "keybindings": {}}


class _Client(socketserver.StreamRequestHandler):
    """Answers in the protocol of speech services (SSIP): each command succeeds at once."""

    def _answer(self, *lines):
        self.wfile.write("".join(line + "\r\n" for line in lines).encode())

    def handle(self):
        for line in self.rfile:
            command, *words = line.decode().split()
            command = command.upper()
            if command == "SPEAK":
                self._answer("230 OK RECEIVING DATA")
                text = b"".join(iter(self.rfile.readline, b".\r\n")).decode()
                words = html.unescape(re.sub("<[^>]*>", "", text)).split()
                self.server.hear(" ".join(words))
                self._answer("225-1", "225 OK MESSAGE QUEUED")
            elif command == "QUIT":
                self._answer("231 HAPPY HACKING")
                return
            elif command == "LIST" and words[0].upper() == "SYNTHESIS_VOICES":
                self._answer("249-voice\ten\tnone", "249 OK VOICE LIST SENT")
            elif command == "LIST":
                self._answer("250-silent", "250 OK LIST SENT")
            elif command in ("GET", "HISTORY"):
                self._answer("245-1", "245 OK SENT")
            else:
                self._answer("208 OK DONE")


class SpeechService(socketserver.ThreadingUnixStreamServer):
    """with SpeechService(desktop) as service; what was to be spoken: service.take()."""

    daemon_threads = True

    def __init__(self, desktop):
        folder = os.path.join(desktop.environment["XDG_RUNTIME_DIR"], "speech-dispatcher")
        os.makedirs(folder, exist_ok=True)
        self._heard = []
        self._last = time.monotonic()
        super().__init__(os.path.join(folder, "speechd.sock"), _Client)
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def hear(self, text):
        self._heard.append(text)
        self._last = time.monotonic()

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()

    def take(self, quiet=1.2):
        """What was to be spoken since the last time, once no more comes for so many seconds."""
        self._last = time.monotonic()
        wait_until(lambda: time.monotonic() - self._last > quiet, "the end of it")
        heard, self._heard = self._heard, []
        return heard


class Orca:
    """with Orca(desktop): the screen reader, from its greeting on."""

    def __init__(self, desktop):
        folder = os.path.join(desktop.folder, "orca")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "user-settings.conf"), "w", encoding="utf-8") as file:
            json.dump(_SETTINGS, file)
        # It has a window itself, which nobody is to find.
        self._process = subprocess.Popen(
            bound_to_us(shutil.which("orca"), "--user-prefs", folder),
            env={**desktop.environment, "GTK_A11Y": "none", "NO_AT_BRIDGE": "1"},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.terminate()
        try:
            self._process.wait(LIMIT)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()


def version_of_orca():
    """Such as "43.1"; None where it is not installed."""
    if not shutil.which("orca"):
        return None
    done = subprocess.run(["orca", "--version"], capture_output=True, text=True, check=False)
    return done.stdout.strip() or None
