# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Every kind of keyfile that the program writes is read back by NetworkManager's own parser.

Each kind is written through the same functions as a save, compared byte for byte with a file in
expected/, given to nmcli and to libnm's keyfile reader, and the values that they read are compared
with those that were entered. No daemon takes part.
"""
import os
import pathlib
import re
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

from tests.support import tap
from tests.support.files import expected


try:
    import gi
    gi.require_version("NM", "1.0")
    MISSING = None if shutil.which("nmcli") else "nmcli"
except (ImportError, ValueError) as error:
    MISSING = str(error)
tap.require_nothing(MISSING)

from gi.repository import GLib, NM

# A daemon makes one from the file's path; the reader alone leaves it out.
UUID = "a3a66c6e-9c5f-4d4c-8a55-9a39b4a1b0a1"


def static(address="192.168.1.10", mask="255.255.255.0", gateway="192.168.1.1", dns="192.168.1.2"):
    """The action that saves a static address."""
    return "static", address, mask, gateway, dns


def access_point(ssid="Halvorik AP", password="correct horse_1", channel="6",
                 address="192.168.4.20", mask="255.255.255.0"):
    """The action that saves an access point."""
    return "access-point", ssid, password, channel, address, mask


def client(ssid="Home", password="secret pass"):
    """The action that saves a client."""
    return "client", ssid, password


def nmcli(content):
    """Has nmcli read a keyfile and write it again. It takes what the daemon takes."""
    return subprocess.run(["nmcli", "--offline", "connection", "modify",
                           "connection.autoconnect", "yes"], input=content, capture_output=True,
                          env=dict(os.environ, LC_ALL="C.UTF-8"), check=False)


def read(content):
    """The connection in a keyfile, checked and completed as by the daemon, and the warnings."""
    warnings = []

    def note(_file, _connection, kind, data, _user_data):
        if kind == NM.KeyfileHandlerType.WARN:
            warnings.append(data.warn_get().out_message)
        return False

    keyfile = GLib.KeyFile()
    keyfile.load_from_data(content.decode(), len(content), GLib.KeyFileFlags.NONE)
    connection = NM.keyfile_read(keyfile, "/etc/NetworkManager/system-connections",
                                 NM.KeyfileHandlerFlags.NONE, note, None)
    connection.get_setting_connection().set_property("uuid", UUID)
    connection.normalize({})
    return connection, warnings


def listed(count, item):
    """The entries of one of libnm's lists."""
    return [item(index) for index in range(count)]


def address_text(address):
    """An address with its prefix, as in a keyfile."""
    return f"{address.get_address()}/{address.get_prefix()}"


def meaning(connection):
    """What a connection means, as plain values; what is not set is left out."""
    general = connection.get_setting_connection()
    ipv4 = connection.get_setting_ip4_config()
    ipv6 = connection.get_setting_ip6_config()
    values = {
        "id": general.get_id(),
        "type": general.get_connection_type(),
        "interface": general.get_interface_name(),
        "autoconnect": general.get_autoconnect(),
        "priority": general.get_autoconnect_priority(),
        # The getter of a single one can not be called from Python in every version.
        "permissions": general.get_property("permissions"),
        "ipv4": ipv4.get_method(),
        "addresses": listed(ipv4.get_num_addresses(),
                            lambda index: address_text(ipv4.get_address(index))),
        "gateway": ipv4.get_gateway(),
        "dns": listed(ipv4.get_num_dns(), ipv4.get_dns),
        "ipv6": ipv6.get_method(),
        "addr-gen-mode": NM.SettingIP6ConfigAddrGenMode(ipv6.get_addr_gen_mode()).value_nick,
        "proxy": connection.get_setting_proxy().get_method().value_nick,
    }
    values.update(wifi_meaning(connection))
    return {key: value for key, value in values.items() if value not in (None, [])}


