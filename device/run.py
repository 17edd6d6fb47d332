# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Runs a device in a virtual machine for hands: "run" with its screen, "shell" without."""
import os
import subprocess
import sys

from .machine import RUN, clear, new_disk, qemu


def by_hand(with_screen):
    """Returns the machine's status. What was saved in it is lost at the next start."""
    clear(RUN)
    os.makedirs(RUN)
    disk = new_disk(os.path.join(RUN, "disk.qcow2"))
    print("The console is root's. Ctrl+A and then X ends the machine."
          + (" Its screen: a VNC viewer on 127.0.0.1:5900." if with_screen else ""), flush=True)
    return subprocess.run([*qemu(RUN, disk, (800, 600)), "-serial", "mon:stdio",
                           *(["-vnc", "127.0.0.1:0"] if with_screen else ["-display", "none"])],
                          check=False).returncode


sys.exit(by_hand(sys.argv[1] == "run"))
