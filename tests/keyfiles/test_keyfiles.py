# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Every kind of keyfile that the program writes is read back by NetworkManager's own parser.

Each kind is written through the same functions as a save, compared byte for byte with a file in
expected/, given to nmcli and to libnm's keyfile reader, and the values that they read are compared
with those that were entered. No daemon takes part.
"""
import os
import pathlib
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

from tests.support import tap
from tests.support.files import expected



def missing_tool():
    """What this machine lacks, as text; empty if nothing."""
    if not shutil.which("nmcli"):
        return "nmcli (network-manager)"
    try:
        gi.require_version("NM", "1.0")
    except ValueError:
        return "libnm's typelib (gir1.2-nm-1.0)"
    return ""


try:
    import gi

    MISSING = missing_tool()
except ImportError:
    MISSING = "python3-gi"
tap.require_nothing(MISSING)

from gi.repository import GLib, NM

# A daemon makes one from the file's path; the reader alone leaves it out.
UUID = "a3a66c6e-9c5f-4d4c-8a55-9a39b4a1b0a1"

STATIC = ("static", "192.168.1.10", "255.255.255.0", "192.168.1.1", "192.168.1.2")
ACCESS_POINT = ("access-point", "Halvorik AP", "correct horse_1", "6",
                "192.168.4.20", "255.255.255.0")
CLIENT = ("client", "Home", "secret pass")


class Folder:
    """A folder of keyfiles that the program works on, as in its debug mode."""

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def save(self, *action):
        """Performs one action of write_keyfile. Whatever the umask, the result must be private."""
        environment = dict(os.environ, ZOR_NETWORKMANAGER_DEBUG_PATH=str(self.path))
        # Bytes, so that no locale has a say in them.
        command = [sys.argv[1], *(text.encode() for text in action)]
        return subprocess.run(command, env=environment, umask=0, capture_output=True, check=False)

    def keyfile(self):
        """The only file: a second one would be a connection of its own, or a leftover."""
        (path,) = self.path.iterdir()
        return path


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


class KeyfileTest(unittest.TestCase):
    """A folder of its own for every test, and the ways to look at what is written there."""

    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="zor-keyfiles-")
        self.addCleanup(temporary.cleanup)
        self.folder = Folder(temporary.name)

    def save(self, *action):
        """One successful action; returns the keyfile's bytes."""
        result = self.folder.save(*action)
        self.assertEqual((result.returncode, result.stderr), (0, b""), action)
        return self.folder.keyfile().read_bytes()

    def assert_private(self, path):
        """The daemon refuses what others can read; its parser, reading bytes, cannot know."""
        self.assertEqual(oct(stat.S_IMODE(path.stat().st_mode)), oct(0o600))

    def assert_accepted(self, content):
        """Neither of the two readers has anything to say; returns what they read."""
        result = nmcli(content)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        connection, warnings = read(content)
        self.assertEqual(warnings, [])
        return meaning(connection)

    def assert_refused(self, content, reason):
        """Both readers refuse the whole file."""
        with self.assertRaisesRegex(GLib.Error, reason):
            read(content)
        result = nmcli(content)
        self.assertNotEqual(result.returncode, 0)
        self.assertRegex(result.stderr.decode(), reason)

    def check(self, actions, file, values, name):
        """What the last action leaves: its name, mode, bytes, and NetworkManager's reading."""
        for action in actions:
            content = self.save(*action)
        self.assertEqual(self.folder.keyfile().name, name + ".nmconnection")
        self.assert_private(self.folder.keyfile())
        # As lines, so that a difference can be read.
        self.assertEqual(content.splitlines(True), expected(file).splitlines(True))
        self.assertEqual(self.assert_accepted(content), values)


ETHERNET = {
    "id": "ethernet", "type": "802-3-ethernet", "interface": "eth0", "autoconnect": True,
    "priority": -999, "ipv6": "auto", "addr-gen-mode": "stable-privacy", "proxy": "none",
}
ETHERNET_STATIC = {
    **ETHERNET, "ipv4": "manual", "addresses": ["192.168.1.10/24"], "gateway": "192.168.1.1",
    "dns": ["192.168.1.2"],
}
ETHERNET_DYNAMIC = {**ETHERNET, "ipv4": "auto"}