def wifi_meaning(connection):
    """The values of a wireless connection and of its security."""
    wifi = connection.get_setting_wireless()
    security = connection.get_setting_wireless_security()
    values = {}
    if wifi:
        values.update({
            "ssid": wifi.get_ssid().get_data().decode(),
            "mode": wifi.get_mode(),
            "band": wifi.get_band(),
            "channel": wifi.get_channel(),
        })
    if security:
        values.update({
            "key-mgmt": security.get_key_mgmt(),
            "auth-alg": security.get_auth_alg(),
            "psk": security.get_psk(),
            "proto": listed(security.get_num_protos(), security.get_proto),
            "pairwise": listed(security.get_num_pairwise(), security.get_pairwise),
            "group": listed(security.get_num_groups(), security.get_group),
        })
    return values


ETHERNET = {
    "id": "ethernet", "type": "802-3-ethernet", "interface": "eth0", "autoconnect": True,
    "priority": -999, "ipv6": "auto", "addr-gen-mode": "stable-privacy", "proxy": "none",
}
STATIC = {
    **ETHERNET, "ipv4": "manual", "addresses": ["192.168.1.10/24"], "gateway": "192.168.1.1",
    "dns": ["192.168.1.2"],
}
DYNAMIC = {**ETHERNET, "ipv4": "auto"}
WIFI = {
    "type": "802-11-wireless", "interface": "wlan0", "autoconnect": True, "priority": 0,
    "channel": 0, "proxy": "none",
}
ACCESS_POINT = {
    **WIFI, "id": "Hotspot", "ssid": "Halvorik AP", "mode": "ap", "band": "bg", "channel": 6,
    "key-mgmt": "wpa-psk", "psk": "correct horse_1", "proto": ["rsn"], "pairwise": ["ccmp"],
    "group": ["ccmp"], "ipv4": "shared", "addresses": ["192.168.4.20/24"],
    "gateway": "192.168.4.1", "ipv6": "ignore", "addr-gen-mode": "stable-privacy",
}
CLIENT = {
    **WIFI, "id": "ZOR", "permissions": ["user:zor:"], "ssid": "Home",
    "mode": "infrastructure", "key-mgmt": "wpa-psk", "auth-alg": "open", "psk": "secret pass",
    "ipv4": "auto", "ipv6": "auto", "addr-gen-mode": "stable-privacy",
}
MEANINGS = {"static": STATIC, "access-point": ACCESS_POINT, "client": CLIENT}

# What is saved one after the other, the keyfile in the end, and how NetworkManager reads it.
KINDS = (
    ([["default-ethernet"]], expected("ethernet-default"),
     {**DYNAMIC, "id": "new_ethernet_connection"}),
    ([static()], expected("ethernet-static"), STATIC),
    ([["default-ethernet"], static()], expected("ethernet-static"), STATIC),
    ([["dynamic"], static()], expected("ethernet-static"), STATIC),
    ([static(), static("10.20.30.40", "255.0.0.0", "10.0.0.1", "")],
     expected("ethernet-static", address1="10.20.30.40/8,10.0.0.1", dns=""),
     {**ETHERNET, "ipv4": "manual", "addresses": ["10.20.30.40/8"], "gateway": "10.0.0.1"}),
    ([["dynamic"]], expected("ethernet-dynamic"), DYNAMIC),
    ([["default-ethernet"], ["dynamic"]], expected("ethernet-dynamic"), DYNAMIC),
    # The mode differs, so the static file goes, and its address with it.
    ([static(), ["dynamic"]], expected("ethernet-dynamic"), DYNAMIC),
    # An open network that is joined by itself: no mode means the client's.
    ([["default-wifi"]], expected("wifi-default"),
     {**WIFI, "id": "new_wifi_connection", "ssid": "my_new_wifi", "ipv4": "auto", "ipv6": "auto",
      "addr-gen-mode": "default"}),
    ([access_point()], expected("access-point"), ACCESS_POINT),
    ([["default-wifi"], access_point()], expected("access-point"), ACCESS_POINT),
    ([client(), access_point()], expected("access-point"), ACCESS_POINT),
    ([access_point(), access_point("Workshop", "12345678", "0", " 10.42.0.1 ", "255.255.0.0")],
     expected("access-point", ssid="Workshop", psk="12345678", channel=0,
              address1="10.42.0.1/16,10.42.0.1"),
     {**ACCESS_POINT, "ssid": "Workshop", "psk": "12345678", "channel": 0,
      "addresses": ["10.42.0.1/16"], "gateway": "10.42.0.1"}),
    *(([access_point(channel=str(channel))], expected("access-point", channel=channel),
       {**ACCESS_POINT, "channel": channel}) for channel in range(12)),
    ([client()], expected("client"), CLIENT),
    ([["default-wifi"], client()], expected("client"), CLIENT),
    ([access_point(), client()], expected("client"), CLIENT),
    *(([client(), client(text, "12345678" + text)],
       expected("client", ssid=text, psk="12345678" + text),
       {**CLIENT, "ssid": text, "psk": "12345678" + text})
      for text in ("two  blanks", "Café ☕ 例", "a=b:c", "[section]", "100%$'`", "k" * 32)),
)

