# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The example privileged program, however it is called, and as it is installed."""
import contextlib
import fcntl
import os
import pwd
import re
import resource
import shutil
import signal
import socket
import subprocess
import sys
import time
import unittest

from tests.support.files import UPDATE_RECORD, read
from tests.support.limit import wait_until

from . import device, device_case
from .device import (ETHERNET, EXAMPLE, HANDLER, OLD_COPIES, READERS, RUN, USER, WIFI,
                     WORKING_COPY, write)
from .device_case import (ACCESS_POINT, CLIENT, DYNAMIC, DeviceCase, NOTES, PUBLISHED,
                          SLOW_SUDO, STATIC, STATIC_RECORD, locks_of, unread_log)


class Calls(DeviceCase):

    def test_wrong_calls_are_refused(self):
        self.request("unlock")
        self.save_static()
        for arguments in ((), ("",), ("Unlock",), ("--help",), ("finalize",), ("unlock", "x"),
                          ("rollback", ""), ("finalize_ethernet", "a", "b"), ("unlock;id",)):
            with self.subTest(arguments):
                status, errors = self.ask(*arguments)
                self.assertEqual(status, 2)
                self.assertIn("usage: unlock | ", errors)
        self.assertEqual(read(WORKING_COPY, ETHERNET), STATIC)
        self.assert_installed(DYNAMIC, CLIENT)

    def test_longest_texts_are_those_that_the_window_reads_whole(self):
        # Both programs have this limit, and neither could ask the other one.
        taken = []
        for length in range(97, 103):
            text = length * "0"
            self.request("unlock")
            self.put_into_copy(STATIC.replace(b"-999", text.encode()), ETHERNET)
            window = subprocess.run(
                [self.write_keyfile, "read", f"{WORKING_COPY}/{ETHERNET}", "connection",
                 "autoconnect-priority"],
                capture_output=True, text=True, check=True,
                env={"ZOR_NETWORKMANAGER_DEBUG_PATH": WORKING_COPY})
            as_value, _ = self.ask("finalize_ethernet", "ethernet")
            as_id, _ = self.ask("finalize_ethernet", text)
            taken.append((window.stdout.endswith(f"\n{text}\n"), as_value == 0, as_id != 2))
        self.assertEqual(taken, [(whole, whole, whole) for whole, _, _ in taken])
        self.assertEqual([whole for whole, _, _ in (taken[0], taken[-1])], [True, False])

    def test_only_sudo_from_a_user_is_heard(self):
        for user in (None, 0, "", "-1", "4294967295", "4294967296", "65534x", " 65534", "root"):
            with self.subTest(user):
                self.refused("unlock", user=user, because="no user has asked")
                self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.request("rollback", user=None)  # as at the start of the system
        self.refused("rollback", because="only root", wrapper=(
            "setpriv", "--reuid", str(USER), "--regid", str(USER), "--clear-groups"))

    def test_start_of_the_system_does_not_wait_for_the_removal_of_old_copies(self):
        self.request("unlock")
        self.request("rollback", user=None)
        self.assertNotEqual(os.listdir(OLD_COPIES), [])
        self.request("unlock")
        self.assertEqual(os.listdir(OLD_COPIES), [])

    def test_starts_of_the_system_leave_no_old_copies(self):
        self.request("rollback")
        for _ in range(3):
            self.request("rollback", user=None)
            self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)
        self.assertEqual(os.listdir(OLD_COPIES), [])

    def test_session_is_its_users_own(self):
        another = {"user": USER - 1}
        for words in (("finalize_ethernet", "ethernet"), ("finalize_wifi",)):
            self.refused(*words, because="nothing was unlocked")
        self.request("unlock")
        self.save_static()
        os.remove(os.path.join(WORKING_COPY, WIFI))
        self.refused("finalize_ethernet", "ethernet", **another, because="another user")
        sudo = self.call_sudo()
        self.request("rollback")
        for words in (("finalize_ethernet", "ethernet"), ("finalize_wifi",)):
            self.refused(*words, **another, because="nothing was unlocked")
        self.assert_installed(DYNAMIC, CLIENT)
        self.request("finalize_wifi", sudo=sudo)
        self.assert_installed(DYNAMIC, None)

    def test_caller_whose_name_holds_an_end_of_line_is_no_parent_of_itself(self):
        caller = ("import ctypes, os, subprocess, sys\n"
                  "ctypes.CDLL(None).prctl(15, b'sudo) S %d\\n' % os.getpid())\n"
                  "sys.exit(subprocess.call(sys.argv[1:]))")
        with subprocess.Popen(
                [shutil.which("timeout"), "20", sys.executable, "-c", caller, SLOW_SUDO],
                env=self.environment(USER), text=True, stdin=subprocess.PIPE,
                stdout=subprocess.PIPE, stderr=subprocess.PIPE) as sudo:
            self.request("rollback", sudo=sudo)

    def test_what_a_caller_hands_down_has_no_effect(self):
        def be_nasty():
            os.umask(0)
            signal.signal(signal.SIGCHLD, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, resource.RLIM_INFINITY))
            most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
            resource.setrlimit(resource.RLIMIT_NOFILE, (7, most))
            os.closerange(0, 3)

        self.request("unlock", preexec_fn=lambda: os.umask(0))
        self.save_static()
        self.request("finalize_ethernet", "ethernet", preexec_fn=be_nasty)
        self.assert_installed(STATIC, CLIENT)
        self.assertEqual(read(PUBLISHED), STATIC_RECORD)
        self.assertNotIn(b"EVIL", read(NOTES, "environment"))
        self.assertIn(b"PATH=/usr/bin:/bin\n", read(NOTES, "environment"))

    @unittest.skipUnless(shutil.which("strace"), "no strace")
    def test_limits_that_cannot_be_told_stay_as_they_are(self):
        tracer = ("strace", "-qq", "-o", "/tmp/trace", "-e", "trace=prlimit64", "-e")
        self.request("rollback", wrapper=(*tracer, "signal=none"))
        count = len(read("/tmp/trace").decode().splitlines())
        for number in range(count - 6, count):  # of seven; those before are the loader's
            self.request("rollback", wrapper=(
                *tracer, f"inject=prlimit64:error=EPERM:when={number}..{number + 1}"))

    def test_message_is_not_written_to_a_file_that_has_its_streams_number(self):
        self.request("unlock")
        self.save_static()
        os.remove(UPDATE_RECORD)  # of which there is a message while the lock is open
        self.request("finalize_ethernet", "ethernet", preexec_fn=lambda: os.closerange(1, 3))
        self.assertEqual(read(RUN, "lock"), b"")

    @unittest.skipUnless(shutil.which("strace"), "no strace")
    def test_files_that_a_caller_hands_down_are_closed(self):
        self.request("unlock")
        mine = os.open("/tmp", os.O_RDONLY)
        self.addCleanup(os.close, mine)
        number = fcntl.fcntl(mine, fcntl.F_DUPFD, 900)
        self.addCleanup(os.close, number)

        def lower_limit():
            most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
            resource.setrlimit(resource.RLIMIT_NOFILE, (100, most))

        # As the kernel is, and as one before 5.9.
        for fault in "delay_enter=0", "error=ENOSYS":
            with self.subTest(fault), open(RUN + "/lock", "rb") as lock:
                fcntl.flock(lock, fcntl.LOCK_EX)
                process = self.start(
                    "rollback", pass_fds=[mine, number], preexec_fn=lower_limit,
                    wrapper=("strace", "-qq", "-o", "/tmp/trace", "-e", "trace=close_range",
                             "-e", "inject=close_range:" + fault))
                tracer = f"/proc/{process.pid}/task/{process.pid}/children"
                wait_until(lambda: any(b" %b " % child in read("/proc/locks")
                                       for child in read(tracer).split()), "it to wait")
                files = f"/proc/{read(tracer).decode().strip()}/fd/"
                opened = [os.readlink(files + name) for name in os.listdir(files)]
                fcntl.flock(lock, fcntl.LOCK_UN)
                self.assertNotIn("/tmp", opened)
                self.assertEqual(self.finish(process), (0, ""))
                self.assertIn(b"close_range(3, ", read("/tmp/trace"))

    def test_terminal_that_goes_does_not_stop_a_request(self):
        self.request("unlock")
        with open(RUN + "/lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = self.start("rollback", preexec_fn=lambda: signal.pthread_sigmask(
                signal.SIG_BLOCK, {signal.SIGALRM}))
            wait_until(lambda: f" {process.pid} ".encode() in read("/proc/locks"), "it to wait")
            # Not even the time limit can be kept away.
            self.assertIn(b"SigBlk:\t0000000000000000\n", read(f"/proc/{process.pid}/status"))
            for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGTSTP):
                process.send_signal(number)
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_copy(True, ethernet=DYNAMIC, wifi=CLIENT)

    def test_signal_to_the_callers_group_does_not_reach_what_is_started(self):
        self.request("unlock")
        self.save_static()
        write(b"", NOTES, "pauses")
        process = self.start("finalize_ethernet", "ethernet", start_new_session=True)
        paused = NOTES + "/is-paused"
        for _ in range(5):
            wait_until(lambda: os.path.exists(paused), "nmcli to run")
            for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM, signal.SIGTSTP):
                os.killpg(process.pid, number)
            write(b"", NOTES, "pauses")
            os.remove(paused)
        self.assertEqual(self.finish(process), (0, ""))
        self.assert_installed(STATIC, CLIENT)

    def test_log_tells_what_was_done_and_no_secret(self):
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as log:
            log.bind("/dev/log")
            self.addCleanup(os.remove, "/dev/log")
            self.request("unlock")
            self.put_into_copy(ACCESS_POINT, WIFI)
            self.request("finalize_wifi", 'Hotspot"\n\x1b[2J\u00e9')
            self.put_into_copy(ACCESS_POINT + b"psk=correct horse_1\n", WIFI)
            self.refused("finalize_wifi", "Hotspot")
            self.request("rollback")
            log.setblocking(False)
            messages = []
            with contextlib.suppress(BlockingIOError):
                while True:
                    messages.append(log.recv(4096).decode().rpartition("]: ")[2])
        self.assertEqual(messages, [
            f"unlocked for user {USER}",
            r'installed wlan0.nmconnection, id "Hotspot\x22\x0a\x1b[2J\xc3\xa9"',
            "activated wlan0.nmconnection",
            "finalize_wifi: wlan0.nmconnection: line 24: a setting that is not allowed",
            "locked"])

    def test_log_that_is_not_read_holds_nobody_up(self):
        self.request("unlock")
        os.link(f"{WORKING_COPY}/{WIFI}", f"{WORKING_COPY}/link")  # a reason to complain
        with unread_log() as log:
            processes = []
            for action, owner in ("rollback", 0), ("unlock", USER), ("rollback", 0):
                processes.append(self.start(action))
                wait_until(lambda owner=owner: os.stat(WORKING_COPY).st_uid == owner, action)
            wait_until(lambda: not locks_of("lock"), "the last one to be done")
            log.settimeout(0.1)
            while any(process.poll() is None for process in processes):
                with contextlib.suppress(TimeoutError):
                    log.recv(4096)
            ends = [self.finish(process) for process in processes]
        self.assertEqual([status for status, _ in ends], [0, 0, 0], ends)