class EthernetTest(KeyfileTest):
    """Kinds of ethernet.nmconnection."""

    def check_ethernet(self, actions, file, values):
        """See check()."""
        self.check(actions, file, values, "ethernet")

    def test_default_file(self):
        self.check_ethernet([["default-ethernet"]], "ethernet-default",
                            {**ETHERNET_DYNAMIC, "id": "new_ethernet_connection"})
        self.assertEqual(self.folder.keyfile().stat().st_size, 189)

    def test_static_on_no_file(self):
        self.check_ethernet([STATIC], "ethernet-static", ETHERNET_STATIC)

    def test_static_on_default_file(self):
        self.check_ethernet([["default-ethernet"], STATIC], "ethernet-static", ETHERNET_STATIC)

    def test_static_on_static_without_dns_server(self):
        other = ("static", "10.20.30.40", "255.0.0.0", "10.0.0.1", "")
        self.check_ethernet([STATIC, other], "ethernet-static-no-dns", {
            **ETHERNET, "ipv4": "manual", "addresses": ["10.20.30.40/8"], "gateway": "10.0.0.1"})

    def test_static_after_dynamic(self):
        self.check_ethernet([["dynamic"], STATIC], "ethernet-static", ETHERNET_STATIC)

    def test_dynamic_on_no_file(self):
        self.check_ethernet([["dynamic"]], "ethernet-dynamic", ETHERNET_DYNAMIC)

    def test_dynamic_on_default_file(self):
        self.check_ethernet([["default-ethernet"], ["dynamic"]], "ethernet-dynamic",
                            ETHERNET_DYNAMIC)

    def test_dynamic_after_static(self):
        # The mode differs, so the static file goes, and its address with it.
        self.check_ethernet([STATIC, ["dynamic"]], "ethernet-dynamic", ETHERNET_DYNAMIC)

    def test_dynamic_over_values_of_static_leaves_them(self):
        # Where the mode is dynamic already, address and DNS server stay as they are, and
        # NetworkManager uses them beside those that it gets by DHCP.
        left = self.save(*STATIC).replace(b"method=manual", b"method=auto")
        self.folder.keyfile().write_bytes(left.replace(b"id=ethernet", b"id=earlier"))
        self.check_ethernet([["dynamic"]], "ethernet-dynamic-address-left",
                            {**ETHERNET_STATIC, "ipv4": "auto"})


WIFI = {
    "type": "802-11-wireless", "interface": "wlan0", "autoconnect": True, "priority": 0,
    "channel": 0, "proxy": "none",
}
WIFI_ACCESS_POINT = {
    **WIFI, "id": "Hotspot", "ssid": "Halvorik AP", "mode": "ap", "band": "bg", "channel": 6,
    "key-mgmt": "wpa-psk", "psk": "correct horse_1", "proto": ["rsn"], "pairwise": ["ccmp"],
    "group": ["ccmp"], "ipv4": "shared", "addresses": ["192.168.4.20/24"],
    "gateway": "192.168.4.1", "ipv6": "ignore", "addr-gen-mode": "stable-privacy",
}
WIFI_CLIENT = {
    **WIFI, "id": "ZOR", "permissions": ["user:zor:"], "ssid": "Home",
    "mode": "infrastructure", "key-mgmt": "wpa-psk", "auth-alg": "open", "psk": "secret pass",
    "ipv4": "auto", "ipv6": "auto", "addr-gen-mode": "stable-privacy",
}


