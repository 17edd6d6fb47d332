# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""A stand-in for the privileged program, which does what the program asks for.

It is started by the user and runs as root. The keyfiles are the user's between "unlock" and
"rollback", and the daemon never sees them: "finalize_ethernet" copies them to where it looks.
"""
import fcntl
import os
import stat
import subprocess
import sys

SOURCE = "/etc/NetworkManager/system-connections"
TARGET = "/run/keyfiles"
LOCK = "/run/handler.lock"
ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LANG": "C.UTF-8"}  # not the user's


def give_to(user, directory_mode, file_mode):
    """Makes the folder and its keyfiles a user's. The group stays the one that may read."""
    folder = os.open(SOURCE, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW)
    os.fchown(folder, user, GROUP)
    os.fchmod(folder, directory_mode)
    for name in os.listdir(folder):
        file = open_regular(name, folder)
        os.fchown(file, user, GROUP)
        os.fchmod(file, file_mode)


def open_regular(name, folder):
    """Opens what the user cannot have pointed elsewhere."""
    file = os.open(name, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK, dir_fd=folder)
    if not stat.S_ISREG(os.fstat(file).st_mode):
        sys.exit(f"{name} is no regular file")
    return file


def install():
    """Makes the daemon's folder a copy, which only root can read: it takes no other files."""
    source = os.open(SOURCE, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW)
    names = [name for name in os.listdir(source) if name.endswith(".nmconnection")]
    for name in set(os.listdir(TARGET)) - set(names):
        os.remove(os.path.join(TARGET, name))
    for name in names:
        with open(open_regular(name, source), "rb") as file:
            content = file.read()
        path = os.path.join(TARGET, name)
        with open(path + "~", "wb") as file:  # a name that the daemon does not look at
            os.fchmod(file.fileno(), 0o600)
            file.write(content)
        os.rename(path + "~", path)
    return [os.path.join(TARGET, name) for name in names]


def nmcli(*arguments):
    """The output of nmcli, which must succeed."""
    done = subprocess.run(["nmcli", *arguments], env=ENVIRONMENT, capture_output=True, text=True,
                          check=False)
    if done.returncode != 0:
        sys.exit(f"nmcli {' '.join(arguments)}: {done.stderr.strip()}")
    return done.stdout


def finalize(identifier):
    """Installs the keyfiles and brings the connection up."""
    paths = install()
    nmcli("connection", "reload")
    # That succeeds whatever becomes of the files.
    refused = set(paths) - set(nmcli("-t", "-f", "FILENAME", "connection", "show").split())
    if refused:
        sys.exit(f"refused by the daemon: {', '.join(refused)}")
    nmcli("--wait", "15", "connection", "up", "id", identifier)


USER, GROUP = os.getuid(), os.getgid()
os.setresuid(0, 0, 0)
with open(LOCK, "w", encoding="ascii") as lock:
    fcntl.flock(lock, fcntl.LOCK_EX)  # the last two requests of a run come at the same time
    action, *rest = sys.argv[1:]
    if action == "unlock":
        give_to(USER, 0o700, 0o600)
    elif action == "finalize_ethernet":
        finalize(*rest)
    elif action == "rollback":
        give_to(0, 0o750, 0o640)
    else:
        sys.exit(f"unknown request {sys.argv[1:]}")
