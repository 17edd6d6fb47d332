# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program as a service: asked by its client, or by a user who means harm."""
import contextlib
import fcntl
import os
import shlex
import socket
import subprocess
import time
import unittest

from tests.support.files import read
from tests.support.limit import wait_until

from . import device, device_case, test_requests
from .device import CLIENT, HANDLER, READERS, RUN, SOCKET, USER, WORKING_COPY, as_user, write
from .device_case import (CLIENT as CLIENT_KEYFILE, DYNAMIC, DeviceCase, SLOW_SUDO, STATIC,
                          is_waited_for, locks_of, unread_log)

ANOTHER = USER - 1
STREAMS = {"text": True, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}


@unittest.skipIf(device.missing_tools(), device.missing_tools())
class ByService(DeviceCase):
    """Requests go through the client, from processes that can gain no privileges."""

    @classmethod
    def setUpClass(cls):
        cls.service = device.start_service()

    @classmethod
    def tearDownClass(cls):
        cls.service.kill()
        cls.service.wait()
        os.remove(SOCKET)

    def call_sudo(self, user=USER, pause=0.03):
        """A process that will become the client later."""
        process = subprocess.Popen(as_user(user, SLOW_SUDO), stdin=subprocess.PIPE, **STREAMS)
        time.sleep(pause)
        return process

    def start(self, *arguments, user=USER, sudo=None, **options):
        if sudo:
            sudo.stdin.write("exec " + shlex.join([CLIENT, *arguments]) + "\n")
            sudo.stdin.flush()
            return sudo
        return subprocess.Popen(as_user(user, CLIENT, *arguments), **STREAMS, **options)


class RequestsByService(ByService, test_requests.Requests):
    """Each request does the same, however it is asked for."""


class Client(ByService):

    def test_wrong_calls_are_answered(self):
        for arguments in ((), ("",), ("Unlock",), ("unlock", "x"), ("rollback", ""),
                          ("finalize_wifi", "a", "b"), ("finalize_wifi", 100 * "x"),
                          ("finalize_wifi", 100000 * "x"), ("", "unlock")):
            with self.subTest(arguments=str(arguments)[:40]):
                status, errors = self.ask(*arguments)
                self.assertEqual(status, 2)
                self.assertEqual(errors, "zor-network-permissions-handler: usage: unlock | "
                                         "rollback | finalize_ethernet [ID] | finalize_wifi [ID]\n")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)

    def test_answer_is_printed_and_the_status_handed_on(self):
        self.assertEqual(self.ask("finalize_ethernet", "x"), (
            1, "zor-network-permissions-handler: finalize_ethernet: ethernet.nmconnection: "
               "nothing was unlocked before\n"))

    def test_closed_streams_do_no_harm(self):
        for first in range(3):
            process = subprocess.Popen(as_user(USER, CLIENT, "finalize_wifi"),
                                       preexec_fn=lambda: os.closerange(first, 3))
            self.assertEqual(process.wait(), 1)

    def test_who_is_not_of_the_group_is_told_so(self):
        done = subprocess.run(as_user(USER, CLIENT, "unlock", groups=()), **STREAMS, check=False)
        self.assertEqual((done.returncode, done.stderr), (
            1, f"zor-network-permissions-handler: {SOCKET}: Permission denied\n"))
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)

    def test_service_that_is_not_there_is_told(self):
        self.tearDownClass()
        self.addCleanup(self.setUpClass)
        for reason in "No such file or directory", "Connection refused":
            self.assertEqual(self.ask("unlock"), (
                1, f"zor-network-permissions-handler: {SOCKET}: {reason}\n"))
            write(b"", SOCKET, owner=USER)
        os.remove(SOCKET)

    @contextlib.contextmanager
    def listener(self):
        """In the place of the service."""
        self.tearDownClass()
        self.addCleanup(self.setUpClass)
        self.addCleanup(os.remove, SOCKET)
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(SOCKET)
            os.chown(SOCKET, USER, USER)
            listener.settimeout(20)
            listener.listen()
            yield listener

    def test_service_that_ends_without_an_answer_is_told(self):
        with self.listener() as listener:
            process = self.start("unlock")
            with listener.accept()[0] as connection:
                self.assertEqual(connection.recv(100), b"unlock\0")
            self.assertEqual(self.finish(process), (
                1, "zor-network-permissions-handler: the service gave no answer\n"))

    def test_service_that_has_too_many_to_serve_is_asked_again(self):
        with self.listener() as listener:
            process = self.start("rollback")
            for count in range(4):
                with listener.accept()[0] as connection:
                    if count % 2:  # closed before, or after the words came
                        connection.recv(1, socket.MSG_PEEK)
            with listener.accept()[0] as connection:
                self.assertEqual(connection.recv(100), b"rollback\0")
                connection.sendall(b"1what is to be said")
            self.assertEqual(self.finish(process), (1, "what is to be said"))


