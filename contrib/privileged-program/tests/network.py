# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A device on a network of its own: eth0, a real NetworkManager, a gateway with a DHCP server.

All of it lives in namespaces, and the calling program is the first process in them: with that
program, however it ends, every process, address and mount is gone.
"""
import ipaddress
import json
import os
import shutil
import subprocess

from tests.support import isolation
from tests.support.limit import wait_until

# What the DHCP server hands out.
LEASED_NETWORK = ipaddress.ip_network("192.168.77.0/24")
LEASED_ROUTER = "192.168.77.1"
LEASED_DNS = "192.168.77.53"

_MARK = "ZOR_TEST_NETWORK"
_NAMESPACES = ("--net", "--pid", "--fork", "--kill-child", "--mount", "--propagation", "unchanged")
_TOOLS = ("NetworkManager", "dbus-daemon", "dnsmasq", "ip", "nmcli", "nsenter", "ping")
# Not "ip -n" or "ip netns exec": they want a root that is a mount, which a chroot's need not be.
_AT_THE_GATEWAY = ("nsenter", "--net=/run/netns/gateway")
_LOG = "/run/log"

_BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
  </policy>
</busconfig>
"""

# Without a profile of ours the device stays without an address, and nothing outside is touched.
_DAEMON_CONFIG = """[main]
plugins=keyfile
auth-polkit=false
dhcp=internal
dns=none
hostname-mode=none
no-auto-default=*
"""


def missing_tools():
    """What this machine lacks, as text; empty if nothing."""
    return ", ".join(tool for tool in _TOOLS if not shutil.which(tool))


def enter(*kept):
    """Moves the program into its namespaces by starting it again. Returns why it can not, if so."""
    if os.environ.pop(_MARK, None):
        return None
    if os.geteuid() != 0:
        return "only root can have a network and a daemon"
    probe = _attempt("unshare", *_NAMESPACES, "ip", "link", "add", "type", "veth")
    reason = probe.stderr.strip() if probe.returncode else isolation.enter(*kept)
    if reason:
        return reason
    os.environ[_MARK] = "entered"
    isolation.start_again("unshare", *_NAMESPACES, "--mount-proc")


def _attempt(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False)


def run(*command):
    """The output of a command that must succeed."""
    done = _attempt(*command)
    assert done.returncode == 0, f"{command}: {done.stdout}{done.stderr}"
    return done.stdout


def _start(*command):
    with open(_LOG, "ab") as log:
        subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log)


def messages():
    """What the daemons have said, for failures."""
    with open(_LOG, encoding="utf-8", errors="replace") as file:
        return file.read()


def _write(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(content)
    return path


def set_up(gateways, config_dir):
    """Lays the cable and starts the daemons.

    gateways: ADDRESS/PREFIX of what is at its far end. config_dir: a folder of drop-ins (*.conf).
    """
    for folder in ("/run", "/var/lib/NetworkManager"):
        _mount_on(folder, "tmpfs", "mode=0755")
    # This network's devices. Read-only tells the daemon that no udev is going to announce them.
    _mount_on("/sys", "sysfs", "ro")
    _write("/proc/sys/net/ipv4/ping_group_range", "0 2147483647")
    _set_up_gateway(gateways)
    _set_up_daemon(config_dir)


def _mount_on(folder, kind, options):
    if os.path.ismount(folder):  # which another root's may be tied to
        run("mount", "--make-private", folder)
    run("mount", "-t", kind, "-o", options, kind, folder)


def _set_up_gateway(gateways):
    run("ip", "netns", "add", "gateway")
    run("ip", "link", "add", "eth0", "type", "veth", "peer", "name", "port", "netns", "gateway")
    run("ip", "link", "set", "lo", "up")
    for address in (*gateways, f"{LEASED_ROUTER}/{LEASED_NETWORK.prefixlen}"):
        run(*_AT_THE_GATEWAY, "ip", "address", "add", address, "dev", "port")
    run(*_AT_THE_GATEWAY, "ip", "link", "set", "port", "up")
    # Not to look first whether an address is free saves three seconds: there is nobody else.
    _start(*_AT_THE_GATEWAY, "dnsmasq", "--keep-in-foreground", "--conf-file=/dev/null",
           "--user=root", "--pid-file=", "--port=0", "--no-ping", "--log-facility=-",
           "--interface=port", "--dhcp-leasefile=/run/leases", "--dhcp-authoritative",
           f"--dhcp-range=192.168.77.100,192.168.77.150,{LEASED_NETWORK.netmask}",
           f"--dhcp-option=option:router,{LEASED_ROUTER}",
           f"--dhcp-option=option:dns-server,{LEASED_DNS}")


def _set_up_daemon(config_dir):
    os.mkdir("/run/dbus")
    os.environ.pop("DBUS_SYSTEM_BUS_ADDRESS", None)  # the usual place is this network's
    run("dbus-daemon", "--fork", "--config-file", _write("/run/bus.conf", _BUS_CONFIG))
    _start("NetworkManager", "--debug", "--config", _write("/run/daemon.conf", _DAEMON_CONFIG),
           "--config-dir", config_dir, "--system-config-dir=/run/none")
    try:
        wait_until(_is_ready, "the daemon to see the cable", interval=0.1)
    except TimeoutError as error:
        raise TimeoutError(f"{error}\n{messages()}") from None


def _is_ready():
    state = _attempt("nmcli", "-g", "GENERAL.STATE", "device", "show", "eth0").stdout
    return state.startswith("30 ")  # disconnected, in whatever language


# What the kernel and the daemon say.

def addresses():
    """The IPv4 addresses of eth0, ADDRESS/PREFIX."""
    (device,) = json.loads(run("ip", "-j", "address", "show", "dev", "eth0"))
    return [f"{known['local']}/{known['prefixlen']}" for known in device["addr_info"]
            if known["family"] == "inet"]


def gateways_in_use():
    """The gateway of each default route, and its device."""
    return [(route.get("gateway"), route["dev"])
            for route in json.loads(run("ip", "-j", "-4", "route", "show", "default"))]


def name_servers():
    """The DNS servers that the daemon knows for eth0."""
    return run("nmcli", "-g", "IP4.DNS", "device", "show", "eth0").split()


def answers(address):
    """Whether somebody answers at an address."""
    return _attempt("ping", "-n", "-c", "1", "-W", "2", address).returncode == 0
