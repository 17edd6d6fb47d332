# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Saves: what is done in the window, and every state of the keyfile that this may lead to.

The states come from an independent model of the rules of writing, byte for byte.
"""
from tests.ini import model
from tests.support.files import expected



def keyfile(*lines):
    """The bytes of a keyfile."""
    return "".join(line + "\n" for line in lines).encode()


STATIC = keyfile(
    "# wired, by hand", "[connection]", "id=ethernet", "uuid=7c5b0c9e-3f0a-4a8e-9a52-0e7c6f4f1d11",
    "type=ethernet", "autoconnect-priority=-999", "interface-name=eth0", "autoconnect=true", "",
    "[ethernet]", "mtu=1400", "", "[ipv4]", "method=manual", "address1=10.0.0.5/8,10.0.0.1",
    "dns=10.0.0.2", "route1=10.9.0.0/16,10.0.0.3", "", "[ipv6]", "addr-gen-mode=stable-privacy",
    "method=auto", "", "[proxy]")
DYNAMIC = keyfile("[connection]", "id=lan", "type=ethernet", "", "[ipv4]", "method=auto")
CLIENT = keyfile(
    "[connection]", "id=ZOR", "uuid=0d5b4d0e-8c37-4a0b-8b5c-2f1f4a0a6a01", "type=wifi",
    "autoconnect=true", "interface-name=wlan0", "permissions=user:zor:;", "", "[wifi]",
    "mode=infrastructure", "ssid=Workshop", "", "[wifi-security]", "auth-alg=open",
    "key-mgmt=wpa-psk", "psk=correct horse 42", "", "[ipv4]", "method=auto", "", "[ipv6]",
    "addr-gen-mode=stable-privacy", "method=auto")

WIRED_VALUES = [
    ("connection", "id", "ethernet"), ("connection", "type", "ethernet"),
    ("connection", "autoconnect-priority", "-999"), ("connection", "autoconnect", "true"),
    ("connection", "interface-name", "eth0"), ("ipv4", "method", "manual"),
    ("ipv4", "address1", "192.168.7.20/24,192.168.7.1"), ("ipv4", "dns", "8.8.4.4"),
    ("ipv6", "addr-gen-mode", "stable-privacy"), ("ipv6", "method", "auto")]
CLIENT_VALUES = [
    ("connection", "id", "ZOR"), ("connection", "type", "wifi"),
    ("connection", "autoconnect", "true"), ("connection", "interface-name", "wlan0"),
    ("connection", "permissions", "user:zor:;"), ("wifi", "mode", "infrastructure"),
    ("wifi", "ssid", "Basement"), ("wifi-security", "auth-alg", "open"),
    ("wifi-security", "key-mgmt", "wpa-psk"), ("wifi-security", "psk", "another horse"),
    ("ipv4", "method", "auto"), ("ipv6", "addr-gen-mode", "stable-privacy"),
    ("ipv6", "method", "auto")]
AP_VALUES = [
    ("connection", "id", "Hotspot"), ("connection", "type", "wifi"),
    ("connection", "autoconnect", "true"), ("connection", "interface-name", "wlan0"),
    ("wifi", "mode", "ap"), ("wifi", "ssid", "Basement"), ("wifi", "band", "bg"),
    ("wifi", "channel", "0"), ("wifi-security", "group", "ccmp;"),
    ("wifi-security", "key-mgmt", "wpa-psk"), ("wifi-security", "pairwise", "ccmp;"),
    ("wifi-security", "proto", "rsn;"), ("wifi-security", "psk", "another horse"),
    ("ipv4", "method", "shared"), ("ipv4", "address1", "192.168.4.20/24,192.168.4.1"),
    ("ipv6", "addr-gen-mode", "stable-privacy"), ("ipv6", "method", "ignore")]

FILL_WIRED = ("fill IP Address=192.168.7.20", "fill Subnet Mask=255.255.255.0",
              "fill Default Gateway=192.168.7.1", "fill DNS Server=8.8.4.4")
FILL_WIFI = ("fill SSID=Basement", "fill Password=another horse")
SAVE = "press Save And Exit"


def without_quotes(content):
    """The clean-up that follows the last value."""
    keys = (b"permissions=", b"group=", b"pairwise=", b"proto=")
    lines = content.removesuffix(b"\n").split(b"\n")
    return b"".join(
        (line.replace(b'"', b"") if any(key in line for key in keys) else line) + b"\n"
        for line in lines)


class Scenario:
    """A save: the keyfile before it, what is done in the window, the values that it writes."""

    def __init__(self, title, page, old, actions, values, changes_mode=False):
        self.title = title
        self.kind = "ethernet" if page == "Ethernet" else "wifi"
        self.name = {"ethernet": "ethernet", "wifi": "wlan0"}[self.kind] + ".nmconnection"
        self.old = old
        self.actions = [f"page {page}", *actions, SAVE]
        self.values = [tuple(word.encode() for word in value) for value in values]
        self.default = expected(f"{self.kind}-default")
        self.changes_mode = changes_mode

    def written(self, start, values):
        """The file after some values were written to it."""
        for value in values:
            start, _ = model.puts(start, *value)
        return start

    def saved(self, start, values):
        """The file when the quotes are cleaned up as well."""
        return without_quotes(self.written(start, values))

    def after_fault(self):
        """Every file that a save may leave when one call failed, and what to call it."""
        labels = {}
        start = self.default if self.changes_mode else self.old
        if not self.values:  # the file is to be removed
            return {None: "new (removed)", self.old: "old"}
        labels[self.saved(start, self.values)] = "new"
        labels.setdefault(self.written(start, self.values), "new, quotes not removed")
        for value in self.values:
            rest = [other for other in self.values if other != value]
            labels.setdefault(self.saved(start, rest), f"new, {value[1].decode()} as before")
        labels.setdefault(self.old, "old")
        # The mode that is stored could not be read, or the file that a new mode begins with not be
        # written: then the values stand on what there was instead.
        labels.setdefault(self.saved(self.default, self.values), "new, on the default file")
        labels.setdefault(self.saved(self.old, self.values), "new, on the old file")
        labels.setdefault(self.saved(b"", self.values), "new, on an empty file")
        labels.setdefault(self.saved(None, self.values), "new, on no file")
        return labels

    def on_full_disk(self):
        """The file that a save leaves where nothing can grow: what is as long as before is new."""
        content = self.default if self.changes_mode else self.old
        for value in self.values:
            changed, way = model.puts(content, *value)
            if way is not model.Way.REPLACED:
                content = changed
        return without_quotes(content)

    def after_kill(self):
        """Every file that can be there in the course of a save."""
        labels = {self.old: "old"}
        if not self.values:
            return {**labels, None: "new (removed)"}
        if self.changes_mode:
            labels[self.default] = "default"
        start = self.default if self.changes_mode else self.old
        for count in range(1, len(self.values)):
            labels.setdefault(self.written(start, self.values[:count]),
                              f"{count} of {len(self.values)} values new")
        complete = self.saved(start, self.values)
        before = self.written(start, self.values)
        labels[before] = "new, quotes not removed"
        labels[complete + (len(before) - len(complete)) * b"\n"] = "new, empty lines at the end"
        labels[complete] = "new"
        return labels


SCENARIOS = [
    Scenario("static, other values", "Ethernet", STATIC, FILL_WIRED, WIRED_VALUES),
    Scenario("dynamic to static", "Ethernet", DYNAMIC, ["pick Static IP", *FILL_WIRED],
             WIRED_VALUES, changes_mode=True),
    Scenario("client, another network", "Wifi", CLIENT, FILL_WIFI, CLIENT_VALUES),
    Scenario("client to access point", "Wifi", CLIENT,
             ["pick Access Point", *FILL_WIFI, "fill IP Address=192.168.4.20",
              "fill Subnet Mask=255.255.255.0"], AP_VALUES, changes_mode=True),
    Scenario("wireless disabled", "Wifi", CLIENT, ["pick Disabled"], []),
]