class WifiTest(KeyfileTest):
    """Kinds of wlan0.nmconnection."""

    def check_wifi(self, actions, file, values):
        """See check()."""
        self.check(actions, file, values, "wlan0")

    def test_default_file(self):
        # An open network that is joined by itself: no mode means the client's.
        self.check_wifi([["default-wifi"]], "wifi-default", {
            **WIFI, "id": "new_wifi_connection", "ssid": "my_new_wifi", "ipv4": "auto",
            "ipv6": "auto", "addr-gen-mode": "default"})
        self.assertEqual(self.folder.keyfile().stat().st_size, 117)

    def test_access_point_on_no_file(self):
        self.check_wifi([ACCESS_POINT], "access-point", WIFI_ACCESS_POINT)

    def test_access_point_on_default_file(self):
        self.check_wifi([["default-wifi"], ACCESS_POINT], "access-point", WIFI_ACCESS_POINT)

    def test_access_point_on_access_point(self):
        other = ("access-point", "Workshop", "12345678", "0", " 10.42.0.1 ", "255.255.0.0")
        self.check_wifi([ACCESS_POINT, other], "access-point-again", {
            **WIFI_ACCESS_POINT, "ssid": "Workshop", "psk": "12345678", "channel": 0,
            "addresses": ["10.42.0.1/16"], "gateway": "10.42.0.1"})

    def test_access_point_after_client(self):
        self.check_wifi([CLIENT, ACCESS_POINT], "access-point", WIFI_ACCESS_POINT)

    def test_every_channel(self):
        for channel in range(12):
            with self.subTest(channel=channel):
                content = self.save(*ACCESS_POINT[:3], str(channel), *ACCESS_POINT[4:])
                self.assertEqual(self.assert_accepted(content),
                                 {**WIFI_ACCESS_POINT, "channel": channel})

    def test_client_on_no_file(self):
        self.check_wifi([CLIENT], "client", WIFI_CLIENT)

    def test_client_on_default_file(self):
        self.check_wifi([["default-wifi"], CLIENT], "client", WIFI_CLIENT)

    def test_client_on_client(self):
        other = ("client", "Office Net", "another-secret")
        self.check_wifi([CLIENT, other], "client-again",
                        {**WIFI_CLIENT, "ssid": "Office Net", "psk": "another-secret"})

    def test_client_after_access_point(self):
        self.check_wifi([ACCESS_POINT, CLIENT], "client", WIFI_CLIENT)

    def test_texts_that_arrive_as_entered(self):
        for text in ("two  blanks", "Café ☕ 例", "a=b:c", "[section]", "100%$'`", "k" * 32):
            with self.subTest(text=text):
                content = self.save("client", text, "12345678" + text)
                self.assertEqual(self.assert_accepted(content),
                                 {**WIFI_CLIENT, "ssid": text, "psk": "12345678" + text})


class ModeTest(KeyfileTest):
    """Who may read a keyfile is part of what the daemon asks of it."""

    def test_readable_file_becomes_private(self):
        for kind, action in (("ethernet", STATIC), ("wifi", CLIENT)):
            with self.subTest(kind):
                self.save(*action)
                path = self.folder.keyfile()
                path.chmod(0o644)
                with self.assertRaises(AssertionError):
                    self.assert_private(path)
                self.save(*action)
                self.assert_private(path)
                path.unlink()


class JudgementTest(KeyfileTest):
    """The readers refuse: what they take above was really looked at."""

    def test_quoted_lists_are_refused(self):
        for action, key, reason in ((ACCESS_POINT, "proto", "proto: property is invalid"),
                                    (ACCESS_POINT, "pairwise", "pairwise: property is invalid"),
                                    (ACCESS_POINT, "group", "group: property is invalid"),
                                    (CLIENT, "permissions", "permissions: invalid permissions")):
            with self.subTest(key):
                content = self.save(*action)
                quoted = b"".join(
                    line.replace(b"=", b'="').replace(b"\n", b'"\n')
                    if line.startswith(key.encode() + b"=") else line
                    for line in content.splitlines(keepends=True))
                self.assertNotEqual(quoted, content)
                self.assert_refused(quoted, reason)


