# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A device with the example privileged program installed, as far as the caller can see.

The caller is in a mount namespace of its own: the program works on its real paths there.
"""
import os
import shutil
import subprocess

from tests.support.limit import wait_until

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLE = os.path.dirname(HERE)

HANDLER = "/usr/libexec/zor-network-permissions-handler"
CLIENT = "/opt/zor-network-permissions-handler"  # what the window finds on PATH
SOCKET = "/run/zor-network.socket"
WORKING_COPY = "/etc/NetworkManager/system-connections"
OLD_COPIES = "/etc/NetworkManager/.zor-network-old"
STATE = "/var/lib/zor-network"
INSTALLED = STATE + "/connections"
RUN = "/run/zor-network"
SET_ASIDE = RUN + "/set-aside"
ETHERNET, WIFI = "ethernet.nmconnection", "wlan0.nmconnection"
USER = 65534
READERS = 12345  # the group that may read a locked working copy, and ask the service


def write(content, *path, owner=0, mode=0o600):
    """Makes a file anew. Returns its path."""
    name = os.path.join(*path)
    if os.path.lexists(name):
        os.remove(name)
    with open(name, "wb") as file:
        file.write(content)
    os.chown(name, owner, owner)
    os.chmod(name, mode)
    return name


def _mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def lay_over(folder):
    """What is made in a folder from now on goes with the namespace."""
    layers = "/tmp/layers" + folder
    for name in "upper", "work":
        os.makedirs(os.path.join(layers, name))
    _mount("-t", "overlay", "overlay", folder,
           "-o", f"lowerdir={folder},upperdir={layers}/upper,workdir={layers}/work")


def install(program):
    """Installs the program and its client, and makes the folders that the manual asks for."""
    for folder in "/opt", "/usr/libexec", "/var/lib":
        lay_over(folder)
    shutil.copy(program, HANDLER)
    shutil.copy(os.path.join(os.path.dirname(program), "client", os.path.basename(program)), CLIENT)
    os.makedirs(INSTALLED, 0o700)
    os.chmod(STATE, 0o750)
    os.chown(STATE, 0, READERS)


def missing_tools():
    """What the service lacks, as text; empty if nothing."""
    return "" if shutil.which("systemd-socket-activate") else "systemd-socket-activate"


def start_service():
    """Has the requests on the socket answered, as its unit would. Returns the process."""
    process = subprocess.Popen(
        ["setpriv", "--pdeathsig", "KILL", "systemd-socket-activate", "--accept", "--inetd",
         "--listen", SOCKET, HANDLER],
        stderr=subprocess.DEVNULL)
    wait_until(lambda: os.path.exists(SOCKET), "the socket")
    os.chown(SOCKET, 0, READERS)
    os.chmod(SOCKET, 0o660)
    return process


def as_user(user, *command, groups=(READERS,)):
    """A command as a user's process that can gain no privileges; a list."""
    groups = ["--groups", ",".join(map(str, groups))] if groups else ["--clear-groups"]
    return [shutil.which("setpriv"), "--reuid", str(user), "--regid", str(user), *groups,
            "--no-new-privs", *command]


def cover(target, source):
    """A file or folder shows what another one holds."""
    _mount("--bind", source, target)


def uncover(target):
    """Undoes that."""
    subprocess.run(["umount", target], check=True)


def cover_run():
    """An empty /run."""
    _mount("-t", "tmpfs", "-o", "mode=0755", "tmpfs", "/run")