# In the words of NetworkManager 1.42, and of 1.52.
NO_ADDRESS = (r"ipv4\.addresses: this property cannot be empty"
              r"|ipv4\.method: method 'manual' requires at least an address")
NO_GATEWAY = "ipv4.gateway: gateway is invalid"
# What the form lets through, the line that is written by its rules, and what NetworkManager makes
# of it: other values (None for one that it drops with a warning), or why it refuses the file. This
# pins what users are told.
LIMITS = (
    (client("a;b"), 'ssid="a;b"', {"ssid": '"a;b"'}),
    (client("#home"), 'ssid="#home"', {"ssid": '"#home"'}),
    (client("home "), 'ssid="home "', {"ssid": '"home "'}),
    (client(" home"), "ssid= home", {"ssid": "home"}),
    (client(r"a\tb"), r"ssid=a\tb", {"ssid": "a\tb"}),
    (client("a;group=b"), "ssid=a;group=b", {"ssid": "a;group=b"}),
    (client(""), "ssid=", "wireless.ssid: "),
    (client("s" * 33), "ssid=" + "s" * 33, "wireless.ssid: "),
    (client(password="pass;word"), 'psk="pass;word"', {"psk": '"pass;word"'}),
    (client(password="pass#word"), 'psk="pass#word"', {"psk": '"pass#word"'}),
    (client(password="password "), 'psk="password "', {"psk": '"password "'}),
    (client(password=" password"), "psk= password", {"psk": "password"}),
    (client(password=r"pass\sword"), r"psk=pass\sword", {"psk": "pass word"}),
    (client(password="a;proto=b"), "psk=a;proto=b", {"psk": "a;proto=b"}),
    (client(password="short"), "psk=short", {"psk": "short"}),
    (client(password="p" * 65), "psk=" + "p" * 65, {"psk": "p" * 65}),
    (client(password='pass"word'), r'psk="pass\"word"', {"psk": None}),
    (client(password=r"pass\word"), r"psk=pass\word", {"psk": None}),
    *((static(address), f"address1={address}/24,192.168.1.1", NO_ADDRESS)
      for address in ("192.168.01.10", "192.168.1.10.", "192. 168.1.10", "192.168.1.10 ")),
    (static(gateway="192.168.01.1"), "address1=192.168.1.10/24,192.168.01.1", NO_GATEWAY),
    (static(gateway="192.168.1.1."), "address1=192.168.1.10/24,192.168.1.1.", NO_GATEWAY),
    (static(gateway=" 192.168.1.1"), "address1=192.168.1.10/24, 192.168.1.1", NO_ADDRESS),
    (static(gateway="192.168.1.1 "), 'address1="192.168.1.10/24,192.168.1.1 "', NO_ADDRESS),
    (static(dns="192.168.01.2"), "dns=192.168.01.2", {"dns": None}),
    (static(dns="192.168.1.2."), "dns=192.168.1.2.", {"dns": None}),
    # The access point then gets 10.42.0.1, the daemon's own choice.
    (access_point(address="192.168.04.20"), "address1=192.168.04.20/24,192.168.04.1",
     {"addresses": None, "gateway": None}),
)


