# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Pulls the plug at many points of a save, and looks at what is left on the disk.

The machine is kept in the moment before the save, memory and disk. One save from there shows how
long it takes; in a second one the emulator is frozen at each point, and its disk's file copied.
That has what killing it there would leave: what is in the machine's memory is lost, and what the
emulator itself has not written yet. It does not lose what a real disk keeps in a cache of its own.
Each copy is judged from outside, after its file system was repaired as at a start; a few of them
are started again.
"""
import argparse
import contextlib
import os
import shutil
import signal
import subprocess
import sys
import tempfile

from tests.support.limit import wait_until

from .journeys import FIRST, INSTALLED, Journeys
from .machine import KERNEL, LIMIT, WORK, Machine, clear, new_disk
from .window import WORKING_COPY, Window

RUN = os.path.join(WORK, "plug")
STATE = os.path.join(RUN, "state")
READY = os.path.join(RUN, "disk.qcow2")
POINT = os.path.join(RUN, "point")
# Each kind of save: the keyfile that it replaces, or makes.
KINDS = {"ethernet": "ethernet.nmconnection", "wifi": "wlan0.nmconnection"}
# What is counted: keyfiles as before, as saved, and neither; folders that were still the user's.
COLUMNS = ("old", "new", "unlocked", "bad", "started")
# The size of one that holds the installed keyfiles alone.
PARTITION = 64 * 1024 * 1024
# How many of the disks of each kind are started again, which takes minutes for each.
STARTS = 4


def prepare(kind):
    """A machine whose window is filled in, kept; returns where the finger is put to save."""
    clear(RUN)
    with Machine(RUN) as machine:
        window = Window(machine)
        journeys = Journeys(machine, window)
        journeys.boot()
        if kind == "ethernet":
            window.touch("Static IP")
            journeys.fill_static(FIRST)
        else:
            window.touch("Wifi")
            window.touch("Access Point")
            journeys.fill_access_point(6)
        machine.run("sync")
        place = window.place("Save And Exit")
        machine.ask("stop")
        machine.ask("migrate", uri=f"exec:cat >{STATE}")
        wait_until(lambda: machine.ask("query-migrate").get("status") == "completed",
                   "the machine to be kept", limit=LIMIT, interval=0.1)
    return place


def again(writes=0):
    """The machine as it was kept, on a disk of its own. writes: how many of them the disk takes in
    a second of the clock outside; 0: as many as it can."""
    clear(POINT)
    os.makedirs(POINT)
    machine = Machine(POINT, new_disk(os.path.join(POINT, "disk.qcow2"), READY),
                      arguments=["-incoming", f"exec:cat {STATE}"])
    wait_until(lambda: machine.ask("query-status")["status"] == "paused", "the machine to be back",
               limit=LIMIT, interval=0.05)
    machine.ask("block_set_io_throttle", device="virtio0", iops=0, iops_rd=0, iops_wr=writes, bps=0,
                bps_rd=0, bps_wr=0)
    machine.ask("cont")
    return machine


@contextlib.contextmanager
def as_file(disk):
    """The disk as a plain file, whose changes are lost."""
    with tempfile.TemporaryDirectory(dir=RUN) as folder:
        plain = os.path.join(folder, "plain")
        with open(plain, "w", encoding="utf-8"):
            pass
        top = new_disk(os.path.join(folder, "top.qcow2"), disk)
        daemon = subprocess.Popen(
            ["qemu-storage-daemon", "--blockdev", f"file,node-name=file,filename={top}",
             "--blockdev", "qcow2,node-name=disk,file=file",
             "--export", f"fuse,id=plain,node-name=disk,mountpoint={plain},writable=on"])
        try:
            wait_until(lambda: os.path.getsize(plain), "the disk's file")
            yield plain
        finally:
            daemon.terminate()
            daemon.wait()


def left_on(disk):
    """Keyfiles by their path, as a start would find them, and whose the working copy is."""
    with as_file(disk) as plain:
        done = subprocess.run(["e2fsck", "-p", plain], capture_output=True, text=True, check=False)
        assert done.returncode in (0, 1), done.stdout

        def ask(request):
            return subprocess.run(["debugfs", "-R", request, plain], capture_output=True,
                                  check=True).stdout

        found = {}
        for folder in WORKING_COPY, INSTALLED:
            for line in ask(f"ls -p {folder}").decode().splitlines():
                name = line.split("/")[5] if line else ""
                if name not in ("", ".", ".."):
                    found[f"{folder}/{name}"] = ask(f"cat {folder}/{name}")
        owner = ask(f"stat {WORKING_COPY}").decode().split("User:")[1].split()[0]
        return found, int(owner)


def save(machine, kind, place):
    """Lets a save come to its end. Returns how long it took inside."""
    machine.click(*place)
    start = machine.clock()
    machine.run(f"until [ -e /run/zor-network/outcome/finalize_{kind} ]; do sleep 0.1; done")
    return machine.clock() - start


def whole_save(kind, place, writes):
    """Returns how long it took, and what it left."""
    with again(writes) as machine:
        took = save(machine, kind, place)
        machine.run("sync")
    return took, left_on(machine.disk)[0]


def frozen(machine, place, took, points):
    """Freezes a save at points, the last a little beyond its end: what comes after it must not take
    it back. Yields the time of each."""
    step = 1.2 * took / max(1, points - 1)
    machine.click(*place)
    for number in range(points):
        machine.process.send_signal(signal.SIGSTOP)
        yield number * step
        machine.process.send_signal(signal.SIGCONT)
        machine.pause(step)


def frozen_save(place, took, points, writes):
    """Yields times, and copies of the disk."""
    with again(writes) as machine:
        for number, time in enumerate(frozen(machine, place, took, points)):
            copy = os.path.join(RUN, f"disk-{number}.qcow2")
            yield time, shutil.copyfile(machine.disk, copy)


def start_again(disk, kind, is_new):
    """Has the network up by the keyfile that is installed, and no folder that is the user's."""
    # No window that unlocks it again.
    options = ["-append", KERNEL + " systemd.mask=kiosk.service"]
    with Machine(POINT, disk, arguments=options) as machine:
        machine.wait_for("systemctl is-active NetworkManager", "NetworkManager")
        owner = machine.run(f"stat -c %U {WORKING_COPY}").strip()
        assert owner == "root", owner
        machine.run(f"diff -r --exclude='*~' {INSTALLED} {WORKING_COPY}")
        journeys = Journeys(machine, None)
        if is_new and kind == "ethernet":
            address, _, prefix, gateway, _ = FIRST
            journeys.has_address(address, prefix, gateway)
        else:
            journeys.has_lease()
        if is_new and kind == "wifi":
            journeys.has_access_point()