class LimitsTest(KeyfileTest):
    """Entries that NetworkManager reads otherwise than they were meant.

    The form lets them through and the file is written by its rules: this pins what users are told.
    """

    def line(self, content, key):
        """The only line of a key, without its end."""
        (found,) = [line for line in content.decode().splitlines() if line.startswith(key + "=")]
        return found

    def test_ssid(self):
        for entered, written, understood in (("a;b", '"a;b"', '"a;b"'),
                                             ("#home", '"#home"', '"#home"'),
                                             ("home ", '"home "', '"home "'),
                                             (" home", " home", "home"),
                                             (r"a\tb", r"a\tb", "a\tb"),
                                             ("a;group=b", "a;group=b", "a;group=b")):
            with self.subTest(entered):
                content = self.save("client", entered, "secret pass")
                self.assertEqual(self.line(content, "ssid"), "ssid=" + written)
                self.assertEqual(self.assert_accepted(content),
                                 {**WIFI_CLIENT, "ssid": understood})

    def test_ssid_of_no_use(self):
        for entered in ("", "s" * 33):
            with self.subTest(entered):
                self.assert_refused(self.save("client", entered, "secret pass"), "wireless.ssid: ")

    def test_password(self):
        for entered, written, understood in (("pass;word", '"pass;word"', '"pass;word"'),
                                             ("pass#word", '"pass#word"', '"pass#word"'),
                                             ("password ", '"password "', '"password "'),
                                             (" password", " password", "password"),
                                             (r"pass\sword", r"pass\sword", "pass word"),
                                             ("a;proto=b", "a;proto=b", "a;proto=b"),
                                             ("short", "short", "short"),
                                             ("p" * 65, "p" * 65, "p" * 65)):
            with self.subTest(entered):
                content = self.save("client", "Home", entered)
                self.assertEqual(self.line(content, "psk"), "psk=" + written)
                self.assertEqual(self.assert_accepted(content), {**WIFI_CLIENT, "psk": understood})

    def test_password_that_is_lost(self):
        without = {key: value for key, value in WIFI_CLIENT.items() if key != "psk"}
        for entered, written in (('pass"word', r'"pass\"word"'), (r"pass\word", r"pass\word")):
            with self.subTest(entered):
                content = self.save("client", "Home", entered)
                self.assertEqual(self.line(content, "psk"), "psk=" + written)
                connection, warnings = read(content)
                self.assertEqual(len(warnings), 1, warnings)
                self.assertIn("psk", warnings[0])
                self.assertEqual(meaning(connection), without)

    def test_static_address_that_has_the_file_refused(self):
        for address in ("192.168.01.10", "192.168.1.10.", "192. 168.1.10", "192.168.1.10 "):
            with self.subTest(address):
                content = self.save("static", address, *STATIC[2:])
                self.assertEqual(self.line(content, "address1"),
                                 f"address1={address}/24,192.168.1.1")
                self.assert_refused(content, "ipv4.addresses: this property cannot be empty")

    def test_static_gateway_that_has_the_file_refused(self):
        invalid = "ipv4.gateway: gateway is invalid"
        no_address = "ipv4.addresses: this property cannot be empty"
        for gateway, quote, reason in (("192.168.01.1", "", invalid),
                                       ("192.168.1.1.", "", invalid),
                                       (" 192.168.1.1", "", no_address),
                                       ("192.168.1.1 ", '"', no_address)):
            with self.subTest(gateway):
                content = self.save(*STATIC[:3], gateway, STATIC[4])
                self.assertEqual(self.line(content, "address1"),
                                 f"address1={quote}192.168.1.10/24,{gateway}{quote}")
                self.assert_refused(content, reason)

    def test_dns_server_that_is_dropped(self):
        without = {key: value for key, value in ETHERNET_STATIC.items() if key != "dns"}
        for server in ("192.168.01.2", "192.168.1.2."):
            with self.subTest(server):
                connection, warnings = read(self.save(*STATIC[:4], server))
                self.assertEqual(len(warnings), 1, warnings)
                self.assertIn("DNS", warnings[0])
                self.assertEqual(meaning(connection), without)

    def test_access_point_address_that_is_dropped(self):
        # The access point then gets 10.42.0.1, the daemon's own choice.
        without = {key: value for key, value in WIFI_ACCESS_POINT.items()
                   if key not in ("addresses", "gateway")}
        content = self.save(*ACCESS_POINT[:4], "192.168.04.20", ACCESS_POINT[5])
        connection, warnings = read(content)
        self.assertEqual(len(warnings), 1, warnings)
        self.assertIn("192.168.04.20", warnings[0])
        self.assertEqual(meaning(connection), without)


if __name__ == "__main__":
    tap.main()
