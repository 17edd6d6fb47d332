# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A session bus with accessibility, and what can be asked there."""
import os
import shutil
from functools import partial

import dbus
import dbus.bus

from tests.support.limit import LIMIT

# Only accessibility is started on demand: the machine's other services would disturb and print.
_BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <servicedir>{folder}/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
ACCESSIBILITY_SERVICE = "/usr/share/dbus-1/services/org.a11y.Bus.service"


def configure(folder):
    """Makes a folder for a bus; returns the path of the bus' configuration."""
    os.makedirs(os.path.join(folder, "services"))
    shutil.copy(ACCESSIBILITY_SERVICE, os.path.join(folder, "services"))
    path = os.path.join(folder, "session.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write(_BUS_CONFIG.format(folder=folder))
    return path


class Bus:
    """The session bus at an address, and the accessibility bus that it knows."""

    def __init__(self, address):
        self._session = dbus.bus.BusConnection(address)
        self._accessibility = dbus.bus.BusConnection(
            _call(self._session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"))

    def owner(self, name):
        """The process that goes by a name on the session bus, or None."""
        return _process_of(self._session, name)

    def ask(self, reference, interface, method, *arguments, signature=""):
        """Calls a method of an object, given by its owner and path, on the accessibility bus.

        Raises dbus.DBusException if there is no such object, or no longer.
        """
        return self.ask_all([reference], interface, method, *arguments,
                            signature=signature)[reference]

    def ask_all(self, references, interface, method, *arguments, signature=""):
        """Calls the same method of many objects; returns their answers by object.

        None is waited for before the next is asked, which is several times as fast.
        """
        answers, errors = dict.fromkeys(references), []
        asked = [self._accessibility.call_async(
            *reference, interface, method, signature, arguments,
            partial(answers.__setitem__, reference), errors.append,
            timeout=LIMIT, require_main_loop=False) for reference in references]
        for answer in asked:
            answer.block()
        if errors:
            raise errors[0]
        return answers

    def application(self, pid):
        """The owner's name and the path of a process' (or its child's) root object, or None."""
        try:
            applications = _call(self._accessibility, "org.a11y.atspi.Registry",
                                 "/org/a11y/atspi/accessible/root",
                                 "org.a11y.atspi.Accessible", "GetChildren")
        except dbus.DBusException:
            return None
        for owner, path in applications:
            found = _process_of(self._accessibility, owner)
            if found and pid in (found, _parent_of(found)):
                return owner, path
        return None


def _call(connection, owner, path, interface, method, *arguments, signature=""):
    return connection.call_blocking(owner, path, interface, method, signature, arguments,
                                    timeout=LIMIT)


def _process_of(connection, name):
    try:
        return _call(connection, dbus.BUS_DAEMON_NAME, dbus.BUS_DAEMON_PATH, dbus.BUS_DAEMON_IFACE,
                     "GetConnectionUnixProcessID", name, signature="s")
    except dbus.DBusException:
        return None


def _parent_of(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
            return int(file.read().rpartition(")")[2].split()[1])
    except (FileNotFoundError, ProcessLookupError):
        return 0