class Keyfiles(unittest.TestCase):

    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="zor-keyfiles-")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def keyfile(self):
        """The only file: a second one would be a connection of its own, or a leftover."""
        (path,) = self.folder.iterdir()
        return path

    def save(self, *action):
        """Performs one action of write_keyfile; returns the keyfile's bytes."""
        # The arguments as bytes, so that no locale has a say in them.
        done = subprocess.run([sys.argv[1], *(text.encode() for text in action)],
                              env={**os.environ, "ZOR_NETWORKMANAGER_DEBUG_PATH": str(self.folder)},
                              umask=0, capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""), action)
        self.assert_private()
        return self.keyfile().read_bytes()

    def save_alone(self, *action):
        """The same in an empty folder."""
        for path in self.folder.iterdir():
            path.unlink()
        return self.save(*action)

    def assert_private(self):
        """The daemon refuses what others can read; its parser, reading bytes, cannot know."""
        self.assertEqual(oct(stat.S_IMODE(self.keyfile().stat().st_mode)), oct(0o600))

    def assert_accepted(self, content, values, warnings=0):
        """Both readers take the file, and read these values."""
        result = nmcli(content)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        connection, said = read(content)
        self.assertEqual(len(said), warnings, said)
        self.assertEqual(meaning(connection), values)

    def assert_refused(self, content, reason):
        """Both readers refuse the whole file."""
        with self.assertRaisesRegex(GLib.Error, reason):
            read(content)
        result = nmcli(content)
        self.assertNotEqual(result.returncode, 0)
        self.assertRegex(result.stderr.decode(), reason)

    def assert_content(self, content, wanted):
        """As lines, so that a difference can be read."""
        self.assertEqual(content.splitlines(True), wanted.splitlines(True))

    def test_every_kind_is_read_as_it_was_meant(self):
        for actions, wanted, values in KINDS:
            with self.subTest(actions):
                self.save_alone(*actions[0])
                for action in actions[1:]:
                    self.save(*action)
                name = "ethernet" if values["interface"] == "eth0" else "wlan0"
                self.assertEqual(self.keyfile().name, name + ".nmconnection")
                self.assert_content(self.keyfile().read_bytes(), wanted)
                self.assert_accepted(wanted, values)

    def test_dynamic_save_over_static_values_leaves_them(self):
        # Where the mode is dynamic already, address and DNS server stay as they are, and
        # NetworkManager uses them beside those that it gets by DHCP.
        left = self.save(*static()).replace(b"method=manual", b"method=auto")
        self.keyfile().write_bytes(left.replace(b"id=ethernet", b"id=earlier"))
        wanted = expected("ethernet-dynamic-address-left")
        self.assert_content(self.save("dynamic"), wanted)
        self.assert_accepted(wanted, {**STATIC, "ipv4": "auto"})

    def test_entries_that_are_read_otherwise_than_they_were_meant(self):
        for action, written, outcome in LIMITS:
            with self.subTest(action):
                content = self.save_alone(*action)
                self.assertIn(f"\n{written}\n", content.decode())
                if isinstance(outcome, str):
                    self.assert_refused(content, outcome)
                    continue
                values = {**MEANINGS[action[0]], **outcome}
                self.assert_accepted(
                    content, {key: value for key, value in values.items() if value is not None},
                    warnings=int(None in outcome.values()))

    def test_readable_file_becomes_private(self):
        for action in (static(), client()):
            self.save_alone(*action)
            self.keyfile().chmod(0o644)
            self.save(*action)

    def test_quoted_lists_are_refused(self):
        # The readers refuse: what they take above was really looked at.
        for action, key in ((access_point(), "proto"), (access_point(), "pairwise"),
                            (access_point(), "group"), (client(), "permissions")):
            with self.subTest(key):
                content = self.save_alone(*action)
                quoted = re.sub(rf"\n{key}=(.*)\n".encode(), rf'\n{key}="\1"\n'.encode(), content)
                self.assertNotEqual(quoted, content)
                self.assert_refused(quoted, key + ": (property is|invalid permissions)")


tap.main()
