# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""From the window to the network, by way of the example privileged program and a real daemon.

For root. The window's program runs in production mode, as an ordinary user who can gain no
privileges; the example is a service.
"""
import ipaddress
import os
import shutil
import sys
import unittest

from tests.support import tap
from tests.support.desktop import Desktop, missing_tools
from tests.support.files import SOURCES, expected, read
from tests.support.limit import wait_until
from tests.support.program import Program

from . import device, network
from .device import (CLIENT, ETHERNET, EXAMPLE, HANDLER, INSTALLED, READERS, RUN, USER, WIFI,
                     WORKING_COPY)

BIN = os.path.dirname(CLIENT)
LABELS = ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server")
# Prefixes that no default would give, on two networks.
FIRST = ("10.20.30.40", "255.255.240.0", "10.20.16.1", "10.20.16.53")
SECOND = ("172.16.5.9", "255.255.252.0", "172.16.4.1", "172.16.7.53")


def with_prefix(address, mask):
    """ADDRESS/PREFIX."""
    return ipaddress.ip_interface(f"{address}/{mask}").with_prefixlen


class Device(unittest.TestCase):

    maxDiff = None

    def use(self, *steps):
        """Starts the window, takes steps in it, and waits for the end of all that it asked for."""
        environment = {"PATH": BIN + ":" + os.environ["PATH"], "G_DEBUG": "fatal-warnings"}
        command = ["setpriv", "--no-new-privs", os.path.join(BIN, "program")]
        with Program(self.desktop, command, environment) as program:
            wait_until(lambda: os.stat(WORKING_COPY).st_uid == USER, "the files to be unlocked")
            for step in steps:
                step(program)
            # The requests are over too: their streams are the program's.
            self.assertEqual(program.finish(), 0, program.errors)
        self.assertEqual((os.stat(WORKING_COPY).st_uid, os.stat(WORKING_COPY).st_gid), (0, READERS))
        self.assertEqual(sorted(os.listdir(WORKING_COPY)), [ETHERNET, WIFI])
        return program

    def save(self, mode, *entries):
        """Saves the page of Ethernet."""
        def choose(program):
            program.pick(mode)
            for label, text in zip(LABELS, entries):
                program.fill(label, text)

        program = self.use(choose, lambda program: program.button("Save And Exit"))
        self.assertEqual(program.errors, "", network.messages())

    def assert_network(self, address, gateway, dns):
        found = {"addresses": network.addresses(), "gateways": network.gateways_in_use(),
                 "name servers": network.name_servers(), "answers": network.answers(gateway)}
        self.assertEqual(found, {"addresses": [address], "gateways": [(gateway, "eth0")],
                                 "name servers": [dns], "answers": True}, network.messages())

    def assert_static(self, address, mask, gateway, dns):
        self.assert_network(with_prefix(address, mask), gateway, dns)
        record = [0, *(int(octet) for text in (address, mask, gateway)
                       for octet in text.split("."))]
        self.assertEqual(read(RUN, "ethernet-settings").decode(),
                         "".join(f"{octet:02X} " for octet in record))

    def assert_leased(self):
        (address,) = network.addresses()
        self.assert_network(address, network.LEASED_ROUTER, network.LEASED_DNS)
        self.assertEqual(ipaddress.ip_interface(address).network, network.LEASED_NETWORK)


class Ethernet(Device):

    def test_each_save_becomes_the_network(self):
        self.save("Static IP", *FIRST)
        self.assert_static(*FIRST)
        self.save("Dynamic IP")
        self.assert_leased()
        self.save("Static IP", *SECOND)
        self.assert_static(*SECOND)

    def test_leaving_without_saving_changes_nothing(self):
        self.save("Static IP", *SECOND)
        before = read(WORKING_COPY, ETHERNET)
        self.use(lambda program: program.fill("IP Address", "10.1.1.1"),
                 lambda program: program.button("Exit Without Saving"))
        self.assertEqual(read(WORKING_COPY, ETHERNET), before)
        self.assert_static(*SECOND)

    def test_refused_change_of_the_mode_is_undone(self):
        self.save("Dynamic IP")
        before = read(WORKING_COPY, ETHERNET)

        def be_refused(program):
            program.pick("Static IP")
            program.fill("IP Address", "300.1.1.1")
            program.button("Save And Exit")
            wait_until(program.dialog, "the entries to be refused")
            self.assertNotEqual(read(WORKING_COPY, ETHERNET), before)  # the default file by now
            program.button("OK")
            wait_until(lambda: not program.dialog(), "the dialog to close")

        self.use(be_refused, lambda program: program.button("Exit Without Saving"))
        self.assertEqual(read(WORKING_COPY, ETHERNET), before)
        self.assert_leased()

    def test_what_only_the_form_takes_leaves_all_as_it_was(self):
        self.save("Dynamic IP")
        before = read(WORKING_COPY, ETHERNET)

        def choose(program):
            program.pick("Static IP")
            for label, text in zip(LABELS, ("10.20.30.040", *FIRST[1:])):
                program.fill(label, text)
            program.button("Save And Exit")

        program = self.use(choose)
        self.assertIn("ethernet.nmconnection: NetworkManager cannot read it", program.errors)
        self.assertEqual(read(WORKING_COPY, ETHERNET), before)
        self.assert_leased()


def install(handler, program):
    """Installs the programs."""
    device.install(handler)
    shutil.copy(program, os.path.join(BIN, "program"))


def run_as_user(task):
    """Runs a task in a process of the user; returns its status. This one stays root's."""
    child = os.fork()
    if child:
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    os.chdir("/")
    os.setgroups([READERS])
    os.setresgid(USER, USER, USER)
    os.setresuid(USER, USER, USER)
    return task()


def run_tests():
    """Runs the tests in a desktop of the user's."""
    with Desktop() as Device.desktop:
        tap.main()


def main():
    """Runs the tests, or says why not."""
    handler, program = (os.path.realpath(path) for path in sys.argv[1:3])
    lacking = ", ".join(filter(None, (missing_tools(), network.missing_tools(),
                                      device.missing_tools())))
    reason = f"not installed: {lacking}" if lacking else network.enter(
        SOURCES, os.path.dirname(handler), os.path.dirname(program))
    tap.require_nothing(reason)
    del sys.argv[1:3]
    os.umask(0o022)
    install(handler, program)
    network.set_up([with_prefix(gateway, mask) for _, mask, gateway, _ in (FIRST, SECOND)],
                   config_dir=EXAMPLE)
    # After that, for a device that begins without an address.
    device.write(expected("ethernet-default"), INSTALLED, ETHERNET)
    device.write(expected("client"), INSTALLED, WIFI)
    status = os.spawnl(os.P_WAIT, HANDLER, HANDLER, "rollback")  # as at the start of the system
    device.start_service()
    sys.exit(status or run_as_user(run_tests))


main()