def pull(kind, points, writes):
    """The table of one kind of save. Returns how many points were bad."""
    place = prepare(kind)
    path = f"{INSTALLED}/{KINDS[kind]}"
    old, _ = left_on(READY)
    took, new = whole_save(kind, place, writes)
    assert new[path] != old.get(path), "nothing was saved"
    count = dict.fromkeys(COLUMNS, 0)
    for number, (time, disk) in enumerate(list(frozen_save(place, took, points, writes))):
        found, owner = left_on(disk)
        # What NetworkManager reads besides is as it was. It does not read what a new file is called
        # until it is whole.
        others = all(text == old.get(name) for name, text in found.items()
                     if name.startswith(INSTALLED) and name not in (path, path + "~"))
        is_new = found.get(path) == new[path]
        if others and (is_new or found.get(path) == old.get(path)):
            count["new" if is_new else "old"] += 1
            count["unlocked"] += owner != 0
            if number % max(1, points // STARTS) == 0:
                start_again(disk, kind, is_new)
                count["started"] += 1
        else:
            count["bad"] += 1
            print(f"{kind}, {time:.2f} s: {sorted(found)}\n{found.get(path)!r}",
                  flush=True)
    print(f"{kind:<10}{points:>7}{took:>8.1f} s" + "".join(
        f"{count[name]:>10}" for name in COLUMNS), flush=True)
    return count["bad"]


def second_disk(machine, path):
    """Gives it to a machine that runs."""
    machine.ask("blockdev-add", **{"node-name": "second", "driver": "raw",
                                   "file": {"driver": "file", "filename": path}})
    machine.ask("device_add", driver="virtio-blk-pci", drive="second", id="second")
    machine.wait_for("test -b /dev/vdb", "the second disk")


def on_f2fs(machine):
    """Moves what is installed to a new partition of this kind. Returns its file."""
    path = os.path.join(RUN, "partition")
    with open(path, "wb") as file:
        file.truncate(PARTITION)
    subprocess.run(["mkfs.f2fs", "-q", path], stdout=subprocess.DEVNULL, check=True)
    second_disk(machine, path)
    place = os.path.dirname(INSTALLED)
    machine.run(f"mount -t f2fs /dev/vdb /mnt && cp -a {place}/. /mnt && umount /mnt && "
                f"mount -t f2fs /dev/vdb {place} && sync")
    return path


def pull_on_f2fs(kind, points):
    """As above. The copies are judged inside: nothing but a kernel repairs such a file system."""
    place = prepare(kind)
    show = f"cat {INSTALLED}/{KINDS[kind]}"
    with again() as machine:
        on_f2fs(machine)
        old = machine.attempt(show)
        took = save(machine, kind, place)
        new = machine.attempt(show)
    assert new != old and new[0] == 0, "nothing was saved"
    copies = os.path.join(RUN, "partitions")
    with again() as machine, open(copies, "wb") as file:
        partition = on_f2fs(machine)
        for _ in frozen(machine, place, took, points):
            with open(partition, "rb") as now:
                shutil.copyfileobj(now, file)
    count = dict.fromkeys(COLUMNS[:2] + ("bad",), 0)
    with again() as machine:
        second_disk(machine, copies)
        for number in range(points):
            machine.run("umount -q /var/lib/zor-network; mount -t f2fs -o "
                        f"loop,offset={number * PARTITION},sizelimit={PARTITION} "
                        "/dev/vdb /var/lib/zor-network")
            found = machine.attempt(show)
            count["new" if found == new else "old" if found == old else "bad"] += 1
    os.remove(copies)
    print(f"{kind} on f2fs: {points} points of {took:.1f} s: {count}", flush=True)
    return count["bad"]


def main():
    parser = argparse.ArgumentParser(prog="./dev device plug")
    parser.add_argument("--points", type=int, default=100, help="of each kind of save; 100")
    disk = parser.add_mutually_exclusive_group()
    disk.add_argument("--writes", type=int, default=0, metavar="N",
                      help="which the disk takes in a second; as many as it can")
    disk.add_argument("--f2fs", action="store_true",
                      help="have the installed keyfiles on such a file system")
    parser.add_argument("kinds", nargs="*", choices=[*KINDS, []], metavar="KIND",
                        help=" and ".join(KINDS))
    arguments = parser.parse_args()
    kinds = arguments.kinds or KINDS
    if arguments.f2fs:
        bad = [pull_on_f2fs(kind, arguments.points) for kind in kinds]
    else:
        print(f"{'save':<10}{'points':>7}{'installs':>10}"
              + "".join(f"{name:>10}" for name in COLUMNS))
        bad = [pull(kind, arguments.points, arguments.writes) for kind in kinds]
    sys.exit(1 if any(bad) else 0)


if __name__ == "__main__":
    main()
