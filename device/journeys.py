# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What people do with a device, each from the window to the effect on the network.

One machine takes all of them, in their order; what one leaves is where the next one starts.
"""
import hashlib
import os
import re
import shlex
import subprocess

from .machine import KERNEL
from .window import WORKING_COPY

INSTALLED = "/var/lib/zor-network/connections"
# Address, mask and its bits, gateway, name server: on two networks of the other end.
FIRST = ("10.20.30.40", "255.255.240.0", 20, "10.20.16.1", "10.20.16.53")
SECOND = ("172.16.5.9", "255.255.252.0", 22, "172.16.4.1", "172.16.7.53")
ACCESS_POINT = "Halvorik test"
PASSWORD = "open-sesame 9"
# Name, password, and how the save ends: as the guide to what is refused has it.
ODD = (("Zoë's café, a = b", "it's = é, a  b", "done"),
       ("back\\door", PASSWORD, "done"),
       ("a;b #c", PASSWORD, "failed"),
       ('say "x"', PASSWORD, "failed"),
       ("Town hall", "pass;word #1", "failed"),
       ("Town hall", 'say "open"', "refused"),
       ("Town hall", "back\\door 9", "refused"))


def digest(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").digest()


class Journeys:
    """The steps, on a machine whose window is to come."""

    def __init__(self, machine, window):
        self.machine = machine
        self.window = window

    # What is asked of the device.

    def has_address(self, address, prefix, gateway, card="eth0"):
        """Until it has, and its gateway answers."""
        self.machine.wait_for(f"ip -4 address show {card} | grep -q 'inet {address}/{prefix} ' && "
                              f"ip route show default | grep -q 'via {gateway} dev {card}' && "
                              f"ping -n -c 1 -W 5 {gateway}", f"{address} to be in use")

    def has_lease(self):
        """Until the wired address is one of the other end's DHCP server."""
        self.machine.wait_for("ip -4 address show eth0 | grep -q 'inet 192.168.77.1[0-5]' && "
                              "ping -n -c 1 -W 5 192.168.77.1", "a lease")

    def has_access_point(self):
        self.machine.wait_for("iw dev wlan0 info | grep -q 'type AP'", "the access point")

    def installed(self, name):
        """The text of an installed keyfile."""
        return self.machine.run(f"cat {INSTALLED}/{name}.nmconnection")

    def save(self, page, result="done"):
        """Saves, and waits until the screen has told what became of it, and for the next window."""
        action = "finalize_" + page
        left = self.window.leave()
        self.window.see_outcome().save(self.machine.picture_path(f"outcome-{page}-{result}"))
        told = self.machine.run(f"cat /run/zor-network/outcome/{action}")
        self.machine.wait_for(
            f"[ $(systemctl show -P ActiveState zor-network-outcome@{action}) = inactive ] && "
            f"[ $(systemctl show -P MainPID zor-network-manager) != {left} ]", "the text to go")
        self.window.wait()
        assert f"\nresult={result}\n" in told, told

    # The journeys.

    def boot(self):
        """From the power button to the window, with an address from the DHCP server."""
        self.window.wait()
        self.has_lease()
        self.machine.keep("boot")
        return self.machine.run("systemd-analyze | head -n 1").strip()

    def fill_static(self, values):
        address, mask, _, gateway, dns = values
        for name, text in (("IP Address", address), ("Subnet Mask", mask),
                           ("Default Gateway", gateway), ("DNS Server", dns)):
            self.window.fill(name, text)

    def static(self, values=FIRST):
        """A static address by touch; the window that comes back shows it."""
        self.window.touch("Static IP")
        self.fill_static(values)
        self.machine.keep(f"static-{values[0]}")
        self.save("ethernet")
        address, _, prefix, gateway, dns = values
        self.has_address(address, prefix, gateway)
        servers = self.machine.run("nmcli -g IP4.DNS device show eth0").split()
        assert servers == [dns], servers
        assert f"address1={address}/{prefix},{gateway}\n" in self.installed("ethernet")
        self.machine.keep(f"static-{address}-again")
        return f"{address}/{prefix}, gateway answers"

    def dynamic(self):
        """Back to an address from the DHCP server."""
        self.window.touch("Dynamic IP")
        self.save("ethernet")
        self.has_lease()
        return self.machine.run("ip -4 -br address show eth0").split()[2]

    def static_again(self):
        """Another static address, on another network."""
        return self.static(SECOND)

    def refused(self):
        """A save that the form refuses, then leaving: the old keyfile is back, nothing changed."""
        before = self.installed("ethernet")
        self.window.touch("Dynamic IP")  # a change of the mode writes the default file at once
        self.window.touch("Static IP")
        self.window.fill("IP Address", "10.20.30.999")
        shown = self.window.touch("Save And Exit")
        shown.save(self.machine.picture_path("refused"))
        self.machine.key("esc")
        self.machine.at_rest(shown, "the message to close")
        self.window.wait(but_not=self.window.leave("Exit Without Saving"))
        assert self.installed("ethernet") == before
        after = self.machine.run(f"cat {WORKING_COPY}/ethernet.nmconnection")
        assert after == before, after
        self.has_address(SECOND[0], SECOND[2], SECOND[3])
        return "old keyfile in the working copy and in use"

    def fill_access_point(self, channel):
        for name, text in (("SSID", ACCESS_POINT), ("Password", PASSWORD),
                           ("Access point's IP Address", "192.168.4.1"),
                           ("Access point's Subnet Mask", "255.255.255.0")):
            self.window.fill(name, text)
        self.window.choose_channel(channel)

    def save_access_point(self, channel):
        """Saves what is filled in, and waits for the access point. Returns its channel."""
        self.machine.keep(f"access-point-{channel or 'Auto'}")
        self.save("wifi")
        self.has_access_point()
        found = self.machine.run("iw dev wlan0 info | sed -n 's/.*channel \\([0-9]*\\).*/\\1/p'")
        assert f"\nchannel={channel}\n" in self.installed("wlan0")  # 0 is Auto
        assert channel in (0, int(found)), found
        return int(found)

    def serves(self):
        """A second radio joins with the password. Returns the address that it is given."""
        machine = self.machine
        assert self.joins(PASSWORD), machine.attempt("cat /run/world/wpa.log")[1]
        leased = machine.run(machine.out_there(
            "busybox udhcpc -i wlan1 -n -q -t 10 -s /usr/libexec/device-lab/leased"))
        machine.run(machine.out_there("ping -n -c 3 -W 5 -I wlan1 192.168.4.1"))
        self.leave_the_air()
        return leased.split()[-1]

    def access_point(self):
        """An access point: a second radio joins with its password, and not with another one."""
        self.window.touch("Wifi")
        self.window.touch("Access Point")
        self.fill_access_point(6)
        found = self.save_access_point(6)
        assert not self.joins("open-sesame 8", "WRONG_KEY"), "joined with a wrong password"
        return f"channel {found}, leased {self.serves()}"

    def joins(self, password, sign="CTRL-EVENT-CONNECTED"):
        """Whether the second radio gets in; sign: what tells that it has not, and why."""
        self.leave_the_air()
        self.supplicant(f'network={{\n  ssid="{ACCESS_POINT}"\n  psk="{password}"\n}}\n')
        self.machine.wait_for(f"grep -q -e {sign} -e CTRL-EVENT-CONNECTED /run/world/wpa.log",
                              sign)
        return "CTRL-EVENT-CONNECTED" in self.machine.run("cat /run/world/wpa.log")

    def supplicant(self, configuration):
        """Starts what drives the second radio."""
        machine = self.machine
        machine.run(f"printf %s {shlex.quote(configuration)} >/run/world/wpa.conf")
        machine.run(machine.out_there("wpa_supplicant -B -i wlan1 -c /run/world/wpa.conf "
                                      "-P /run/world/wpa.pid -f /run/world/wpa.log"))

    def leave_the_air(self):
        """Ends it."""
        self.machine.run("if [ -e /run/world/wpa.pid ]; then kill $(cat /run/world/wpa.pid); "
                         "while [ -e /run/world/wpa.pid ]; do sleep 0.1; done; fi; "
                         "rm -f /run/world/wpa.log")
        self.machine.run(self.machine.out_there("ip address flush dev wlan1"))

    def channels(self):
        """The other channels that may be used everywhere, and the one that is chosen by itself."""
        found = []
        for channel in 0, 1, 11:
            self.window.touch("Wifi")
            self.window.choose_channel(channel)
            found.append(f"{channel or 'Auto'}: {self.save_access_point(channel)}")
            self.serves()
        return "; ".join(found)

    def world_access_point(self, name="Town hall", password=PASSWORD):
        """An access point of somebody else's, with a DHCP server."""
        key = hashlib.pbkdf2_hmac("sha1", password.encode(), name.encode(), 4096, 32)
        self.leave_the_air()
        self.supplicant(f"network={{\n  ssid={name.encode().hex()}\n  mode=2\n  frequency=2437\n"
                        "  key_mgmt=WPA-PSK\n  proto=RSN\n  pairwise=CCMP\n"
                        f"  psk={key.hex()}\n}}\n")
        # For which the DHCP server of the other end has leases too.
        self.machine.run(self.machine.out_there("ip address add 192.168.88.1/24 dev wlan1"))

    def has_joined(self):
        self.machine.wait_for("ip -4 address show wlan0 | grep -q 'inet 192.168.88.1[0-5]' && "
                              "ping -n -c 1 -W 5 -I wlan0 192.168.88.1", "the client to join")

    def fill_client(self, name="Town hall", password=PASSWORD):
        self.window.fill("SSID", name)
        self.window.fill("Password", password)

    def client(self):
        """A client of an access point outside."""
        self.world_access_point()
        self.window.touch("Wifi")
        self.window.touch("Client")
        self.fill_client()
        self.machine.keep("client")
        self.save("wifi")
        self.has_joined()
        return self.machine.run("ip -4 -br address show wlan0").split()[2]

    def client_after_a_restart(self):
        """It joins by itself, since its user has a session."""
        self.window.wait()
        self.world_access_point()
        self.has_joined()
        return "joined by itself"

    def odd_names(self):
        """A client of access points with odd names: each joins or not, as the guide says."""
        for number, (name, password, result) in enumerate(ODD):
            self.world_access_point(name, password)
            self.window.touch("Wifi")
            self.fill_client(name, password)
            self.machine.keep(f"odd-name-{number}")
            self.save("wifi", result)
            if result == "done":
                self.has_joined()
        return f"{len(ODD)}, each as the guide says"

    def disabled(self):
        """No Wi-Fi: the connection is gone, and its keyfile."""
        self.window.touch("Wifi")
        self.window.touch("Disabled")
        self.save("wifi")
        self.machine.wait_for("! ip -4 address show wlan0 | grep -q inet", "Wi-Fi to end")
        self.machine.run(f"test ! -e {INSTALLED}/wlan0.nmconnection")
        return "keyfile removed, radio without an address"

    def window_killed(self):
        """It comes back, after a rollback."""
        pid = self.window.process()
        self.machine.run(f"kill -KILL {pid}")
        self.window.wait(but_not=pid)
        return "back"

    def screen_killed(self):
        """Screen and window come back."""
        pid = self.window.process()
        self.machine.run("kill -KILL $(systemctl show -P MainPID kiosk)")
        self.window.wait(but_not=pid)
        return "both back"

    def stopped(self):
        """Stopped by systemd, the keyfiles are locked; started, they are unlocked again."""
        self.machine.run("systemctl stop zor-network-manager")
        self.machine.wait_for(f"[ $(stat -c %U {WORKING_COPY}) = root ]",
                              "the working copy to be locked")
        self.machine.run("systemctl start zor-network-manager")
        self.window.wait()
        return "locked, then unlocked"

    def plug(self):
        """Pulled in a save; after the start the network is that of the old or the new keyfile."""
        old = self.installed("ethernet")
        self.window.touch("Dynamic IP")
        self.window.leave()
        self.machine.pause(1)
        self.machine.pull_the_plug()
        self.machine.switch_on()
        self.window.wait()
        now = self.installed("ethernet")
        if now == old:
            address, prefix, gateway = re.search("address1=(.*)/(.*),(.*)", now).groups()
            self.has_address(address, prefix, gateway)
            return "old settings"
        assert "method=auto" in now and "address1" not in now, now
        self.has_lease()
        return "new settings"

    def read_only(self):
        """A root that forgets what is written, with the keyfiles on a partition of their own."""
        machine = self.machine
        partition = os.path.join(machine.folder, "partition")
        with open(partition, "wb") as file:
            file.truncate(64 * 1024 * 1024)
        subprocess.run(["mkfs.ext4", "-q", "-L", "zor-network", partition], check=True)
        arguments = ("-append", KERNEL.replace(" rw ", " ro ") + " overlay-root",
                     "-drive", f"file={partition},if=virtio,format=raw")
        machine.run("echo 'LABEL=zor-network /var/lib/zor-network ext4 defaults 0 2' >>/etc/fstab")
        machine.shut_down()
        before = digest(machine.disk)
        machine.switch_on(*arguments)
        self.window.wait()
        self.has_lease()  # by the first keyfile, since there is none on the partition
        machine.run("touch /etc/forgotten")
        self.static()
        no_complaint = "! journalctl -q -b -t zor-network-permissions-handler -p err | grep ."
        machine.run(no_complaint)
        machine.shut_down()
        after = digest(machine.disk)
        machine.switch_on(*arguments)
        self.window.wait()
        self.has_address(FIRST[0], FIRST[2], FIRST[3])
        machine.run("[ ! -e /etc/forgotten ]")
        machine.run(no_complaint)
        assert after == before, "the root was written"
        return "the saved address is in use, the root is as it was"
