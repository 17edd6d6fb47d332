# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What is typed in the window becomes the device's network, by way of a real NetworkManager.

For root. The program runs as an ordinary user in
production mode; a privileged program that does what it is asked for stands in front on PATH.
"""
import ipaddress
import os
import shutil
import sys
import unittest

from tests.networkmanager import network
from tests.support import tap
from tests.support.desktop import Desktop, missing_tools, wait_until
from tests.support.files import SAMPLES, SOURCES, source
from tests.support.isolation import SYSTEM_CONNECTIONS
from tests.support.program import Program

USER = 65534
KEYFILE = os.path.join(SYSTEM_CONNECTIONS, "ethernet.nmconnection")
INSTALLED = os.path.join(network.KEYFILES, "ethernet.nmconnection")
SAMPLE = os.path.join(SAMPLES, "ethernet.nmconnection")
BIN = "/tmp/bin"

LABELS = ("IP Address", "Subnet Mask", "Default Gateway", "DNS Server")
# Prefixes that no default would give, on two networks.
FIRST = ("10.20.30.40", "255.255.240.0", "10.20.16.1", "10.20.16.53")
SECOND = ("172.16.5.9", "255.255.252.0", "172.16.4.1", "172.16.7.53")


def with_prefix(address, mask):
    """ADDRESS/PREFIX."""
    return ipaddress.ip_interface(f"{address}/{mask}").with_prefixlen


class Ethernet(unittest.TestCase):

    maxDiff = None

    def save(self, mode, *entries):
        """Starts the program, chooses a mode, fills the entries, saves; waits for the effects."""
        environment = {"PATH": BIN + ":" + os.environ["PATH"], "G_DEBUG": "fatal-warnings"}
        with Program(self.desktop, [os.path.join(BIN, "program")], environment) as program:
            program.pick(mode)
            for label, text in zip(LABELS, entries):
                program.fill(label, text)
            wait_until(lambda: os.stat(KEYFILE).st_uid == USER, "the keyfiles to be unlocked")
            program.button("Save And Exit")
            # The requests are over too: their streams are the program's.
            self.assertEqual(program.finish(), 0, program.errors)
        self.assertEqual(program.errors, "", network.messages())
        self.assertEqual(os.stat(KEYFILE).st_uid, 0, "the keyfiles are not locked again")

    def assert_network(self, address, gateway, dns):
        found = {"keyfiles": network.loaded_keyfiles(), "addresses": network.addresses(),
                 "gateways": network.gateways_in_use(), "name servers": network.name_servers(),
                 "gateway answers": network.answers(gateway)}
        self.assertEqual(
            found, {"keyfiles": [INSTALLED], "addresses": [address],
                    "gateways": [(gateway, "eth0")], "name servers": [dns],
                    "gateway answers": True}, network.messages())

    def assert_static(self, address, mask, gateway, dns):
        self.assert_network(with_prefix(address, mask), gateway, dns)

    def assert_leased(self):
        addresses = network.addresses()
        self.assertEqual(len(addresses), 1, network.messages())
        (address,) = addresses
        self.assert_network(address, network.LEASED_ROUTER, network.LEASED_DNS)
        interface = ipaddress.ip_interface(address)
        self.assertEqual(interface.network, network.LEASED_NETWORK)
        self.assertTrue(network.LEASED_FIRST <= interface.ip <= network.LEASED_LAST, address)

    def test_static_then_dynamic_then_static(self):
        self.assertEqual(network.addresses(), [])
        self.save("Static IP", *FIRST)
        self.assert_static(*FIRST)
        self.save("Dynamic IP")
        self.assert_leased()
        self.save("Static IP", *SECOND)
        self.assert_static(*SECOND)


def install(program):
    """Puts the programs where the user finds them, and the first keyfile."""
    os.mkdir(BIN)
    shutil.copy(program, os.path.join(BIN, "program"))
    # A script can not be given to root, its interpreter can.
    interpreter = shutil.copy(os.path.realpath(sys.executable), os.path.join(BIN, "as-root"))
    os.chmod(interpreter, 0o4755)
    handler = os.path.join(BIN, "zor-network-permissions-handler")
    with open(handler, "w", encoding="utf-8") as target:
        target.write(f"#!{interpreter} -IS\n{source('tests', 'networkmanager', 'handler.py')}")
    os.chmod(handler, 0o755)
    # The user can read the keyfiles before they are unlocked, as the request may take its time.
    shutil.copy(SAMPLE, KEYFILE)
    for path, mode in ((SYSTEM_CONNECTIONS, 0o750), (KEYFILE, 0o640)):
        os.chown(path, 0, USER)
        os.chmod(path, mode)


def run_as_user(task):
    """Runs a task in a process of the user; returns its status. This one stays root's."""
    child = os.fork()
    if child:
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    os.chdir("/")
    os.setgroups([])
    os.setresgid(USER, USER, USER)
    os.setresuid(USER, USER, USER)
    return task()


def run_tests():
    """Runs the tests on a desktop of the user's."""
    with Desktop() as Ethernet.desktop:
        tap.main()


def main():
    """Runs the tests, or says why not."""
    program = os.path.realpath(sys.argv[1])
    lacking = ", ".join(filter(None, (missing_tools(), network.missing_tools())))
    reason = f"not installed: {lacking}" if lacking else network.enter(
        SOURCES, os.path.dirname(program))
    tap.require_nothing(reason)
    del sys.argv[1]
    os.umask(0o022)
    network.set_up([with_prefix(gateway, mask) for _, mask, gateway, _ in (FIRST, SECOND)])
    install(program)
    sys.exit(run_as_user(run_tests))


main()
