# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A private /tmp and a private /etc/NetworkManager for the calling program and all it starts.

The tested program works on fixed paths there. In a mount namespace of its own a test can do with
them what it likes: nothing on the machine changes, and tests run beside one another.
"""
import os
import subprocess
import sys
import tempfile

SYSTEM_CONNECTIONS = "/etc/NetworkManager/system-connections"
_MARK = "ZOR_TEST_NAMESPACE"


def _mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def _cover_tmp(kept):
    """Mounts an empty /tmp. Folders below the old one that are needed stay where they are."""
    kept = [path for path in map(os.path.realpath, kept) if path.startswith("/tmp/")]
    handles = [os.open(path, os.O_PATH) for path in kept]
    here = os.getcwd()
    _mount("-t", "tmpfs", "-o", "mode=1777", "tmpfs", "/tmp")
    for path, handle in zip(kept, handles):
        os.makedirs(path, exist_ok=True)
        # Not made canonical: that would be the new, empty folder.
        subprocess.run(["mount", "--no-canonicalize", "--bind", f"/proc/self/fd/{handle}", path],
                       check=True, pass_fds=[handle])
        os.close(handle)
    os.chdir(here if os.path.isdir(here) else "/")


def _cover_network_manager():
    parent = os.path.dirname(SYSTEM_CONNECTIONS)
    if not os.path.isdir(parent):
        # Made in a layer over /etc that goes with the namespace.
        os.makedirs("/tmp/etc/upper")
        os.makedirs("/tmp/etc/work")
        _mount("-t", "overlay", "-o", "lowerdir=/etc,upperdir=/tmp/etc/upper,workdir=/tmp/etc/work",
               "overlay", "/etc")
        os.mkdir(parent)
    _mount("-t", "tmpfs", "-o", "mode=0755", "tmpfs", parent)
    os.mkdir(SYSTEM_CONNECTIONS, 0o700)


def _unshare():
    """The command that starts a program in a mount namespace. Raises OSError where there is none."""
    command = ["unshare", "--mount"]
    if os.geteuid() != 0:
        command.append("--map-root-user")
    # A root that is no mount of its own, as in a chroot, cannot be made private. Then the namespace
    # will do as it is, provided that what is mounted in it does not show outside.
    for propagation in "private", "unchanged":
        command_here = [*command, "--propagation", propagation]
        with tempfile.TemporaryDirectory() as folder:
            probe = subprocess.run([*command_here, "mount", "-t", "tmpfs", "tmpfs", folder],
                                   capture_output=True, text=True, check=False)
            shows = os.path.ismount(folder)
            if shows:
                subprocess.run(["umount", folder], check=True)
        if probe.returncode == 0 and not shows:
            return command_here
    raise OSError(f"no mount namespace: {probe.stderr.strip() or 'mounts show outside'}")


def enter(*kept):
    """Moves the program into its namespace by starting it again. Returns why it can not, if so."""
    if os.environ.get(_MARK) == "entered":
        del os.environ[_MARK]  # not the business of what is started from here
        _cover_tmp(kept)
        _cover_network_manager()
        os.environ["TMPDIR"] = "/tmp"
        return None
    try:
        command = _unshare()
    except OSError as error:
        return str(error)
    os.environ[_MARK] = "entered"
    start_again(*command)


def start_again(*command):
    """Starts the calling program once more, by a command."""
    sys.stdout.flush()
    os.execvp(command[0], [*command, sys.executable, *sys.orig_argv[1:]])
