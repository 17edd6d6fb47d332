# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A session bus with accessibility, and what can be asked there."""
import os
import shutil

import gi

from tests.support.limit import LIMIT

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

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
        self._session = _connect(address)
        (address,) = _call(self._session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus",
                           "GetAddress")
        self._accessibility = _connect(address)

    def owner(self, name):
        """The process that goes by a name on the session bus, or None."""
        return _process_of(self._session, name)

    def take(self, name):
        """Owns a name on the session bus, and answers nothing that is asked of it."""
        _call(self._session, "org.freedesktop.DBus", "/org/freedesktop/DBus",
              "org.freedesktop.DBus", "RequestName", GLib.Variant("(su)", (name, 0)))

    def release(self, name):
        """Gives it back."""
        _call(self._session, "org.freedesktop.DBus", "/org/freedesktop/DBus",
              "org.freedesktop.DBus", "ReleaseName", GLib.Variant("(s)", (name,)))

    def ask(self, objects, interface, method, arguments=None):
        """Calls a method of many objects on the accessibility bus; their answers, in this order.

        An object is its owner and path. All are asked at once, which takes a fraction of the time.
        """
        answers = {}
        for index, (owner, path) in enumerate(objects):
            self._accessibility.call(
                owner, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                int(LIMIT * 1000), None,
                lambda _, answer, index: answers.update({index: answer}), index)
        while len(answers) < len(objects):
            GLib.MainContext.default().iteration(True)
        return [self._accessibility.call_finish(answers[index]).unpack()
                for index in range(len(objects))]

    def application(self, pid):
        """The owner's name and the path of a process' (or its child's) root object, or None."""
        try:
            (applications,) = _call(self._accessibility, "org.a11y.atspi.Registry",
                                    "/org/a11y/atspi/accessible/root",
                                    "org.a11y.atspi.Accessible", "GetChildren")
        except GLib.Error:
            return None
        for owner, path in applications:
            found = _process_of(self._accessibility, owner)
            if found and pid in (found, _parent_of(found)):
                return owner, path
        return None


def _connect(address):
    flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
             | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
    connection.set_exit_on_close(False)
    return connection


def _call(connection, owner, path, interface, method, arguments=None):
    return connection.call_sync(owner, path, interface, method, arguments, None,
                                Gio.DBusCallFlags.NONE, int(LIMIT * 1000), None).unpack()


def _process_of(connection, name):
    try:
        return _call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                     "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                     GLib.Variant("(s)", (name,)))[0]
    except GLib.Error:
        return None


def _parent_of(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
            return int(file.read().rpartition(")")[2].split()[1])
    except (FileNotFoundError, ProcessLookupError):
        return 0