class Packaging(DeviceCase):

    def check(self, *command):
        if not shutil.which(command[0]):
            self.skipTest(f"no {command[0]}")
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(done.stderr, "")

    def test_sudo_takes_the_rule(self):
        self.check("visudo", "-c", "-f", os.path.join(EXAMPLE, "sudoers"))

    def test_systemd_takes_the_units(self):
        self.check("systemd-analyze", "verify", "--man=no", *(
            os.path.join(EXAMPLE, unit) for unit in (
                "zor-network-restore.service", "zor-network.socket", "zor-network@.service")))

    def test_service_starts_without_the_log(self):
        unit = read(EXAMPLE, "zor-network@.service").decode()
        for stream in "Output", "Error":
            self.assertIn(f"\nStandard{stream}=null\n", unit)

    def test_sandbox_is_as_tight_as_the_manual_says(self):
        manual = read(EXAMPLE, "README.md").decode()
        (told,) = re.findall(r"`systemd-analyze security` gives it ([0-9.]+) ", manual)
        self.check("systemd-analyze", "security", "--offline=yes", "--no-pager",
                   f"--threshold={float(told) * 10:.0f}",
                   os.path.join(EXAMPLE, "zor-network@.service"))


@unittest.skipUnless(shutil.which("sudo"), "no sudo")
class Sudo(DeviceCase):

    def setUp(self):
        super().setUp()
        self.user = pwd.getpwuid(USER)
        self.groups = write(b"", "/tmp/group", mode=0o644)
        for target, source in (("/etc/group", self.groups), (
                "/etc/sudoers", write(read(EXAMPLE, "sudoers"), "/tmp/sudoers", mode=0o440))):
            device.cover(target, source)
            self.addCleanup(device.uncover, target)
        # The folder of the source need not be open to others.
        self.wrapper = write(read(EXAMPLE, os.path.basename(HANDLER)), "/tmp/wrapper", mode=0o755)
        self.be_member(self.user.pw_name)

    def be_member(self, name):
        with open(self.groups, "w", encoding="ascii") as file:
            file.write(f"root:x:0:\nzor-network:x:{READERS}:{name}\n")

    def run_as_user(self, *command):
        """Starts a command of the user's."""
        return subprocess.Popen(
            [shutil.which("setpriv"), "--reuid", str(USER), "--regid", str(self.user.pw_gid),
             "--clear-groups", *command], text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def test_members_of_the_group_get_through_and_others_do_not(self):
        for member, status in (("", 1), (self.user.pw_name, 0)):
            self.be_member(member)
            done = self.finish(self.run_as_user(self.wrapper, "unlock"))
            self.assertEqual(done[0], status, done)
        self.assert_copy(False, ethernet=DYNAMIC, wifi=CLIENT)

    def test_request_begins_with_the_process_that_became_sudo(self):
        process = self.run_as_user("sh", "-c", f"read -r go; exec {self.wrapper} finalize_wifi ZOR")
        time.sleep(0.03)
        self.request("unlock")
        status, errors = self.finish(process)  # which lets it go
        self.assertEqual(status, 1)
        self.assertIn("before the working copy was unlocked", errors)
        self.assertEqual(self.finish(self.run_as_user(self.wrapper, "finalize_wifi", "ZOR")),
                         (0, ""))


device_case.main()