class Peers(ByService):

    @contextlib.contextmanager
    def connected(self, user=USER, path=SOCKET):
        """A connection of a user's."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(60)
            os.setegid(READERS)
            os.seteuid(user)
            try:
                connection.connect(path)
            finally:
                os.seteuid(0)
                os.setegid(0)
            yield connection

    def say(self, text, user=USER):
        """The answer to what is sent, from whomever."""
        with self.connected(user) as connection:
            with contextlib.suppress(OSError):  # the service is not interested in the rest
                connection.sendall(text)
                connection.shutdown(socket.SHUT_WR)
            return connection.recv(4096)

    def test_caller_is_who_has_connected(self):
        self.assertEqual(self.say(b"unlock\0"), b"0")
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)
        self.save_static()
        self.refused("finalize_ethernet", "x", user=ANOTHER, because="another user's")
        self.assertEqual(os.stat(WORKING_COPY).st_uid, USER)
        self.request("unlock", user=ANOTHER)
        self.assertEqual(os.stat(WORKING_COPY).st_uid, ANOTHER)
        self.assertIn(b"no user has asked", self.say(b"unlock\0", user=0))
        self.assertEqual(self.say(b"rollback\0", user=0), b"0")

    def test_what_is_no_request_changes_nothing(self):
        texts = [b"", b"\0", b"unlock", b"unlock\0x", b"unlock\0\0", b"unlock\n", b"\0unlock\0",
                 b"finalize_wifi\0" + 99 * b"x", b"finalize_wifi\0" + 100 * b"x" + b"\0",
                 b"finalize_wifi\0x\0" + 112 * b"\0", b"finalize_wifi\0x\0unlock\0",
                 b"SUDO_UID=0\0unlock\0", 10_000_000 * b"unlock\0", bytes(range(256))]
        for text in texts:
            with self.subTest(text=text[:30]):
                self.assertEqual(self.say(text)[:1], b"2")
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)

    def test_every_byte_can_be_in_an_id(self):
        for byte in range(1, 256):
            self.assertEqual(self.say(b"finalize_wifi\0" + bytes([byte]) + b"\0")[:1], b"1")

    def test_who_says_nothing_is_left_and_nobody_waits_for_him(self):
        with self.connected() as silent, self.connected() as half:
            half.sendall(b"rollback\0")  # and no end
            self.request("unlock")
            self.assertEqual((silent.recv(1), half.recv(1)), (b"", b""))
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)

    def test_who_connects_often_keeps_nobody_else_out(self):
        with contextlib.ExitStack() as connections:
            for _ in range(30):
                connections.enter_context(self.connected())
            wait_until(lambda: locks_of("places") == 24, "all places to be taken")
            refused = b"".join(self.say(b"unlock\0") for _ in range(2))
            self.assertEqual(refused, 2 * b"1zor-network-permissions-handler: too many requests of "
                                          b"this user\n")
            self.request("unlock", user=ANOTHER)
        wait_until(lambda: locks_of("places") == 0, "the places to be free")
        self.request("unlock")

    def test_log_that_is_not_read_gives_nobody_more_places(self):
        with unread_log():
            answers = [self.say(b"x\0")[:1] for _ in range(30)]
            self.assertEqual(b"".join(answers), 24 * b"2" + 6 * b"1")
            self.assertEqual(locks_of("places"), 24)
            self.assertEqual(self.say(b"unlock\0", user=ANOTHER), b"0")
        wait_until(lambda: locks_of("places") == 0, "the places to be free")

    def test_answer_does_not_wait_for_the_log(self):
        with unread_log():
            self.start("unlock").communicate(timeout=20)
            with self.connected() as connection:
                with self.assertRaises(BrokenPipeError):
                    connection.sendall(1_000_000 * b"x")
                self.assertEqual(connection.recv(1), b"2")
            self.assertGreater(locks_of("places"), 0)

    def test_places_that_cannot_be_had_are_told(self):
        path = os.path.join(RUN, "places")
        os.remove(path)
        os.mkdir(path)
        self.refused("unlock", because=path + ": Is a directory")

    def test_request_goes_on_when_its_client_is_gone(self):
        self.request("unlock")
        self.save_static()
        with open(RUN + "/lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = self.start("finalize_ethernet", "x")
            wait_until(is_waited_for, "the request to wait")
            process.kill()
            self.finish(process)
        wait_until(lambda: device_case.nmcli_calls()[-1:] == [
            "-g IP4.ADDRESS connection show uuid 11111111-2222-3333-4444-ethernet"],
            "the activation, and what comes after it")
        self.assert_installed(STATIC, CLIENT_KEYFILE)
        with self.connected() as connection:
            connection.sendall(b"rollback\0")  # and gone before it is begun
        wait_until(lambda: os.stat(WORKING_COPY).st_uid == 0, "the working copy to be locked")

    def test_connection_that_sudo_hands_down_is_not_asked(self):
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind("/run/trap")
            self.addCleanup(os.remove, "/run/trap")
            os.chmod("/run/trap", 0o666)
            listener.settimeout(20)
            listener.listen()
            with self.connected(ANOTHER, "/run/trap") as caller, listener.accept()[0] as connection:
                caller.sendall(b"unlock\0")
                caller.shutdown(socket.SHUT_WR)
                done = subprocess.run([HANDLER], stdin=connection, env=self.environment(USER),
                                      **STREAMS, check=False)
        self.assertEqual(done.returncode, 2)
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT_KEYFILE)

    def test_connection_of_another_machine_is_not_asked(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            with socket.create_connection(listener.getsockname()) as caller:
                caller.sendall(b"rollback\0")
                caller.shutdown(socket.SHUT_WR)
                with listener.accept()[0] as connection:
                    done = subprocess.run([HANDLER], stdin=connection, env={}, **STREAMS,
                                          check=False)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("usage", done.stderr)


device_case.main()
